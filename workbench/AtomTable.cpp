#include "AtomTable.h"

#include "AtomDetails.h"
#include "Kinds.h"
#include "PartialCharge.h"
#include "Traversal.h"

#include <QByteArray>
#include <QCoreApplication>
#include <QFileInfo>
#include <QSaveFile>

#include <algorithm>
#include <cmath>
#include <limits>
#include <string_view>
#include <utility>

namespace workbench {

namespace {

constexpr float nan = std::numeric_limits<float>::quiet_NaN();

QString say(const char* text) {
    return QCoreApplication::translate("Inspector", text);
}

void addField(QByteArray& line, QByteArray text) {
    if (text.contains('"') || text.contains(',') || text.contains('\n') || text.contains('\r')) {
        text.replace('"', "\"\"");
        text = '"' + text + '"';
    }
    line += text;
}

QByteArray utf8(std::string_view latin1) {
    return QString::fromLatin1(latin1.data(), static_cast<qsizetype>(latin1.size())).toUtf8();
}

/// A comma, and a number unless it is NaN.
void addNumber(QByteArray& line, float value, int decimals) {
    line += ',';
    if (!std::isnan(value))
        line += QByteArray::number(static_cast<double>(value), 'f', decimals);
}

} // namespace

class AtomTable::Reader : public TAVIK::AtomNameVisitor {
public:
    explicit Reader(AtomTable& table) : m_table(table) {}

    bool Enter(TAVIK::Compound*, std::string_view part) override {
        m_lengths.push_back(m_path.size());
        m_path += part;
        m_hasPlace = false;
        return true;
    }
    void Leave() override {
        m_path.resize(m_lengths.back());
        m_lengths.pop_back();
        m_hasPlace = false;
    }
    void Visit(TAVIK::Compound* item, std::string_view name) override {
        if (!std::exchange(m_hasPlace, true))
            m_table.m_places.push_back(m_path);
        const auto* const atom = static_cast<const TAVIK::Atom*>(item);
        const TAVIK::AtomDetails details = TAVIK::GetAtomDetails(atom);
        const TAVIK::PartialCharge partial = TAVIK::GetPartialCharge(atom);
        const TAVIK::Vertex at = atom->GetPosition();
        Row row{};
        row.place = static_cast<std::uint32_t>(m_table.m_places.size() - 1);
        row.texts = static_cast<std::uint32_t>(m_table.m_texts.size());
        m_table.m_texts.append(name).append(1, '\0').append(atom->GetType()).append(1, '\0');
        for (std::size_t axis = 0; axis != 3; ++axis)
            row.at[axis] = at.isValid() ? at[axis] : nan;
        row.occupancy = details.occupancy;
        row.temperature = atom->GetTemperature();
        row.partialCharge = partial.isKnown ? partial.charge : nan;
        row.formalCharge = details.formalCharge;
        row.alternative = details.alternative;
        m_table.m_rows.push_back(row);
    }

private:
    AtomTable& m_table;
    std::string m_path;
    std::vector<std::size_t> m_lengths;
    bool m_hasPlace = false;
};

AtomTable AtomTable::ofSelected(TAVIK::Compound* root) {
    AtomTable table;
    Reader reader(table);
    TAVIK::VisitAtomNames(root, false, reader);
    return table;
}

bool AtomTable::write(QIODevice& out, ProgressReporter* reporter,
                      const std::stop_token& stop) const {
    constexpr qsizetype pieceSize = 1 << 20;
    QByteArray text = "name,element,x,y,z,occupancy,temperature factor,alternative,charge,"
                      "partial charge\r\n";
    std::string name;
    for (const Row& row : m_rows) {
        const char* const own = m_texts.c_str() + row.texts;
        name.assign(m_places[row.place]).append(own);
        addField(text, utf8(name));
        text += ',';
        addField(text, utf8(own + std::string_view(own).size() + 1));
        for (const float coordinate : row.at)
            addNumber(text, coordinate, 3);
        addNumber(text, row.occupancy, 2);
        addNumber(text, row.temperature, 2);
        text += ',';
        if (row.alternative != '\0')
            addField(text, utf8(std::string_view(&row.alternative, 1)));
        text += ',' + QByteArray::number(row.formalCharge);
        addNumber(text, row.partialCharge, 4);
        text += "\r\n";
        if (text.size() < pieceSize)
            continue;
        if (stop.stop_requested() || out.write(text) != text.size())
            return false;
        text.clear();
        if (reporter)
            reporter->report(say("writing the table"), static_cast<double>(&row - m_rows.data()) /
                                                           static_cast<double>(m_rows.size()));
    }
    return !stop.stop_requested() && out.write(text) == text.size();
}

QString AtomTable::save(const QString& file, ProgressReporter* reporter,
                        const std::stop_token& stop) const {
    const QString cannot = say("%1 cannot be written: %2");
    // The table takes the place of what has its name: of a device or a pipe it would be the end.
    if (const QFileInfo place(file); place.exists() && !place.isFile())
        return cannot.arg(file, say("it is no regular file"));
    QSaveFile out(file);
    if (out.open(QIODevice::WriteOnly) && write(out, reporter, stop) && out.commit())
        return {};
    if (stop.stop_requested())
        return say("%1 is not written: it was cancelled").arg(file);
    return cannot.arg(file, out.errorString());
}

} // namespace workbench
