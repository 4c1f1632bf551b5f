#include "CapSieve.h"

#include "Vectors.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numeric>

namespace solid {

namespace {

constexpr std::size_t levels = 10;
// So few caps are not worth a finer look.
constexpr std::size_t few = 12;

} // namespace

// Seen from the middle of a cube.
CapSieve::Patch CapSieve::patchOf(const Field& field) {
    const auto direction = [&](double u, double v) {
        std::array<double, 3> at{};
        at[field.face / 2] = field.face % 2 == 0 ? 1 : -1;
        at[(field.face / 2 + 1) % 3] = u;
        at[(field.face / 2 + 2) % 3] = v;
        const Vector whole = {at[0], at[1], at[2]};
        return whole * (1 / length(whole));
    };
    const Vector middle = direction(field.u + field.side / 2, field.v + field.side / 2);
    double cosine = 1;
    for (const double u : {field.u, field.u + field.side})
        for (const double v : {field.v, field.v + field.side})
            cosine = std::min(cosine, dot(middle, direction(u, v)));
    return {static_cast<float>(middle.x), static_cast<float>(middle.y),
            static_cast<float>(middle.z), static_cast<float>(cosine),
            static_cast<float>(std::sqrt(1 - cosine * cosine))};
}

void CapSieve::clear(const Ball& own) {
    m_own = own;
    m_isCovered = false;
    m_caps.clear();
    m_numbers.clear();
}

void CapSieve::add(const Ball& other, std::uint32_t number) {
    const Vector apart = vectorOf(other.centre) - vectorOf(m_own.centre);
    const double distance = length(apart);
    const double radius = m_own.radius;
    constexpr double margin = 1e-6; // Å
    if (distance + radius < other.radius - margin)
        m_isCovered = true;
    if (!(distance > margin))
        return;
    const double cosine =
        (distance * distance + radius * radius - double{other.radius} * other.radius) /
        (2 * distance * radius);
    if (!(cosine < 1))
        return;
    const double within = std::max(cosine, -1.0);
    m_caps.push_back({static_cast<float>(apart.x / distance),
                      static_cast<float>(apart.y / distance),
                      static_cast<float>(apart.z / distance), static_cast<float>(within),
                      static_cast<float>(std::sqrt(1 - within * within))});
    m_numbers.push_back(number);
}

// Whether part of a patch may be free. Marks the caps that decide about it.
bool CapSieve::isOpen(const Field& field, std::size_t level) {
    constexpr float margin = 1e-5F; // for single precision
    const Patch own = patchOf(field);
    std::vector<std::uint32_t>& partial = m_partial[level + 1];
    partial.clear();
    for (const std::uint32_t i : m_partial[level]) {
        const Patch& cap = m_caps[i];
        const float along = cap.x * own.x + cap.y * own.y + cap.z * own.z;
        const float both = cap.cosine * own.cosine;
        const float sines = cap.sine * own.sine;
        if (cap.cosine < own.cosine && along > both + sines + margin) {
            m_matters[i] = std::max(m_matters[i], Matters::AsCover);
            return false;
        }
        if (cap.cosine <= -own.cosine || along >= both - sines - margin)
            partial.push_back(i);
    }
    if (partial.size() <= few || level + 1 == levels) {
        for (const std::uint32_t i : partial)
            m_matters[i] = Matters::AsEdge;
        return true;
    }
    const double half = field.side / 2;
    bool isAny = false;
    for (const double u : {field.u, field.u + half})
        for (const double v : {field.v, field.v + half})
            isAny = isOpen({field.face, u, v, half}, level + 1) || isAny;
    return isAny;
}

bool CapSieve::sift() {
    if (m_isCovered)
        return false;
    m_partial.resize(levels + 1);
    m_partial[0].resize(m_caps.size());
    std::iota(m_partial[0].begin(), m_partial[0].end(), 0U);
    m_matters.assign(m_caps.size(), Matters::Not);
    bool isAny = false;
    for (std::size_t face = 0; face != 6; ++face)
        isAny = isOpen({face, -1, -1, 2}, 0) || isAny;
    return isAny;
}

void CapSieve::find(Found& found) const {
    found.covering.clear();
    found.touching.clear();
    for (std::size_t i = 0; i != m_matters.size(); ++i) {
        if (m_matters[i] != Matters::Not)
            found.covering.push_back(m_numbers[i]);
        if (m_matters[i] == Matters::AsEdge)
            found.touching.push_back(m_numbers[i]);
    }
}

} // namespace solid
