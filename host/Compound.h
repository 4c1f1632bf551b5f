// The root of the data model: every item of the data space is a Compound, and one that holds others
// is a Composite. Kinds are told apart by dynamic_cast only. The host library defines the
// destructors, so that each class has one type_info in the whole program.
#pragma once

#include "Color.h"
#include "HostExport.h"
#include "Vertex.h"

#include <string>

namespace TAVIK {

/// What a host library keeps for an item; defined by that library alone.
struct HostItem;

/// An item of the data space: name, identifier, colour, selection and visibility. Items are made
/// and destroyed through DataMaker only, and changed only while a change guard is good.
///
/// Names and qualified names are Latin-1 bytes. Unless stated, nothing here throws.
class HOST_EXPORT Compound {
public:
    Compound(const Compound&) = delete;
    Compound& operator=(const Compound&) = delete;
    virtual ~Compound();

    // The virtual functions are declared in vtable order; a host may add others after them.

    /// Display name: one component of the qualified name, never with a "/" in it.
    virtual std::string GetName() const = 0;
    /// An atom's element symbol, as "H", "O", "Cu"; for other items, the kind.
    virtual std::string GetType() const = 0;
    /// Where the item is, in Å; an invalid vertex when it has no position.
    virtual Vertex GetPosition() const = 0;
    /// Selects or unselects the item and all that it holds; a set does so to its members.
    virtual void SetSelected(bool on) = 0;
    /// Whether the item as a whole is selected.
    virtual bool IsSelected() const = 0;
    /// Whether the item or anything in it is selected.
    virtual bool HasSelected() const = 0;
    /// Shows or hides the item and all that it holds; a set does so to its members.
    virtual void SetVisible(bool on) = 0;
    /// Whether the item, or anything in it, is shown.
    virtual bool IsVisible() const = 0;
    /// Whether the item holds items that a tree shows below it.
    virtual bool HasChildren() const = 0;
    /// The direct children, in order, as a contiguous range; empty for an item that holds none.
    /// Creating or destroying items in this composite invalidates the range. A child pointer may be
    /// null. Below the top level, children are ordered by identifier.
    virtual Compound** ChildBegin() = 0;
    virtual Compound** ChildEnd() = 0;
    /// Switch a residue among its alternative models; nothing happens where there are none.
    virtual void FirstModel() = 0;
    virtual void PrevModel() = 0;
    virtual void NextModel() = 0;

    // The operations below are defined once, by the host library.

    /// The qualified name: "/" and a component for each level, as in "/1ubq/A/Groups/MET 1/CA".
    std::string GetFQName() const;
    /// Identifier: unique in the data space while the program runs, rising in order of creation.
    unsigned int GetId() const;
    /// The parts of an item that is no composite: a bond's two atoms, a set's members. Parts belong
    /// to their own parents, and are never null. The next change of the data invalidates the range.
    Compound** PartBegin();
    Compound** PartEnd();
    Color GetColor() const;
    /// Colours this item alone, not what it holds.
    void SetColor(const Color& color);
    /// Gives the item its default colour back.
    void RestoreColor();
    /// Opens the host's context menu for the item and returns when the menu is closed. By then the
    /// item may have been destroyed.
    void ShowMenu();
    void ToggleSelected();
    void ToggleVisible();

protected:
    Compound() = default;

private:
    friend struct HostItem;
    /// The host library's own record of the item.
    virtual HostItem& hostItem() = 0;
};

/// An item that holds an ordered vector of children.
class HOST_EXPORT Composite : public Compound {
public:
    ~Composite() override;
};

} // namespace TAVIK
