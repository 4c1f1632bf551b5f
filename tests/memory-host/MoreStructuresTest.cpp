// Real structures of many programs and years, by the list more-structures.txt: each is read as the
// list and gemmi say, is saved byte for byte, and reads back from the other format as the same.
#include "FileTestCase.h"
#include "Space.h"
#include "Traversal.h"
#include "files/Saving.h"

#include <QFile>

#include <algorithm>

using namespace file_testing;
using TAVIK::Compound;

namespace {

// The columns of the list behind the package and the path in it.
enum Column { Name = 2, Models, Chains, Residues, Atoms, Remarks, Gemmi, ColumnCount };

using Lines = std::vector<std::vector<std::string>>;

QByteArray bytesOf(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QList<QStringList> listed() {
    QList<QStringList> rows;
    const QString list = QStringLiteral(SOURCE_DIR "/tests/memory-host/more-structures.txt");
    for (const QByteArray& line : bytesOf(list).split('\n'))
        if (!line.isEmpty() && !line.startsWith('#'))
            rows << QString::fromLatin1(line).split(u' ');
    return rows;
}

template <class Kind> int countBelow(Compound* root) {
    std::vector<Compound*> items;
    TAVIK::GetItems<Kind>(root, items, true, static_cast<Kind*>(nullptr), false);
    return static_cast<int>(items.size());
}

// The atoms without one part of AtomText, which has its parts in this order.
Lines without(const QString& part, const Lines& all) {
    const qsizetype which =
        QStringList({"chain", "number", "name", "element", "x", "y", "z", "temperature"})
            .indexOf(part);
    if (which < 0)
        return all;
    Lines rest = all;
    for (std::vector<std::string>& model : rest) {
        for (std::string& line : model) {
            QStringList parts = QString::fromStdString(line).split(u'|');
            parts.removeAt(which);
            line = parts.join(u'|').toStdString();
        }
        std::ranges::sort(model);
    }
    return rest;
}

std::vector<QStringList> bondsOf(const std::vector<Compound*>& items) {
    std::vector<QStringList> all;
    for (Compound* item : items)
        all.push_back(bondNames(item));
    return all;
}

} // namespace

class MoreStructuresTest : public FileTestCase {
    Q_OBJECT

    static void compareWithList(const std::vector<Compound*>& items, const QStringList& row) {
        QCOMPARE(static_cast<int>(items.size()), row[Models].toInt());
        QCOMPARE(countBelow<TAVIK::Molecule>(items.front()), row[Chains].toInt());
        QCOMPARE(countBelow<TAVIK::Residue>(items.front()), row[Residues].toInt());
        QCOMPARE(countBelow<TAVIK::Atom>(TAVIK::Space::instance()), row[Atoms].toInt());
    }

    /// Where the items are saved in the other one of the two formats.
    QString converted(const QString& name) const {
        return path(name.section(u'.', 0, 0) + (name.contains(u".cif") ? ".pdb" : ".cif"));
    }

private slots:
    void theListHasSixtyStructures() {
        const QList<QStringList> rows = listed();
        QVERIFY(std::ranges::all_of(
            rows, [](const QStringList& row) { return row.size() == ColumnCount; }));
        QVERIFY(std::ranges::count_if(
                    rows, [](const QStringList& row) { return row[Atoms].toInt() > 0; }) >= 60);
    }

    void aListedFileIsReadAndSaved_data() {
        QTest::addColumn<QStringList>("row");
        for (const QStringList& row : listed())
            QTest::newRow(qPrintable(row[Name])) << row;
    }
    void aListedFileIsReadAndSaved() {
        QFETCH(QStringList, row);
        const QString source = structure("more/" + row[Name]);
        if (row[Atoms].toInt() == 0) {
            QVERIFY(!refusal(source.toStdString()).isEmpty());
            return;
        }
        const memory_host::OpenedFile file = memory_host::openFile(source.toStdString());
        QCOMPARE(static_cast<int>(file.remarks.size()), row[Remarks].toInt());
        compareWithList(file.items, row);
        const Lines shown = sortedAtoms(file.items);
        QVERIFY(memory_host::saveFile(file.items, path(row[Name]).toStdString()).empty());
        QVERIFY(bytesOf(path(row[Name])) == bytesOf(source));
        if (row[Gemmi] != "nothing")
            QVERIFY(without(row[Gemmi], gemmiAtoms(source.toStdString())) ==
                    without(row[Gemmi], shown));

        const QString other = converted(row[Name]);
        const auto lost = memory_host::saveFile(file.items, other.toStdString());
        QVERIFY(std::ranges::none_of(lost, [](const std::string& line) {
            return line.find("records beside its atoms are not kept") != std::string::npos;
        }));
        QVERIFY(without(row[Gemmi], gemmiAtoms(other.toStdString())) == without(row[Gemmi], shown));
        const memory_host::OpenedFile again = opened(other.toStdString());
        QVERIFY(sortedAtoms(again.items) == shown);
        const bool areBondsLost = std::ranges::any_of(
            lost, [](const std::string& line) { return line.find(" bond") != std::string::npos; });
        QCOMPARE(bondsOf(again.items) != bondsOf(file.items), areBondsLost);
    }
};

REGISTER_TEST(MoreStructuresTest)
#include "MoreStructuresTest.moc"
