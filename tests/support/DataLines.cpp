#include "DataLines.h"

#include "ActiveModel.h"
#include "AtomBonds.h"
#include "AtomDetails.h"
#include "Geometry.h"
#include "ItemOrigin.h"
#include "PartialCharge.h"
#include "Space.h"

#include <QHash>
#include <QTextStream>

namespace test_support {

namespace {

using TAVIK::Compound;

// What a file says of an atom beside.
QString detailsOf(const TAVIK::Atom& atom) {
    const TAVIK::AtomDetails details = TAVIK::GetAtomDetails(&atom);
    const TAVIK::PartialCharge partial = TAVIK::GetPartialCharge(&atom);
    return QStringLiteral(" details %1 %2 %3 %4 %5 %6 %7 %8")
        .arg(static_cast<double>(details.occupancy))
        .arg(details.serial)
        .arg(details.formalCharge)
        .arg(static_cast<int>(details.alternative))
        .arg(details.isHetero)
        .arg(partial.isKnown)
        .arg(static_cast<double>(partial.charge))
        .arg(static_cast<double>(partial.radius));
}

// Names items in the lines: by their addresses, or by their places in the tree.
class LineWriter {
public:
    LineWriter(bool areComparable, bool withFiles)
        : m_areComparable(areComparable), m_withFiles(withFiles) {
        if (areComparable)
            number(TAVIK::Space::instance());
    }

    void write(QStringList& lines, Compound* item) const;

private:
    void number(Compound* item) {
        m_places[item] = m_places.size();
        for (Compound** child = item->ChildBegin(); child != item->ChildEnd(); ++child)
            number(*child);
    }
    QString nameOf(const Compound* item) const {
        return m_areComparable ? QString::number(m_places.value(item, -1))
                               : QString::number(reinterpret_cast<quintptr>(item), 16); // NOLINT
    }
    void writeKind(QTextStream& text, const Compound* item) const;

    bool m_areComparable;
    bool m_withFiles;
    QHash<const Compound*, qsizetype> m_places;
};

void LineWriter::writeKind(QTextStream& text, const Compound* item) const {
    if (const auto* atom = dynamic_cast<const TAVIK::Atom*>(item)) {
        const TAVIK::Vertex at = atom->GetPosition();
        text << " at " << at.isValid() << ' ' << at[0] << ' ' << at[1] << ' ' << at[2] << " model "
             << atom->GetModelNumber().c_str() << " factor " << atom->GetTemperature()
             << detailsOf(*atom) << " bonds ";
        std::vector<TAVIK::Bond*> bonds;
        TAVIK::GetBonds(atom, bonds);
        QStringList names;
        for (const Compound* bond : bonds)
            names << nameOf(bond);
        if (m_areComparable)
            names.sort();
        text << names.join(' ');
    } else if (dynamic_cast<const TAVIK::Residue*>(item)) {
        text << " active " << TAVIK::GetActiveModel(item);
    } else if (const auto* grid = dynamic_cast<const TAVIK::Grid*>(item)) {
        for (const int axis : {0, 1, 2})
            text << ' ' << grid->m_lower[axis] << ".." << grid->m_upper[axis];
        if (const TAVIK::GridValues* const values = TAVIK::GetGridValues(grid))
            text << " values " << qHashRange(values->values.begin(), values->values.end());
    } else if (const auto* surface = dynamic_cast<const TAVIK::Surface*>(item)) {
        if (const TAVIK::SurfaceMesh* const mesh = TAVIK::GetSurfaceMesh(surface)) {
            text << " mesh";
            for (const auto& vertex : mesh->vertices)
                text << ' ' << vertex[0] << ',' << vertex[1] << ',' << vertex[2];
            for (const std::uint32_t color : mesh->colors)
                text << ' ' << color;
            text << ' ' << mesh->scale.has_value();
        }
    }
}

void LineWriter::write(QStringList& lines, Compound* item) const {
    QString line;
    QTextStream text(&line);
    text << nameOf(item) << ' ' << (m_areComparable ? 0 : item->GetId()) << ' '
         << item->GetFQName().c_str() << ' ' << item->GetType().c_str()
         << (item->IsSelected() ? " selected" : "") << (item->HasSelected() ? " partly" : "")
         << (item->IsVisible() ? " shown" : "") << ' ' << item->GetColor().rgba() << ' '
         << (m_withFiles ? TAVIK::OriginOf(item) : QString());
    writeKind(text, item);
    text << " parts";
    for (Compound** part = item->PartBegin(); part != item->PartEnd(); ++part)
        text << ' ' << nameOf(*part);
    text.flush();
    lines << line;
    for (Compound** child = item->ChildBegin(); child != item->ChildEnd(); ++child)
        write(lines, *child);
}

QStringList linesOf(bool areComparable, bool withFiles) {
    QStringList lines;
    LineWriter(areComparable, withFiles).write(lines, TAVIK::Space::instance());
    return lines;
}

} // namespace

QStringList dataLines(bool withFiles) {
    return linesOf(false, withFiles);
}

QStringList comparableLines() {
    return linesOf(true, true);
}

QString firstDifference(const QStringList& now, const QStringList& before) {
    for (qsizetype i = 0; i != std::max(now.size(), before.size()); ++i)
        if (now.value(i) != before.value(i))
            return QStringLiteral("line %1 is \"%2\", and was \"%3\"")
                .arg(i)
                .arg(now.value(i), before.value(i));
    return {};
}

} // namespace test_support
