// A cache of answers that are the same for all items of one class. A run-time type test costs more
// than most of what is done with an item, and there are few classes.
#pragma once

#include "Compound.h"

#include <array>
#include <cstddef>
#include <typeinfo>

namespace TAVIK::detail {

template <class Answer> class ByClass {
public:
    /// The result of `ask(item)`, cached for the class of `item`, which is not null.
    template <class Ask> Answer of(const Compound* item, const Ask& ask) {
        const std::type_info* const type = &typeid(*item);
        for (std::size_t i = 0; i != m_count; ++i)
            if (m_known[i].type == type)
                return m_known[i].answer;
        const Answer answer = ask(item);
        if (m_count != m_known.size())
            m_known[m_count++] = {type, answer};
        return answer;
    }

private:
    struct Known {
        const std::type_info* type;
        Answer answer;
    };
    std::array<Known, 16> m_known{};
    std::size_t m_count = 0;
};

} // namespace TAVIK::detail
