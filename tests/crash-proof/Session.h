// Random changes of all kinds, as users and plug-ins make them.
#pragma once

#include "Compound.h"

#include <random>
#include <string>
#include <vector>

namespace crash_proof {

class Session {
public:
    explicit Session(unsigned int seed) : m_random(seed) {}

    void open(const std::string& path);
    /// Makes one change, or takes some back; returns whether a file was saved.
    bool change();
    /// Until the next one, in ms.
    int pause() { return upTo(4) == 0 ? upTo(2000) : upTo(150); }

private:
    using Items = std::vector<TAVIK::Compound*>;

    int upTo(int end) { return std::uniform_int_distribution<int>(0, end - 1)(m_random); }
    TAVIK::Compound* anyOf(const Items& items) {
        return items.empty()
                   ? nullptr
                   : items[static_cast<std::size_t>(upTo(static_cast<int>(items.size())))];
    }
    void look(TAVIK::Compound* item);
    void edit();
    void destroy();
    void make();
    bool save();

    std::mt19937 m_random;
    std::vector<std::string> m_files;
};

} // namespace crash_proof
