// The labels of changes in the log, which takes them at debug level when a change is done.
#include "Changed.h"
#include "DataAdder.h"
#include "DataPoint.h"
#include "FailingMemory.h"
#include "Sample.h"
#include "Subscriber.h"
#include "TestSupport.h"
#include "files/Files.h"
#include "items/SpaceLock.h"
#include "services/Log.h"

#include <QApplication>
#include <QMenu>
#include <QTimer>

#include <limits>
#include <stdexcept>

using namespace memory_host;
using namespace TAVIK;

namespace {

// Writes down what the log has when it is told of a change, and may answer with one of its own.
class Reader : public Subscriber {
public:
    void commUpdate() override {
        m_log = test_support::TestCase::takeHostLog();
        if (std::exchange(m_answers, false))
            const DataPointBase guard(this, Publisher::Update, "Answer");
    }
    void commAdd() override {}
    void commDelete() override {}

    QStringList m_log;
    bool m_answers = false;
};

} // namespace

class ChangeLogTest : public test_support::TestCase {
    Q_OBJECT
private slots:
    void init() override {
        TestCase::init();
        setLogLevel(LogLevel::Debug);
    }
    void cleanup() override {
        setLogLevel(LogLevel::Usual);
        TestCase::cleanup();
    }

    void aLabelIsWrittenWhenTheGuardEnds() {
        {
            const DataPoint<Compound> guard(nullptr, space(), "Hide 40 atoms");
            QCOMPARE(takeHostLog(), QStringList());
        }
        QCOMPARE(takeHostLog(), QStringList{"Hide 40 atoms"});
    }

    void theLastLabelIsWritten() {
        {
            DataAdder<Compound> guard(nullptr, space(), "Define set");
            guard.setLabel("Define set 1");
            guard.setLabel("Define set caf\xe9");
        }
        QCOMPARE(takeHostLog(), QStringList{QString::fromLatin1("Define set caf\xe9")});
    }

    void noLabelIsNoLine() {
        { const DataPoint<Compound> guard(nullptr, space()); }
        { const DataPointBase guard(nullptr, Publisher::Update); }
        { const DataPointBase guard(nullptr, Publisher::Update, ""); }
        {
            DataPointBase guard(nullptr, Publisher::Update, "Select atoms");
            guard.setLabel("");
        }
        QCOMPARE(takeHostLog(), QStringList());
    }

    void aLabelIsOfOneChangeOnly() {
        { const DataPointBase guard(nullptr, Publisher::Update, "Hide"); }
        { const DataPointBase guard(nullptr, Publisher::Update); }
        QCOMPARE(takeHostLog(), QStringList{"Hide"});
    }

    void atTheUsualLevelThereIsNoLine() {
        setLogLevel(LogLevel::Usual);
        { const DataPointBase guard(nullptr, Publisher::Update, "Hide"); }
        QCOMPARE(takeHostLog(), QStringList());
    }

    void aRefusedChangeIsNoLine() {
        {
            const SpaceLock lock;
            DataPointBase guard(nullptr, Publisher::Update, "Hide");
            guard.setLabel("Hide 40 atoms");
        }
        {
            const DataPointBase outer(nullptr, Publisher::Update, "Outer");
            DataPointBase inner(nullptr, Publisher::Update, "Inner");
            inner.setLabel("Inner still");
        }
        QCOMPARE(takeHostLog(), QStringList{"Outer"});
    }

    void aChangeThatFailedIsNoLine() {
        const auto fail = [] {
            const DataPointBase guard(nullptr, Publisher::Update, "Hide");
            throw std::runtime_error("stop");
        };
        QVERIFY_EXCEPTION_THROWN(fail(), std::runtime_error);
        QCOMPARE(takeHostLog(), QStringList());
        // A change while another exception is on its way fails no more than any other.
        struct Restores {
            ~Restores() { const DataPointBase guard(nullptr, Publisher::Update, "Restore"); }
        };
        const auto restore = [] {
            const Restores atEnd;
            throw std::runtime_error("stop");
        };
        QVERIFY_EXCEPTION_THROWN(restore(), std::runtime_error);
        QCOMPARE(takeHostLog(), QStringList{"Restore"});
    }

    void aChangeIsLoggedBeforeOthersHearOfIt() {
        Reader reader;
        reader.m_answers = true;
        { const DataPointBase guard(nullptr, Publisher::Update, "Hide"); }
        QCOMPARE(reader.m_log, QStringList{"Hide"});
        QCOMPARE(takeHostLog(), QStringList{"Answer"});
    }

    void withoutMemoryALabelIsWhatItWas() {
        const std::string longer(100, 'x');
        {
            DataPointBase guard(nullptr, Publisher::Update, "Hide");
            const FailingMemory memory(0, std::numeric_limits<int>::max(), 0);
            guard.setLabel(longer);
        }
        QCOMPARE(takeHostLog(), QStringList{"Hide"});
    }

    void openingIsNamedAfterWhatWasOpened() {
        openFile(structure("1ubq.pdb").toStdString());
        openFile(structure("1d3z.pdb").toStdString());
        QStringList labels = takeHostLog();
        labels.removeIf([](const QString& line) { return !line.startsWith("Open "); });
        QCOMPARE(labels, (QStringList{"Open 1ubq", "Open 10 entries"}));
    }

    void theItemMenuNamesTheItem_data() {
        QTest::addColumn<QString>("choice");
        QTest::addColumn<bool>("before"); ///< whether the residue is hidden and selected
        QTest::addColumn<QString>("label");
        QTest::newRow("hide") << "Hide" << false << "Hide residue ALA 1";
        QTest::newRow("show") << "Show" << true << "Show residue ALA 1";
        QTest::newRow("select") << "Select" << false << "Select residue ALA 1";
        QTest::newRow("unselect") << "Unselect" << true << "Unselect residue ALA 1";
        QTest::newRow("color") << "Default color" << false << "Default color of residue ALA 1";
    }
    void theItemMenuNamesTheItem() {
        QFETCH(QString, choice);
        QFETCH(bool, before);
        QFETCH(QString, label);
        const Sample sample;
        sample.residues[0]->SetVisible(!before);
        sample.residues[0]->SetSelected(before);
        QTimer::singleShot(0, this, [&] {
            auto* const menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
            for (QAction* action : menu->actions())
                if (action->text() == choice)
                    QTest::mouseClick(menu, Qt::LeftButton, {},
                                      menu->actionGeometry(action).center());
        });
        sample.residues[0]->ShowMenu();
        QCOMPARE(takeHostLog(), QStringList{label});
    }
};

REGISTER_TEST(ChangeLogTest)
#include "ChangeLogTest.moc"
