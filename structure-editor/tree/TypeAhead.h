// Finding a row or an entry by typing the start of its name.
#pragma once

#include <QElapsedTimer>
#include <QString>

#include <optional>

class QKeyEvent;

/// Collects the characters that are typed in quick succession. The rows to search are given as
/// `rows`, with two functions: `below(row)` is the next row, and the first after the last;
/// `startsWith(row, text)` says whether its name starts with the text, ignoring case.
class TypeAhead {
public:
    /// Whether a key types a character, alone or with Shift.
    static bool isTyped(const QKeyEvent& event);
    /// Whether the next character can continue what was typed before.
    bool isRunning() const;
    /// Whether a key with another meaning, such as a shortcut, is a part of the search.
    bool takes(const QKeyEvent& event) const { return isRunning() && isTyped(event); }

    /// The row that `typed` leads to from `current`: one whose name starts with all that was typed
    /// lately, or else with `typed` alone; nothing when there is none. After a pause it starts
    /// anew, below `current`.
    template <class Rows, class Row>
    std::optional<Row> find(const Rows& rows, Row current, const QString& typed) {
        if (const std::optional<Row> row = goOn(rows, current, typed))
            return row;
        m_lastKey.start();
        const std::optional<Row> row = findFrom(rows, rows.below(current), typed);
        if (row)
            m_prefix = typed;
        return row;
    }
    /// The same, but only for all that was typed recently; nothing after a pause.
    template <class Rows, class Row>
    std::optional<Row> goOn(const Rows& rows, Row current, const QString& typed) {
        if (!isRunning()) {
            forget();
            return {};
        }
        const std::optional<Row> row = findFrom(rows, current, m_prefix + typed);
        if (row) {
            m_prefix += typed;
            m_lastKey.start();
        }
        return row;
    }
    /// Forgets what was typed.
    void forget() { m_prefix.clear(); }

private:
    // Visits every row once, from `start` on, wrapping around.
    template <class Rows, class Row>
    static std::optional<Row> findFrom(const Rows& rows, Row start, const QString& prefix) {
        Row row = start;
        do {
            if (rows.startsWith(row, prefix))
                return row;
            row = rows.below(row);
        } while (row != start);
        return {};
    }

    QString m_prefix;
    QElapsedTimer m_lastKey;
};
