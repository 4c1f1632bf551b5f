// The panel that says what there is to say of the focus or the selection.
#pragma once

#include "DestroyObserver.h"
#include "Focus.h"
#include "Inspection.h"
#include "SelectedInOrder.h"
#include "Subscriber.h"

#include <QTimer>
#include <QWidget>

class QLabel;
class QTableWidget;
class QToolButton;

namespace workbench {

/// Shows whichever came last, the focus or a change of the selection. It looks when there is
/// nothing else to do, and only while it is visible. A double click or Enter on a row puts the
/// focus on what it names.
class Inspector : public QWidget {
    Q_OBJECT
public:
    explicit Inspector(QWidget* parent = nullptr);
    ~Inspector() override;

    const Inspection& inspection() const { return m_inspection; }
    bool isUpToDate() const { return !m_timer.isActive(); }
    /// The selected rows, or all with the title, as text.
    QString textToCopy() const;
    QSize sizeHint() const override;

public slots:
    void copy() const;
    /// Asks for a file, and writes the selected atoms to it.
    void saveTable();

signals:
    /// Something could not be done; one line.
    void failed(const QString& line);
    /// Something was done.
    void done(const QString& line);

protected:
    void showEvent(QShowEvent* event) override;

private:
    class Listener : public Subscriber, public TAVIK::DestroyObserver, public TAVIK::FocusObserver {
    public:
        explicit Listener(Inspector& inspector) : m_inspector(inspector) {}
        void commUpdate() override { m_inspector.dataChanged(); }
        void commAdd() override { m_inspector.dataChanged(); }
        void commDelete() override { m_inspector.dataChanged(); }
        void aboutToDestroy(TAVIK::Compound*) override { m_inspector.m_selected.forget(); }
        void focusMoved(TAVIK::Compound* item, bool) override { m_inspector.focusMoved(item); }

    private:
        Inspector& m_inspector;
    };

    void dataChanged();
    void focusMoved(TAVIK::Compound* item);
    void writeTable(const QString& file);
    void look();
    void goTo(int row) const;
    /// What a row is of; null where that is no one item.
    TAVIK::Compound* itemOf(int row) const;
    void show(Inspection inspection);

    QLabel* m_title;
    QTableWidget* m_table;
    QToolButton* m_copy;
    QToolButton* m_save;
    QTimer m_timer;
    SelectedInOrder m_selected;
    std::uint64_t m_selectionSeen;
    bool m_showsFocus = false;
    bool m_isOfSelection = false; ///< what is shown, and not of the focus
    Inspection m_inspection;
    Listener m_listener;
};

} // namespace workbench
