// What there is to say of an item, or of a selection: rows of a label and a value. Knows no
// widgets.
#pragma once

#include "Compound.h"

#include <QString>

#include <cstddef>
#include <utility>
#include <vector>

namespace workbench {

struct Inspection {
    struct Row {
        QString label;
        QString value;
        std::size_t atom = 0; ///< which of the measured atoms it names, from 1; 0 for none
    };
    QString title; ///< what is inspected; empty for nothing
    std::vector<Row> rows;

    void add(const QString& label, const QString& value, std::size_t atom = 0) {
        rows.push_back({label, value, atom});
    }
    /// The rows as lines, each with a tab behind the label, below the title.
    QString text() const;
    /// The value of a row; empty where there is none of that label.
    QString value(const QString& label) const;
};

/// Of one item of any kind; of null nothing. Visits all atoms in it once.
Inspection inspectItem(TAVIK::Compound* item);
/// Of all that is selected. `measured` are its atoms in the order in which they were selected,
/// where these are two, three or four: the inspection then has their distance, angle or torsion.
Inspection inspectSelection(const std::vector<TAVIK::Compound*>& measured);

} // namespace workbench
