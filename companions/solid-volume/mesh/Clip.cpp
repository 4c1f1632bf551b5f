#include "Clip.h"

#include <cstddef>
#include <limits>
#include <unordered_map>

namespace solid {

namespace {

class Clipping {
public:
    Clipping(std::span<const float> values, float limit)
        : m_values(values), m_limit(limit), m_kept(values.size(), none) {}

    void add(const Triangle& triangle) {
        // The corners of what is left, at most four, in order. Where a value is missing, it neither
        // is in nor cuts an edge, and less than a triangle is left.
        std::array<Ends, 4> corners{};
        std::size_t count = 0;
        for (std::size_t i = 0; i != 3; ++i) {
            const std::uint32_t a = triangle[i];
            const std::uint32_t b = triangle[(i + 1) % 3];
            if (m_values[a] >= m_limit)
                corners[count++] = {a, a};
            if (m_values[a] > m_limit && m_values[b] < m_limit)
                corners[count++] = {a, b};
            else if (m_values[a] < m_limit && m_values[b] > m_limit)
                corners[count++] = {b, a};
        }
        if (count < 3)
            return;
        std::array<std::uint32_t, 4> vertices{};
        for (std::size_t i = 0; i != count; ++i)
            vertices[i] = vertexAt(corners[i]);
        for (std::size_t i = 2; i < count; ++i)
            m_out.triangles.push_back({vertices[0], vertices[i - 1], vertices[i]});
    }
    Clipped take() { return std::move(m_out); }

private:
    static constexpr std::uint32_t none = std::numeric_limits<std::uint32_t>::max();

    /// Of an edge, the one that is in first; twice the same for a vertex of the mesh.
    struct Ends {
        std::uint32_t in;
        std::uint32_t out;
    };

    std::uint32_t vertexAt(const Ends& ends) {
        return ends.in == ends.out ? kept(ends.in) : between(ends.in, ends.out);
    }
    std::uint32_t make(const Clipped::Vertex& vertex) {
        m_out.vertices.push_back(vertex);
        return static_cast<std::uint32_t>(m_out.vertices.size() - 1);
    }
    std::uint32_t kept(std::uint32_t vertex) {
        if (m_kept[vertex] == none)
            m_kept[vertex] = make({vertex, vertex, 0});
        return m_kept[vertex];
    }
    std::uint32_t between(std::uint32_t in, std::uint32_t out) {
        const std::uint64_t edge = std::uint64_t{in} << 32U | out;
        if (const auto found = m_edges.find(edge); found != m_edges.end())
            return found->second;
        const double part =
            (double{m_values[in]} - m_limit) / (double{m_values[in]} - m_values[out]);
        const std::uint32_t vertex = make({in, out, static_cast<float>(part)});
        m_edges.emplace(edge, vertex);
        return vertex;
    }

    std::span<const float> m_values;
    float m_limit;
    Clipped m_out;
    std::vector<std::uint32_t> m_kept; ///< by vertex of the mesh
    std::unordered_map<std::uint64_t, std::uint32_t> m_edges;
};

} // namespace

Clipped clip(std::span<const Triangle> triangles, std::span<const float> values, float limit) {
    Clipping clipping(values, limit);
    for (const Triangle& triangle : triangles)
        clipping.add(triangle);
    return clipping.take();
}

} // namespace solid
