#include "Coulomb.h"

#include <algorithm>
#include <cmath>

namespace electrostatics {

namespace {

constexpr std::uint32_t mostInLeaf = 8;
// Fewer charges are summed up as fast one by one.
constexpr std::uint32_t fewestInGroup = 5;
// The largest ratio of a group's radius to its distance at which it counts as one. With x of it,
// and c the cosine between them, a charge gives the sum of U_n(c) x^n over all n, the Chebyshev
// polynomials of the second kind: at most (n + 1) x^n for each n beyond the second.
constexpr double widest = 0.25;

// Four numbers at a time.
using Floats = float __attribute__((vector_size(16)));
constexpr std::size_t width = 4;

double apart(const std::array<double, 3>& a, const std::array<double, 3>& b) {
    return std::sqrt((a[0] - b[0]) * (a[0] - b[0]) + (a[1] - b[1]) * (a[1] - b[1]) +
                     (a[2] - b[2]) * (a[2] - b[2]));
}

float inUnits(double sum) {
    return static_cast<float>(potentialOfUnitCharge / dielectricSlope * sum);
}

bool isFinite(const Charge& charge) {
    return std::isfinite(charge.charge) &&
           std::ranges::all_of(charge.position, [](float x) { return std::isfinite(x); });
}

} // namespace

float coulombPotential(const Point& at, std::span<const Charge> charges) {
    double sum = 0;
    for (const Charge& charge : charges) {
        double squares = 0;
        for (std::size_t axis = 0; axis != 3; ++axis) {
            const double along = double(at[axis]) - double(charge.position[axis]);
            squares += along * along;
        }
        // 1 / r of the law, and 1 / r of the dielectric.
        sum += double(charge.charge) / std::max(squares, 1.0);
    }
    return inUnits(sum);
}

ChargeTree::ChargeTree(std::vector<Charge> charges) : m_charges(std::move(charges)) {
    std::erase_if(m_charges, [](const Charge& charge) { return !isFinite(charge); });
    if (m_charges.empty())
        return;
    m_nodes.reserve(m_charges.size() / 2 + 1);
    build(0, static_cast<std::uint32_t>(m_charges.size()));
}

ChargeTree::Node ChargeTree::summed(std::uint32_t begin, std::uint32_t end) const {
    Node node;
    node.begin = begin;
    node.end = end;
    const auto charges = std::span(m_charges).subspan(begin, end - begin);
    double weights = 0;
    for (const Charge& charge : charges) {
        const double weight = std::abs(double(charge.charge));
        weights += weight;
        for (std::size_t axis = 0; axis != 3; ++axis)
            node.centre[axis] += weight * double(charge.position[axis]);
    }
    for (double& x : node.centre)
        x = weights > 0 ? x / weights : 0;
    double radius = 0;
    for (const Charge& charge : charges) {
        const double q = double(charge.charge);
        Vector d{};
        for (std::size_t axis = 0; axis != 3; ++axis)
            d[axis] = double(charge.position[axis]) - node.centre[axis];
        radius = std::max(radius, std::hypot(d[0], d[1], d[2]));
        node.sum += q;
        for (std::size_t axis = 0; axis != 3; ++axis) {
            node.first[axis] += q * d[axis];
            node.second[axis] += q * d[axis] * d[axis];
        }
        node.second[3] += q * d[0] * d[1];
        node.second[4] += q * d[0] * d[2];
        node.second[5] += q * d[1] * d[2];
    }
    // No charge of a group that counts as one is nearer than 1 Å.
    node.far = std::max(radius / widest, radius + 1);
    return node;
}

void ChargeTree::build(std::uint32_t begin, std::uint32_t end) {
    const std::size_t place = m_nodes.size();
    m_nodes.push_back(summed(begin, end));
    if (end - begin > mostInLeaf) {
        Point lower = m_charges[begin].position;
        Point upper = lower;
        for (std::uint32_t i = begin; i != end; ++i)
            for (std::size_t axis = 0; axis != 3; ++axis) {
                lower[axis] = std::min(lower[axis], m_charges[i].position[axis]);
                upper[axis] = std::max(upper[axis], m_charges[i].position[axis]);
            }
        std::size_t longest = 0;
        for (std::size_t axis = 1; axis != 3; ++axis)
            if (upper[axis] - lower[axis] > upper[longest] - lower[longest])
                longest = axis;
        const std::uint32_t middle = begin + (end - begin) / 2;
        std::nth_element(m_charges.begin() + begin, m_charges.begin() + middle,
                         m_charges.begin() + end, [longest](const Charge& a, const Charge& b) {
                             return a.position[longest] < b.position[longest];
                         });
        m_nodes[place].isLeaf = false;
        build(begin, middle);
        build(middle, end);
    }
    m_nodes[place].next = static_cast<std::uint32_t>(m_nodes.size());
}

/// Some points near each other, whose potentials are summed up side by side; all relative to their
/// middle, so that floats have digits enough.
class ChargeTree::Lanes {
public:
    static constexpr std::size_t most = 16;

    explicit Lanes(std::span<const Point> points);

    const Vector& middle() const { return m_middle; }
    double radius() const { return m_radius; }
    float sum(std::size_t lane) const { return m_sum[lane / width][lane % width]; }

    void add(const Charge& charge);
    void add(const Node& node);

private:
    using Numbers = std::array<Floats, most / width>;

    float fromMiddle(double x, std::size_t axis) const {
        return static_cast<float>(x - m_middle[axis]);
    }

    Vector m_middle{};
    double m_radius = 0;
    Numbers m_x{};
    Numbers m_y{};
    Numbers m_z{};
    Numbers m_sum{};
};

ChargeTree::Lanes::Lanes(std::span<const Point> points) {
    for (std::size_t axis = 0; axis != 3; ++axis) {
        const auto [least, greatest] =
            std::ranges::minmax(points, {}, [axis](const Point& point) { return point[axis]; });
        m_middle[axis] = (double(least[axis]) + double(greatest[axis])) / 2;
    }
    for (std::size_t lane = 0; lane != points.size(); ++lane) {
        const float x = fromMiddle(double(points[lane][0]), 0);
        const float y = fromMiddle(double(points[lane][1]), 1);
        const float z = fromMiddle(double(points[lane][2]), 2);
        m_x[lane / width][lane % width] = x;
        m_y[lane / width][lane % width] = y;
        m_z[lane / width][lane % width] = z;
        m_radius = std::max(m_radius, double(std::hypot(x, y, z)));
    }
}

void ChargeTree::Lanes::add(const Charge& charge) {
    const float cx = fromMiddle(double(charge.position[0]), 0);
    const float cy = fromMiddle(double(charge.position[1]), 1);
    const float cz = fromMiddle(double(charge.position[2]), 2);
    constexpr Floats nearest = {1, 1, 1, 1};
    for (std::size_t i = 0; i != m_sum.size(); ++i) {
        const Floats x = m_x[i] - cx;
        const Floats y = m_y[i] - cy;
        const Floats z = m_z[i] - cz;
        const Floats squares = x * x + y * y + z * z;
        m_sum[i] += charge.charge / (squares > nearest ? squares : nearest);
    }
}

// The series of 1 / (r - d)² for a charge at d from the centre, to the second order in d.
void ChargeTree::Lanes::add(const Node& node) {
    const float cx = fromMiddle(node.centre[0], 0);
    const float cy = fromMiddle(node.centre[1], 1);
    const float cz = fromMiddle(node.centre[2], 2);
    const auto sum = static_cast<float>(node.sum);
    const auto dx = static_cast<float>(2 * node.first[0]);
    const auto dy = static_cast<float>(2 * node.first[1]);
    const auto dz = static_cast<float>(2 * node.first[2]);
    const auto xx = static_cast<float>(4 * node.second[0]);
    const auto yy = static_cast<float>(4 * node.second[1]);
    const auto zz = static_cast<float>(4 * node.second[2]);
    const auto xy = static_cast<float>(8 * node.second[3]);
    const auto xz = static_cast<float>(8 * node.second[4]);
    const auto yz = static_cast<float>(8 * node.second[5]);
    const auto trace = static_cast<float>(node.second[0] + node.second[1] + node.second[2]);
    for (std::size_t i = 0; i != m_sum.size(); ++i) {
        const Floats x = m_x[i] - cx;
        const Floats y = m_y[i] - cy;
        const Floats z = m_z[i] - cz;
        const Floats inverse = 1.0F / (x * x + y * y + z * z);
        const Floats first = x * dx + y * dy + z * dz;
        const Floats second = x * (x * xx + y * xy + z * xz) + y * (y * yy + z * yz) + z * z * zz;
        m_sum[i] += inverse * (sum + inverse * (first - trace + inverse * second));
    }
}

void ChargeTree::at(std::span<const Point> points, std::span<float> to) const {
    for (std::size_t first = 0; first < points.size(); first += Lanes::most) {
        const std::size_t count = std::min(Lanes::most, points.size() - first);
        Lanes lanes(points.subspan(first, count));
        for (std::size_t i = 0; i != m_nodes.size();) {
            const Node& node = m_nodes[i];
            const bool isGroup = node.end - node.begin >= fewestInGroup;
            if (isGroup && apart(lanes.middle(), node.centre) >= node.far + lanes.radius()) {
                lanes.add(node);
                i = node.next;
            } else if (node.isLeaf) {
                for (std::uint32_t charge = node.begin; charge != node.end; ++charge)
                    lanes.add(m_charges[charge]);
                i = node.next;
            } else {
                ++i;
            }
        }
        for (std::size_t lane = 0; lane != count; ++lane)
            to[first + lane] = inUnits(double(lanes.sum(lane)));
    }
}

} // namespace electrostatics
