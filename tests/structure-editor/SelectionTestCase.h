// What the tests of the menu "Select" share: its commands, answers to their dialogs, and a grid.
#pragma once

#include "CommandTools.h"
#include "DataAdder.h"
#include "DataMaker.h"
#include "Geometry.h"
#include "Kinds.h"
#include "Space.h"
#include "WindowTestCase.h"
#include "items/Building.h"

#include <QInputDialog>

#include <string>
#include <vector>

namespace selection_tools {

/// A grid of 10 x 20 x 30 points, 1 Å apart, from the origin on.
inline TAVIK::Grid* addGridItem(const std::string& name) {
    TAVIK::GridValues record;
    record.points = {10, 20, 30};
    record.steps = {{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}};
    record.values.resize(10 * 20 * 30);
    const DataAdder<TAVIK::Space> guard(nullptr, TAVIK::Space::instance());
    return TAVIK::DataMaker::makeGrid(TAVIK::Space::instance(), name, std::move(record));
}

/// Its lower and upper indices.
inline std::vector<int> shownRange(const TAVIK::Grid* grid) {
    std::vector<int> range(grid->m_lower, grid->m_lower + 3);
    range.insert(range.end(), grid->m_upper, grid->m_upper + 3);
    return range;
}

class SelectionTestCase : public window_tools::WindowTestCase {
protected:
    void select(const QString& label) {
        command_tools::trigger(*m_window, QStringLiteral("Select"), label);
    }
    /// Calls a command and types `text` into the dialog that it opens.
    bool selectWith(const QString& label, const QString& text) {
        return command_tools::withDialog<QInputDialog>(
            [&] { select(label); },
            [&](QInputDialog& dialog) {
                if (dialog.inputMode() == QInputDialog::DoubleInput)
                    dialog.setDoubleValue(text.toDouble());
                else
                    dialog.setTextValue(text);
                command_tools::pressEnter(dialog);
            });
    }
};

} // namespace selection_tools
