// What the tests of bonds in saved files start from.
#pragma once

#include "AtomDetails.h"
#include "DataMaker.h"
#include "DataPointBase.h"
#include "FileTestCase.h"
#include "Space.h"
#include "files/Saving.h"

#include <string>
#include <vector>

namespace saved_bonds_testing {

using namespace file_testing;
using TAVIK::Compound;

/// Atoms of one residue in a row, each 1.5 Å from the last.
inline QByteArray chainOf(const QList<QByteArray>& names) {
    QByteArray text;
    int serial = 0;
    for (const QByteArray& name : names) {
        const QByteArray row = atomAt(name, 1.5F * static_cast<float>(serial));
        text += QByteArray(row).replace(6, 5, QByteArray::number(++serial).rightJustified(5));
    }
    return text;
}

class SavedBondsTestCase : public FileTestCase {
protected:
    /// Saves what is open; returns the lines that are said, without the path.
    QStringList save(const char* name) {
        Compound* const space = TAVIK::Space::instance();
        const std::vector<Compound*> items(space->ChildBegin(), space->ChildEnd());
        QStringList lines;
        for (const std::string& line : memory_host::saveFile(items, path(name).toStdString()))
            lines << QString::fromStdString(line).section(": ", 1);
        return lines;
    }
    /// The bonds of the file that was saved.
    QStringList bondsIn(const char* name) {
        return bondNames(opened(path(name).toStdString()).items.front());
    }
    /// Puts an atom into the first alternative model, and a new one of its name near it into the
    /// second.
    static void makeSecondLocation(const QString& residue, const std::string& name = "C2") {
        const DataPointBase guard(nullptr, Publisher::Add, "Make");
        auto* const first =
            dynamic_cast<TAVIK::Atom*>(item(residue + u'/' + QString::fromStdString(name)));
        TAVIK::DataMaker::makeAtom(item(residue),
                                   {.name = name,
                                    .type = first->GetType(),
                                    .position = TAVIK::Vertex(0.0F, 4.6F, 0.0F, true),
                                    .model = 2});
        TAVIK::SetAtomModel(first, 1);
    }

    const QStringList comesBackAsNear{
        "1 bond that was deleted comes back when the file is read, as the atoms are near each "
        "other, or bonded in other models"};
};

} // namespace saved_bonds_testing
