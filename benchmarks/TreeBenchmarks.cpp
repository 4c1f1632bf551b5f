#include "Contest.h"
#include "DataMaker.h"
#include "Kinds.h"
#include "RealStructures.h"
#include "Space.h"
#include "Works.h"
#include "files/Files.h"
#include "tree/TreeItem.h"
#include "tree/TreeView.h"
#include "window/Vuxo.h"

#include <QApplication>
#include <QListWidget>
#include <QTest>
#include <QTreeWidget>

#include <memory>

namespace benchmarks {

namespace {

QString yesOrNo(bool yes) {
    return yes ? QStringLiteral("Yes") : QStringLiteral("No");
}

QString partialText(TAVIK::Compound* item) {
    if (const auto* const atom = dynamic_cast<TAVIK::Atom*>(item))
        return QString::fromLatin1(atom->GetModelNumber());
    return yesOrNo(item->HasSelected());
}

// The competitor's tree, built as its manual advises: detached, and added to the widget as a whole.
QTreeWidgetItem* widgetRow(TAVIK::Compound* item) {
    auto* const row =
        new QTreeWidgetItem({QString::fromLatin1(item->GetName()), yesOrNo(item->IsVisible()),
                             yesOrNo(item->IsSelected()), partialText(item)});
    for (TAVIK::Compound **child = item->ChildBegin(), **end = item->ChildEnd(); child != end;
         ++child)
        row->addChild(widgetRow(*child));
    return row;
}

// Brings a competitor's rows in line with the data, as commUpdate() does ours.
void refresh(QTreeWidgetItem* row, TAVIK::Compound* item) {
    row->setText(1, yesOrNo(item->IsVisible()));
    row->setText(2, yesOrNo(item->IsSelected()));
    row->setText(3, partialText(item));
    int index = 0;
    for (TAVIK::Compound **child = item->ChildBegin(), **end = item->ChildEnd(); child != end;
         ++child)
        refresh(row->child(index++), *child);
}

void showAndPaint(QWidget& widget) {
    widget.show();
    QApplication::processEvents();
}

} // namespace

void benchmarkTree(const std::string& path, int turns) {
    memory_host::openFile(path);
    TAVIK::Compound* const item = *TAVIK::Space::instance()->ChildBegin();
    const std::size_t atoms = atomCount(item);
    const std::size_t rows = rowCount(item);

    Vuxo window;
    showAndPaint(window);
    auto* const tree = window.findChild<TreeView*>();
    auto* const list = window.findChild<QListWidget*>();

    QTreeWidget widget;
    widget.setColumnCount(4);
    widget.setUniformRowHeights(true);
    widget.resize(tree->size());
    showAndPaint(widget);

    // A lower bound for a row of a tree widget, taken from the table's lines about memory.
    const double theirBytes = static_cast<double>(rows) * 640.0;
    MemoryLine memory{.work = "the filled tree",
                      .size = atoms,
                      .items = rows,
                      .itemName = "row",
                      .peer = "QTreeWidget",
                      .target = "at most 60 bytes"};
    if (isWanted(memory.work)) {
        const double before = heapBytes();
        window.Populate(0);
        memory.ourBytes = heapBytes() - before;
        tree->clear();
        memory.theirBytes = -1.0;
        if (hasMemory(theirBytes)) {
            const double between = heapBytes();
            widget.addTopLevelItem(widgetRow(item));
            memory.theirBytes = heapBytes() - between;
            widget.clear();
        }
        add(memory);
    }

    run({.work = "filling the tree",
         .size = atoms,
         .items = rows,
         .itemName = "row",
         .peer = "QTreeWidget",
         .target = "ratio at least 20",
         .theirBytes = theirBytes,
         .ours = {[&] { tree->clear(); },
                  [&] {
                      window.Populate(0);
                      QApplication::processEvents();
                  },
                  {}},
         .theirs = {[&] { widget.clear(); },
                    [&] {
                        auto* const row = widgetRow(item);
                        widget.addTopLevelItem(row);
                        row->setExpanded(true);
                        QApplication::processEvents();
                    },
                    {}}},
        turns);

    // All rows change, so that none can be skipped.
    run({.work = "commUpdate() after a selection",
         .size = atoms,
         .items = rows,
         .itemName = "row",
         .peer = "QTreeWidget",
         .target = "at most 20 ns",
         .theirBytes = theirBytes,
         .ours = {[&] {
                      if (!tree->firstChild())
                          window.Populate(0);
                      item->SetSelected(false);
                      window.commUpdate();
                      item->SetSelected(true);
                  },
                  [&] {
                      window.commUpdate();
                      QApplication::processEvents();
                  },
                  {}},
         .theirs = {[&] {
                        if (!widget.topLevelItem(0))
                            widget.addTopLevelItem(widgetRow(item));
                        item->SetSelected(false);
                        refresh(widget.topLevelItem(0), item);
                        item->SetSelected(true);
                    },
                    [&] {
                        refresh(widget.topLevelItem(0), item);
                        QApplication::processEvents();
                    },
                    {}}},
        turns);
    item->SetSelected(false);
    widget.clear();

    const QRect entry = list->visualItemRect(list->item(0));
    run({.work = "first left click on the list entry, painted",
         .size = atoms,
         .items = rows,
         .itemName = "row",
         .target = "at most 500 ms",
         .ours = {[&] {
                      // A deletion by others empties the tree, so that the click fills it again.
                      TAVIK::DataMaker::makeCore(TAVIK::Space::instance(), "other", "Composite");
                      window.commAdd();
                      TAVIK::DataMaker::Destroy(TAVIK::Space::instance()->ChildBegin()[1]);
                      window.commDelete();
                      QApplication::processEvents();
                  },
                  [&] {
                      QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, entry.center());
                      QApplication::processEvents();
                  },
                  {}}},
        turns);

    if (!tree->firstChild())
        window.Populate(0);
    TreeItem* const chain = tree->firstChild()->firstChild();
    run({.work = "clicking a chain's row: selected in the data, painted",
         .size = atoms,
         .items = rows,
         .itemName = "row",
         .target = "no pause that is noticed",
         .ours = {[&] {
                      tree->setCurrentItem(chain);
                      tree->scrollTo(tree->currentIndex());
                  },
                  [&] {
                      const QRect row = tree->visualRect(tree->currentIndex());
                      QTest::mouseClick(tree->viewport(), Qt::LeftButton, {}, row.center());
                      QApplication::processEvents();
                  },
                  {}}},
        turns);
    tree->clear();
    emptySpace();
}

} // namespace benchmarks
