// The built plug-in as a user meets it: the window's menu adds rotamers of what is selected and
// steps through them, the view shows the one that is active, and nothing is left when the plug-in
// goes.
#include "ActiveModel.h"
#include "CommandTools.h"
#include "Messages.h"
#include "PluginManager.h"
#include "Residues.h"
#include "TestSupport.h"
#include "WindowTools.h"
#include "files/Files.h"
#include "items/Invariants.h"
#include "items/SpaceLock.h"
#include "items/Subscribers.h"
#include "services/Log.h"
#include "services/PluginFolder.h"
#include "window/Canvas.h"
#include "window/View3D.h"
#include "window/Vuxo.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <dlfcn.h>
#include <memory>

using namespace rotamer_testing;
using window_tools::clickEntry;

namespace {

class Heard : public MessageObserver {
public:
    void messageShown(const QString& text) override { lines << text; }
    QStringList lines;
};

const QString nextLine = "Change to next model in selected Residues";
const QString previousLine = "Change to previous model in selected Residues";

} // namespace

class RotamerPluginTest : public test_support::TestCase {
    Q_OBJECT

    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<Vuxo> m_window;
    QString m_library;

    void load() {
        QCOMPARE(memory_host::loadPlugins(m_folder->path()), QStringList("Create/Rotamer"));
    }
    void open(const QString& file) {
        memory_host::openFile(structure(file).toStdString());
        m_window = std::make_unique<Vuxo>();
        m_window->show();
        clickEntry(*m_window, 0);
    }
    void rotamers() {
        command_tools::trigger(*m_window, "Add", "Rotamers");
        QCoreApplication::processEvents();
    }
    void next() { command_tools::trigger(*m_window, "Modify", "Next Model"); }
    void previous() { command_tools::trigger(*m_window, "Modify", "Prev Model"); }
    static void send(const char* command, void* data) {
        PluginManager::Command("Create", "Rotamer", "Tester", command, "", data);
    }

private slots:
    void init() override {
        TestCase::init();
        m_folder = std::make_unique<QTemporaryDir>();
        m_library = m_folder->filePath("Create/libRotamer.so");
        QVERIFY(QDir(m_folder->path()).mkdir("Create"));
        QVERIFY(QFile::copy(QStringLiteral(STAGE_PLUGINS "/Create/libRotamer.so"), m_library));
        load();
    }
    void cleanup() override {
        m_window.reset();
        memory_host::unloadPlugins();
        QCOMPARE(memory_host::checkInvariants(), std::vector<std::string>());
        TestCase::cleanup();
    }

    void theMenuAddsRotamersOfEachSelectedResidue() {
        open("1ejg.pdb");
        Heard heard;
        const auto before = described(residue("VAL 8"));
        for (const char* name : {"THR 1", "PRO 5", "LEU 18", "TYR 44"})
            residue(name)->SetSelected(true);
        rotamers();
        QCOMPARE(heard.lines.size(), 5 + 3);
        for (const char* name : {"THR 1", "LEU 18", "TYR 44"})
            QVERIFY(heard.lines.takeFirst().startsWith(
                QString("Rotamers of /1ejg/A/Groups/%1: model ").arg(name)));
        QCOMPARE(heard.lines[0], "No rotamers of PRO 5: its side chain is a ring, which has no "
                                 "angle to turn alone.");
        QVERIFY(heard.lines[1].startsWith("3 rotamers of THR 1 are its models "));
        QVERIFY(heard.lines[2].startsWith("5 rotamers of LEU 18 are its models "));
        QVERIFY(
            heard.lines[3].startsWith("4 rotamers of TYR 44 are its models 2 to 5; model 1 is"));
        QCOMPARE(heard.lines[4], "12 rotamers of 3 residues are their models; 1 residue has none.");
        QCOMPARE(described(residue("VAL 8")), before);
        QCOMPARE(takeHostLog().size(), 5 + 3);
    }

    void nextAndPrevModelStepThroughThem() {
        open("1ejg.pdb");
        Compound* const tyr = residue("TYR 44");
        tyr->SetSelected(true);
        rotamers();
        takeHostLog();
        for (const unsigned int model : {2U, 3U, 4U, 5U, 1U, 2U}) {
            next();
            QCOMPARE(TAVIK::GetActiveModel(tyr), model);
            for (const Compound* atom : atomsOf(tyr))
                QCOMPARE(atom->IsVisible(), modelOf(atom) == 0 || modelOf(atom) == model);
        }
        previous();
        previous();
        QCOMPARE(TAVIK::GetActiveModel(tyr), 5U);
        QCOMPARE(takeMessages(), QStringList(6, nextLine) + QStringList(2, previousLine));
    }

    // What is drawn where the end of the ring is, and where it was.
    void theViewFollows() {
        open("1ejg.pdb");
        view::View3D view;
        view.setRepresentation(view::Representation::BallAndStick);
        view.resize(500, 400);
        view.show();
        const auto settle = [&] {
            QCoreApplication::processEvents();
            QTRY_VERIFY_WITH_TIMEOUT(view.isUpToDate(), 20000);
        };
        settle();
        Compound* const tyr = residue("TYR 44");
        tyr->SetSelected(true);
        const auto picture = [&] {
            settle();
            return view.canvas()->drawn().image;
        };
        rotamers();
        takeHostLog();
        const QImage first = picture();
        QVector<QImage> pictures;
        for (int model = 2; model <= 6; ++model) {
            next();
            pictures << picture();
        }
        // Five models: the last step is back at the first.
        QVERIFY(pictures[4] == first);
        for (int i = 0; i != 4; ++i)
            for (int j = i + 1; j != 5; ++j)
                QVERIFY(pictures[i] != pictures[j]);
        previous();
        QVERIFY(picture() == pictures[3]);
        takeMessages();
    }

    void whatIsNoResidueIsSaid() {
        open("1ejg.pdb");
        Heard heard;
        Compound* const atom = atomsOf(residue("TYR 44"))[0];
        send("Rotamer", nullptr);
        send("Rotamer", atom);
        QCOMPARE(heard.lines, QStringList());
        const QStringList log = takeHostLog();
        QCOMPARE(log.size(), 2);
        for (const QString& line : log)
            QVERIFY2(line.contains("rotamers are added to a residue, which was not given"),
                     qPrintable(line));
    }

    void aLockedSpaceIsSaidForEachResidue() {
        open("1ejg.pdb");
        residue("TYR 44")->SetSelected(true);
        {
            const memory_host::SpaceLock lock;
            rotamers();
        }
        QCOMPARE(takeHostLog(),
                 QStringList("No rotamers of TYR 44: another change of the data is under way."));
        QVERIFY(modelsOf(residue("TYR 44")).empty());
    }

    // Before the event by which it handles what waits, and after it.
    void thePluginGoesWithAllThatItKeeps() {
        const std::size_t before = memory_host::subscriberCount();
        addEntry("1abc", {{"LEU 1", leucine()}, {"SER 2", serine(20)}});
        for (const bool isAtOnce : {true, false}) {
            send("Rotamer", residue(isAtOnce ? "LEU 1" : "SER 2"));
            QVERIFY(memory_host::subscriberCount() > before);
            if (!isAtOnce)
                QCoreApplication::processEvents();
            memory_host::unloadPlugins();
            void* const left =
                dlopen(QFile::encodeName(m_library).constData(), RTLD_LAZY | RTLD_NOLOAD);
            QVERIFY(!left);
            QCOMPARE(memory_host::subscriberCount(), before);
            QCoreApplication::processEvents(); // nothing of it is called any more
            window_tools::selectElsewhere(residue("LEU 1"), isAtOnce);
            QCOMPARE(takeHostLog().size(), isAtOnce ? 0 : 2);
            load();
        }
        QCOMPARE(modelsOf(residue("LEU 1")).size(), 0U);
        QCOMPARE(modelsOf(residue("SER 2")).size(), 4U);
    }

    void allSelectedResiduesAreOneChange() {
        open("1ejg.pdb");
        window_tools::OtherPlugin other;
        memory_host::setLogLevel(memory_host::LogLevel::Debug);
        for (const char* name : {"THR 1", "PRO 5", "LEU 18", "TYR 44"})
            residue(name)->SetSelected(true);
        rotamers();
        memory_host::setLogLevel(memory_host::LogLevel::Usual);
        QCOMPARE(other.adds, 1);
        QCOMPARE(other.updates + other.deletes, 0);
        QCOMPARE(takeHostLog().filter("Add 12 rotamers of 3 residues").size(), 1);
    }

    // Others destroy what waits, or what holds it; and a residue waits once.
    void whatIsDestroyedMeanwhileWaitsNoLonger() {
        open("1ejg.pdb");
        Heard heard;
        for (const char* name : {"THR 1", "LEU 18", "TYR 44", "LEU 18", "VAL 8"})
            send("Rotamer", residue(name));
        window_tools::destroyElsewhere(residue("TYR 44"));
        window_tools::destroyElsewhere(*residue("VAL 8")->ChildBegin()); // its backbone
        QCoreApplication::processEvents();
        QCOMPARE(heard.lines.size(), 2 + 4);
        QCOMPARE(heard.lines[2], "No rotamers of VAL 8: the atom N is missing.");
        QCOMPARE(heard.lines[5], "8 rotamers of 2 residues are their models; 1 residue has none.");
        QCOMPARE(modelsOf(residue("LEU 18")).size(), 6U);
        send("Rotamer", residue("ILE 7"));
        window_tools::destroyElsewhere(*TAVIK::Space::instance()->ChildBegin());
        QCoreApplication::processEvents();
        QCOMPARE(heard.lines.size(), 6);
        takeHostLog();
        takeMessages();
    }

    // Nobody waits: a command that others send changes nothing.
    void theCommandForWhatWaitsIsHarmless() {
        open("1ejg.pdb");
        Heard heard;
        send("Waiting", nullptr);
        QCOMPARE(heard.lines, QStringList());
        residue("TYR 44")->SetSelected(true);
        rotamers();
        QCOMPARE(heard.lines.size(), 2);
        send("Waiting", nullptr);
        QCOMPARE(heard.lines.size(), 2);
        takeHostLog();
    }
};

REGISTER_TEST(RotamerPluginTest)
#include "RotamerPluginTest.moc"
