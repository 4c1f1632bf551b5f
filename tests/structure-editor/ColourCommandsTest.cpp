// The commands that colour items, through their menu entries and the colour dialog.
#include "Building.h"
#include "Colormap.h"
#include "Colouring.h"
#include "CommandTools.h"
#include "DataMaker.h"
#include "FailingMemory.h"
#include "Files.h"
#include "Kinds.h"
#include "Services.h"
#include "Space.h"
#include "Traversal.h"
#include "TreeView.h"
#include "WindowTestCase.h"

#include <QColorDialog>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <cmath>
#include <limits>
#include <optional>
#include <stdexcept>

using namespace command_tools;
using namespace window_tools;
using TAVIK::Compound;
using TAVIK::Space;

namespace {

const QString refused = QStringLiteral("Cannot update CDB!");
const QString deleted = QStringLiteral("Vuxo::commDelete(): Did somebody killed my data?");

struct Command {
    const char* menu;
    const char* label;
    const char* line; ///< written before anything else
};

const Command commands[] = {{"Display", "Set color", "ProteinPage::SelectedColor()"},
                            {"Display", "Default color", "ProteinPage::RestoreColor()"},
                            {"Display", "Color by Temp", "ProteinPage::SelectedColorTemp()"},
                            {"Modify", "Colour Atoms by Residue", "Color atoms by residue color"}};
const Command& setColor = commands[0];
const Command& defaultColor = commands[1];
const Command& byTemperature = commands[2];
const Command& byResidue = commands[3];

void addCommandRows() {
    QTest::addColumn<int>("index");
    for (int i = 0; i < int(std::size(commands)); ++i)
        QTest::newRow(commands[i].label) << i;
}

const Color teal(0xff008080U);
const Color seeThrough(0x40123456U);
const Color white(0xffffffffU);
const Color carbon(0xffc8c8c8U);
const Color blue(0xff0000ffU);
const Color red(0xffff0000U);

// An item and all that it holds, parents first.
std::vector<Compound*> itemsOf(Compound* root) {
    std::vector<Compound*> items{root};
    for (Compound** child = root->ChildBegin(); child != root->ChildEnd(); ++child) {
        const std::vector<Compound*> below = itemsOf(*child);
        items.insert(items.end(), below.begin(), below.end());
    }
    return items;
}

std::vector<Color> coloursOf(const std::vector<Compound*>& items) {
    std::vector<Color> colours;
    for (const Compound* item : items)
        colours.push_back(item->GetColor());
    return colours;
}

void paint(const std::vector<Compound*>& items, const Color& color) {
    for (Compound* item : items)
        item->SetColor(color);
}

// A structure of one residue of carbons with these temperature factors.
Compound* addWarm(const std::string& name, const std::vector<float>& temperatures) {
    ResidueSpec residue{"UNL 1", {}};
    for (const float temperature : temperatures)
        residue.atoms.push_back({"C", "C", {}, 0, temperature});
    return addChain(name, {residue});
}

// The host reads its data from another folder while one lives.
class DataFolder {
public:
    explicit DataFolder(const QString& folder) { memory_host::setDataFolder(folder); }
    ~DataFolder() { memory_host::setDataFolder(m_before); }
    DataFolder(const DataFolder&) = delete;
    DataFolder& operator=(const DataFolder&) = delete;

private:
    const QString m_before = memory_host::dataFolder();
};

} // namespace

class ColourCommandsTest : public WindowTestCase {
    Q_OBJECT

    // Runs a command; where it asks for a colour, it gets `answer`. Returns whether it asked.
    bool run(const Command& command, const std::function<void(QColorDialog&)>& answer) {
        return withDialog<QColorDialog>([&] { trigger(*m_window, command.menu, command.label); },
                                        answer);
    }
    bool run(const Command& command, const Color& chosen = teal) {
        return run(command, [&](QColorDialog& dialog) {
            dialog.setCurrentColor(chosen.toQColor());
            pressEnter(dialog);
        });
    }

private slots:
    // -- "Set color"

    void theColourDialogStartsWithOpaqueWhiteEveryTime() {
        addLine("1abc", {0})->SetSelected(true);
        showWindow();
        for (int turn = 0; turn < 2; ++turn)
            QVERIFY(run(setColor, [this](QColorDialog& dialog) {
                QCOMPARE(dialog.currentColor().rgba(), qRgba(255, 255, 255, 255));
                QVERIFY(dialog.testOption(QColorDialog::ShowAlphaChannel));
                QCOMPARE(dialog.parentWidget(), m_window.get());
                QVERIFY(dialog.isModal());
                QVERIFY(dialog.objectName().isEmpty());
                dialog.setCurrentColor(teal.toQColor());
                pressEnter(dialog);
            }));
        QCOMPARE(takeMessages(), (QStringList{setColor.line, setColor.line}));
    }

    void theChosenColourGoesToSelectedItemsOfEveryKind() {
        Compound* shown = addChain(
            "1abc", {{"R 1", {{"C1", "C", {}}, {"C2", "C", {}}}}, {"R 2", {{"C3", "C", {}}}}});
        Compound* other = addLine("2abc", {0});
        other->SetSelected(true);
        itemAt(shown, {"A", "Groups", "R 1"})->SetSelected(true);
        itemAt(shown, {"A", "Bonds"})->SetSelected(true);
        showWindow();
        QVERIFY(run(setColor));
        QStringList painted;
        for (const Compound* item : itemsOf(shown)) {
            QCOMPARE(item->GetColor() == teal, item->IsSelected());
            if (item->GetColor() == teal)
                painted << QString::fromLatin1(item->GetName());
        }
        QCOMPARE(painted, (QStringList{"R 1", "Group", "C1", "C2", "Bonds", "R 1 C1-C2"}));
        QCOMPARE(atomsOf(other)[0]->GetColor(), carbon);
        QCOMPARE(takeMessages(), QStringList{setColor.line});
    }

    void theSelectionStays() {
        Compound* shown = addLine("1abc", {0, 1});
        atomsOf(shown)[1]->SetSelected(true);
        showWindow();
        QVERIFY(run(setColor));
        QCOMPARE(selectedNames(shown), "C1");
        QCOMPARE(takeMessages().size(), 1);
    }

    void theChosenAlphaIsKept() {
        Compound* shown = addLine("1abc", {0});
        shown->SetSelected(true);
        showWindow();
        QVERIFY(run(setColor, seeThrough));
        QCOMPARE(atomsOf(shown)[0]->GetColor(), seeThrough);
        QCOMPARE(atomsOf(shown)[0]->GetColor().rgba(), 0x40123456U);
        QCOMPARE(takeMessages().size(), 1);
    }

    // Rows are visited, not data.
    void whatHasNoRowIsNotColoured() {
        Compound* shown = addLine("1abc", {0});
        showWindow();
        Compound* group = itemAt(shown, {"A", "Groups", "UNL 1", "Group"});
        memory_host::addAtom(group, {"X", "C", {}, 0.0F, 0}); // nobody is told
        shown->SetSelected(true);
        QVERIFY(run(setColor));
        QCOMPARE(coloursOf(atomsOf(shown)), (std::vector<Color>{teal, carbon}));
        QCOMPARE(takeMessages().size(), 1);
    }

    void rowsOfClosedBranchesAreVisitedToo() {
        Compound* shown = addLine("1abc", {0, 1});
        atomsOf(shown)[1]->SetSelected(true);
        showWindow();
        QVERIFY(!treeOf(*m_window)->isExpanded(rowAt(*m_window, {"1abc", "A"})));
        QVERIFY(run(setColor));
        QCOMPARE(coloursOf(atomsOf(shown)), (std::vector<Color>{carbon, teal}));
        QCOMPARE(takeMessages().size(), 1);
    }

    void aCancelledDialogChangesNothing_data() {
        QTest::addColumn<bool>("closed");
        QTest::newRow("Escape") << false;
        QTest::newRow("closed") << true;
    }
    void aCancelledDialogChangesNothing() {
        QFETCH(bool, closed);
        Compound* shown = addLine("1abc", {0});
        shown->SetSelected(true);
        const std::vector<Color> before = coloursOf(itemsOf(shown));
        showWindow();
        OtherPlugin other;
        QVERIFY(run(setColor, [&](QColorDialog& dialog) {
            dialog.setCurrentColor(teal.toQColor());
            if (closed)
                dialog.close();
            else
                pressEscape(dialog);
        }));
        QCOMPARE(coloursOf(itemsOf(shown)), before);
        QCOMPARE(other.updates, 0);
        QCOMPARE(takeMessages(), QStringList{setColor.line});
    }

    void theDialogComesAlsoWithoutATree() {
        Compound* shown = addLine("1abc", {0});
        shown->SetSelected(true);
        openWindow();
        OtherPlugin other;
        QVERIFY(run(setColor));
        QCOMPARE(atomsOf(shown)[0]->GetColor(), carbon);
        QCOMPARE(other.updates, 0);
        QCOMPARE(takeMessages(), QStringList{setColor.line});
    }

    void theGuardIsTakenAfterTheDialog() {
        Compound* shown = addLine("1abc", {0, 1});
        atomsOf(shown)[0]->SetSelected(true);
        showWindow();
        // While the question is open others may change what they like.
        QVERIFY(run(setColor, [&](QColorDialog& dialog) {
            selectElsewhere(atomsOf(shown)[0], false);
            selectElsewhere(atomsOf(shown)[1], true);
            dialog.setCurrentColor(teal.toQColor());
            pressEnter(dialog);
        }));
        QCOMPARE(coloursOf(atomsOf(shown)), (std::vector<Color>{carbon, teal}));
        // And a refusal that comes meanwhile holds.
        std::optional<memory_host::SpaceLock> lock;
        QVERIFY(run(setColor, [&](QColorDialog& dialog) {
            lock.emplace();
            pressEnter(dialog);
        }));
        QCOMPARE(coloursOf(atomsOf(shown)), (std::vector<Color>{carbon, teal}));
        QCOMPARE(takeMessages(), (QStringList{setColor.line, setColor.line, refused}));
    }

    void theShownItemDestroyedWhileTheDialogIsOpenEndsTheCommand() {
        Compound* shown = addLine("1abc", {0});
        addLine("2abc", {0})->SetSelected(true);
        shown->SetSelected(true);
        showWindow();
        OtherPlugin other;
        QVERIFY(run(setColor, [&](QColorDialog& dialog) {
            destroyElsewhere(shown);
            addLine("3abc", {0})->SetSelected(true); // maybe at the same address
            dialog.setCurrentColor(teal.toQColor());
            pressEnter(dialog);
        }));
        QCOMPARE(entries(*m_window), (QStringList{" X 2abc", " _ 3abc"}));
        QCOMPARE(rows(*m_window), QStringList());
        for (Compound* atom : atomsOf(Space::instance()))
            QCOMPARE(atom->GetColor(), carbon);
        QCOMPARE(other.updates, 0);
        QCOMPARE(takeMessages(), (QStringList{setColor.line, deleted}));
    }

    void aSelectedItemDestroyedWhileTheDialogIsOpenIsNoHarm() {
        Compound* shown = addLine("1abc", {0, 1});
        shown->SetSelected(true);
        showWindow();
        QVERIFY(run(setColor, [&](QColorDialog& dialog) {
            destroyElsewhere(atomsOf(shown)[0]);
            dialog.setCurrentColor(teal.toQColor());
            pressEnter(dialog);
        }));
        // The tree was emptied; without it there is nothing to colour.
        QCOMPARE(coloursOf(atomsOf(shown)), std::vector<Color>{carbon});
        QCOMPARE(takeMessages(), (QStringList{setColor.line, deleted}));
    }

    void whatTheTreeShowsWhenTheDialogEndsIsColoured() {
        Compound* shown = addLine("1abc", {0});
        Compound* other = addLine("2abc", {0});
        shown->SetSelected(true);
        other->SetSelected(true);
        showWindow();
        QVERIFY(run(setColor, [&](QColorDialog& dialog) {
            m_window->Populate(1);
            dialog.setCurrentColor(teal.toQColor());
            pressEnter(dialog);
        }));
        QCOMPARE(atomsOf(shown)[0]->GetColor(), carbon);
        QCOMPARE(atomsOf(other)[0]->GetColor(), teal);
        QCOMPARE(takeMessages().size(), 1);
    }

    void aWindowThatGoesWhileTheDialogIsOpenIsNoHarm() {
        Compound* shown = addLine("1abc", {0});
        shown->SetSelected(true);
        showWindow();
        QPointer<QColorDialog> asked;
        QVERIFY(run(setColor, [&](QColorDialog& dialog) {
            asked = &dialog;
            m_window.reset();
        }));
        QVERIFY(!asked);
        QCOMPARE(atomsOf(shown)[0]->GetColor(), carbon);
        QCOMPARE(takeMessages(), QStringList{setColor.line});
    }

    // -- "Default color"

    void everyKindGetsItsOwnDefaultColourBackAndTheSelectionIsCleared() {
        Compound* shown = addChain(
            "1abc", {{"R 1", {{"C1", "C", {}}, {"O1", "O", {}}}}, {"R 2", {{"C2", "C", {}}}}});
        const std::vector<Compound*> items = itemsOf(shown);
        const std::vector<Color> original = coloursOf(items);
        paint(items, teal);
        itemAt(shown, {"A", "Groups", "R 1"})->SetSelected(true);
        itemAt(shown, {"A", "Bonds"})->SetSelected(true);
        std::vector<bool> selected;
        for (const Compound* item : items)
            selected.push_back(item->IsSelected());
        showWindow();
        QVERIFY(!run(defaultColor));
        for (std::size_t i = 0; i != items.size(); ++i)
            QCOMPARE(items[i]->GetColor(), selected[i] ? original[i] : teal);
        QVERIFY(!shown->HasSelected());
        QVERIFY(!isMarked(*m_window, {"1abc", "A", "Groups", "R 1"}));
        QCOMPARE(entries(*m_window), QStringList{" _ 1abc"});
        QCOMPARE(takeMessages(), QStringList{defaultColor.line});
    }

    void theSelectionIsClearedInTheShownItemOnly() {
        addLine("1abc", {0})->SetSelected(true);
        Compound* other = addLine("2abc", {0});
        paint(atomsOf(other), teal);
        other->SetSelected(true);
        showWindow();
        run(defaultColor);
        QCOMPARE(entries(*m_window), (QStringList{" _ 1abc", " X 2abc"}));
        QCOMPARE(atomsOf(other)[0]->GetColor(), teal);
        QCOMPARE(takeMessages().size(), 1);
    }

    void withNothingSelectedTheTreeIsStillRefreshed() {
        Compound* shown = addLine("1abc", {0});
        Compound* other = addLine("2abc", {0});
        paint(atomsOf(shown), teal);
        showWindow();
        other->SetSelected(true); // nobody is told
        run(defaultColor);
        QCOMPARE(atomsOf(shown)[0]->GetColor(), teal);
        QCOMPARE(entries(*m_window), (QStringList{" _ 1abc", " X 2abc"}));
        QCOMPARE(takeMessages().size(), 1);
    }

    // -- "Color by Temp"

    void temperaturesAreColouredFromZeroToSixty_data() {
        QTest::addColumn<float>("temperature");
        QTest::addColumn<unsigned int>("rgba");
        constexpr float infinity = std::numeric_limits<float>::infinity();
        QTest::newRow("low end") << 0.0F << blue.rgba();
        QTest::newRow("high end") << 60.0F << red.rgba();
        QTest::newRow("between") << 15.0F << 0xff8181ffU; // entry 25 of 0 to 99
        QTest::newRow("below") << -5.0F << blue.rgba();
        QTest::newRow("above") << 60.5F << red.rgba();
        QTest::newRow("far above") << std::numeric_limits<float>::max() << red.rgba();
        QTest::newRow("infinite") << infinity << red.rgba();
        QTest::newRow("infinitely low") << -infinity << blue.rgba();
        QTest::newRow("no number") << std::numeric_limits<float>::quiet_NaN() << blue.rgba();
    }
    void temperaturesAreColouredFromZeroToSixty() {
        QFETCH(float, temperature);
        QFETCH(unsigned int, rgba);
        // Alone, so that no range could be found in the atoms.
        Compound* shown = addWarm("1abc", {temperature});
        shown->SetSelected(true);
        showWindow();
        QVERIFY(!run(byTemperature));
        QCOMPARE(QString::number(atomsOf(shown)[0]->GetColor().rgba(), 16),
                 QString::number(rgba, 16));
        QCOMPARE(takeMessages(), QStringList{byTemperature.line});
    }

    void onlySelectedAtomsAreColouredByTemperature() {
        Compound* shown = addWarm("1abc", {0, 60, 60});
        Compound* other = addWarm("2abc", {0});
        other->SetSelected(true);
        shown->SetSelected(true);
        atomsOf(shown)[2]->SetSelected(false);
        showWindow();
        run(byTemperature);
        QCOMPARE(coloursOf(atomsOf(shown)), (std::vector<Color>{blue, red, carbon}));
        QCOMPARE(atomsOf(other)[0]->GetColor(), carbon);
        for (const QStringList& path : {QStringList{"A"}, {"A", "Bonds"}, {"A", "Groups"}})
            QCOMPARE(itemAt(shown, path)->GetColor(), white);
        QCOMPARE(itemAt(shown, {"A", "Bonds"})->ChildBegin()[0]->GetColor(), white);
        QVERIFY(itemAt(shown, {"A", "Bonds"})->IsSelected());
        QCOMPARE(selectedNames(shown), "C C"); // the selection stays
        QCOMPARE(takeMessages().size(), 1);
    }

    void atomsWithoutARowAreColouredByTemperatureToo() {
        Compound* shown = addWarm("1abc", {0});
        showWindow();
        Compound* group = itemAt(shown, {"A", "Groups", "UNL 1", "Group"});
        memory_host::addAtom(group, {"X", "C", {}, 60.0F, 0}); // nobody is told
        shown->SetSelected(true);
        run(byTemperature);
        QCOMPARE(coloursOf(atomsOf(shown)), (std::vector<Color>{blue, red}));
        QCOMPARE(takeMessages().size(), 1);
    }

    void aColourMapThatIsMissingIsSaidAndTheAtomsKeepTheirColours() {
        Compound* shown = addWarm("1abc", {0, 60});
        shown->SetSelected(true);
        atomsOf(shown)[0]->SetColor(teal);
        showWindow();
        OtherPlugin other;
        const QTemporaryDir empty;
        {
            const DataFolder folder(empty.path());
            run(byTemperature);
        }
        QCOMPARE(coloursOf(atomsOf(shown)), (std::vector<Color>{teal, carbon}));
        const QStringList log = takeHostLog();
        QCOMPARE(log.size(), 1);
        QVERIFY2(log.front().startsWith("Colour map 'No name' " +
                                        empty.filePath(QStringLiteral("BlueRedTR.cm")) + ": "),
                 qPrintable(log.front()));
        QCOMPARE(other.updates, 1);
        // The next time it may be there.
        run(byTemperature);
        QCOMPARE(coloursOf(atomsOf(shown)), (std::vector<Color>{blue, red}));
        QCOMPARE(takeMessages(), (QStringList{byTemperature.line, byTemperature.line}));
    }

    void aColourMapThatIsDamagedIsSaidWithItsLine_data() {
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<QString>("said"); // behind the file's name
        const auto row = [](const char* name, const QByteArray& content, const char* said) {
            QTest::newRow(name) << content << said;
        };
        const QByteArray end = "1 255 0 0\n";
        row("a word", "0 0 0 255\n0.5 255 255 white\n" + end, ", line 2: 'white' is no whole");
        row("empty", "", ": it holds no stops");
        row("comments alone", "# no\n\n  # stops\n", ": it holds no stops");
        row("zero bytes", QByteArray(100, '\0'), ", line 1: ");
        row("noise", QByteArray("\x89PNG\r\n\x1a\n\xff\xfe\x00\x01", 12), ", line 1: ");
        row("one endless line", QByteArray(100'000, '7'), ", line 1: ");
        row("no number as position", "0 0 0 255\nnan 0 0 0\n" + end, ", line 2: 'nan'");
        row("infinite position", "0 0 0 255\n1e400 0 0 0\n" + end, ", line 2: '1e400'");
        row("comma", "0 0 0 255\n0,5 0 0 0\n" + end, ", line 2: '0,5'");
        row("cut off", "0 0 0 255\n0.5 255", ", line 2: a stop needs");
        row("starts late", "0.1 0 0 255\n" + end, ", line 1: the first stop");
        row("ends early", "0 0 0 255\n0.9 0 0 0\n", ", line 2: the last stop");
        row("goes back", "0 0 0 0\n0.5 0 0 0\n0.4 0 0 0\n" + end, ", line 3: the positions");
        row("too bright", "0 0 0 256\n" + end, ", line 1: '256'");
        row("negative", "0 0 -1 255\n" + end, ", line 1: '-1'");
        row("a fifth value", "0 0 0 255 255 1\n" + end, ", line 1: '1' stands behind");
    }
    void aColourMapThatIsDamagedIsSaidWithItsLine() {
        QFETCH(QByteArray, content);
        QFETCH(QString, said);
        Compound* shown = addWarm("1abc", {0, 60});
        shown->SetSelected(true);
        showWindow();
        const QTemporaryDir folder;
        QFile file(folder.filePath(QStringLiteral("BlueRedTR.cm")));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(content);
        file.close();
        const DataFolder damaged(folder.path());
        run(byTemperature);
        QCOMPARE(coloursOf(atomsOf(shown)), (std::vector<Color>{carbon, carbon}));
        const QStringList log = takeHostLog();
        QCOMPARE(log.size(), 1);
        QVERIFY2(log.front().contains("BlueRedTR.cm" + said), qPrintable(log.front()));
        QVERIFY(log.front().size() < 1000);
        QCOMPARE(takeMessages().size(), 1);
    }

    void aFolderInTheColourMapsPlaceIsSaid() {
        Compound* shown = addWarm("1abc", {0, 60});
        shown->SetSelected(true);
        showWindow();
        const QTemporaryDir folder;
        QVERIFY(QDir(folder.path()).mkdir(QStringLiteral("BlueRedTR.cm")));
        const DataFolder damaged(folder.path());
        run(byTemperature);
        QCOMPARE(coloursOf(atomsOf(shown)), (std::vector<Color>{carbon, carbon}));
        const QStringList log = takeHostLog();
        QCOMPARE(log.size(), 1);
        QVERIFY2(log.front().contains("BlueRedTR.cm: "), qPrintable(log.front()));
        QCOMPARE(takeMessages().size(), 1);
    }

    void aRefusedCommandDoesNotEvenReadTheColourMap() {
        addWarm("1abc", {0})->SetSelected(true);
        showWindow();
        const QTemporaryDir empty;
        const DataFolder folder(empty.path());
        const memory_host::SpaceLock lock;
        run(byTemperature);
        QCOMPARE(takeHostLog(), QStringList());
        QCOMPARE(takeMessages(), (QStringList{byTemperature.line, refused}));
    }

    void aRealStructureIsColouredAsTheMapSays() {
        memory_host::openFile(structure("1ubq.pdb").toStdString());
        Compound* shown = *Space::instance()->ChildBegin();
        shown->SetSelected(true);
        showWindow();
        run(byTemperature);
        Colormap map("BlueRedTR.cm", 100, "expected");
        map.setMinMax(0.0F, 60.0F);
        int different = 0;
        Color last;
        for (const Compound* item : atomsOf(shown)) {
            const auto* atom = dynamic_cast<const TAVIK::Atom*>(item);
            QVERIFY(atom);
            const Color expected = map.lookupValue(atom->GetTemperature());
            QCOMPARE(atom->GetColor(), expected);
            different += expected != last;
            last = expected;
        }
        QVERIFY(different > 100);
        QCOMPARE(takeMessages().size(), 1);
    }

    // -- "Colour Atoms by Residue"

    void allAtomsOfSelectedResiduesTakeTheResiduesColour() {
        const std::vector<AtomSpec> two = {{"C1", "C", {}}, {"C2", "C", {}}};
        Compound* shown = addChain("1abc", {{"R 1", two}, {"R 2", two}, {"R 3", two}});
        Compound* other = addChain("2abc", {{"R 1", two}});
        Compound* residues = itemAt(shown, {"A", "Groups"});
        residues->ChildBegin()[0]->SetColor(teal);
        residues->ChildBegin()[1]->SetColor(seeThrough);
        residues->ChildBegin()[2]->SetColor(red);
        itemAt(other, {"A", "Groups", "R 1"})->SetColor(red);
        residues->ChildBegin()[0]->SetSelected(true);
        residues->ChildBegin()[1]->SetSelected(true);
        atomsOf(shown)[4]->SetSelected(true); // one atom is not its residue
        other->SetSelected(true);
        showWindow();
        QVERIFY(!run(byResidue));
        QCOMPARE(coloursOf(atomsOf(shown)),
                 (std::vector<Color>{teal, teal, seeThrough, seeThrough, carbon, carbon}));
        QCOMPARE(coloursOf(atomsOf(other)), (std::vector<Color>{carbon, carbon}));
        QCOMPARE(itemAt(shown, {"A", "Groups", "R 1", "Group"})->GetColor(), white);
        QCOMPARE(takeMessages(), QStringList{byResidue.line});
    }

    // Which residues count as selected is the host's to say; of one that does, all atoms follow.
    void unselectedAtomsOfAResidueTakeItsColourToo() {
        Compound* shown = addLine("1abc", {0, 1, 2});
        Compound* residue = itemAt(shown, {"A", "Groups", "UNL 1"});
        atomsOf(shown)[1]->SetSelected(true);
        residue->SetColor(seeThrough);
        ColorGrp2Atom(residue);
        QCOMPARE(coloursOf(atomsOf(shown)), std::vector<Color>(3, seeThrough));
        QCOMPARE(residue->GetColor(), seeThrough);
        QCOMPARE(selectedNames(shown), "C1");
    }

    void highlightsAreOffOnlyWhileAtomsAreColouredByResidue_data() {
        QTest::addColumn<bool>("before");
        QTest::addColumn<QString>("how");
        for (const bool before : {true, false})
            for (const char* how : {"done", "refused", "without a tree", "nothing selected",
                                    "a handler throws", "a handler destroys the shown item",
                                    "a handler ends the window", "out of memory"})
                QTest::addRow("%s, %s", before ? "on" : "off", how) << before << how;
    }
    void highlightsAreOffOnlyWhileAtomsAreColouredByResidue() {
        QFETCH(bool, before);
        QFETCH(QString, how);
        Compound* shown = addLine("1abc", {0, 1});
        addEmpty(std::string(20'000, 'x'));
        shown->SetSelected(how != "nothing selected");
        if (how == "without a tree")
            openWindow();
        else
            showWindow();
        std::optional<memory_host::SpaceLock> lock;
        std::optional<FailingMemory> memory;
        OtherPlugin other;
        bool during = true;
        other.onUpdate = [&] {
            during = Space::GetShowSelection();
            if (how == "a handler throws")
                throw std::runtime_error("cannot take this");
            if (how == "a handler destroys the shown item")
                destroyElsewhere(shown);
            if (how == "a handler ends the window")
                m_window.reset();
        };
        const bool original = Space::GetShowSelection();
        Space::SetShowSelection(before);
        if (how == "refused")
            lock.emplace();
        if (how == "out of memory")
            memory.emplace(0, 1);
        run(byResidue);
        const bool after = Space::GetShowSelection();
        const bool failed = how == "out of memory" && FailingMemory::refusals() > 0;
        memory.reset();
        Space::SetShowSelection(original);
        QCOMPARE(after, before);
        QStringList expected{byResidue.line};
        if (how == "refused")
            expected << refused;
        if (how == "a handler destroys the shown item")
            expected << deleted;
        QCOMPARE(takeMessages(), expected);
        const bool changes = how != "refused" && how != "without a tree";
        QCOMPARE(other.updates, changes ? 1 : 0);
        QCOMPARE(during, !changes);
        const QStringList log = takeHostLog();
        QCOMPARE(failed, how == "out of memory");
        QCOMPARE(log.size(), failed || how == "a handler throws" ? 1 : 0);
        if (failed)
            QVERIFY2(log.front().contains(" SelectedColorGrp2Atom failed: "),
                     qPrintable(log.front()));
    }

    // -- all of them

    void theLineIsWrittenAlsoWithoutATreeAndNothingElseHappens_data() { addCommandRows(); }
    void theLineIsWrittenAlsoWithoutATreeAndNothingElseHappens() {
        QFETCH(int, index);
        Compound* shown = addWarm("1abc", {0});
        shown->SetSelected(true);
        itemAt(shown, {"A", "Groups", "UNL 1"})->SetColor(red);
        paint(atomsOf(shown), teal);
        openWindow();
        OtherPlugin other;
        const memory_host::SpaceLock lock; // a guard would be refused, and that said
        run(commands[index]);
        QCOMPARE(takeMessages(), QStringList{commands[index].line});
        QCOMPARE(atomsOf(shown)[0]->GetColor(), teal);
        QCOMPARE(selectedNames(shown), "C");
        QCOMPARE(other.updates, 0);
    }

    void withNothingSelectedNothingIsColoured_data() { addCommandRows(); }
    void withNothingSelectedNothingIsColoured() {
        QFETCH(int, index);
        Compound* shown = addWarm("1abc", {0, 60});
        itemAt(shown, {"A", "Groups", "UNL 1"})->SetColor(red);
        const std::vector<Color> before = coloursOf(itemsOf(shown));
        showWindow();
        OtherPlugin other;
        run(commands[index]);
        QCOMPARE(coloursOf(itemsOf(shown)), before);
        QCOMPARE(other.updates, 1);
        QCOMPARE(takeMessages(), QStringList{commands[index].line});
    }

    void aRefusedCommandChangesNothingAndSaysSoOnce_data() { addCommandRows(); }
    void aRefusedCommandChangesNothingAndSaysSoOnce() {
        QFETCH(int, index);
        Compound* shown = addWarm("1abc", {0, 60});
        shown->SetSelected(true);
        itemAt(shown, {"A", "Groups", "UNL 1"})->SetColor(red);
        paint(atomsOf(shown), seeThrough);
        const std::vector<Color> before = coloursOf(itemsOf(shown));
        showWindow();
        OtherPlugin other;
        {
            const memory_host::SpaceLock lock;
            QCOMPARE(run(commands[index]), index == 0);
        }
        QCOMPARE(takeMessages(), (QStringList{commands[index].line, refused}));
        QCOMPARE(coloursOf(itemsOf(shown)), before);
        QCOMPARE(selectedNames(shown), "C C");
        QCOMPARE(other.updates + other.adds + other.deletes, 0);
        run(commands[index]);
        QVERIFY(coloursOf(itemsOf(shown)) != before);
        QCOMPARE(other.updates, 1);
        takeMessages();
    }

    void theWindowIsRefreshedBeforeOthersHear_data() { addCommandRows(); }
    void theWindowIsRefreshedBeforeOthersHear() {
        QFETCH(int, index);
        addWarm("1abc", {0, 60})->SetSelected(true);
        Compound* second = addLine("2abc", {0});
        showWindow();
        second->SetVisible(false); // nobody is told
        OtherPlugin other;
        QStringList seen;
        other.onUpdate = [&] { seen = entries(*m_window); };
        run(commands[index]);
        QCOMPARE(seen, (QStringList{&commands[index] == &defaultColor ? " _ 1abc" : " X 1abc",
                                    "O_ 2abc"}));
        QCOMPARE(other.updates, 1);
        takeMessages();
    }

    void aWindowThatAHandlerEndsIsNoHarm_data() { addCommandRows(); }
    void aWindowThatAHandlerEndsIsNoHarm() {
        QFETCH(int, index);
        addWarm("1abc", {0, 60})->SetSelected(true);
        showWindow();
        OtherPlugin other;
        other.onUpdate = [&] { m_window.reset(); };
        run(commands[index]);
        QVERIFY(!m_window);
        takeMessages();
    }
};

REGISTER_TEST(ColourCommandsTest)
#include "ColourCommandsTest.moc"
