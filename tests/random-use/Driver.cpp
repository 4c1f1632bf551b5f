#include "Driver.h"

#include "DataMaker.h"
#include "DataPoint.h"
#include "HostTwin.h"
#include "PluginResult.h"
#include "Space.h"
#include "TestSupport.h"
#include "history/Steps.h"
#include "items/Building.h"
#include "items/SpaceLock.h"
#include "services/DataFolder.h"
#include "services/PluginFolder.h"
#include "services/Settings.h"
#include "tree/TreeItem.h"
#include "tree/TreeView.h"
#include "window/ListBox.h"
#include "window/Vuxo.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QFrame>
#include <QMenu>
#include <QMenuBar>
#include <QMetaMethod>
#include <QTemporaryDir>

#include <cstdlib>

extern "C" {
void Command(const char* name, void* data, PluginResult* result);
void CommandC(const char* name, const void* data, PluginResult* result);
void Execute0(PluginResult* result);
bool IsDone();
void Cleanup();
}

namespace random_use {

using TAVIK::Compound;
using TAVIK::Space;
using test_support::TestCase;

namespace {

unsigned int topLevelCount() {
    return unsigned(Space::instance()->ChildEnd() - Space::instance()->ChildBegin());
}

void writeFile(const QString& path, const QByteArray& text) {
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(text) != text.size())
        qFatal("%s cannot be written", qPrintable(path));
}

// A help page that is laid out in a moment, beside the real colour map.
void useSmallHelp() {
    static const QTemporaryDir folder;
    const QString map = folder.filePath(QStringLiteral("BlueRedTR.cm"));
    if (QFile::exists(map))
        return;
    QFile::copy(QStringLiteral(SOURCE_DIR "/data/BlueRedTR.cm"), map);
    QDir(folder.path()).mkdir(QStringLiteral("help"));
    writeFile(folder.filePath(QStringLiteral("help/page.md")), "# Structure Editor\n");
    writeFile(folder.filePath(QStringLiteral("settings.ini")), "[Vuxo]\nHelp = page\n");
    memory_host::setDataFolder(folder.path());
    memory_host::setDefaultSettingsFile(folder.filePath(QStringLiteral("settings.ini")));
}

// The id that the next item gets: none is used twice.
unsigned int takeId() {
    Compound* probe = memory_host::makeDetached("probe", "Composite");
    const unsigned int id = probe->GetId();
    TAVIK::DataMaker::Destroy(probe);
    return id + 1;
}

} // namespace

const char* fileOf(Start::Kind kind) {
    switch (kind) {
    case Start::Sample:
        return sampleFile;
    case Start::Ubiquitin:
        return "1ubq.pdb";
    case Start::Crambin:
        return "1ejg.pdb";
    case Start::Crabp:
        return "1cbs.cif.gz";
    default:
        return nullptr;
    }
}

Driver::Driver(const Start& start, Model& model)
    : m_model(model), m_isLow(start.seed % 3 == 1),
      m_watched(start.kind == Start::Generated && start.seed % 4 == 0) {
    m_listener.useWindow = [this](const Edit& edit) { useWindow(edit); };
    useSmallHelp();
    // What is typed belongs together however long a step takes.
    QApplication::setKeyboardInputInterval(3'600'000);
    model.plugins = start.plugins;
    if (start.plugins)
        memory_host::loadPlugins(QStringLiteral(RECORDING_PLUGINS));
    Space::SetShowSelection(true);
    if (start.kind == Start::Generated)
        for (unsigned int i = 0; i != 1 + start.seed % 3; ++i)
            buildStructure(start.seed + i);
    const char* const file = random_use::fileOf(start.kind);
    if (file) {
        fetch(file);
        openStructure(pathOf(file));
    }
    enterFrom(0);
    if (file)
        enterFile(file, 0);
    model.host.nextId = takeId();
    model.past.begin(model.host);
    memory_host::forgetHistory();
    TestCase::takeMessages();
    TestCase::takeHostLog();
    m_listener.told.clear();
}

void Driver::enterFrom(unsigned int first) {
    for (unsigned int i = first; i != topLevelCount(); ++i)
        enterItem(Space::instance()->ChildBegin()[i], m_model.host, m_model.host.space());
}

void Driver::rest() {
    m_lock.reset();
    m_listener.answer = {};
    m_model.locked = false;
    m_model.answering = {};
}

Driver::~Driver() {
    m_lock.reset();
    Cleanup();
    memory_host::unloadPlugins();
    while (topLevelCount())
        TAVIK::DataMaker::Destroy(*Space::instance()->ChildBegin());
    Space::SetShowSelection(true);
    TestCase::takeMessages();
    TestCase::takeHostLog();
}

Vuxo* Driver::window() {
    for (QWidget* widget : QApplication::topLevelWidgets())
        if (auto* found = qobject_cast<Vuxo*>(widget))
            return found;
    return nullptr;
}

QStringList entriesOf(const Vuxo* window) {
    QStringList entries;
    const ListBox* const list = Driver::listOf(window);
    for (int i = 0; i != list->count(); ++i)
        entries << list->item(i)->text();
    return entries;
}

void Listener::hear(const QString& kind) {
    // The window shows its own changes before anyone hears of them, and no others.
    const Vuxo* const window = Driver::window();
    int rows = 0;
    int selected = 0;
    if (window)
        for (TreeItemIterator it(Driver::treeOf(window)); it.current(); ++it) {
            ++rows;
            selected += it.current()->isSelected();
        }
    told << QStringLiteral("%1, %2 of %3 rows selected, %4")
                .arg(kind)
                .arg(selected)
                .arg(rows)
                .arg(window ? entriesOf(window).join(u'|') : QString());
    const Edit edit = std::exchange(answer, {});
    useWindow(edit);
    editData(this, edit);
}

TreeView* Driver::treeOf(const Vuxo* window) {
    return window->centralWidget()->findChild<TreeView*>();
}

ListBox* Driver::listOf(const Vuxo* window) {
    return window->centralWidget()->findChild<ListBox*>();
}

QFrame* Driver::panelOf(const Vuxo* window) {
    for (QFrame* frame : window->findChildren<QFrame*>(QString(), Qt::FindDirectChildrenOnly))
        if (frame->isWindow())
            return frame;
    return nullptr;
}

bool Driver::isDone() const {
    return IsDone();
}

bool Driver::isUsable() const {
    const Vuxo* shown = window();
    return shown && shown->isVisible() && !shown->isMinimized();
}

void Driver::useWindow(const Edit& edit) {
    Vuxo* const used = window();
    if (!used)
        return;
    if (edit.kind == EditKind::Look) {
        QApplication::processEvents();
        used->grab();
    } else if (edit.kind == EditKind::Command) {
        const QMetaObject* const meta = used->metaObject();
        const QMetaMethod slot = meta->method(meta->indexOfSlot(edit.name.c_str()));
        answering(m_step, [&] { slot.invoke(used); });
    } else if (edit.kind == EditKind::Entry && listOf(used)->count() > 0) {
        ListBox* const list = listOf(used);
        const int entry = countedRound(edit.value, std::size_t(list->count()));
        used->ListEvent(Qt::LeftButton, list->item(entry), {});
    }
}

Said Driver::act(const Step& step) {
    m_step = step;
    m_meaning = meaningOf(step, m_model);
    m_seen = {};
    m_said = {};
    const unsigned int before = topLevelCount();
    doAnywhere(step);
    if (isUsable())
        doInWindow(step);
    if (step.action == Action::Build || step.action == Action::Load) {
        const bool hasOpened = topLevelCount() > before;
        if (hasOpened)
            m_model.open([&] { enterFrom(before); });
        if (hasOpened && step.action == Action::Load)
            enterFile(step.name, before);
        m_model.host.nextId = takeId();
    } else {
        m_model.act(step, m_meaning, m_seen);
    }
    if (Vuxo* made = window(); made && m_rows != treeOf(made)->model()) {
        // Wide enough for all columns of the tree; in a low one not all rows are on the screen.
        made->resize(1000, m_isLow ? 140 : 700);
        m_rows = treeOf(made)->model();
        if (m_watched)
            m_tester = std::make_unique<QAbstractItemModelTester>(
                m_rows, QAbstractItemModelTester::FailureReportingMode::Warning);
    }
    for (QWidget* widget : QApplication::topLevelWidgets())
        if (widget->objectName() == u"HelpViewer" && widget->isVisible()) {
            m_said.asked << widget->windowTitle();
            widget->hide();
        }
    readSaved();
    m_said.messages << TestCase::takeMessages();
    m_said.log = TestCase::takeHostLog();
    m_said.told = std::exchange(m_listener.told, {});
    return m_said;
}

void Driver::doAnywhere(const Step& step) {
    switch (step.action) {
    case Action::Idle:
        QApplication::processEvents();
        return;
    case Action::Slot:
        if (window())
            answering(step, [&] { invoke(step); });
        return;
    case Action::Command:
    case Action::CommandC:
    case Action::Execute0:
    case Action::Cleanup:
        return call(step);
    case Action::Lock:
        if (m_lock)
            m_lock.reset();
        else
            m_lock = std::make_unique<memory_host::SpaceLock>();
        return;
    case Action::Outside:
        return editData(nullptr, step.edit);
    case Action::Answering:
        m_listener.answer = step.edit;
        return;
    case Action::Build:
    case Action::Load:
        return openOrBuild(step);
    case Action::Save:
        return save(step);
    case Action::Hide:
    case Action::Minimise:
    case Action::Close:
    case Action::ClosePanel:
        if (window())
            putAway(step);
        return;
    case Action::Sabotage:
        if (topLevelCount()) {
            Compound* item = Space::instance()->ChildBegin()[step.target % topLevelCount()];
            item->ToggleSelected();
        }
        return;
    case Action::Crash:
        std::abort();
    default:
        return;
    }
}

void Driver::putAway(const Step& step) {
    if (step.action == Action::Hide)
        window()->hide();
    else if (step.action == Action::Minimise)
        window()->showMinimized();
    else if (step.action == Action::Close)
        window()->close();
    else
        panelOf(window())->close();
}

void Driver::openOrBuild(const Step& step) {
    // What comes in is entered in the model afterwards: nobody may change it before.
    const Edit waiting = std::exchange(m_listener.answer, {});
    if (step.action == Action::Build)
        buildStructure(step.value);
    else {
        fetch(step.name);
        openStructure(pathOf(step.name));
    }
    m_listener.answer = waiting;
}

void Driver::call(const Step& step) {
    const char* const name = step.name.c_str();
    PluginResult result;
    if (step.action == Action::Command)
        ::Command(name, nullptr, &result);
    else if (step.action == Action::CommandC)
        CommandC(name, nullptr, &result);
    else if (step.action == Action::Execute0)
        Execute0(&result);
    else
        Cleanup();
    // The result says no more than the debug line of an unknown command.
    const bool isUnknown = result.GetResultCode() == PluginResult::NotRecognized;
    const QStringList messages = TestCase::takeMessages();
    for (const QString& line : messages)
        qDebug("%s", qPrintable(line));
    if (isUnknown != messages.join(u' ').contains(QLatin1String("not recognized")) ||
        (isUnknown && messages.last().toStdString() != result.GetResultText()))
        qWarning("the result is %d, %s", int(result.GetResultCode()),
                 result.GetResultText().c_str());
}

void Driver::invoke(const Step& step) {
    Vuxo* target = window();
    const QMetaObject* meta = target->metaObject();
    const QMetaMethod method = meta->method(meta->indexOfSlot(m_meaning.command->slot));
    const int at = m_meaning.at;
    if (method.name() == "Populate") {
        method.invoke(target, Q_ARG(int, at));
    } else if (method.name() == "KillBranch") {
        std::vector<TreeItem*> rows;
        for (TreeItemIterator it(treeOf(target)); it.current(); ++it)
            rows.push_back(it.current());
        method.invoke(target, Q_ARG(TreeItem*, at < 0 ? nullptr : rows[std::size_t(at)]));
    } else if (method.name() == "ListEvent") {
        method.invoke(target, Q_ARG(int, step.button),
                      Q_ARG(QListWidgetItem*, listOf(target)->item(at)), Q_ARG(QPoint, QPoint()));
    } else {
        method.invoke(target);
    }
}

void Driver::trigger(const Step& step) {
    const MenuEntry& entry = *m_meaning.entry;
    for (const QAction* menu : window()->menuBar()->actions())
        if (menu->text() == QLatin1String(entry.menu))
            for (QAction* action : menu->menu()->actions())
                if (action->text() == QLatin1String(entry.label))
                    return answering(step, [action] { action->trigger(); });
}

} // namespace random_use
