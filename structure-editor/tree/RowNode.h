// The position of a row in a tree, and the memory of rows. Knows nothing of what rows show.
#pragma once

#include "RowPool.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <new>
#include <span>

/// The base of a `Row`: its place among the rows, which have one root above them all. Children are
/// kept by rising id; they are shown in that order or in the reverse one.
///
/// A row stores its index among its siblings, so that it is never searched for. Rows and their
/// lists are in a pool of their own; the root, which outlives them, is not.
template <class Row> class RowNode {
public:
    RowNode(const RowNode&) = delete;
    RowNode& operator=(const RowNode&) = delete;

    static void* operator new(std::size_t) { return pool().takeRow(); }
    static void operator delete(void* row) noexcept { pool().giveRow(row); }

    std::uint32_t id() const { return m_id; }
    bool isRoot() const { return m_isRoot; }
    /// The row that this one is a child of, which may be the root; null in a row that is in no
    /// tree.
    Row* above() const { return m_parent; }
    int childCount() const { return static_cast<int>(m_count); }
    /// The child at `index`, below childCount(), as shown.
    Row* childAt(std::uint32_t index, bool descending) const {
        return m_children[descending ? m_count - 1 - index : index];
    }
    /// All children, by id.
    std::span<Row* const> children() const { return {m_children, m_count}; }
    /// The place among the siblings as shown.
    std::uint32_t shownAt(bool descending) const {
        return descending ? m_parent->m_count - 1 - m_position : m_position;
    }

protected:
    struct Root {};

    /// In no tree yet.
    explicit RowNode(std::uint32_t id) : m_id(id) {}
    explicit RowNode(Root) : m_isRoot(true) {}
    ~RowNode() {
        deleteChildren();
        giveArray(m_children, m_capacity);
    }

    static auto& pool() {
        static RowPool<sizeof(Row)> all;
        return all;
    }

    void reserve(std::size_t capacity) {
        if (capacity <= m_capacity)
            return;
        Row** const children = takeArray(capacity);
        std::copy(m_children, m_children + m_count, children);
        ::new (children - 1) std::uint64_t(m_capacity ? childMarks() : 0);
        giveArray(m_children, m_capacity);
        m_children = children;
        m_capacity = static_cast<std::uint32_t>(capacity);
    }
    /// A word before the list of children, for a mark of each of the first 64; 0 in a new list.
    /// There must be room for a child.
    std::uint64_t& childMarks() const {
        return *std::launder(reinterpret_cast<std::uint64_t*>(m_children - 1));
    }
    /// Reserves room for `count` more children; inserting them cannot fail then.
    void makeRoom(std::size_t count) {
        if (m_count + count > m_capacity)
            reserve(std::max<std::size_t>(m_count + count, m_count + m_count / 2));
    }
    /// Appends a child, for which there is room.
    void append(Row* row) {
        row->m_parent = self();
        row->m_position = m_count;
        m_children[m_count++] = row;
    }
    /// Puts `rows`, which have no parent yet and for which there is room, before the child at
    /// `position`.
    void insert(std::uint32_t position, std::span<Row* const> rows) {
        Row** const gap = m_children + position;
        std::copy_backward(gap, m_children + m_count, m_children + m_count + rows.size());
        std::copy(rows.begin(), rows.end(), gap);
        m_count += static_cast<std::uint32_t>(rows.size());
        for (std::uint32_t i = position; i != m_count; ++i) {
            m_children[i]->m_parent = self();
            m_children[i]->m_position = i;
        }
    }
    /// Removes `count` children from `position` on; they are in no tree then.
    void take(std::uint32_t position, std::uint32_t count) {
        Row** const gap = m_children + position;
        for (std::uint32_t i = 0; i != count; ++i)
            gap[i]->m_parent = nullptr;
        std::copy(gap + count, m_children + m_count, gap);
        m_count -= count;
        for (std::uint32_t i = position; i != m_count; ++i)
            m_children[i]->m_position = i;
    }
    /// Sorts the children by their ids.
    void sort() {
        Row** const end = m_children + m_count;
        const auto byId = [](const Row* a, const Row* b) { return a->m_id < b->m_id; };
        if (std::is_sorted(m_children, end, byId))
            return;
        std::stable_sort(m_children, end, byId);
        for (std::uint32_t i = 0; i != m_count; ++i)
            m_children[i]->m_position = i;
    }
    /// Deletes the children for which `stays(row)`, asked of each in turn, is false.
    template <class Stays> void keepOnly(Stays stays) {
        std::uint32_t kept = 0;
        for (std::uint32_t i = 0; i != m_count; ++i) {
            Row* const row = m_children[i];
            if (!stays(row)) {
                delete row;
                continue;
            }
            // A row that keeps its index is not written to.
            if (row->m_position != kept)
                row->m_position = kept;
            m_children[kept++] = row;
        }
        m_count = kept;
    }
    void deleteChildren() {
        for (std::uint32_t i = 0; i != m_count; ++i)
            delete m_children[i];
        m_count = 0;
    }
    /// Number of rows, this one and all below.
    std::size_t rowCount() const {
        std::size_t count = 1;
        for (std::uint32_t i = 0; i != m_count; ++i)
            count += m_children[i]->rowCount();
        return count;
    }

    Row* m_parent = nullptr;
    Row** m_children = nullptr;
    std::uint32_t m_count = 0;
    std::uint32_t m_capacity = 0;
    std::uint32_t m_id = 0;
    std::uint32_t m_position = 0; ///< among the siblings by id
    bool m_isRoot = false;

private:
    Row* self() { return static_cast<Row*>(this); }
    static std::size_t bytesOf(std::size_t capacity) {
        static_assert(sizeof(std::uint64_t) == sizeof(Row*));
        return (1 + capacity) * sizeof(Row*);
    }
    Row** takeArray(std::size_t capacity) const {
        const std::size_t bytes = bytesOf(capacity);
        return 1 + static_cast<Row**>(m_isRoot ? ::operator new(bytes) : pool().takeArray(bytes));
    }
    void giveArray(Row** array, std::size_t capacity) const noexcept {
        if (!array)
            return;
        if (m_isRoot)
            ::operator delete(array - 1);
        else
            pool().giveArray(array - 1, bytesOf(capacity));
    }
};
