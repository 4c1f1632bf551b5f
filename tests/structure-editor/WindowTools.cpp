#include "WindowTools.h"

#include "DataAdder.h"
#include "DataDelete.h"
#include "DataMaker.h"
#include "DataPoint.h"
#include "Space.h"
#include "items/Building.h"
#include "tree/TreeItem.h"
#include "tree/TreeView.h"
#include "window/ListBox.h"
#include "window/Vuxo.h"

#include <QAbstractButton>
#include <QApplication>
#include <QFrame>
#include <QTest>
#include <QTimer>

#include <algorithm>

namespace window_tools {

namespace {

using TAVIK::Compound;
using TAVIK::Space;

Compound* makeChild(Compound* parent, const std::string& name, const std::string& kind) {
    return TAVIK::DataMaker::makeCore(parent, name, kind);
}

Compound* makeAtom(Compound* parent, std::string_view name) {
    return memory_host::addAtom(
        parent, {name, name.substr(0, 1), TAVIK::Vertex(1.0F, 2.0F, 3.0F, true), 20.0F, 0});
}

void addToSpace(Compound* made) {
    const DataAdder<Space> guard(nullptr, Space::instance());
    memory_host::attach(made, Space::instance());
}

TreeItem* rowItemAt(const Vuxo& window, const QStringList& path) {
    TreeItem* row = treeOf(window)->firstChild();
    for (const QString& name : path) {
        if (row && &name != &path.front())
            row = row->firstChild();
        while (row && row->text(0) != name)
            row = row->nextSibling();
    }
    return row;
}

void collectRows(const QAbstractItemModel& model, const QModelIndex& parent, int depth,
                 QStringList& out) {
    for (int row = 0; row < model.rowCount(parent); ++row) {
        const QModelIndex index = model.index(row, 0, parent);
        out << QString(depth, u' ') + index.data().toString();
        collectRows(model, index, depth + 1, out);
    }
}

} // namespace

Compound* addStructure(const std::string& name) {
    Compound* entry = memory_host::makeDetached(name, "Composite");
    Compound* chain = makeChild(entry, "A", "Molecule");
    Compound* groups = makeChild(chain, "Groups", "Composite");
    Compound* bonds = makeChild(chain, "Bonds", "Composite");
    Compound* residue = makeChild(groups, "MET 1", "Residue");
    Compound* backbone = makeChild(residue, "Backbone", "Group");
    makeAtom(backbone, "N");
    Compound* alpha = makeAtom(backbone, "CA");
    Compound* carbon = makeAtom(backbone, "C");
    Compound* side = makeChild(residue, "Side chain", "Group");
    makeAtom(side, "CB");
    makeAtom(side, "SD");
    makeAtom(makeChild(groups, "HOH 2", "Residue"), "O");
    memory_host::addBond(bonds, alpha, carbon);
    addToSpace(entry);
    return entry;
}

Compound* addEmpty(const std::string& name, const std::string& kind) {
    Compound* made = memory_host::makeDetached(name, kind);
    addToSpace(made);
    return made;
}

Compound* addAtomTo(Compound* parent, const std::string& name) {
    const DataAdder<Compound> guard(nullptr, parent);
    return makeAtom(parent, name);
}

void destroyElsewhere(Compound* item) {
    const DataDelete<Compound> guard(nullptr, item);
    TAVIK::DataMaker::Destroy(item);
}

void selectElsewhere(Compound* item, bool on) {
    const DataPoint<Compound> guard(nullptr, item);
    item->SetSelected(on);
}

void showElsewhere(Compound* item, bool on) {
    const DataPoint<Compound> guard(nullptr, item);
    item->SetVisible(on);
}

Compound* itemAt(Compound* root, const QStringList& path) {
    for (const QString& name : path) {
        Compound** const found =
            std::find_if(root->ChildBegin(), root->ChildEnd(), [&](const Compound* child) {
                return QString::fromLatin1(child->GetName()) == name;
            });
        if (found == root->ChildEnd())
            return nullptr;
        root = *found;
    }
    return root;
}

void OtherPlugin::commUpdate() {
    ++updates;
    if (onUpdate)
        onUpdate();
}

void OtherPlugin::commAdd() {
    ++adds;
    if (onAdd)
        onAdd();
}

void OtherPlugin::commDelete() {
    ++deletes;
    if (onDelete)
        onDelete();
}

ListBox* listOf(const Vuxo& window) {
    return window.centralWidget()->findChild<ListBox*>();
}

TreeView* treeOf(const Vuxo& window) {
    return window.centralWidget()->findChild<TreeView*>();
}

QFrame* panelOf(const Vuxo& window) {
    for (QFrame* frame : window.findChildren<QFrame*>(QString(), Qt::FindDirectChildrenOnly))
        if (frame->isWindow())
            return frame;
    return nullptr;
}

QStringList entries(const Vuxo& window) {
    QStringList texts;
    const ListBox* list = listOf(window);
    for (int i = 0; i < list->count(); ++i)
        texts << list->item(i)->text();
    return texts;
}

int highlighted(const Vuxo& window) {
    const ListBox* list = listOf(window);
    const QList<QListWidgetItem*> selected = list->selectedItems();
    return selected.isEmpty() ? -1 : list->row(selected.front());
}

QStringList rows(const Vuxo& window) {
    QStringList names;
    collectRows(*treeOf(window)->model(), {}, 0, names);
    return names;
}

QModelIndex rowAt(const Vuxo& window, const QStringList& path) {
    const QAbstractItemModel& model = *treeOf(window)->model();
    QModelIndex at;
    for (const QString& name : path) {
        QModelIndex next;
        for (int row = 0; row < model.rowCount(at) && !next.isValid(); ++row)
            if (model.index(row, 0, at).data().toString() == name)
                next = model.index(row, 0, at);
        if (!next.isValid())
            return {};
        at = next;
    }
    return at;
}

QStringList cells(const Vuxo& window, const QStringList& path) {
    QStringList texts;
    const QModelIndex first = rowAt(window, path);
    for (int column = 0; column < 4; ++column)
        texts << first.siblingAtColumn(column).data().toString();
    return texts;
}

bool isMarked(const Vuxo& window, const QStringList& path) {
    const TreeItem* row = rowItemAt(window, path);
    return row && row->isSelected();
}

void click(QWidget* widget, const QPoint& pos, Qt::MouseButton button,
           Qt::KeyboardModifiers modifiers) {
    const QPointer<QWidget> alive(widget);
    QTest::mousePress(widget, button, modifiers, pos);
    if (alive)
        QTest::mouseRelease(widget, button, modifiers, pos);
}

void clickEntry(const Vuxo& window, int index, Qt::MouseButton button) {
    const ListBox* list = listOf(window);
    click(list->viewport(), list->visualItemRect(list->item(index)).center(), button);
}

void clickRow(const Vuxo& window, const QStringList& path, Qt::MouseButton button,
              Qt::KeyboardModifiers modifiers) {
    TreeView* tree = treeOf(window);
    const QModelIndex index = rowAt(window, path);
    tree->scrollTo(index);
    click(tree->viewport(), tree->visualRect(index).center(), button, modifiers);
}

bool withQuestion(const std::function<void()>& act,
                  const std::function<void(QMessageBox&)>& answer) {
    bool asked = false;
    QTimer timer;
    timer.setSingleShot(true);
    QObject::connect(&timer, &QTimer::timeout, [&] {
        if (auto* question = qobject_cast<QMessageBox*>(QApplication::activeModalWidget())) {
            asked = true;
            answer(*question);
        }
    });
    timer.start(0);
    act();
    return asked;
}

void pressOk(QMessageBox& question) {
    QTest::mouseClick(question.button(QMessageBox::Ok), Qt::LeftButton);
}

void pressCancel(QMessageBox& question) {
    QTest::mouseClick(question.button(QMessageBox::Cancel), Qt::LeftButton);
}

} // namespace window_tools
