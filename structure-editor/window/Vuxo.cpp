#include "Vuxo.h"

#include "Checks.h"
#include "Config.h"
#include "ListBox.h"
#include "Logger.h"
#include "WindowPanes.h"
#include "tree/TreeItem.h"
#include "tree/TreeView.h"

#include <QFrame>
#include <QStatusBar>
#include <QVBoxLayout>

#include <exception>
#include <utility>

namespace {

std::string roomForLine() {
    std::string line;
    line.reserve(500);
    return line;
}

// Allocated in advance, for the line about running out of memory.
std::string spareLine = roomForLine();

// Writes a line about the exception in flight.
void logFailure(const char* slot, const char* what) {
    std::string line = std::exchange(spareLine, {});
    line = "Structure Editor: ";
    line += slot;
    line += what;
    try {
        throw;
    } catch (const std::exception& failure) {
        line += failure.what();
    } catch (...) {
        line += "an unknown exception";
    }
    Logger::Write(line);
    spareLine = std::move(line);
}

} // namespace

Vuxo::Vuxo()
    : BaseWindow(tr("Structure Editor"), QSize(400, 600), helpSetting(), false, nullptr, nullptr),
      m_Tree(nullptr), m_List(nullptr), m_Current(-1), m_SelectBox(nullptr), m_ChainEdit(nullptr),
      m_ResidueEdit(nullptr), m_AtomEdit(nullptr), m_CurrentOnly(nullptr),
      m_destructions([this] { emptyForDestruction(); }) {
    auto* splitter = new WindowPanes(this);
    checkPtr(splitter, source, __LINE__);
    setCentralWidget(splitter);

    m_List = new ListBox(splitter);
    checkPtr(m_List, source, __LINE__);
    m_List->setMinimumWidth(40);
    m_List->setAccessibleName(tr("Entries"));
    m_List->setToolTips(&Vuxo::entryToolTip);
    MakeList();
    connect(m_List, SIGNAL(mouseButtonPressed(int, QListWidgetItem*, const QPoint&)),
            SLOT(ListEvent(int, QListWidgetItem*, const QPoint&)));
    connect(m_List, &ListBox::menuRequested, this, &Vuxo::showEntryMenu);

    m_Tree = new TreeView(splitter);
    checkPtr(m_Tree, source, __LINE__);
    m_Tree->setAccessibleName(tr("Structure tree"));
    connect(m_Tree, SIGNAL(selectionChanged()), SLOT(SelectionChanged()));
    connect(m_Tree, SIGNAL(killBranch(TreeItem*)), SLOT(KillBranch(TreeItem*)));
    m_focus = std::make_unique<FocusWatch>(
        m_Tree, [this](TAVIK::Compound* item) { attempt([&] { showFocus(item); }, "showFocus"); },
        [this] { return rootItem(); });

    // The list keeps its width when the window grows; the tree gets the rest.
    splitter->setStretchFactor(0, 0);
    splitter->setStretchFactor(1, 1);
    splitter->setChildrenCollapsible(false);
    // As long as "1d3z-2.10".
    constexpr int usualName = 9;
    splitter->preferSecond(m_List->widthFor(usualName), m_Tree->usualWidth());

    CreateMenubar();
    statusBar();
    setWindowIconText(tr("Structure"));

    m_SelectBox = new QFrame(this, Qt::Dialog);
    checkPtr(m_SelectBox, source, __LINE__);
    m_SelectBox->setWindowTitle(tr("Select"));
    auto* column = new QVBoxLayout(m_SelectBox);
    column->setContentsMargins(5, 5, 5, 5);
    column->setSpacing(5);
    populateBoxes(m_SelectBox);
}

Vuxo::~Vuxo() {
    // The window may be destroyed before it is told of a deletion: no row may read a destroyed item
    // while the widgets are deleted.
    m_Tree->clear();
}

QString Vuxo::helpSetting() {
    return QString::fromLatin1(Config::GetSetting("Vuxo", "Help").ToString(nullptr));
}

void Vuxo::commandFailed(Vuxo* window, const char* slot) {
    logFailure(slot, " failed: ");
    if (!window)
        return;
    try {
        window->rebuild();
    } catch (...) {
        // Incomplete rows would be wrong; an empty tree can be filled again.
        window->m_Tree->clear();
        window->m_Current = -1;
        window->m_List->clearSelection();
        window->m_isBehind = true;
        logFailure(slot, " failed: the window could not be refreshed either: ");
    }
}

void Vuxo::rebuild() {
    m_Tree->clear();
    m_Tree->triggerUpdate();
    MakeList();
    UpdateList();
    Populate(m_Current);
    m_isBehind = false;
}
