// The find box: a field, and below it the hits as one types.
#pragma once

#include "FindSearch.h"

#include <QFrame>
#include <QWidget>

class QLabel;
class QLineEdit;
class QListView;

namespace workbench {

class HitList;

class FindBox : public QWidget {
    Q_OBJECT
public:
    /// The hits are shown as a child of `window`, above what else is in it.
    explicit FindBox(QWidget* window);
    ~FindBox() override;

    QLineEdit* field() const { return m_field; }
    FindSearch& search() { return m_search; }

public slots:
    /// Gives the field the keyboard.
    void begin();

signals:
    /// A line about what was done, or could not be.
    void said(const QString& line);
    /// Escape was pressed where there was nothing left to close or to empty.
    void left();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    enum class Deed { None, Focus, SelectAtoms, SelectResidues };

    bool takeKey(const QKeyEvent& key);
    void askFor(Deed deed);
    void doIt(Deed deed);
    void focusOn(int hit);
    void showHits();
    void hideHits();
    void place();
    QString countText() const;

    QWidget* m_window;
    QLineEdit* m_field;
    QFrame* m_panel;
    QLabel* m_count;
    QListView* m_view;
    HitList* m_list;
    /// What was asked for while the search was still running.
    Deed m_asked = Deed::None;
    bool m_isTyped = false; ///< a new text, whose hits have not been shown
    FindSearch m_search;
};

} // namespace workbench
