#include "DataLines.h"

#include "ActiveModel.h"
#include "AtomBonds.h"
#include "AtomDetails.h"
#include "Geometry.h"
#include "ItemOrigin.h"
#include "Space.h"

#include <QTextStream>

namespace test_support {

namespace {

using TAVIK::Compound;

void writeKind(QTextStream& text, const Compound* item) {
    if (const auto* atom = dynamic_cast<const TAVIK::Atom*>(item)) {
        const TAVIK::Vertex at = atom->GetPosition();
        text << " at " << at.isValid() << ' ' << at[0] << ' ' << at[1] << ' ' << at[2] << " model "
             << atom->GetModelNumber().c_str() << " bonds";
        std::vector<TAVIK::Bond*> bonds;
        TAVIK::GetBonds(atom, bonds);
        for (const Compound* bond : bonds)
            text << ' ' << static_cast<const void*>(bond);
    } else if (dynamic_cast<const TAVIK::Residue*>(item)) {
        text << " active " << TAVIK::GetActiveModel(item);
    } else if (const auto* grid = dynamic_cast<const TAVIK::Grid*>(item)) {
        for (const int axis : {0, 1, 2})
            text << ' ' << grid->m_lower[axis] << ".." << grid->m_upper[axis];
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

void write(QStringList& lines, Compound* item) {
    QString line;
    QTextStream text(&line);
    text << static_cast<void*>(item) << ' ' << item->GetId() << ' ' << item->GetFQName().c_str()
         << ' ' << item->GetType().c_str() << (item->IsSelected() ? " selected" : "")
         << (item->HasSelected() ? " partly" : "") << (item->IsVisible() ? " shown" : "") << ' '
         << item->GetColor().rgba() << ' ' << TAVIK::OriginOf(item);
    writeKind(text, item);
    text << " parts";
    for (Compound** part = item->PartBegin(); part != item->PartEnd(); ++part)
        text << ' ' << static_cast<void*>(*part);
    text.flush();
    lines << line;
    for (Compound** child = item->ChildBegin(); child != item->ChildEnd(); ++child)
        write(lines, *child);
}

} // namespace

QStringList dataLines() {
    QStringList lines;
    write(lines, TAVIK::Space::instance());
    return lines;
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
