// The list's side of the window: one entry for each top-level item, in the host's order.
#include "Vuxo.h"

#include "Checks.h"
#include "DataMaker.h"
#include "ItemOrigin.h"
#include "ListBox.h"
#include "ListEntry.h"
#include "Space.h"
#include "VuxoDialogs.h"
#include "data/ItemRef.h"
#include "tree/TreeView.h"

#include <QStringList>

#include <algorithm>

namespace {

std::string entryName(const QListWidgetItem* entry) {
    return ListEntry::nameIn(entry->text()).toLatin1().toStdString();
}

} // namespace

int Vuxo::topLevelCount() {
    TAVIK::Space* space = TAVIK::Space::instance();
    return static_cast<int>(space->ChildEnd() - space->ChildBegin());
}

TAVIK::Compound* Vuxo::topLevelItem(int index) {
    return index >= 0 && index < topLevelCount() ? TAVIK::Space::instance()->ChildBegin()[index]
                                                 : nullptr;
}

QString Vuxo::entryToolTip(int index, const QString& text) {
    const QString name = ListEntry::nameIn(text);
    const TAVIK::Compound* const item = topLevelItem(index);
    // The window may not have been told of a change yet: the index may belong to another item.
    if (!item || QString::fromLatin1(item->GetName()) != name)
        return name;
    const QString file = TAVIK::OriginOf(item);
    return file.isEmpty() ? name : name + u'\n' + file;
}

void Vuxo::MakeList() {
    m_hasStaleEntries = false;
    const int items = topLevelCount();
    if (m_List->count() == items)
        return;
    if (m_List->count() > items)
        m_Current = -1;
    else if (m_Current > -1)
        followCurrentItem();
    QStringList texts;
    texts.reserve(items);
    for (int i = 0; i < items; ++i)
        texts << ListEntry::textOf(topLevelItem(i));
    m_List->setEntries(texts);
    if (m_Current > -1)
        m_List->setSelected(m_Current, true);
}

void Vuxo::UpdateList() {
    const int items = topLevelCount();
    checkThat(m_List->count() == items, "m_List->count() == items", source, 400);
    for (int i = 0; i < items; ++i)
        m_List->changeItem(ListEntry::textOf(topLevelItem(i)), i);
    if (m_Current > -1)
        m_List->setSelected(m_Current, true);
}

void Vuxo::ListEvent(int button, QListWidgetItem* item, const QPoint&) {
    if (!item)
        return;
    const QPointer<Vuxo> window(this);
    attempt([this, button, item] {
        if (m_hasStaleEntries && !isUpToDate(item))
            return;
        const int index = m_List->row(item);
        checkThat(-1 != index, "-1 != index", source, 436);
        const std::string name = entryName(item);
        if (button == Qt::LeftButton) {
            pick(index);
            m_focus->entryPicked();
        } else if (button == Qt::RightButton) {
            toggleVisible(index, name);
        } else if (button == Qt::MiddleButton) {
            killTopLevel(index, name);
        }
    });
    if (!window)
        return;
    // Whatever was pressed, the entry of the item in the tree is highlighted.
    if (m_Current == -1)
        m_List->clearSelection();
    else
        m_List->setSelected(m_Current, true);
}

bool Vuxo::isUpToDate(const QListWidgetItem* entry) {
    const std::string name = entryName(entry);
    const int count = m_List->count();
    MakeList();
    const bool isSame = m_List->count() == count;
    UpdateList();
    return isSame && entryName(entry) == name;
}

void Vuxo::showEntryMenu(QListWidgetItem* entry) {
    attempt([this, entry] {
        if (m_hasStaleEntries && !isUpToDate(entry))
            return;
        if (TAVIK::Compound* const item = topLevelItem(m_List->row(entry)))
            item->ShowMenu(); // The item, and the window itself, may be gone now.
    });
}

// The tree is empty when others have destroyed something in the item that it showed.
void Vuxo::pick(int index) {
    if (m_Current == index && rootItem() && rootItem() == topLevelItem(index))
        return;
    setCurrent(index);
    Populate(index);
}

void Vuxo::setCurrent(int index) {
    m_Current = index;
    m_currentItem = ItemRef(topLevelItem(index));
}

// Entries that come back, because their deletion is taken back, stand where they stood.
void Vuxo::followCurrentItem() {
    TAVIK::Compound** const begin = TAVIK::Space::instance()->ChildBegin();
    TAVIK::Compound** const end = TAVIK::Space::instance()->ChildEnd();
    if (TAVIK::Compound* const item = m_currentItem.inSpace())
        m_Current = static_cast<int>(std::find(begin, end, item) - begin);
}

void Vuxo::toggleVisible(int index, const std::string& name) {
    withGuard<DataPoint>(__func__, TAVIK::Space::instance(), [index, &name](TAVIK::Space*) {
        TAVIK::Compound* ch = topLevelItem(index);
        checkThat(ch, "ch", source, 453);
        if (!ch)
            return Done::nothing();
        checkThat(ch->GetName() == name, "ch->GetName() == Name", source, 456);
        ch->ToggleVisible();
        // A hidden item never stays selected.
        if (!ch->IsVisible())
            ch->SetSelected(false);
        return Done{.changed = TAVIK::Changed(*ch), .deed = ch->IsVisible() ? "Show" : "Hide"};
    });
}

void Vuxo::killTopLevel(int index, const std::string& name) {
    TAVIK::Compound* clump = topLevelItem(index);
    checkThat(clump, "clump", source, 468);
    if (!clump)
        return;
    checkThat(name == clump->GetName(), "Name == clump->GetName()", source, 471);
    const ItemRef asked(clump);
    if (!confirmDelete(this, clump->GetName()))
        return;
    withGuard<DataDelete>(
        __func__, asked.among(TAVIK::Space::instance()),
        [this](TAVIK::Compound* item) {
            const TAVIK::Changed destroyed(*item);
            m_Current = -1;
            m_Tree->clear();
            m_Tree->triggerUpdate();
            TAVIK::DataMaker::Destroy(item);
            MakeList();
            return destroyed;
        },
        Refusal::Silent);
}
