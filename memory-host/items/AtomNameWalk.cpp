#include "AtomNameWalk.h"

#include "Holder.h"
#include "Slabs.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace TAVIK {

using namespace memory_host;

class AtomNameWalk::Walk {
public:
    Walk(Compound* root, bool all, AtomNameVisitor& visitor) : m_all(all), m_visitor(visitor) {
        if (!root)
            return;
        HostItem& record = HostItem::of(root);
        if (record.isHolder())
            m_root = &record.asHolder();
        else if (record.kind == Kind::Atom && (all || record.has(HostItem::Selected)))
            m_atom = root;
    }

    bool advance(std::size_t items) {
        begin();
        while (items != 0 && !m_levels.empty())
            visitChildren(items);
        return !m_levels.empty();
    }

private:
    /// A composite whose children are being visited.
    struct Level {
        Holder* holder;
        std::uint32_t next; ///< index of a child
        bool isEntered;     ///< by the visitor, too
    };

    bool hasWanted(const Holder& holder) const {
        return (m_all ? holder.sum.atoms : holder.sum.selectedAtoms) > 0;
    }

    // The root and, where that is an atom, all.
    void begin() {
        if (Compound* const atom = std::exchange(m_atom, nullptr))
            m_visitor.Visit(atom, atom->GetFQName());
        Holder* const root = std::exchange(m_root, nullptr);
        if (!root || !hasWanted(*root))
            return;
        std::string beginning = root->self->GetFQName();
        // The name of a group ends in its own component, which the names below it do not have.
        if (root->kind == Kind::Group)
            beginning.resize(beginning.size() - root->name.text().size());
        else
            beginning += '/';
        enter(*root, beginning);
    }

    void enter(Holder& holder, std::string_view part) {
        if (m_visitor.Enter(holder.self, part))
            m_levels.push_back({&holder, 0, true});
    }

    // At most so many of the innermost composite, up to one that is to be visited first.
    void visitChildren(std::size_t& items) {
        const std::size_t level = m_levels.size();
        Holder& holder = *m_levels.back().holder;
        // In each piece the vector may be another one.
        Compound** const first = holder.childBegin();
        Compound** const last = holder.childEnd();
        Compound** child = first + std::min<std::ptrdiff_t>(m_levels.back().next, last - first);
        while (child != last && items != 0 && m_levels.size() == level) {
            --items;
            visit(*child++);
        }
        m_levels[level - 1].next = static_cast<std::uint32_t>(child - first);
        if (child != last || m_levels.size() != level)
            return;
        const bool isEntered = m_levels.back().isEntered;
        m_levels.pop_back();
        if (isEntered)
            m_visitor.Leave();
    }

    void visit(Compound* item) {
        prefetchAfter(item);
        HostItem& record = HostItem::of(item);
        if (record.kind == Kind::Atom) {
            if (m_all || record.has(HostItem::Selected))
                m_visitor.Visit(item, record.name.text());
        } else if (record.isHolder() && hasWanted(record.asHolder())) {
            if (record.asHolder().isInNames())
                enter(record.asHolder(), m_part.assign(record.name.text()).append(1, '/'));
            else
                m_levels.push_back({&record.asHolder(), 0, false});
        }
    }

    bool m_all;
    AtomNameVisitor& m_visitor;
    // What the walk begins with: one of these.
    Holder* m_root = nullptr;
    Compound* m_atom = nullptr;
    std::vector<Level> m_levels;
    std::string m_part;
};

AtomNameWalk::AtomNameWalk(Compound* root, bool all, AtomNameVisitor& visitor)
    : m_walk(std::make_unique<Walk>(root, all, visitor)) {}

AtomNameWalk::~AtomNameWalk() = default;

bool AtomNameWalk::advance(std::size_t items) {
    return m_walk->advance(items);
}

} // namespace TAVIK
