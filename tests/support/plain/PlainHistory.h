// Taking changes back and doing them again in the plainest way: with copies of all data.
#pragma once

#include "PlainItems.h"

#include <QString>

#include <memory>
#include <vector>

namespace plain {

/// What taking changes back, or doing them again, does to the data.
struct Turn {
    bool adds = false;
    bool removes = false;
};

class Past {
public:
    Past() = default;
    /// Begins with the data as they are.
    void begin(const Host& host);
    /// A change has ended.
    void record(Host& host);
    /// Whether so many changes, at least one, can be taken back, or done again.
    bool has(bool back, std::size_t count) const;
    std::size_t count(bool back) const { return (back ? m_done : m_undone).size(); }
    /// How many to take back so that one that does more than to select is among them; or 0.
    std::size_t toLastOfData() const;
    /// What going so far does: items that are removed are still there.
    Turn ahead(bool back, std::size_t count) const;
    void go(Host& host, bool back, std::size_t count);

    /// The changes that can be taken back, or done again, the oldest first: 's' for each that only
    /// selects, 'd' for each other.
    QString text(bool back) const;
    /// Takes over what the real text is after the last changes: of those after which the data are
    /// as before, as when all is unselected and selected again, the host may keep a step or not.
    /// False if it cannot be told which of them it has kept.
    bool keep(const QString& real);

private:
    explicit Past(unsigned int lastVersion) : m_lastVersion(lastVersion) {}

    using CopyPtr = std::shared_ptr<const Host::Copy>;
    struct Change {
        CopyPtr before;
        CopyPtr after;
        Turn again; ///< when it is done
        bool onlySelects = false;
        bool isNothing = false; ///< the data are as before
    };
    static Change between(CopyPtr before, CopyPtr after);

    CopyPtr m_now;
    std::vector<Change> m_done;     ///< the last one at the end
    std::vector<Change> m_undone;   ///< the next one at the end
    unsigned int m_lastVersion = 0; ///< of a top-level item
    std::size_t m_new = 0;          ///< of those done, which keep() has not seen
};

} // namespace plain
