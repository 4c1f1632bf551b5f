// Undo and redo in the menu Edit.
#pragma once

#include "History.h"

#include <QObject>

class QAction;
class QMenu;

namespace workbench {

/// Adds its entries to a menu, and keeps their texts as the steps are: "Undo Delete 100 residues".
class HistoryMenu : public QObject, private HistoryObserver {
    Q_OBJECT
public:
    explicit HistoryMenu(QMenu* menu);

private:
    void historyChanged() override;
    void fillSteps();
    static void undo(std::size_t steps);
    static void redo(std::size_t steps);

    QAction* m_undo;
    QAction* m_redo;
    QAction* m_undoData;
    QMenu* m_steps;
};

} // namespace workbench
