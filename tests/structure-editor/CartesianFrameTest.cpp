// "Cartesian": a frame of three axes, whatever else there is.
#include "Ancestry.h"
#include "CommandTools.h"
#include "DataPoint.h"
#include "Geometry.h"
#include "Kinds.h"
#include "Space.h"
#include "WindowTestCase.h"
#include "items/Building.h"
#include "items/SpaceLock.h"
#include "tree/TreeView.h"
#include "window/ListBox.h"

#include <memory>

using namespace command_tools;
using namespace window_tools;
using TAVIK::Compound;
using TAVIK::Space;
using TAVIK::Vertex;

namespace {

Compound* newest() {
    return *(Space::instance()->ChildEnd() - 1);
}

qsizetype topLevelItems() {
    return Space::instance()->ChildEnd() - Space::instance()->ChildBegin();
}

QString pointsOf(Compound* line) {
    QStringList points;
    for (const Vertex& point : *TAVIK::GetPolyLinePoints(line))
        points << QStringLiteral("%1,%2,%3%4")
                      .arg(point[0])
                      .arg(point[1])
                      .arg(point[2])
                      .arg(point.isValid() ? "" : " not valid");
    return points.join(u' ');
}

} // namespace

class CartesianFrameTest : public WindowTestCase {
    Q_OBJECT

    void showWindow() {
        m_window = std::make_unique<Vuxo>();
        m_window->resize(600, 600);
        m_window->show();
    }
    void addFrame() { trigger(*m_window, QStringLiteral("Add"), QStringLiteral("Cartesian")); }

    static void checkFrame(Compound* frame) {
        QCOMPARE(frame->GetName(), std::string("Cartesian"));
        QVERIFY(dynamic_cast<TAVIK::Composite*>(frame));
        QVERIFY(!TAVIK::GetParent(TAVIK::GetParent(frame)));
        const struct {
            const char* name;
            const char* points;
            Qt::GlobalColor color;
        } axes[] = {{"X", "0,0,0 20,0,0", Qt::red},
                    {"Y", "0,0,0 0,20,0", Qt::green},
                    {"Z", "0,0,0 0,0,20", Qt::blue}};
        QCOMPARE(frame->ChildEnd() - frame->ChildBegin(), 3);
        for (std::size_t i = 0; i != 3; ++i) {
            Compound* line = frame->ChildBegin()[i];
            QCOMPARE(line->GetName(), std::string(axes[i].name));
            QCOMPARE(pointsOf(line), axes[i].points);
            QCOMPARE(line->GetColor().toQColor(), QColor(axes[i].color));
        }
    }

private slots:
    void theFrameIsTheSameInAnEmptySpace() {
        showWindow();
        addFrame();
        QCOMPARE(topLevelItems(), 1);
        checkFrame(newest());
        QCOMPARE(entries(*m_window), QStringList(" _ Cartesian"));
        QVERIFY(rows(*m_window).isEmpty());
        QCOMPARE(highlighted(*m_window), -1);
    }

    void theFrameIsTheSameBesideASelectedStructure() {
        Compound* entry = addStructure("1abc");
        entry->SetSelected(true);
        showWindow();
        clickEntry(*m_window, 0);
        const QStringList before = rows(*m_window);
        addFrame();
        QCOMPARE(topLevelItems(), 2);
        checkFrame(newest());
        QVERIFY(entry->IsSelected());
        QVERIFY(!newest()->HasSelected());
        QCOMPARE(rows(*m_window), before);
        QCOMPARE(entries(*m_window), (QStringList{" X 1abc", " _ Cartesian"}));
        QCOMPARE(highlighted(*m_window), 0);
    }

    void itsRowsShowTheColoursOfTheAxes() {
        showWindow();
        addFrame();
        clickEntry(*m_window, 0);
        QCOMPARE(rows(*m_window), (QStringList{"Cartesian", " X", " Y", " Z"}));
        const struct {
            const char* name;
            Qt::GlobalColor color;
        } axes[] = {{"X", Qt::red}, {"Y", Qt::green}, {"Z", Qt::blue}};
        for (const auto& axis : axes) {
            const QModelIndex cell = rowAt(*m_window, {"Cartesian", axis.name}).siblingAtColumn(1);
            QCOMPARE(cell.data(Qt::BackgroundRole).value<QBrush>().color(), QColor(axis.color));
        }
    }

    void aSecondCallMakesASecondFrame() {
        showWindow();
        addFrame();
        Compound* first = newest();
        first->SetVisible(false);
        addFrame();
        QCOMPARE(topLevelItems(), 2);
        QVERIFY(newest() != first);
        checkFrame(first);
        checkFrame(newest());
        QCOMPARE(entries(*m_window), (QStringList{"O_ Cartesian", " _ Cartesian"}));
    }

    void openRowsStayOpen() {
        addStructure("1abc");
        showWindow();
        clickEntry(*m_window, 0);
        treeOf(*m_window)->expand(rowAt(*m_window, {"1abc", "A"}));
        addFrame();
        QVERIFY(treeOf(*m_window)->isExpanded(rowAt(*m_window, {"1abc", "A"})));
        QVERIFY(!treeOf(*m_window)->isExpanded(rowAt(*m_window, {"1abc", "A", "Groups"})));
    }

    void theOthersHearOnceAndAfterTheWindow() {
        showWindow();
        OtherPlugin other;
        QStringList seen;
        other.onAdd = [&] { seen = entries(*m_window); };
        addFrame();
        QCOMPARE(other.adds, 1);
        QCOMPARE(other.updates + other.deletes, 0);
        QCOMPARE(seen, QStringList(" _ Cartesian"));
    }

    void aRefusedGuardMakesNothing() {
        showWindow();
        OtherPlugin other;
        {
            const memory_host::SpaceLock lock;
            addFrame();
        }
        QCOMPARE(takeMessages(), QStringList("Cannot update CDB!"));
        QCOMPARE(topLevelItems(), 0);
        QCOMPARE(other.adds, 0);
        addFrame();
        checkFrame(newest());
    }

    void aFrameAddedInsideAnotherChangeIsRefused() {
        showWindow();
        {
            const DataPoint<Space> guard(nullptr, Space::instance());
            addFrame();
        }
        QCOMPARE(takeMessages(), QStringList("Cannot update CDB!"));
        QCOMPARE(topLevelItems(), 0);
    }
};

REGISTER_TEST(CartesianFrameTest)
#include "CartesianFrameTest.moc"
