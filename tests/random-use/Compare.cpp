#include "Compare.h"

#include "CompareRows.h"
#include "History.h"
#include "HostTwin.h"
#include "Saving.h"
#include "Space.h"
#include "items/Building.h"
#include "items/Invariants.h"
#include "window/ListBox.h"
#include "window/Vuxo.h"

#include <QCheckBox>
#include <QFrame>
#include <QLineEdit>

#include <algorithm>

namespace random_use {

QString historyText(bool back) {
    QString text;
    for (const HistoryStep& step : back ? History::undoable() : History::redoable())
        text.prepend(step.onlySelects ? u's' : u'd');
    return text;
}

namespace {

// Which file each entry is in, and whether it is as there.
void compareFiles(Comparison& all, Model& model, const Driver& driver) {
    const std::vector<TAVIK::Compound*> unsaved = workbench::unsavedEntries();
    for (const Item* item : model.topLevel()) {
        const TAVIK::Compound* const entry = workbench::entryWith(item->id);
        if (!entry)
            continue;
        all.lookAt("entry", item);
        all.same("its file", model.files.nameOf(*item), driver.fileOf(entry));
        all.same("is unsaved", model.files.isUnsaved(*item), memory_host::isUnsaved(entry));
        all.same("has a star", model.files.isUnsaved(*item) && model.files.isSavable(*item),
                 std::find(unsaved.begin(), unsaved.end(), entry) != unsaved.end());
    }
    all.lookAt("", nullptr);
}

} // namespace

QStringList differences(Model& model, const Driver& driver) {
    Comparison all;
    compareItem(all, *model.host.space(), TAVIK::Space::instance());
    all.lookAt("", nullptr);
    all.same("shows the selection", model.showSelection, TAVIK::Space::GetShowSelection());
    for (const std::string& fault : memory_host::checkInvariants())
        all.lines << QString::fromStdString(fault);
    compareFiles(all, model, driver);
    all.same("changes to take back", model.past.text(true), historyText(true));
    all.same("changes to do again", model.past.text(false), historyText(false));
    const Vuxo* const window = Driver::window();
    all.same("there is a window", model.exists, window != nullptr);
    all.same("is done", model.isDone(), driver.isDone());
    if (!window || !model.exists)
        return all.lines;
    all.same("window visible", model.shown, window->isVisible());
    all.same("window minimised", model.minimised, window->isMinimized());
    const ListBox* const list = Driver::listOf(window);
    all.same("list", model.list, entriesOf(window));
    const QList<QListWidgetItem*> marked = list->selectedItems();
    all.same("highlighted entries", model.highlighted < 0 ? 0 : 1, int(marked.size()));
    all.same("highlighted entry", model.highlighted,
             marked.isEmpty() ? -1 : list->row(marked.front()));
    if (model.highlighted >= 0)
        all.same("current entry", model.highlighted, list->currentRow());
    const QFrame* const panel = Driver::panelOf(window);
    all.same("panel visible", model.panelShown, panel->isVisible());
    const QList<QLineEdit*> fields = panel->findChildren<QLineEdit*>();
    for (std::size_t i = 0; i != model.fields.size(); ++i)
        all.same("field of the panel", model.fields[i], fields[qsizetype(i)]->text());
    all.same("box of the panel", model.treeOnly, panel->findChild<QCheckBox*>()->isChecked());
    compareTree(all, model.tree, *Driver::treeOf(window));
    return all.lines;
}

QStringList differences(const Said& expected, const Said& real) {
    Comparison all;
    all.same("debug lines", expected.messages, real.messages);
    all.same("log", expected.log, real.log);
    all.same("told", expected.told, real.told);
    all.same("asked", expected.asked, real.asked);
    return all.lines;
}

} // namespace random_use
