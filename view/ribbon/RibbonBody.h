// Closed bodies along a path, as triangles.
#pragma once

#include "Ribbon.h"
#include "RibbonPath.h"
#include "render/Scene.h"

#include <cstdint>
#include <vector>

namespace view {

/// A cross-section of a body, centred on the path.
struct BodySection {
    PathPoint point;
    double halfWidth;     ///< Å, across
    double halfThickness; ///< Å, up
    double narrowing = 0; ///< Å of half-width that are lost for each Å along
    Id id;                ///< of the part of the body that begins here
};

/// Adds bodies to a ribbon, with cuts where the id changes. A body has a closed surface of
/// triangles whose corners go counter-clockwise, seen from outside.
class BodyMaker {
public:
    /// `corners` of round sections, at least 3.
    BodyMaker(Ribbon& ribbon, unsigned corners);
    /// Makes room for so many sections of long bodies.
    void reserve(std::size_t sections);

    /// A body with sections like an ellipse; at least two sections.
    void addRound(const std::vector<BodySection>& sections);
    /// A body with rectangular sections and sharp edges; at least two sections.
    void addFlat(const std::vector<BodySection>& sections);
    void addBall(const Vector& centre, double radius, Id id);

private:
    /// A corner of a section of half-width and half-thickness 1.
    struct Corner {
        double across;
        double up;
        double normalAcross;
        double normalUp;
    };
    struct Shape {
        std::vector<Corner> corners;
        std::vector<std::array<std::uint32_t, 2>> sides; ///< indices of corners
        std::vector<std::uint32_t> outline;              ///< one corner at each place
    };

    static Shape roundShape(unsigned corners);
    static Shape flatShape();
    std::uint32_t addVertex(const Vector& place, const Vector& normal);
    void addTriangle(std::uint32_t a, std::uint32_t b, std::uint32_t c, Id id);
    void add(const Shape& shape, const std::vector<BodySection>& sections);
    std::uint32_t addSection(const Shape& shape, const BodySection& section);
    void addCap(const Shape& shape, const BodySection& section, bool isEnd, Id id);

    Mesh& m_mesh;
    std::vector<RibbonCut>& m_cuts;
    unsigned m_corners;
    Shape m_round;
    Shape m_flat;
};

} // namespace view
