// One row of the structure tree. A row shows one item of the host, mirrors its state in four
// columns, and carries selection both ways: the user's to the host, the host's into the tree.
#pragma once

#include "ByClass.h"
#include "Changed.h"
#include "Compound.h"
#include "RowNode.h"
#include "SelectedChildren.h"

#include <QColor>
#include <QString>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <utility>
#include <vector>

class TreeModel;
class TreeRoot;
class TreeView;

/// What the user selected and unselected, as it is handed to the host: of a row with those below it
/// the row alone.
struct HandedOver {
    TAVIK::Changed selected;
    TAVIK::Changed unselected;
};

/// A row. Rows belong to their tree, which alone deletes them, once they are out of it.
///
/// Siblings are kept in ascending order of host ids. They are shown, and visited by firstChild(),
/// nextSibling() and child(), in this or in descending order, as the header says. A row stores the
/// id, so that sorting never reads an item that may be gone.
///
/// A tree has millions of rows: a row is small, and has no virtual functions.
class TreeItem : public RowNode<TreeItem> {
public:
    /// Makes the row of `c` at the top level of `parent`. A null `c` warns and makes an empty row,
    /// which nothing can be done with; so below.
    TreeItem(TreeView* parent, TAVIK::Compound* c);
    /// Makes the row of `c` below `parent`.
    TreeItem(TreeItem* parent, TAVIK::Compound* c);

    /// The host item that the row shows; not owned, and null in an empty row.
    TAVIK::Compound* compound() const { return m_Compound; }

    /// The row above this one in the tree; null at the top level.
    TreeItem* parent() const;
    /// The first child row as shown; null without children.
    TreeItem* firstChild() const { return child(0); }
    /// The next row as shown below the same parent; null after the last.
    TreeItem* nextSibling() const;
    /// The child row at `index` as shown; null outside 0 to childCount() - 1.
    TreeItem* child(int index) const;
    /// The child row of an item; null if there is none.
    TreeItem* rowOf(const TAVIK::Compound* c) const;
    /// 0 at the top level.
    int depth() const;
    /// The place among the siblings as shown, from 0.
    int position() const;
    /// The next row on screen, or beyond its edge: rows of closed branches are left out. Null after
    /// the last.
    TreeItem* itemBelow() const;
    /// The row before this one on screen; null before the first.
    TreeItem* itemAbove() const;
    /// The row itself, or the topmost closed ancestor, which hides it.
    TreeItem* shownRow();

    /// The text of a cell, read from the host at each call; empty for unknown columns.
    QString text(int column) const;
    /// The row in words, for screen readers: "MET 1, shown, partly selected".
    QString spoken() const;
    /// The colour of the text in a cell; invalid for the view's default.
    QColor textColor(int column) const;
    /// The colour behind a cell, opaque; invalid for the view's default.
    QColor cellColor(int column) const;

    /// The host id as text of at least ten characters, whatever the column and direction: text
    /// order is numeric order.
    QString key(int column, bool ascending) const;
    /// -1, 0 or 1 as this row's host id is smaller than, equal to or larger than that of `other`,
    /// whatever the column and direction. A null `other` is written to the debug stream, and comes
    /// first.
    int compare(const TreeItem* other, int column, bool ascending) const;

    /// Decides whether the row has an expansion mark, which is whether it has child rows now. The
    /// view calls this once, before it first shows or opens the row.
    void setup();
    /// Whether the last setup() found child rows.
    bool isExpandable() const { return m_expandable; }
    /// setup(), unless it was done before.
    void setupOnce() {
        if (!m_configured)
            setup();
    }
    /// Opens or closes the row. Whether it is open is known here alone: views hear of it from the
    /// model, and follow.
    void setOpen(bool open);
    bool isOpen() const { return m_open; }

    /// Selects or unselects the row for the user, and marks it for being handed to the host.
    void setSelected(bool s);
    bool isSelected() const { return ownSelected() && isMarkedAbove(); }
    /// isSelected(), if hasSelected() is known to be true for all rows above.
    bool isSelectedAsMarked() const { return ownSelected(); }
    /// False only if neither this row nor one below it is selected.
    bool hasSelected() const { return isPacked() ? packedMark() : m_marked; }
    /// Whether selecting the row can select other rows, below it or, through a set, elsewhere.
    bool selectsOthers() const;
    /// False only if neither this row nor one below it has items elsewhere as parts, as a set does.
    bool holdsSets() const { return m_elsewhere; }
    /// Whether the user changed the row's selection since it was last handed over.
    bool isDirty() const { return m_Dirty; }
    /// Clears the mark of isDirty(), unless the row is selected: its contents are then handed over
    /// row by row.
    void forgetUnselecting() {
        if (m_Dirty && !isSelected())
            m_Dirty = false;
    }
    /// Clears the mark of isDirty() in this row and those below.
    void SetClean();
    /// Hands the user's changes, in this row and below, to the host. A changed row includes all
    /// below it. The caller holds a change guard.
    void CheckSelection();
    /// The same; `handed` is told of each item that was.
    void CheckSelection(HandedOver& handed);
    /// Copies the host's selection to this row and those below.
    void UpdateSelection();

    /// Adds rows, in this row and below, for host items without one. Existing rows stay as they
    /// are, even if their item is gone.
    void commAdd();
    /// Does nothing: the window clears the tree before anything is deleted.
    void commDel() {}
    /// Makes the row of `c` below this one, and the rows of all that it holds.
    void addRows(TAVIK::Compound* c);

    /// The invisible row above all; null for a row outside of any tree.
    const TreeRoot* root() const;
    TreeRoot* root() { return const_cast<TreeRoot*>(std::as_const(*this).root()); }

private:
    friend class RowNode<TreeItem>;
    friend class TreeRoot;

    /// What a row needs to know of its item's class.
    enum class Kind : std::uint8_t {
        Composite, ///< the items that it holds have rows of their own
        Single,    ///< has a selection mark of its own
        Other      ///< such as a set: its selection may depend on items elsewhere
    };
    /// What is kept while many rows are made.
    struct Batch {
        ByClass<Kind> kinds;
        std::size_t rows = 0; ///< how many were made

        Kind kindOf(const TAVIK::Compound* c) {
            return c ? kinds.of(c, TreeItem::kindOf) : Kind::Single;
        }
    };

    /// A row outside of any tree; `line` is for the warning about a null `c`.
    TreeItem(TAVIK::Compound* c, Kind kind, int line);
    /// The invisible row above the top level.
    TreeItem() : RowNode(Root()) {}
    ~TreeItem() = default;

    static Kind kindOf(const TAVIK::Compound* c);
    void CheckSelection(HandedOver& handed, bool descending, bool markedAbove);
    /// Whether the host and the rows agree that nothing in a composite is selected.
    bool holdsNoSelection(bool selected) const;
    /// Whether the row's own marks are in childMarks() of the row above.
    bool isPacked() const { return m_parent && m_parent->m_packed; }
    bool packedMark() const { return m_parent->childMarks() >> m_position & 1; }
    bool ownSelected() const { return isPacked() ? packedMark() : m_selected; }
    /// What an item tells of all its children at once.
    struct Told : TAVIK::SelectedChildren {
        explicit Told(TAVIK::Compound* c) : isKnown(TAVIK::GetSelectedChildren(c, *this)) {}
        bool isKnown;
    };
    /// The child rows are those of all items that were told of, in their order.
    void becomeWhole(const Told& told);
    /// updateRows() without reading an item below; returns whether that could be done.
    bool packMarks();
    /// Gives the child rows their own marks back.
    void unpackMarks();
    /// The child rows are about to be no longer those of all that the item holds.
    void leaveWhole() {
        unpackMarks();
        m_whole = false;
    }
    /// Whether m_marked is true in all rows above.
    bool isMarkedAbove() const;
    /// Sets m_marked in this row and those above; where it was false, clears stale flags below.
    void expectSelection();
    /// UpdateSelection(), when all rows above are marked.
    void updateRows();
    void mark(bool selected, bool below) {
        if (m_selected != selected)
            m_selected = selected;
        if (const bool marked = selected || below; m_marked != marked)
            m_marked = marked;
    }

    /// Deletes a row that is not in a tree.
    struct DeleteDetached {
        void operator()(TreeItem* row) const {
            if (!row->m_parent)
                delete row;
        }
    };
    using Detached = std::unique_ptr<TreeItem, DeleteDetached>;

    static Detached build(TAVIK::Compound* c, Batch& batch);
    void commAdd(Batch& batch);
    /// Makes a row and all below it like new, closed and for the items that exist now, at much less
    /// cost than making them. The selection is not updated.
    void comeBack(Batch& batch);
    /// Whether the child rows, which are plain, are known to be those of the items that a composite
    /// holds now, without reading any of them.
    bool showsAll(TAVIK::Compound** begin, TAVIK::Compound** end) const;
    /// The row is not as it was made any more.
    void leavePlain() {
        if (m_parent)
            m_parent->m_plain = false;
    }
    /// Makes the rows of all that the item holds now; there must be none before.
    void buildChildren(Batch& batch);
    /// Marks what rows that come below this one say of those above them.
    void markFor(std::span<TreeItem* const> rows);
    std::size_t find(const TAVIK::Compound* c, std::size_t expected) const;

    // The flags first, because they fit into the padding of the base.
    bool m_Dirty : 1 = false;
    bool m_selected : 1 = false;
    bool m_marked : 1 = false;    ///< this row, or one below it, may be selected; if false, nothing
                                  ///< from here down is, and the flags below are stale
    bool m_elsewhere : 1 = false; ///< this row, or one below it, is of the kind Other
    bool m_composite : 1 = false;
    bool m_open : 1 = false;
    bool m_expandable : 1 = false;
    bool m_configured : 1 = false; ///< setup() was done
    bool m_whole : 1 = false;  ///< the child rows, at least one, are of all items that a composite
                               ///< held when its children had m_version, in their order
    bool m_packed : 1 = false; ///< m_selected and m_marked of the child rows, which have none
                               ///< below, are stale: childMarks() stands for both
    bool m_plain : 1 = false;  ///< all child rows are of items that are no composites, and as
                               ///< they were made
    std::uint32_t m_version = 0;
    TAVIK::Compound* m_Compound = nullptr;
};

/// Makes the row of `c` below `parent`, and the rows of all that it holds; always true.
bool FFF2(TAVIK::Compound* c, TreeItem* parent);
