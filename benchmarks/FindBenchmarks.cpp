#include "AtomDetails.h"
#include "Contest.h"
#include "DataAdder.h"
#include "DataMaker.h"
#include "FindSearch.h"
#include "Peer.h"
#include "RealStructures.h"
#include "Space.h"
#include "Traversal.h"
#include "Works.h"
#include "files/Files.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QThread>

#include <algorithm>
#include <array>
#include <vector>

namespace benchmarks {

namespace {

struct Form {
    const char* text;
    const char* theirs; ///< the same for PyMOL; empty where it has nothing like it
};

/// At least one of each kind of condition, and distances of every size around few and many atoms.
constexpr auto forms = std::to_array<Form>({
    {"LC0 45", ""},
    {"45", "resi 45"},
    {"GLY", "resn GLY"},
    {"/LC0_1:45@CA", "chain LC0_1 and resi 45 and name CA"},
    {"/6zu5x6/LC0_1/Groups/VAL 45/CA", ""},
    {"@CA", "name CA"},
    {"element P", "elem P"},
    {"altloc B", "alt B"},
    {"protein and not @N,CA,C,O", "polymer.protein and not name N+CA+C+O"},
    {"ligand or ion", ""},
    {"selected", ""},
    {"hidden", ""},
    {"all", "all"},
    {"within 5 of (ligand or ion)", ""},
    {"within 1 of @CA", "all within 1 of name CA"},
    {"within 5 of @CA", "all within 5 of name CA"},
    {"within 5 of protein", "all within 5 of polymer.protein"},
    {"within 20 of protein", "all within 20 of polymer.protein"},
    {"within 100 of @P", ""},
});

class Finder {
public:
    /// Until the hits are there.
    void find(const char* text) {
        QEventLoop loop;
        QObject::connect(&m_search, &workbench::FindSearch::finished, &loop, &QEventLoop::quit);
        m_search.setText(QString::fromUtf8(text));
        loop.exec();
    }
    /// As between the focus of the field and the first key.
    void makeReady() {
        m_search.setText({});
        m_search.setReady(true);
        while (!m_search.isReady()) {
            QCoreApplication::processEvents();
            QThread::msleep(1);
        }
    }
    /// Leaves nothing that was read of the data: there is another item, and an atom is elsewhere.
    void changeData() {
        m_search.setReady(false);
        m_search.setText({});
        TAVIK::Space* const space = TAVIK::Space::instance();
        const DataAdder<TAVIK::Space> guard(nullptr, space);
        TAVIK::DataMaker::Destroy(TAVIK::DataMaker::makeCore(space, "more", "Composite"));
        std::vector<TAVIK::Compound*> atoms;
        TAVIK::GetAtoms(space, atoms, true);
        TAVIK::Vertex place = atoms.at(0)->GetPosition();
        m_moves = -m_moves;
        place[0] += m_moves;
        TAVIK::SetAtomPosition(static_cast<TAVIK::Atom*>(atoms[0]), place);
    }

private:
    workbench::FindSearch m_search;
    float m_moves = 0.125F; ///< Å, by which an atom was moved last
};

} // namespace

void benchmarkFind(const std::string& path, int turns) {
    const auto nameOf = [](const Form& form) { return std::string("find ") + form.text; };
    const std::string changed = " right after a change of the data";
    if (std::none_of(forms.begin(), forms.end(),
                     [&](const Form& form) { return isWanted(nameOf(form) + changed); }))
        return;
    memory_host::openFile(path);
    const std::size_t atoms = atomCount(TAVIK::Space::instance());
    Finder finder;
    Peer peer("select-peer.py", path);
    for (const Form& form : forms) {
        const std::string theirs = form.theirs;
        const std::string target = atoms > 2'000'000 ? "" : "at most 100 ms";
        run({.work = nameOf(form),
             .size = atoms,
             .items = atoms,
             .itemName = "atom",
             .peer = peer.isThere() && !theirs.empty() ? "PyMOL's select " + theirs : "",
             .target = target,
             .ours = {[&] { finder.makeReady(); }, [&] { finder.find(form.text); }, {}},
             .theirs = {{}, [&] { peer.ask(theirs); }, {}}},
            turns);
        run({.work = nameOf(form) + changed,
             .size = atoms,
             .items = atoms,
             .itemName = "atom",
             .target = target,
             .ours = {[&] { finder.changeData(); }, [&] { finder.find(form.text); }, {}}},
            turns);
    }
    emptySpace();
}

} // namespace benchmarks
