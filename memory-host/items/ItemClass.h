// What the items of all kinds have in common: the operations that need only the record.
#pragma once

#include "Counters.h"
#include "Holder.h"
#include "HostItem.h"
#include "Selection.h"
#include "Slabs.h"
#include "Visibility.h"

#include <cstddef>
#include <string>
#include <utility>

namespace memory_host {

/// The operations that need only the record, for every kind of the interface.
template <class Interface, class Record> class Item : public Interface {
public:
    static void* operator new(std::size_t size) { return takeBlock(size); }
    static void operator delete(void* item, std::size_t size) noexcept { giveBlock(item, size); }

    std::string GetName() const override { return m_record.name.text(); }
    std::string GetType() const override { return kindName(m_record.kind); }
    TAVIK::Vertex GetPosition() const override { return {}; }
    void SetSelected(bool on) override { setSelected(m_record, on); }
    bool IsSelected() const override { return isSelected(m_record); }
    bool HasSelected() const override { return hasSelected(m_record); }
    void SetVisible(bool on) override { setVisible(m_record, this, on); }
    bool IsVisible() const override { return isVisible(m_record); }
    bool HasChildren() const override { return false; }
    Compound** ChildBegin() override { return nullptr; }
    Compound** ChildEnd() override { return nullptr; }
    void FirstModel() override {}
    void PrevModel() override {}
    void NextModel() override {}

protected:
    template <class... Arguments>
    explicit Item(Arguments&&... arguments) : m_record(std::forward<Arguments>(arguments)...) {}

    Record m_record;

private:
    HostItem& hostItem() final { return m_record; }
};

template <class Interface, Kind kind> class HolderItem : public Item<Interface, Holder> {
public:
    explicit HolderItem(Name name) : Item<Interface, Holder>(kind, std::move(name), this) {}
    bool HasChildren() const override { return this->m_record.childCount() > 0; }
    Compound** ChildBegin() override { return this->m_record.childBegin(); }
    Compound** ChildEnd() override { return this->m_record.childEnd(); }
};

template <class Interface, Kind kind> class LeafItem : public Item<Interface, HostItem> {
public:
    explicit LeafItem(Name name) : Item<Interface, HostItem>(kind, std::move(name)) {}
    bool IsSelected() const override { return this->m_record.has(HostItem::Selected); }
    bool HasSelected() const override { return this->m_record.has(HostItem::Selected); }
    bool IsVisible() const override { return this->m_record.has(HostItem::Shown); }
};

} // namespace memory_host
