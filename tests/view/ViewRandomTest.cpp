// Random changes of the data and random gestures, in any order: whatever came before, the window
// shows what a new reader and a new drawing make of the data.
#include "Geometry.h"
#include "ViewTestCase.h"
#include "scene/DataReader.h"

#include <limits>
#include <random>

using namespace view_tools;

namespace {

/// Everything below `item`, and itself.
void collectAll(TAVIK::Compound* item, Items& out) {
    if (item != space())
        out.push_back(item);
    for (TAVIK::Compound** child = item->ChildBegin(); child != item->ChildEnd(); ++child)
        if (*child)
            collectAll(*child, out);
}

class Chance {
public:
    explicit Chance(unsigned seed) : m_engine(seed) {}

    int below(int count) {
        return static_cast<int>(m_engine() % static_cast<unsigned>(std::max(count, 1)));
    }
    float place() {
        // Now and then what is no place, or one far away.
        switch (below(40)) {
        case 0:
            return std::numeric_limits<float>::quiet_NaN();
        case 1:
            return 1e30F;
        default:
            return static_cast<float>(below(400)) / 10 - 20;
        }
    }
    /// A random item; null without any.
    TAVIK::Compound* item() {
        Items all;
        collectAll(space(), all);
        return all.empty() ? nullptr : all[std::size_t(below(int(all.size())))];
    }
    template <class T> T* itemOf() {
        Items all;
        collectAll(space(), all);
        std::vector<T*> fit;
        for (TAVIK::Compound* each : all)
            if (auto* const found = dynamic_cast<T*>(each))
                fit.push_back(found);
        return fit.empty() ? nullptr : fit[std::size_t(below(int(fit.size())))];
    }

private:
    std::mt19937 m_engine;
};

TAVIK::SurfaceMesh mesh(Chance& chance) {
    TAVIK::SurfaceMesh made;
    const auto at = [&] { return static_cast<float>(chance.below(20)); };
    for (int i = 0; i != 3; ++i)
        made.vertices.push_back({at(), at(), at()});
    made.normals.assign(3, {0, 0, 1});
    made.triangles = {{0, 1, 2}};
    if (chance.below(2) == 0)
        made.colors = {0xffff0000U, 0xff00ff00U, 0xff0000ffU};
    return made;
}

void addEntry(Chance& chance) {
    const DataAdder<TAVIK::Space> guard(nullptr, TAVIK::Space::instance());
    Structure made("entry");
    const auto x = static_cast<float>(chance.below(20));
    for (int i = chance.below(8); i >= 0; --i) {
        std::vector<AtomSpec> atoms = alanine(x + 3.8F * static_cast<float>(i));
        atoms.push_back({"HB", "H", {chance.place(), chance.place(), chance.place()}, 1});
        atoms.push_back({"HB", "H", {chance.place(), chance.place(), chance.place()}, 2});
        made.add(chance.below(6) == 0 ? "HOH 1" : "ALA 1", atoms);
    }
    for (int i = chance.below(6); i > 0; --i) {
        const int a = chance.below(int(made.atoms.size()));
        const int b = chance.below(int(made.atoms.size()));
        if (a != b)
            made.bond(std::size_t(a), std::size_t(b));
    }
    made.attach();
    if (chance.below(2) == 0)
        TAVIK::DataMaker::makeSurface(made.entry, "surface", mesh(chance));
    if (chance.below(2) == 0)
        TAVIK::DataMaker::makePolyLine(made.entry, "line",
                                       {{1.0F, 2.0F, 3.0F, true}, {9.0F, 2.0F, 3.0F, true}});
}

void update(Chance& chance) {
    const DataPoint<TAVIK::Space> guard(nullptr, TAVIK::Space::instance());
    for (int i = chance.below(4); i >= 0; --i) {
        TAVIK::Compound* const item = chance.item();
        if (!item)
            return;
        switch (chance.below(6)) {
        case 0:
            item->SetSelected(chance.below(2) == 0);
            break;
        case 1:
            item->SetVisible(chance.below(3) != 0);
            break;
        case 2:
            item->SetColor(Color(0xff000000U + static_cast<unsigned>(chance.below(0xffffff))));
            break;
        case 3:
            item->NextModel();
            break;
        case 4:
            if (auto* const atom = chance.itemOf<TAVIK::Atom>())
                TAVIK::SetAtomPosition(
                    atom, TAVIK::Vertex(chance.place(), chance.place(), chance.place(), true));
            break;
        case 5:
            if (auto* const surface = chance.itemOf<TAVIK::Surface>())
                TAVIK::SetSurfaceMesh(surface, mesh(chance));
            break;
        }
    }
}

void destroy(Chance& chance) {
    const DataDelete<TAVIK::Space> guard(nullptr, TAVIK::Space::instance());
    for (int i = chance.below(3); i >= 0; --i)
        TAVIK::DataMaker::Destroy(chance.item());
}

} // namespace

class ViewRandomTest : public ViewTestCase {
    Q_OBJECT

    void gesture(Chance& chance) {
        const QPoint at(chance.below(canvas().width()), chance.below(canvas().height()));
        const auto button = std::array{Qt::LeftButton, Qt::MiddleButton,
                                       Qt::RightButton}[std::size_t(chance.below(3))];
        const auto modifiers = std::array<Qt::KeyboardModifiers, 3>{
            Qt::NoModifier, Qt::ShiftModifier, Qt::ControlModifier}[std::size_t(chance.below(3))];
        switch (chance.below(8)) {
        case 0:
            QTest::mouseClick(&canvas(), Qt::LeftButton, modifiers, at);
            break;
        case 1:
            QTest::mousePress(&canvas(), button, modifiers, at);
            hover(at + QPoint(chance.below(50), chance.below(50)));
            QTest::mouseRelease(&canvas(), button, modifiers, at);
            if (QWidget* const menu = QApplication::activePopupWidget())
                menu->close();
            break;
        case 2:
            hover(at);
            break;
        case 3:
            QTest::mouseDClick(&canvas(), Qt::LeftButton, {}, at);
            break;
        case 4:
            m_view->setRepresentation(view::Representation(chance.below(7)));
            break;
        case 5:
            m_view->resize(1 + chance.below(300), 40 + chance.below(200));
            break;
        case 6:
            m_view->setVisible(chance.below(2) == 0);
            break;
        case 7:
            TAVIK::Focus::set(chance.item(), nullptr, true);
            break;
        }
    }

    void step(Chance& chance) {
        switch (chance.below(8)) {
        case 0:
            addEntry(chance);
            break;
        case 1:
            destroy(chance);
            break;
        case 2:
        case 3:
            update(chance);
            break;
        default:
            gesture(chance);
            break;
        }
        if (chance.below(3) == 0)
            QCoreApplication::processEvents();
    }

    void compare() {
        show();
        view::DataReader reader;
        reader.read();
        const view::Order& order = canvas().order();
        QCOMPARE(order.snapshot.contents->positions.size(),
                 reader.snapshot().contents->positions.size());
        QVERIFY(*order.snapshot.marks == *reader.snapshot().marks);
        QVERIFY(*order.snapshot.selection == *reader.snapshot().selection);
        view::Order again = order;
        again.snapshot = reader.snapshot();
        const auto drawn = view::Drawing(1).draw(again);
        QVERIFY(drawn);
        QCOMPARE(canvas().drawn().image, drawn->image);
        QCOMPARE(canvas().drawn().picture->ids, drawn->picture->ids);
    }

private slots:
    void theWindowShowsTheDataAfterAnything_data() {
        QTest::addColumn<int>("seed");
        for (int seed = 1; seed <= 6; ++seed)
            QTest::addRow("seed %d", seed) << seed;
    }
    void theWindowShowsTheDataAfterAnything() {
        QFETCH(int, seed);
        Chance chance(static_cast<unsigned>(seed));
        show();
        for (int round = 0; round != 12; ++round) {
            for (int i = 0; i != 12; ++i)
                step(chance);
            compare();
            if (QTest::currentTestFailed())
                return;
        }
        takeHostLog();
    }
};

REGISTER_TEST(ViewRandomTest)
#include "ViewRandomTest.moc"
