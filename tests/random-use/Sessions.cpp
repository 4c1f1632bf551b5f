#include "Sessions.h"

#include "Apart.h"
#include "Compare.h"
#include "DataLines.h"
#include "History.h"
#include "history/Steps.h"

#include <algorithm>

namespace random_use {

namespace {

// Each list names what is chosen from; what is named more often is chosen more often.

constexpr Qt::MouseButton buttons[] = {Qt::LeftButton, Qt::RightButton, Qt::MiddleButton};
constexpr Qt::MouseButton listButtons[] = {Qt::LeftButton, Qt::RightButton, Qt::MiddleButton,
                                           Qt::LeftButton, Qt::RightButton, Qt::MiddleButton,
                                           Qt::BackButton};
const Qt::KeyboardModifiers modifiers[] = {
    {}, {}, Qt::ShiftModifier, Qt::ControlModifier, Qt::ShiftModifier | Qt::ControlModifier};
constexpr Qt::Key treeKeys[] = {
    Qt::Key_Up,    Qt::Key_Down,   Qt::Key_Down,   Qt::Key_Home,     Qt::Key_End,  Qt::Key_Left,
    Qt::Key_Right, Qt::Key_Plus,   Qt::Key_Minus,  Qt::Key_Space,    Qt::Key_Down, Qt::Key_Right,
    Qt::Key_A,     Qt::Key_F,      Qt::Key_PageUp, Qt::Key_PageDown, Qt::Key_P,    Qt::Key_N,
    Qt::Key_F1,    Qt::Key_Delete, Qt::Key_Return, Qt::Key_Menu,     Qt::Key_Space};
constexpr Qt::Key letterKeys[] = {Qt::Key_A, Qt::Key_C, Qt::Key_M,       Qt::Key_1,
                                  Qt::Key_H, Qt::Key_G, Qt::Key_Asterisk};
constexpr Qt::Key listKeys[] = {Qt::Key_Up,   Qt::Key_Down,   Qt::Key_Home,  Qt::Key_End,
                                Qt::Key_Down, Qt::Key_F,      Qt::Key_P,     Qt::Key_N,
                                Qt::Key_F1,   Qt::Key_Return, Qt::Key_Enter, Qt::Key_Menu};
constexpr Place places[] = {Place::Object,     Place::Show,        Place::Select,    Place::Partial,
                            Place::RightOfAll, Place::Object,      Place::Show,      Place::Select,
                            Place::Partial,    Place::Indentation, Place::MarkBegin, Place::MarkEnd,
                            Place::NameMargin, Place::NameBegin};
constexpr Place columns[] = {Place::Object, Place::Show, Place::Select, Place::Partial};
constexpr const char* savedFiles[] = {"a.pdb",    "a.cif", "b.pdb.gz", "b.cif.gz", "c.pdb",
                                      "map.ccp4", "a.cif", "c.cif",    "list.txt", "a.pdb"};
constexpr const char* pluginCommands[] = {"Show", "Kill", "show", "", "Show"};
constexpr Action entryPoints[] = {Action::Command, Action::CommandC, Action::Execute0,
                                  Action::Cleanup, Action::CommandC};
constexpr Action waysToPutAway[] = {Action::Hide, Action::Minimise, Action::Close,
                                    Action::ClosePanel};

/// The slots of the window that others call when they are told of a change; what one asks is
/// answered as the step says.
constexpr const char* calledSlots[] = {
    "SelectedColor()",  "SelectedColor()", "SelectedUnColor()",   "SelectedColorTemp()",
    "SelectedShow()",   "SelectedHide()",  "SelectedClear()",     "SelectedToggle()",
    "SelectGroups()",   "SelectGroupsG()", "SelectedNextModel()", "SelectGridBounds()",
    "UnselectedHide()", "KillAtoms()",     "KillResidues()",      "KillBonds()",
    "KillClump()",      "KillAll()",       "MakeCartesian()",     "SelectionChanged()"};

struct Weight {
    Action action;
    unsigned int weight[4]; ///< for each theme
};

constexpr Weight weights[] = {
    {Action::Idle, {3, 3, 3, 3}},       {Action::Slot, {22, 40, 8, 14}},
    {Action::Menu, {10, 20, 3, 6}},     {Action::Press, {14, 8, 24, 10}},
    {Action::PressBelow, {1, 1, 3, 1}}, {Action::Move, {3, 1, 10, 2}},
    {Action::Release, {4, 2, 10, 3}},   {Action::DoubleClick, {2, 1, 5, 1}},
    {Action::Open, {2, 1, 4, 1}},       {Action::Key, {8, 4, 20, 5}},
    {Action::Type, {1, 1, 4, 1}},       {Action::Header, {1, 1, 2, 1}},
    {Action::PressEntry, {8, 6, 8, 8}}, {Action::ListKey, {2, 1, 4, 1}},
    {Action::Field, {2, 3, 0, 1}},      {Action::TreeOnly, {1, 1, 0, 1}},
    {Action::Button, {3, 6, 1, 2}},     {Action::CommandC, {2, 1, 1, 4}},
    {Action::Hide, {1, 1, 1, 3}},       {Action::Lock, {1, 1, 1, 3}},
    {Action::Outside, {12, 8, 6, 24}},  {Action::Answering, {3, 1, 1, 10}},
    {Action::Build, {2, 2, 2, 3}},      {Action::Save, {10, 10, 2, 10}},
};

} // namespace

bool Generator::isMuch(Model& model) const {
    return model.host.all().size() > (m_opensFiles ? 4000U : 160U);
}

Action Generator::pickAction(Model& model) {
    // A window that is not there, or refused changes, end in a while.
    if (!model.isUsable() && pick(3) == 0)
        return Action::CommandC;
    if (model.locked && pick(8) == 0)
        return Action::Lock;
    if (model.topLevel().empty() && pick(4) == 0)
        return Action::Build;
    if (model.isUsable() && !model.tree.top() && !model.topLevel().empty() && pick(2) == 0)
        return Action::PressEntry;
    unsigned int sum = 0;
    for (const Weight& each : weights)
        sum += each.weight[int(m_theme)];
    unsigned int number = pick(sum);
    for (const Weight& each : weights) {
        if (number < each.weight[int(m_theme)])
            return each.action;
        number -= each.weight[int(m_theme)];
    }
    return Action::Idle;
}

Edit Generator::pickEdit(Model& model) {
    static constexpr EditKind kinds[] = {
        EditKind::Select,   EditKind::Select,  EditKind::Show,    EditKind::Show,
        EditKind::Paint,    EditKind::AddAtom, EditKind::AddAtom, EditKind::AddBond,
        EditKind::AddBond,  EditKind::AddLeaf, EditKind::AddBox,  EditKind::AddSet,
        EditKind::AddSet,   EditKind::AddTop,  EditKind::Destroy, EditKind::Destroy,
        EditKind::Swap,     EditKind::SetAtom, EditKind::Model,   EditKind::Highlight,
        EditKind::AddAmong, EditKind::AddAmong};
    static constexpr EditKind travels[] = {EditKind::Undo, EditKind::Undo, EditKind::Redo,
                                           EditKind::UndoData};
    Edit edit{kinds[pick(std::size(kinds))], pick(1000), pick(1000)};
    // Who goes back goes on with that.
    if (pick(isTravel(m_last.edit) ? 2 : 5) == 0)
        edit.kind = choose(travels, pick(4));
    if (isMuch(model) && pick(2) == 0)
        edit.kind = EditKind::Destroy;
    if (pick(40) == 0)
        edit.kind = pick(2) ? EditKind::Kill : EditKind::Throw;
    return edit;
}

std::string Generator::pickText() {
    static constexpr const char* texts[] = {
        "0", "1.5", "4",        "2.25",     "10000", "-1.5", "1e3", "abc",   "",       "Set",
        "H", "C",   "h",        "Cu",       ".*",    "A",    "B",   "MET.*", "C[AB]?", "CA|N",
        "(", "a/b", "\xC3\xA9", "\xCE\xA9", ".* 1",  "N",    "O1",  " 7 ",   "[^C]*",  "%1"};
    return texts[pick(std::size(texts))];
}

void Generator::pickPlaces(Step& step) {
    step.button = choose(buttons, pick(1000));
    if (step.action == Action::Press) {
        step.place = choose(places, pick(1000));
        if (pick(2))
            step.button = Qt::LeftButton;
        // Deep rows come on the screen, and go with a branch far above them.
        if (pick(6) == 0) {
            step.button = Qt::LeftButton;
            step.place = Place::Indentation;
        }
    }
    step.modifiers = m_held;
}

void Generator::pickDetails(Step& step, Model& model) {
    switch (step.action) {
    case Action::Slot:
        step.name = choose(commands(), pick(1000)).slot;
        if (step.name.starts_with("ListEvent("))
            step.button = choose(listButtons, pick(1000));
        return;
    case Action::Menu:
        step.name = nameOf(choose(menuEntries(), pick(1000)));
        return;
    case Action::Press:
    case Action::PressBelow:
        return pickPlaces(step);
    case Action::DoubleClick:
    case Action::Header:
        step.place = choose(columns, pick(1000));
        return;
    case Action::Key:
        step.key = choose(treeKeys, pick(1000));
        if (step.key == Qt::Key_A)
            step.modifiers = Qt::ControlModifier;
        else if (step.key >= Qt::Key_Home && step.key <= Qt::Key_PageDown)
            step.modifiers = m_held;
        return;
    case Action::Type:
        step.key = choose(letterKeys, pick(1000));
        return;
    case Action::Save:
        return pickFile(step, model);
    case Action::PressEntry:
        step.button = model.tree.top() ? choose(listButtons, pick(1000)) : Qt::LeftButton;
        return;
    case Action::ListKey:
        step.key = choose(listKeys, pick(1000));
        return;
    case Action::Field:
        step.name = choose(fieldNames, pick(1000));
        return;
    case Action::Button:
        step.name = choose(panelButtons, pick(1000)).name;
        return;
    case Action::CommandC:
        step.name = "Show";
        if (model.isUsable()) {
            step.action = choose(entryPoints, pick(1000));
            step.name = choose(pluginCommands, pick(1000));
        }
        return;
    case Action::Hide:
        step.action = choose(waysToPutAway, pick(1000));
        return;
    case Action::Build:
        step.value = pick(1000);
        if (m_opensFiles && pick(2)) {
            static constexpr Start::Kind files[] = {Start::Ubiquitin, Start::Crambin, Start::Crabp,
                                                    Start::Empty};
            const char* const file = fileOf(choose(files, step.value));
            step.action = Action::Load;
            step.name = file ? file : missingFile;
        }
        if (m_last.action == Action::Save || pick(4) == 0)
            pickFile(step, model);
        else if (pick(8) == 0)
            step = {.action = Action::Load, .name = modelsFile};
        if (isMuch(model)) {
            step.action = Action::Outside;
            step.edit = {EditKind::Destroy, pick(1000), pick(4)};
        }
        return;
    default:
        return;
    }
}

void Generator::pickFile(Step& step, Model& model) {
    const std::vector<std::string> saved = model.files.names();
    if (step.action == Action::Save) {
        step.name = choose(savedFiles, pick(1000));
        step.value = pick(5);
        if (pick(3) == 0)
            step.answer = Answer::Cancel;
    } else if (!saved.empty() && !isMuch(model)) {
        step = {.action = Action::Load, .name = choose(saved, pick(1000))};
    }
}

void Generator::goOn(Step& step) {
    if (m_theme != Theme::Commands) {
        const bool drags = m_last.action == Action::Press || m_last.action == Action::Move;
        if (drags && pick(4) == 0)
            step.action = pick(2) ? Action::Move : Action::Release;
        if (m_last.action == Action::Key && pick(3) == 0) {
            step.action = Action::Key;
            step.key = m_last.key;
            step.modifiers = m_last.modifiers;
            return;
        }
    }
    // Who saves reads it.
    if (m_last.action == Action::Save && pick(2))
        step.action = Action::Build;
    if (m_last.action == Action::Outside && isTravel(m_last.edit) && pick(3) == 0)
        step.action = Action::Outside;
    if (m_last.edit.kind == EditKind::AddAmong && pick(2)) {
        // What goes by the selection comes before the rows take it over.
        static constexpr const char* bySelection[] = {"SelectedColor()", "SelectedUnColor()",
                                                      "SelectedHide()", "SelectedShow()"};
        step.action = Action::Slot;
        step.name = choose(bySelection, pick(4));
    }
}

namespace {

bool isLast(const Step& step) {
    const MenuEntry* const entry =
        step.action == Action::Menu ? findEntry(menuEntries(), step.name) : nullptr;
    const std::string_view slot = entry                         ? entry->slot
                                  : step.action == Action::Slot ? std::string_view(step.name)
                                                                : std::string_view();
    return slot == "KillAll()" || slot == "KillClump()" || slot == "close()";
}

} // namespace

void Generator::pickAnswers(Step& step, Model& model) {
    switch (step.action) {
    case Action::Slot:
    case Action::Menu:
    case Action::Press:
    case Action::PressEntry:
        step.text = pickText();
        step.value = pick(0x1000000);
        if (pick(4) == 0)
            step.answer = Answer::Cancel;
        if (pick(m_theme == Theme::Interference ? 4 : 12) == 0)
            step.edit = pickEdit(model);
        return;
    case Action::Key:
    case Action::ListKey:
        if (step.key != Qt::Key_Menu)
            return;
        step.value = pick(3);
        if (pick(4) == 0)
            step.answer = Answer::Cancel;
        if (pick(4) == 0)
            step.edit = pickEdit(model);
        return;
    case Action::Field:
        step.text = pickText();
        return;
    case Action::Outside:
        if (step.edit.kind == EditKind::None)
            step.edit = pickEdit(model);
        return;
    case Action::Answering:
        step.edit = pickEdit(model);
        // The window hears of the change only afterwards.
        if (pick(3) == 0) {
            static constexpr EditKind inWindow[] = {EditKind::Look, EditKind::Command,
                                                    EditKind::Command, EditKind::Entry};
            step.edit.kind = choose(inWindow, pick(4));
            if (step.edit.kind == EditKind::Command)
                step.edit.name = choose(calledSlots, step.edit.value);
        }
        return;
    default:
        return;
    }
}

Step Generator::next(Model& model) {
    if (pick(2))
        m_held = choose(modifiers, pick(1000));
    Step step;
    step.action = pickAction(model);
    step.target = pick(1000);
    goOn(step);
    if (step.name.empty() && step.key == Qt::Key_unknown)
        pickDetails(step, model);
    pickAnswers(step, model);
    // What leaves nothing behind is not done every other moment.
    if (isLast(step) && pick(4))
        step = {.action = Action::Idle};
    m_last = step;
    return step;
}

namespace {

// Plays steps one by one until something differs.
class Play {
public:
    Play(const Start& start, const Begin& begin) : m_begin(begin), m_driver(start, m_model) {
        m_start = test_support::dataLines(false);
    }

    Model& model() { return m_model; }

    QStringList step(const Step& step) {
        if (m_begin)
            m_begin(step);
        if (const QString unknown = unknownName(step); !unknown.isEmpty())
            return {unknown};
        return act(step);
    }

    /// All is taken back to the start, and done again. Which entry the window shows is no data.
    QStringList thereAndBack() {
        m_driver.rest();
        QStringList faults =
            act({.action = Action::Outside, .edit = {EditKind::Redo, 0, changesOfAll}});
        const QStringList end = test_support::dataLines(false);
        faults << act({.action = Action::Outside, .edit = {EditKind::Undo, 0, changesOfAll}})
               << differs(test_support::dataLines(false), m_start, "taken back")
               << act({.action = Action::Outside, .edit = {EditKind::Redo, 0, changesOfAll}})
               << differs(test_support::dataLines(false), end, "done again");
        return faults;
    }

private:
    QStringList act(const Step& step) {
        m_model.said = {};
        const Said real = m_driver.act(step);
        if (!m_model.past.keep(historyText(true))) {
            memory_host::forgetHistory();
            m_model.past.begin(m_model.host);
            m_start = test_support::dataLines(false);
        }
        return differences(m_model.said, real) + differences(m_model, m_driver);
    }
    static QStringList differs(const QStringList& now, const QStringList& before,
                               const char* when) {
        const QString difference = test_support::firstDifference(now, before);
        return difference.isEmpty() ? QStringList()
                                    : QStringList(QLatin1String(when) + ": " + difference);
    }

    const Begin& m_begin;
    Model m_model;
    Driver m_driver;
    QStringList m_start;
};

} // namespace

Outcome play(const Session& session, const Begin& begin) {
    Play played(session.start, begin);
    Outcome outcome;
    for (const Step& step : session.steps) {
        outcome.faults = played.step(step);
        ++outcome.steps;
        if (!outcome.faults.isEmpty())
            return outcome;
    }
    outcome.faults = played.thereAndBack();
    return outcome;
}

Outcome play(Session& session, Theme theme, unsigned int seed, std::size_t count,
             const Begin& begin) {
    Generator generator(seed, theme, session.start);
    Play played(session.start, begin);
    Outcome outcome;
    while (outcome.steps != count && outcome.faults.isEmpty()) {
        session.steps.push_back(generator.next(played.model()));
        outcome.faults = played.step(session.steps.back());
        ++outcome.steps;
    }
    if (outcome.faults.isEmpty())
        outcome.faults = played.thereAndBack();
    return outcome;
}

namespace {

// Makes a failing session shorter by one way after the other, as long as it still fails.
class Shortening {
public:
    explicit Shortening(Session session) : m_session(std::move(session)) {}

    Session run() {
        m_crashes = playApart(m_session).crashed;
        if (!tryThis(m_session.steps))
            return m_session;
        for (std::size_t size = (steps().size() + 1) / 2; size > 1; size = (size + 1) / 2)
            leaveOut(size);
        // Smaller numbers can make more steps needless.
        for (QString before; before != text(m_session);) {
            before = text(m_session);
            leaveOut(1);
            simplify();
        }
        constexpr std::size_t fewSteps = 30;
        while (steps().size() <= fewSteps && leaveOutPair())
            continue;
        return m_session;
    }

private:
    const std::vector<Step>& steps() const { return m_session.steps; }

    bool tryThis(std::vector<Step> fewer) {
        Session attempt{m_session.start, std::move(fewer)};
        const Outcome outcome = playApart(attempt);
        if (outcome.faults.isEmpty() || outcome.crashed != m_crashes)
            return false;
        attempt.steps.resize(outcome.steps);
        m_session = std::move(attempt);
        return true;
    }
    std::vector<Step> without(std::size_t at, std::size_t count) const {
        std::vector<Step> rest = steps();
        const auto from = rest.begin() + std::ptrdiff_t(at);
        rest.erase(from, from + std::ptrdiff_t(std::min(count, rest.size() - at)));
        return rest;
    }
    void leaveOut(std::size_t count) {
        for (std::size_t at = 0; at < steps().size();)
            if (!tryThis(without(at, count)))
                at += count;
    }
    // What switches something on and off again goes as a pair.
    bool leaveOutPair() {
        for (std::size_t first = 0; first < steps().size(); ++first)
            for (std::size_t second = first + 1; second < steps().size(); ++second) {
                std::vector<Step> rest = without(second, 1);
                rest.erase(rest.begin() + std::ptrdiff_t(first));
                if (tryThis(std::move(rest)))
                    return true;
            }
        return false;
    }
    void simplify() {
        for (std::size_t i = 0; i < steps().size(); ++i) {
            const auto attempt = [&](const std::function<void(Step&)>& change) {
                std::vector<Step> simpler = steps();
                change(simpler[i]);
                if (text(simpler[i]) != text(steps()[i]))
                    tryThis(std::move(simpler));
            };
            attempt([](Step& step) { step.edit = {}; });
            attempt([](Step& step) { step.text.clear(); });
            attempt([](Step& step) { step.answer = Answer::Accept; });
            attempt([](Step& step) { step.button = Qt::LeftButton; });
            attempt([](Step& step) { step.place = Place::Object; });
            attempt([](Step& step) { step.modifiers = {}; });
            for (unsigned int Step::*field : {&Step::target, &Step::value}) {
                const unsigned int before = steps()[i].*field;
                for (unsigned int small = 0; small != 4 && steps()[i].*field == before; ++small)
                    if (small < before)
                        attempt([field, small](Step& step) { step.*field = small; });
            }
        }
    }

    Session m_session;
    bool m_crashes = false;
};

} // namespace

Session shortened(const Session& session) {
    return Shortening(session).run();
}

QString report(const Session& session, const Outcome& outcome) {
    const Session shorter = shortened(session);
    const Outcome again = playApart(shorter);
    return QStringLiteral("after %1 steps:\n%2\n\nshortened to %3 steps:\n%4\nwhere\n%5\n")
        .arg(outcome.steps)
        .arg(outcome.faults.join(u'\n'))
        .arg(shorter.steps.size())
        .arg(text(shorter), again.faults.join(u'\n'));
}

} // namespace random_use
