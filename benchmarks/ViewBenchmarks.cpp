#include "Contest.h"
#include "RealStructures.h"
#include "Space.h"
#include "Traversal.h"
#include "Works.h"
#include "files/Files.h"
#include "scene/DataReader.h"
#include "scene/SceneMaker.h"
#include "window/Canvas.h"
#include "window/View3D.h"
#include "window/Vuxo.h"

#include <QApplication>
#include <QTest>

#include <algorithm>
#include <array>
#include <ctime>
#include <functional>
#include <memory>
#include <stdexcept>

namespace benchmarks {

namespace {

using view::Representation;

/// Lets the window work until the data are read and the last order is drawn, which came after a
/// picture of that number.
void waitForPicture(const view::View3D& window, std::uint64_t after) {
    while (!window.isUpToDate() || window.canvas()->drawn().number <= after)
        QApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents);
}

/// A window of the view as the workbench shows it, with its first picture.
std::unique_ptr<view::View3D> shownView(Representation representation) {
    auto window = std::make_unique<view::View3D>();
    window->setRepresentation(representation);
    window->resize(1280, 800);
    window->show();
    waitForPicture(*window, 0);
    return window;
}

/// A place where an atom is seen, in the middle of one half of the window.
QPoint placeOfAtom(const view::Canvas& canvas, bool isInRightHalf) {
    const QPoint middle(canvas.width() * (isInRightHalf ? 5 : 3) / 8, canvas.height() / 2);
    for (int away = 0; away < middle.x(); ++away)
        for (const QPoint& by : {QPoint(away, 0), QPoint(-away, 0), QPoint(0, away)})
            if (canvas.idAt(middle + by) != view::noId)
                return middle + by;
    throw std::runtime_error("the view shows no atom in the middle");
}

double threadTime() {
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return double(now.tv_sec) + double(now.tv_nsec) * 1e-9;
}

/// Until the window is up to date; seconds.
double longestPause(const view::View3D& window) {
    double longest = 0;
    while (!window.isUpToDate()) {
        const double before = threadTime();
        QApplication::processEvents();
        longest = std::max(longest, threadTime() - before);
    }
    return longest;
}

class Following {
public:
    Following(const std::string& path, int turns) : m_path(path), m_turns(turns) {}
    ~Following() { emptySpace(); }

    void memory(Representation representation, const std::string& name) {
        const std::string work = "the view with its picture of " + name;
        if (!isWanted(work))
            return;
        open();
        const double before = heapBytes();
        const auto window = shownView(representation);
        add({.work = work,
             .size = m_atoms.size(),
             .items = m_atoms.size(),
             .itemName = "atom",
             .peer = "",
             .target = m_atoms.size() > 500'000 ? "at most 130 bytes" : "",
             .ourBytes = heapBytes() - before,
             .theirBytes = -1});
    }

    /// How long the window is held at most while it reads the data, in processor time.
    void pauses(Representation representation, const std::string& name) {
        const std::string while_ = "longest pause of the view of " + name + " while it reads ";
        if (!isWanted(while_ + "everything") && !isWanted(while_ + "colours and flags"))
            return;
        open();
        const auto window = shownView(representation);
        const auto measure = [&](const std::string& what, const std::function<void()>& change) {
            if (!isWanted(while_ + what))
                return;
            run({.work = while_ + what,
                 .size = m_atoms.size(),
                 .items = m_atoms.size(),
                 .itemName = "atom",
                 .target = "at most 15 ms",
                 .ours = {change, [&] { setTime(longestPause(*window)); }, {}}},
                m_turns);
        };
        measure("everything", [&] { window->commAdd(); });
        measure("colours and flags", [&] {
            m_item->SetSelected(!m_item->IsSelected());
            window->commUpdate();
        });
    }

    /// A click in the view, while the Structure Editor shows the entry.
    void click(Representation representation, const std::string& name) {
        const std::string work = "click on an atom of " + name + ", outlined in the view";
        if (!isWanted(work))
            return;
        open();
        Vuxo editor;
        editor.Populate(0);
        editor.show();
        const auto window = shownView(representation);
        view::Canvas& canvas = *window->canvas();
        const std::array<QPoint, 2> places = {placeOfAtom(canvas, false),
                                              placeOfAtom(canvas, true)};
        std::size_t turn = 0;
        run({.work = work,
             .size = m_atoms.size(),
             .items = m_atoms.size(),
             .itemName = "atom",
             .target = "at most 150 ms",
             .ours = {{},
                      [&] {
                          const std::uint64_t before = canvas.order().number;
                          QTest::mouseClick(&canvas, Qt::LeftButton, {}, places[turn++ % 2]);
                          waitForPicture(*window, before);
                      },
                      [&] {
                          if (canvas.drawn().image == canvas.drawn().picture->image)
                              throw std::runtime_error("the click outlined nothing");
                      }}},
            std::max(m_turns, 4));
    }

    /// From the notification of a command to the scene that is drawn.
    void commands(Representation representation, const std::string& name) {
        const auto select = [this](std::size_t step) {
            m_item->SetVisible(true);
            m_item->SetSelected(step == 1);
            for (std::size_t i = 0; step > 1 && i < m_atoms.size(); i += step)
                m_atoms[i]->SetSelected(true);
        };
        follow("\"Color by Temp\" of everything", representation, name, &Vuxo::SelectedColorTemp,
               [=] { select(1); });
        follow("\"Hide\" of every tenth", representation, name, &Vuxo::SelectedHide,
               [=] { select(10); });
        follow("\"Invert\" of every tenth", representation, name, &Vuxo::SelectedToggle,
               [=] { select(10); });
        follow("\"Next Model\" of every residue", representation, name, &Vuxo::SelectedNextModel,
               [=] { select(1); });
    }

private:
    /// Opens the file for the first work that is wanted.
    void open() {
        if (m_item)
            return;
        memory_host::openFile(m_path);
        m_item = *TAVIK::Space::instance()->ChildBegin();
        TAVIK::GetAtoms(m_item, m_atoms, true);
    }

    void follow(const std::string& command, Representation representation, const std::string& name,
                void (Vuxo::*slot)(), const std::function<void()>& select) {
        const std::string work = "the view of " + name + " follows " + command;
        if (!isWanted(work))
            return;
        open();
        Vuxo editor;
        editor.Populate(0);
        view::DataReader reader;
        reader.read();
        view::SceneMaker maker;
        const view::Look look = {.representation = representation};
        // One picture is on the screen while the next one is made.
        std::shared_ptr<const view::Scene> scene = maker.scene(reader.snapshot(), look);
        run({.work = work,
             .size = m_atoms.size(),
             .items = m_atoms.size(),
             .itemName = "atom",
             .target = "at most 50 ms",
             .ours = {[&] {
                          m_item->SetSelected(true);
                          editor.SelectedUnColor();
                          select();
                          reader.refresh();
                          scene = maker.scene(reader.snapshot(), look);
                          editor.commUpdate();
                          (editor.*slot)();
                      },
                      [&] {
                          reader.refresh();
                          scene = maker.scene(reader.snapshot(), look);
                      },
                      {}}},
            m_turns);
    }

    std::string m_path;
    int m_turns;
    TAVIK::Compound* m_item = nullptr; ///< null until the file is open
    std::vector<TAVIK::Compound*> m_atoms;
};

} // namespace

void benchmarkView(const std::string& path, int turns) {
    Following following(path, turns);
    for (const auto& [representation, name] : {std::pair(Representation::Spheres, "spheres"),
                                               std::pair(Representation::Ribbon, "ribbons")}) {
        following.memory(representation, name);
        following.pauses(representation, name);
        following.click(representation, name);
        following.commands(representation, name);
    }
}

} // namespace benchmarks
