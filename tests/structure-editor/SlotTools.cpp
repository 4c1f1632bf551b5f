#include "SlotTools.h"

#include "DataPoint.h"
#include "Kinds.h"
#include "Space.h"
#include "WindowTools.h"
#include "items/Building.h"
#include "plain/PlainMenus.h"
#include "tree/TreeItem.h"
#include "tree/TreeView.h"
#include "window/ListBox.h"
#include "window/Vuxo.h"

#include <QMetaMethod>

#include <algorithm>

using namespace window_tools;
using TAVIK::Compound;
using TAVIK::Space;

namespace slot_tools {

QStringList allSlots() {
    const QMetaObject& meta = Vuxo::staticMetaObject;
    QStringList all;
    for (int i = meta.methodOffset(); i < meta.methodCount(); ++i)
        if (meta.method(i).methodType() == QMetaMethod::Slot)
            all << QString::fromLatin1(meta.method(i).methodSignature());
    return all;
}

bool Call::is(const char* signature) const {
    return qstrcmp(slot, signature) == 0;
}

std::vector<Call> allCalls() {
    using plain::Asks;
    using plain::Guard;
    std::vector<Call> all;
    for (const plain::Command& command : plain::commands()) {
        if (command.needs != plain::Needs::Entry) {
            all.push_back({command});
            continue;
        }
        const auto add = [&](Qt::MouseButton button, Guard guard, Asks asks) {
            all.push_back({command, int(button)});
            all.back().guard = guard;
            all.back().asks = asks;
            all.back().oddIsCancel = asks != Asks::No;
        };
        add(Qt::LeftButton, Guard::None, Asks::No);
        add(Qt::RightButton, Guard::Reported, Asks::No);
        add(Qt::MiddleButton, Guard::Silent, Asks::First);
        add(Qt::BackButton, Guard::None, Asks::No);
    }
    return all;
}

std::vector<Entry> changingEntries(const char* menu) {
    std::vector<Entry> found;
    for (const plain::MenuEntry& entry : plain::menuEntries()) {
        const plain::Command* const command = plain::findCommand(plain::commands(), entry.slot);
        if (qstrcmp(entry.menu, menu) == 0 && command && command->guard != plain::Guard::None)
            found.push_back({*command, entry.label});
    }
    return found;
}

QByteArray nameOf(const Call& call) {
    return QByteArray(call.slot) + ' ' + QByteArray::number(call.button);
}

bool invoke(Vuxo& window, const QByteArray& signature, int button) {
    const QMetaObject* meta = window.metaObject();
    const QMetaMethod method = meta->method(meta->indexOfSlot(signature.constData()));
    if (signature == "Populate(int)") {
        for (const int index : {-1, 0, 1'000'000})
            if (!method.invoke(&window, Q_ARG(int, index)))
                return false;
        return true;
    }
    if (signature == "KillBranch(TreeItem*)") {
        TreeItem* row = treeOf(window)->firstChild();
        return method.invoke(&window, Q_ARG(TreeItem*, row ? row->firstChild() : nullptr));
    }
    if (signature.startsWith("ListEvent("))
        return method.invoke(&window, Q_ARG(int, button),
                             Q_ARG(QListWidgetItem*, listOf(window)->item(0)),
                             Q_ARG(QPoint, QPoint()));
    return method.invoke(&window);
}

namespace {

// Lines for what the rows below `row` show other than the host holds.
void compareRows(const TreeItem* row, QStringList& faults) {
    Compound* item = row->compound();
    const QString name = QString::fromLatin1(item->GetName());
    if (row->isSelected() != item->IsSelected())
        faults << name + ": another selection";
    if (row->text(0) != name)
        faults << name + ": another name";
    const TreeItem* child = row->firstChild();
    for (Compound** it = item->ChildBegin(); it != item->ChildEnd(); ++it) {
        if (!child || child->compound() != *it) {
            faults << name + ": other children";
            return;
        }
        compareRows(child, faults);
        child = child->nextSibling();
    }
    if (child)
        faults << name + ": a row too many";
}

void describe(Compound* item, QStringList& out) {
    out << QStringLiteral("%1 %2%3 %4 %5")
               .arg(QString::fromLatin1(item->GetName()))
               .arg(item->IsSelected())
               .arg(item->IsVisible())
               .arg(item->GetColor().rgba())
               .arg(memory_host::activeModel(item));
    if (const auto* grid = dynamic_cast<const TAVIK::Grid*>(item))
        for (const std::size_t axis : {0, 1, 2})
            out.back() +=
                QStringLiteral(" %1-%2").arg(grid->m_lower[axis]).arg(grid->m_upper[axis]);
    for (Compound** child = item->ChildBegin(); child != item->ChildEnd(); ++child)
        describe(*child, out);
}

} // namespace

QStringList dataLines() {
    QStringList out;
    describe(Space::instance(), out);
    return out;
}

bool changesAreGranted() {
    const DataPoint<Space> guard(nullptr, Space::instance());
    return guard.m_good;
}

QStringList windowFaults(const Vuxo& window) {
    QStringList faults;
    const QStringList list = entries(window);
    Compound** const begin = Space::instance()->ChildBegin();
    if (list.size() != Space::instance()->ChildEnd() - begin)
        return {QStringLiteral("the list has %1 entries").arg(list.size())};
    for (qsizetype i = 0; i < list.size(); ++i) {
        const Compound* item = begin[i];
        const QString text = QLatin1String(item->IsVisible() ? " " : "O") +
                             QLatin1String(item->IsSelected()    ? "X "
                                           : item->HasSelected() ? "/ "
                                                                 : "_ ") +
                             QString::fromLatin1(item->GetName());
        if (list.at(i) != text)
            faults << QStringLiteral("entry '%1' for '%2'").arg(list.at(i), text);
    }
    const TreeItem* top = treeOf(window)->firstChild();
    if (!top)
        return faults;
    if (std::find(begin, begin + list.size(), top->compound()) == begin + list.size())
        return faults << QStringLiteral("the tree shows no top-level item");
    if (top->nextSibling())
        faults << QStringLiteral("the tree shows two items");
    if (const int index = highlighted(window); index >= 0 && begin[index] != top->compound())
        faults << QStringLiteral("another entry is highlighted");
    compareRows(top, faults);
    return faults;
}

} // namespace slot_tools
