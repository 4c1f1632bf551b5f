#include "Compare.h"

#include "Kinds.h"
#include "Space.h"
#include "items/Building.h"
#include "tree/TreeItem.h"
#include "tree/TreeView.h"
#include "window/ListBox.h"
#include "window/Vuxo.h"

#include <QCheckBox>
#include <QColor>
#include <QFrame>
#include <QLineEdit>

namespace random_use {

namespace {

using plain::Host;
using TAVIK::Compound;

class Comparison {
public:
    QStringList lines;

    /// Of what the next values are; null for the window.
    void lookAt(const char* kind, const plain::Item* item) {
        m_kind = kind;
        m_item = item;
    }
    template <class Value> void same(const char* what, const Value& expected, const Value& real) {
        if (!(expected == real) && !isFull())
            lines << where() + QLatin1String(what) + ": " + inText(expected) +
                         " was expected, and it is " + inText(real);
    }
    bool isFull() const { return lines.size() >= enough; }

private:
    static constexpr int enough = 12;

    QString where() const {
        return m_item ? QStringLiteral("%1 %2 (%3): ")
                            .arg(QLatin1String(m_kind),
                                 QString::fromLatin1(Host::qualifiedName(*m_item)))
                            .arg(m_item->id)
                      : QString();
    }
    static QString inText(bool value) { return QLatin1String(value ? "true" : "false"); }
    static QString inText(int value) { return QString::number(value); }
    static QString inText(unsigned int value) { return QString::number(value); }
    static QString inText(float value) { return QString::number(double(value)); }
    static QString inText(const QString& value) { return u'"' + value + u'"'; }
    static QString inText(const std::string& value) { return inText(QString::fromLatin1(value)); }
    static QString inText(const QStringList& value) { return inText(value.join(u'|')); }
    static QString inText(const std::vector<std::array<float, 3>>& value) {
        QStringList texts;
        for (const auto& at : value)
            texts << QStringLiteral("(%1, %2, %3)").arg(at[0]).arg(at[1]).arg(at[2]);
        return u'[' + texts.join(u' ') + u']';
    }
    static QString inText(const std::vector<unsigned int>& value) {
        QStringList texts;
        for (const unsigned int each : value)
            texts << QString::number(each);
        return u'[' + texts.join(u' ') + u']';
    }

    const char* m_kind = "";
    const plain::Item* m_item = nullptr;
};

std::vector<unsigned int> idsOf(const plain::Items& items) {
    std::vector<unsigned int> ids;
    for (const plain::Item* item : items)
        ids.push_back(item->id);
    return ids;
}

std::vector<unsigned int> idsOf(Compound** begin, Compound** end) {
    std::vector<unsigned int> ids;
    for (; begin != end; ++begin)
        ids.push_back((*begin)->GetId());
    return ids;
}

std::vector<std::array<float, 3>> cornersOf(Compound* item) {
    std::vector<std::array<float, 3>> corners;
    for (const TAVIK::Vertex& at : memory_host::polyLinePoints(item))
        if (at.isValid())
            corners.push_back({at[0], at[1], at[2]});
    return corners;
}

// Whether the item is of the class that a plug-in tells its kind by.
bool isOfItsClass(const plain::Item& item, Compound* real) {
    using plain::Kind;
    const auto is = [&](Kind kind, const auto* found) { return (item.kind == kind) == !!found; };
    return is(Kind::Space, dynamic_cast<TAVIK::Space*>(real)) &&
           is(Kind::Molecule, dynamic_cast<TAVIK::Molecule*>(real)) &&
           is(Kind::Residue, dynamic_cast<TAVIK::Residue*>(real)) &&
           is(Kind::Group, dynamic_cast<TAVIK::Group*>(real)) &&
           is(Kind::Atom, dynamic_cast<TAVIK::Atom*>(real)) &&
           is(Kind::Bond, dynamic_cast<TAVIK::Bond*>(real)) &&
           is(Kind::Surface, dynamic_cast<TAVIK::Surface*>(real)) &&
           is(Kind::Grid, dynamic_cast<TAVIK::Grid*>(real)) &&
           item.isComposite() == (dynamic_cast<TAVIK::Composite*>(real) != nullptr);
}

void compareValues(Comparison& all, const plain::Item& item, Compound* real) {
    all.same("type", item.kind == plain::Kind::Atom ? item.type : plain::kindName(item.kind),
             real->GetType());
    all.same("class", true, isOfItsClass(item, real));
    all.same("corners", item.corners, cornersOf(real));
    if (const auto* const atom = dynamic_cast<TAVIK::Atom*>(real)) {
        const TAVIK::Vertex at = real->GetPosition();
        all.same("model", std::to_string(item.model), atom->GetModelNumber());
        all.same("temperature", item.temperature, atom->GetTemperature());
        all.same("has a position", item.hasPosition, at.isValid());
        for (const std::size_t k : {0, 1, 2})
            all.same("position", item.position[k], at[k]);
    } else if (const auto* const grid = dynamic_cast<TAVIK::Grid*>(real)) {
        for (const std::size_t k : {0, 1, 2}) {
            all.same("points", item.points[k], grid->m_points[k]);
            all.same("lower bound", item.lower[k], grid->m_lower[k]);
            all.same("upper bound", item.upper[k], grid->m_upper[k]);
        }
    } else if (item.kind == plain::Kind::Residue) {
        all.same("active model", item.model, memory_host::activeModel(real));
    }
}

void compareItem(Comparison& all, const plain::Item& item, Compound* real) {
    if (all.isFull())
        return;
    all.lookAt("item", &item);
    if (item.kind != plain::Kind::Space) {
        all.same("id", item.id, real->GetId());
        all.same("name", item.name, real->GetName());
        all.same("qualified name", Host::qualifiedName(item), real->GetFQName());
        all.same("colour", item.color, real->GetColor().rgba());
    }
    all.same("selected", Host::isSelected(item), real->IsSelected());
    all.same("has selected", Host::hasSelected(item), real->HasSelected());
    all.same("visible", Host::isVisible(item), real->IsVisible());
    all.same("has children", !item.children.empty(), real->HasChildren());
    all.same("parts", idsOf(item.parts), idsOf(real->PartBegin(), real->PartEnd()));
    const std::vector<unsigned int> children = idsOf(item.children);
    const std::vector<unsigned int> realChildren = idsOf(real->ChildBegin(), real->ChildEnd());
    all.same("children", children, realChildren);
    compareValues(all, item, real);
    if (children == realChildren)
        for (std::size_t i = 0; i != children.size(); ++i)
            compareItem(all, *item.children[i], real->ChildBegin()[i]);
}

QString yesNo(bool yes) {
    return QLatin1String(yes ? "Yes" : "No");
}

QStringList cellsOf(const plain::Item& item) {
    return {QString::fromLatin1(item.name), yesNo(Host::isVisible(item)),
            yesNo(Host::isSelected(item)),
            item.kind == plain::Kind::Atom ? QString::number(item.model)
                                           : yesNo(Host::hasSelected(item))};
}

void compareRow(Comparison& all, const plain::Row& row, const TreeView& view,
                const QModelIndex& index, bool descending) {
    if (all.isFull())
        return;
    const TreeItem* const real = TreeModel::itemOf(index);
    all.lookAt("row of", row.item);
    all.same("item", row.item->id, real->compound()->GetId());
    QStringList cells;
    for (int column = 0; column != 4; ++column)
        cells << index.siblingAtColumn(column).data().toString();
    all.same("cells", cellsOf(*row.item), cells);
    static const Qt::GlobalColor byDepth[] = {Qt::darkMagenta, Qt::magenta, Qt::darkGreen,
                                              Qt::darkBlue, Qt::red};
    const auto depth = std::size_t(row.depth());
    const QVariant textColor = index.data(Qt::ForegroundRole);
    all.same("colour of the text", depth < std::size(byDepth) ? QColor(byDepth[depth]).rgba() : 0U,
             textColor.isNull() ? 0U : textColor.value<QColor>().rgba());
    all.same("colour of the cell", row.item->color | 0xff000000U,
             index.siblingAtColumn(1).data(Qt::BackgroundRole).value<QColor>().rgba());
    all.same("selected", row.selected, real->isSelected());
    all.same("changed by the user", row.dirty, real->isDirty());
    all.same("open", row.open, real->isOpen());
    all.same("open in the view", row.open, view.isExpanded(index));
    const int count = index.model()->rowCount(index);
    all.same("number of rows", int(row.children.size()), count);
    if (count == int(row.children.size()))
        for (int i = 0; i != count; ++i)
            compareRow(all, *row.children[std::size_t(descending ? count - 1 - i : i)], view,
                       index.model()->index(i, 0, index), descending);
}

void compareTree(Comparison& all, const plain::Tree& tree, const TreeView& view) {
    const QAbstractItemModel& rows = *view.model();
    all.same("number of top rows", tree.top() ? 1 : 0, rows.rowCount());
    if (!tree.top() || rows.rowCount() != 1)
        return;
    compareRow(all, *tree.top(), view, rows.index(0, 0), tree.descending);
    all.lookAt("", nullptr);
    const TreeItem* const current = view.currentItem();
    all.same("current row", tree.current ? tree.current->item->id : 0,
             current ? current->compound()->GetId() : 0);
}

} // namespace

QStringList differences(plain::Model& model, const Driver& driver) {
    Comparison all;
    compareItem(all, *model.host.space(), TAVIK::Space::instance());
    all.lookAt("", nullptr);
    all.same("shows the selection", model.showSelection, TAVIK::Space::GetShowSelection());
    for (const std::string& fault : memory_host::checkInvariants())
        all.lines << QString::fromStdString(fault);
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

QStringList differences(const plain::Said& expected, const plain::Said& real) {
    Comparison all;
    all.same("debug lines", expected.messages, real.messages);
    all.same("log", expected.log, real.log);
    all.same("told", expected.told, real.told);
    all.same("asked", expected.asked, real.asked);
    return all.lines;
}

} // namespace random_use
