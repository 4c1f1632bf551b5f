// Commands that go by what is selected, when the rows have not taken over yet what that is: they
// ask the items, and leave rows that are marked as the data are.
#include "ColourTestCase.h"
#include "DataAdder.h"
#include "DataMaker.h"
#include "DataPoint.h"
#include "SlotTools.h"
#include "Space.h"

using namespace colour_tools;
using namespace command_tools;
using namespace window_tools;
using TAVIK::Compound;
using TAVIK::DataMaker;
using TAVIK::Space;

namespace {

const Color base = seeThrough; // no item's default

/// How the selection changes without the rows' taking it over.
constexpr const char* ways[] = {"with an addition elsewhere", "with an addition below",
                                "a set's member elsewhere", "before the window hears"};

} // namespace

class StaleMarksTest : public ColourTestCase {
    Q_OBJECT

    std::unique_ptr<OtherPlugin> m_older;
    Compound* m_shown = nullptr;
    Compound* m_elsewhere = nullptr;
    Compound* m_set = nullptr;
    Compound* m_first = nullptr;
    Compound* m_second = nullptr;

    /// Unselects the first residue and selects the second, and what stands elsewhere.
    void swapSelection() {
        m_first->SetSelected(false);
        m_second->SetSelected(true);
        m_elsewhere->SetSelected(true);
    }

    /// The selection changes that way, and `command` runs before the window's rows know.
    void changeAndRun(const QString& way, const std::function<void()>& command) {
        if (way == "before the window hears") {
            m_older->onUpdate = [&] {
                m_older->onUpdate = {};
                command();
            };
            const DataPoint<Space> guard(nullptr, Space::instance());
            swapSelection();
            return;
        }
        {
            const DataAdder<Space> guard(nullptr, Space::instance());
            if (way != "a set's member elsewhere")
                swapSelection();
            else
                m_elsewhere->SetSelected(true);
            if (way == "with an addition below")
                DataMaker::makeCore(m_shown, "new", "Surface")->SetColor(base);
            else
                DataMaker::makeCore(Space::instance(), "new", "Surface");
        }
        command();
    }

    std::vector<Color> expectedColours(const Color& chosen) const {
        std::vector<Color> colours;
        for (const Compound* item : itemsOf(m_shown))
            colours.push_back(item->IsSelected() ? chosen : base);
        return colours;
    }

    static void addWays() {
        QTest::addColumn<QString>("way");
        for (const char* way : ways)
            QTest::newRow(way) << way;
    }

private slots:
    void init() override {
        TestCase::init();
        m_older = std::make_unique<OtherPlugin>();
        m_shown = addStructure("1abc");
        m_elsewhere = addEmpty("map", "Grid");
        {
            const DataAdder<Compound> guard(nullptr, m_shown);
            m_set = DataMaker::makeSet(m_shown, "set", {m_elsewhere});
        }
        m_first = itemAt(m_shown, {"A", "Groups", "MET 1"});
        m_second = itemAt(m_shown, {"A", "Groups", "HOH 2"});
        paint(itemsOf(m_shown), base);
        showWindow();
        selectElsewhere(m_first, true);
        QVERIFY(isMarked(*m_window, {"1abc", "A", "Groups", "MET 1"}));
    }
    void cleanup() override {
        m_older.reset();
        WindowTestCase::cleanup();
    }

    void setColourGoesToWhatIsSelectedInTheData_data() { addWays(); }
    void setColourGoesToWhatIsSelectedInTheData() {
        QFETCH(QString, way);
        changeAndRun(way, [this] { QVERIFY(run(setColor)); });
        QCOMPARE(coloursOf(itemsOf(m_shown)), expectedColours(teal));
        QVERIFY(m_set->GetColor() == teal);
        QCOMPARE(slot_tools::windowFaults(*m_window).join(u'\n'), QString());
        QCOMPARE(takeMessages(), QStringList{setColor.line});
    }

    void defaultColourGoesToWhatIsSelectedInTheData_data() { addWays(); }
    void defaultColourGoesToWhatIsSelectedInTheData() {
        QFETCH(QString, way);
        std::vector<Color> expected;
        changeAndRun(way, [&] {
            expected = expectedColours(teal);
            run(defaultColor);
        });
        const std::vector<Compound*> items = itemsOf(m_shown);
        for (std::size_t i = 0; i != items.size(); ++i)
            if (i < expected.size())
                QCOMPARE(items[i]->GetColor() == base, expected[i] == base);
        QVERIFY(!m_shown->HasSelected());
        QCOMPARE(slot_tools::windowFaults(*m_window).join(u'\n'), QString());
        QCOMPARE(takeMessages(), QStringList{defaultColor.line});
    }

    void showHideAndTheColoursThatFollowLeaveNoStaleMark_data() {
        QTest::addColumn<QString>("way");
        QTest::addColumn<QString>("menu");
        QTest::addColumn<QString>("label");
        for (const char* way : ways)
            for (const auto& [menu, label] :
                 {std::pair("Display", "Show"), {"Display", "Hide"}, {"Display", "Color by Temp"}})
                QTest::addRow("%s, %s", way, label) << way << menu << label;
    }
    void showHideAndTheColoursThatFollowLeaveNoStaleMark() {
        QFETCH(QString, way);
        QFETCH(QString, menu);
        QFETCH(QString, label);
        bool firstMarked = true;
        bool setMarked = false;
        changeAndRun(way, [&] {
            trigger(*m_window, menu, label);
            firstMarked = isMarked(*m_window, {"1abc", "A", "Groups", "MET 1"});
            setMarked = isMarked(*m_window, {"1abc", "set"});
        });
        QCOMPARE(firstMarked, m_first->IsSelected());
        QVERIFY(setMarked);
        QCOMPARE(slot_tools::windowFaults(*m_window).join(u'\n'), QString());
        takeMessages();
    }

    // The entry itself holds no selection then: a set adds nothing to where it stands.
    void aSetIsMarkedWithItsMemberElsewhereWhereNothingElseIsSelected() {
        selectElsewhere(m_first, false);
        QVERIFY(!m_shown->HasSelected());
        for (const bool on : {true, false}) {
            selectElsewhere(m_elsewhere, on);
            QVERIFY(!m_shown->HasSelected());
            QCOMPARE(m_set->IsSelected(), on);
            QCOMPARE(isMarked(*m_window, {"1abc", "set"}), on);
            QCOMPARE(slot_tools::windowFaults(*m_window).join(u'\n'), QString());
        }
    }

    // A subscriber that answers the change before the window has heard of it.
    void anAnswerToTheChangeIsSeenToo() {
        m_older->onUpdate = [this] {
            m_older->onUpdate = {};
            selectElsewhere(m_second, true);
        };
        selectElsewhere(m_first, false);
        QCOMPARE(slot_tools::windowFaults(*m_window).join(u'\n'), QString());
        QVERIFY(run(setColor));
        QCOMPARE(coloursOf(itemsOf(m_shown)), expectedColours(teal));
        QCOMPARE(takeMessages(), QStringList{setColor.line});
    }
};

REGISTER_TEST(StaleMarksTest)
#include "StaleMarksTest.moc"
