// Real files, after each command of the menu "Delete": what is saved reads back as what the window
// shows, by gemmi and by the host itself.
#include "CommandTools.h"
#include "DataLines.h"
#include "DataPointBase.h"
#include "FileTesting.h"
#include "Space.h"
#include "Traversal.h"
#include "WindowTestCase.h"
#include "files/Saving.h"

#include <algorithm>
#include <iterator>

using namespace command_tools;
using namespace file_testing;
using namespace window_tools;
using memory_host::openFile;
using TAVIK::Compound;

namespace {

std::vector<Compound*> entriesInSpace() {
    Compound* const space = TAVIK::Space::instance();
    return {space->ChildBegin(), space->ChildEnd()};
}

// Selects every so manieth item of a kind in an entry.
template <class Kind> void selectEvery(Compound* entry, std::size_t step) {
    const DataPointBase guard(nullptr, Publisher::Update, "Select");
    std::vector<Compound*> items;
    TAVIK::GetItems<Kind>(entry, items, true, nullptr, true);
    for (std::size_t i = 0; i < items.size(); i += step)
        items[i]->SetSelected(true);
}

void selectFor(const QString& command, Compound* entry) {
    if (command == u"Tree")
        selectElsewhere(entry, true);
    else if (command == u"Chain")
        selectEvery<TAVIK::Molecule>(entry, 2);
    else if (command == u"Group")
        selectEvery<TAVIK::Group>(entry, 3);
    else if (command == u"Residue")
        selectEvery<TAVIK::Residue>(entry, 3);
    else if (command == u"Atom")
        selectEvery<TAVIK::Atom>(entry, 7);
    else if (command == u"Bond")
        selectEvery<TAVIK::Bond>(entry, 5);
}

// All that a file says of the atoms of each entry: where they stand, and their details.
std::vector<QStringList> shownAtoms() {
    std::vector<QStringList> all;
    for (Compound* entry : entriesInSpace()) {
        QStringList& lines = all.emplace_back(atomPaths(entry));
        const std::vector<TAVIK::Atom*> each = atoms(entry);
        for (std::size_t i = 0; i != each.size(); ++i)
            lines[qsizetype(i)] += u' ' + QString::fromStdString(textOf(*each[i]).text()) + u' ' +
                                   QString::fromStdString(detailsOf(*each[i]).text());
    }
    return all;
}

std::vector<QStringList> shownBonds() {
    std::vector<QStringList> all;
    for (Compound* entry : entriesInSpace())
        all.push_back(bondNames(entry));
    return all;
}

// Those of two sorted lists that the second one lacks.
QStringList without(const QStringList& all, const QStringList& some) {
    QStringList rest;
    std::set_difference(all.begin(), all.end(), some.begin(), some.end(), std::back_inserter(rest));
    return rest;
}

} // namespace

class SavedDeletionsTest : public WindowTestCase {
    Q_OBJECT

    static QString remarksOf(const std::vector<std::string>& remarks) {
        QStringList lines;
        for (const std::string& remark : remarks)
            lines << QString::fromStdString(remark);
        return lines.join(u'\n');
    }

    Folder m_folder;

private slots:
    void whatIsLeftReadsBackAsShown_data() {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("command");
        const auto add = [](const QString& name, std::initializer_list<const char*> commands) {
            for (const char* command : commands)
                QTest::addRow("%s, %s", qPrintable(name), command)
                    << name << QString::fromLatin1(command);
        };
        // "Tree" and "All" leave nothing to be saved but where there are further models.
        for (const char* name : {"1ubq.pdb", "1ejg.pdb", "3al1.pdb", "1tii.pdb", "1cbs.cif.gz",
                                 "2nwl-opm.pdb", "3o21.pdb"})
            add(QString::fromLatin1(name), {"Residue", "Atom", "Bond"});
        for (const char* name :
             {"1ubq.pdb", "1ejg.pdb", "3al1.pdb", "1tii.pdb", "1cbs.cif.gz", "3o21.pdb"})
            add(QString::fromLatin1(name), {"Group"});
        for (const char* name : {"3al1.pdb", "1tii.pdb", "2nwl-opm.pdb", "3o21.pdb"})
            add(QString::fromLatin1(name), {"Chain"});
        add(QStringLiteral("1d3z.pdb"), {"Tree", "Residue", "Atom"});
        add(QStringLiteral("6zu5.cif"), {"Residue"});
    }
    void whatIsLeftReadsBackAsShown() {
        QFETCH(QString, name);
        QFETCH(QString, command);
        Compound* const entry = openFile(structure(name).toStdString()).items.front();
        showWindow();
        selectFor(command, entry);
        const std::size_t before = atoms(TAVIK::Space::instance()).size();
        trigger(*m_window, QStringLiteral("Delete"), command);
        QVERIFY(command == u"Bond" || atoms(TAVIK::Space::instance()).size() < before);

        std::vector<QStringList> shown = shownAtoms();
        std::vector<QStringList> bonds = shownBonds();
        const auto sorted = sortedAtoms(entriesInSpace());
        const std::string path = (m_folder.path() + u'/' + name).toStdString();
        const auto remarks = memory_host::saveFile(entriesInSpace(), path);
        QVERIFY(gemmiAtoms(path) == sorted);
        // Here all atoms of one name of a residue go, and the file has no room for that name.
        if (name == u"1ejg.pdb" && command == u"Group") {
            QVERIFY(remarksOf(remarks).contains(QLatin1String("LEU,ILE 25 as LEU 25")));
            shown.front().replaceInStrings(QStringLiteral("LEU,ILE 25"), QStringLiteral("LEU 25"));
            bonds.front().replaceInStrings(QStringLiteral("LEU,ILE 25"), QStringLiteral("LEU 25"));
            bonds.front().sort();
        }

        trigger(*m_window, QStringLiteral("Delete"), QStringLiteral("All"));
        QCOMPARE(entriesInSpace().size(), std::size_t(0));
        openFile(path);
        const std::vector<QStringList> again = shownAtoms();
        QCOMPARE(again.size(), shown.size());
        for (std::size_t i = 0; i != again.size(); ++i)
            QCOMPARE(test_support::firstDifference(again[i], shown[i]), QString());
        const std::vector<QStringList> bondsAgain = shownBonds();
        qsizetype back = 0;
        for (std::size_t i = 0; i != bondsAgain.size(); ++i) {
            QCOMPARE(without(bonds[i], bondsAgain[i]), QStringList());
            back += without(bondsAgain[i], bonds[i]).size();
        }
        // Those that are found by distance come back, and that is said.
        QCOMPARE(back > 0, command == u"Bond");
        const QString comeBack = QStringLiteral("%1 bonds that were deleted come back").arg(back);
        QCOMPARE(remarksOf(remarks).contains(comeBack), back > 0);
        QCOMPARE(remarksOf(remarks).contains(QLatin1String("come back")), back > 0);
    }
};

REGISTER_TEST(SavedDeletionsTest)
#include "SavedDeletionsTest.moc"
