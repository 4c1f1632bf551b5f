// Items that stand in no data space and count how often they are asked: for the templates that walk
// over any host's items.
#pragma once

#include "Kinds.h"

#include <cstdlib>
#include <vector>

namespace contract {

/// An item of the class `Base` with children that the test sets; null ones are possible.
template <class Base> class Spy : public Base {
public:
    explicit Spy(bool selected = false, bool hasSelected = false)
        : m_selected(selected), m_hasSelected(hasSelected || selected) {}

    std::vector<TAVIK::Compound*> m_children;
    int m_asked = 0;           ///< how often the children were asked for
    mutable int m_entered = 0; ///< how often HasSelected was

    std::string GetName() const override { return "spy"; }
    std::string GetType() const override { return "Spy"; }
    TAVIK::Vertex GetPosition() const override { return {}; }
    void SetSelected(bool on) override { m_selected = on; }
    bool IsSelected() const override { return m_selected; }
    bool HasSelected() const override {
        ++m_entered;
        return m_hasSelected;
    }
    void SetVisible(bool) override {}
    bool IsVisible() const override { return true; }
    bool HasChildren() const override { return !m_children.empty(); }
    TAVIK::Compound** ChildBegin() override {
        ++m_asked;
        return m_children.data();
    }
    TAVIK::Compound** ChildEnd() override { return m_children.data() + m_children.size(); }
    void FirstModel() override {}
    void PrevModel() override {}
    void NextModel() override {}

private:
    // What only the host's own items have.
    TAVIK::HostItem& hostItem() override { std::abort(); }

    bool m_selected;
    bool m_hasSelected;
};

class SpyAtom : public Spy<TAVIK::Atom> {
public:
    using Spy::Spy;
    std::string GetModelNumber() const override { return "0"; }
    float GetTemperature() const override { return 0.0F; }
};

} // namespace contract
