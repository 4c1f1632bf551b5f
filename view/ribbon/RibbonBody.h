// Closed bodies along a path, as triangles.
#pragma once

#include "Ribbon.h"
#include "RibbonPath.h"
#include "render/Scene.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace view {

/// A cross-section of a body, centred on the path.
struct BodySection {
    PathPoint point;
    double halfWidth;     ///< Å, across
    double halfThickness; ///< Å, up
    double narrowing;     ///< Å of half-width that are lost for each Å along
    unsigned step;        ///< along the path, counted from the middle between two residues
    Id id;                ///< of the part of the body that begins here
};

/// How finely bodies are made.
struct BodyDetail {
    unsigned subdivisions; ///< sections a residue
    std::vector<unsigned>
        corners; ///< of round sections that it has, in ascending order; at least 3
};

/// Adds bodies to a ribbon, with cuts where the id changes. A body has a closed surface of
/// triangles whose corners go counter-clockwise, seen from outside.
class BodyMaker {
public:
    /// The first of the `details` has all corners, as many as they are; the mesh gets one coarser
    /// surface for each of the others, whose corners are among those of the one before and whose
    /// subdivisions divide the first one's.
    BodyMaker(Ribbon& ribbon, std::span<const BodyDetail> details);
    /// Makes room for so many sections of long bodies.
    void reserve(std::size_t sections);
    /// To be called when all bodies are there: puts the vertices of the coarser surfaces first.
    void sortVertices();

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
        std::size_t detail; ///< the coarsest that has it
    };
    /// Of one detail: indices of corners.
    struct Sides {
        std::vector<std::array<std::uint32_t, 2>> sides;
        std::vector<std::uint32_t> outline; ///< one corner at each place
    };
    struct Shape {
        std::vector<Corner> corners;
        std::vector<Sides> details;
    };
    /// The triangles of a detail.
    struct Surface {
        std::vector<std::array<std::uint32_t, 3>>* triangles;
        std::vector<Id>* ids;

        void add(std::uint32_t a, std::uint32_t b, std::uint32_t c, Id id) const {
            triangles->push_back({a, b, c});
            ids->push_back(id);
        }
    };
    struct PlacedSection {
        std::uint32_t firstVertex;
        unsigned details; ///< that have it, a bit each
    };

    Shape roundShape() const;
    Shape flatShape() const;
    Surface surface(std::size_t detail);
    unsigned detailsOf(const BodySection& section) const;
    std::uint32_t addVertex(const Vector& place, const Vector& normal, std::size_t detail);
    void add(const Shape& shape, const std::vector<BodySection>& sections);
    void addSides(const Shape& shape, const std::vector<BodySection>& sections, std::size_t detail);
    std::uint32_t addSection(const Shape& shape, const BodySection& section, std::size_t detail,
                             bool isCut);
    void addCap(const Shape& shape, const BodySection& section, bool isEnd, Id id);

    Mesh& m_mesh;
    std::vector<RibbonCut>& m_cuts;
    std::vector<BodyDetail> m_details;
    std::vector<std::uint8_t> m_vertexDetails; ///< the coarsest that has each vertex
    std::vector<PlacedSection> m_placed;       ///< of the last body
    Shape m_round;
    Shape m_flat;
};

} // namespace view
