#include "AtomTableText.h"

#include "AtomDetails.h"
#include "Kinds.h"
#include "PartialCharge.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QSaveFile>

namespace workbench {

namespace {

void addField(QByteArray& line, QByteArray text) {
    if (text.contains('"') || text.contains(',') || text.contains('\n') || text.contains('\r')) {
        text.replace('"', "\"\"");
        text = '"' + text + '"';
    }
    line += text;
}

QByteArray utf8(const std::string& latin1) {
    return QString::fromLatin1(latin1.data(), static_cast<qsizetype>(latin1.size())).toUtf8();
}

QByteArray number(float value, int decimals) {
    return QByteArray::number(static_cast<double>(value), 'f', decimals);
}

} // namespace

bool writeAtomTable(const std::vector<TAVIK::Compound*>& atoms, QIODevice& out) {
    constexpr qsizetype pieceSize = 1 << 20;
    QByteArray text = "name,element,x,y,z,occupancy,temperature factor,alternative,charge,"
                      "partial charge\r\n";
    for (const TAVIK::Compound* const item : atoms) {
        const auto* const atom = static_cast<const TAVIK::Atom*>(item);
        const TAVIK::AtomDetails details = TAVIK::GetAtomDetails(atom);
        const TAVIK::PartialCharge partial = TAVIK::GetPartialCharge(atom);
        const TAVIK::Vertex at = atom->GetPosition();
        addField(text, utf8(atom->GetFQName()));
        text += ',';
        addField(text, utf8(atom->GetType()));
        for (std::size_t axis = 0; axis != 3; ++axis)
            text += ',' + (at.isValid() ? number(at[axis], 3) : QByteArray());
        text += ',' + number(details.occupancy, 2) + ',' + number(atom->GetTemperature(), 2) + ',';
        if (details.alternative != '\0')
            addField(text, utf8(std::string(1, details.alternative)));
        text += ',' + QByteArray::number(details.formalCharge) + ',' +
                (partial.isKnown ? number(partial.charge, 4) : QByteArray()) + "\r\n";
        if (text.size() > pieceSize) {
            if (out.write(text) != text.size())
                return false;
            text.clear();
        }
    }
    return out.write(text) == text.size();
}

QString saveAtomTable(const std::vector<TAVIK::Compound*>& atoms, const QString& file) {
    const QString cannot = QCoreApplication::translate("Inspector", "%1 cannot be written: %2");
    // The table takes the place of what has its name: of a device or a pipe it would be the end.
    if (const QFileInfo place(file); place.exists() && !place.isFile())
        return cannot.arg(file, QCoreApplication::translate("Inspector", "it is no regular file"));
    QSaveFile out(file);
    if (out.open(QIODevice::WriteOnly) && writeAtomTable(atoms, out) && out.commit())
        return {};
    return cannot.arg(file, out.errorString());
}

} // namespace workbench
