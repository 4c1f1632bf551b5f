#include "Ladders.h"

#include <array>

namespace view {

namespace {

struct Bridge {
    std::uint32_t first;
    std::uint32_t second; // behind `first` in the order of residues
    bool isParallel;
};

class BridgeSearch {
public:
    BridgeSearch(std::span<const Acceptors> acceptors, std::span<const std::uint32_t> segments)
        : m_acceptors(acceptors), m_segments(segments) {}

    // In order of their first residues, and then of the second ones.
    std::vector<Bridge> run() const {
        std::vector<Bridge> bridges;
        std::vector<std::size_t> partners;
        for (std::size_t i = 1; i + 1 < m_segments.size(); ++i) {
            if (!isInside(i))
                continue;
            // Each pattern has a bond of the N-H of i or of the residue after it.
            partners.clear();
            for (const std::size_t donor : {i, i + 1})
                for (const std::uint32_t acceptor : m_acceptors[donor])
                    if (acceptor != noResidue)
                        partners.insert(partners.end(), {acceptor, acceptor + std::size_t(1)});
            std::sort(partners.begin(), partners.end());
            partners.erase(std::unique(partners.begin(), partners.end()), partners.end());
            for (const std::size_t j : partners) {
                // The residues of a bridge and their neighbours on both sides do not overlap.
                if (j < i + 3 || j + 1 >= m_segments.size() || !isInside(j))
                    continue;
                const bool parallel = isParallel(i, j);
                if (parallel || isAntiparallel(i, j))
                    bridges.push_back(
                        {static_cast<std::uint32_t>(i), static_cast<std::uint32_t>(j), parallel});
            }
        }
        return bridges;
    }

private:
    bool isInside(std::size_t i) const { return m_segments[i - 1] == m_segments[i + 1]; }

    bool bonded(std::size_t donor, std::size_t acceptor) const {
        return isBonded(m_acceptors, donor, acceptor);
    }

    bool isParallel(std::size_t i, std::size_t j) const {
        return (bonded(i + 1, j) && bonded(j, i - 1)) || (bonded(j + 1, i) && bonded(i, j - 1));
    }

    bool isAntiparallel(std::size_t i, std::size_t j) const {
        return (bonded(i + 1, j - 1) && bonded(j + 1, i - 1)) || (bonded(j, i) && bonded(i, j));
    }

    std::span<const Acceptors> m_acceptors;
    std::span<const std::uint32_t> m_segments;
};

bool continues(const Ladder& ladder, const Bridge& bridge) {
    return ladder.isParallel == bridge.isParallel && ladder.first.to + 1 == bridge.first &&
           (bridge.isParallel ? ladder.second.to + 1 == bridge.second
                              : ladder.second.from == bridge.second + 1);
}

void extend(Ladder& ladder, const ResidueRange& first, const ResidueRange& second,
            std::size_t bridges) {
    ladder.first.to = std::max(ladder.first.to, first.to);
    ladder.second.from = std::min(ladder.second.from, second.from);
    ladder.second.to = std::max(ladder.second.to, second.to);
    ladder.bridges += bridges;
}

// Ladders without bulges, in order of their first residues.
std::vector<Ladder> withoutBulges(const std::vector<Bridge>& bridges) {
    std::vector<Ladder> all;
    // Those that end at the residue before this one, and at this one.
    std::vector<std::size_t> before;
    std::vector<std::size_t> here;
    std::uint32_t at = 0;
    for (const Bridge& bridge : bridges) {
        if (bridge.first != at) {
            before.swap(here);
            if (bridge.first != at + 1)
                before.clear();
            here.clear();
            at = bridge.first;
        }
        const auto found = std::find_if(before.begin(), before.end(), [&](std::size_t ladder) {
            return continues(all[ladder], bridge);
        });
        const ResidueRange first = {bridge.first, bridge.first};
        const ResidueRange second = {bridge.second, bridge.second};
        if (found != before.end()) {
            extend(all[*found], first, second, 1);
            here.push_back(*found);
        } else {
            here.push_back(all.size());
            all.push_back({first, second, 1, bridge.isParallel});
        }
    }
    return all;
}

// Steps along the strands from the end of one ladder to the beginning of the other.
constexpr std::int64_t shortStep = 2; // one residue in between
constexpr std::int64_t longStep = 5;  // four residues

bool areLinkedByBulge(const Ladder& a, const Ladder& b, std::span<const std::uint32_t> segments) {
    if (a.isParallel != b.isParallel)
        return false;
    const auto isUnbroken = [&](const ResidueRange& one, const ResidueRange& other) {
        return segments[std::min(one.from, other.from)] == segments[std::max(one.to, other.to)];
    };
    if (!isUnbroken(a.first, b.first) || !isUnbroken(a.second, b.second))
        return false;
    const std::int64_t first = std::int64_t(b.first.from) - a.first.to;
    const std::int64_t second = a.isParallel ? std::int64_t(b.second.from) - a.second.to
                                             : std::int64_t(a.second.from) - b.second.to;
    return first > 0 && second >= 0 && std::max(first, second) <= longStep &&
           std::min(first, second) <= shortStep;
}

} // namespace

std::vector<Ladder> ladders(std::span<const Acceptors> acceptors,
                            std::span<const std::uint32_t> segments) {
    std::vector<Ladder> all = withoutBulges(BridgeSearch(acceptors, segments).run());
    std::vector<Ladder> linked;
    std::vector<std::uint8_t> isTaken(all.size(), 0);
    for (std::size_t i = 0; i < all.size(); ++i) {
        if (isTaken[i])
            continue;
        Ladder ladder = all[i];
        for (std::size_t j = i + 1;
             j < all.size() && std::int64_t(all[j].first.from) - ladder.first.to <= longStep; ++j) {
            if (!isTaken[j] && areLinkedByBulge(ladder, all[j], segments)) {
                extend(ladder, all[j].first, all[j].second, all[j].bridges);
                isTaken[j] = 1;
            }
        }
        linked.push_back(ladder);
    }
    return linked;
}

} // namespace view
