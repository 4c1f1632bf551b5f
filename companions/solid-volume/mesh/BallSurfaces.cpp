#include "BallSurfaces.h"

#include "BallUnion.h"
#include "Creases.h"
#include "ExcludedSolid.h"
#include "ExposedArea.h"

#include <numeric>
#include <vector>

namespace solid {

Mesh excludedSurface(std::span<const Ball> balls, double probe, double step,
                     const ForEach& forEach) {
    return polygonize(ExcludedSolid(balls, step, probe, forEach), forEach);
}

Mesh unionSurface(std::span<const Ball> balls, double margin, double step, const ForEach& forEach) {
    Mesh mesh = polygonize(BallUnion(balls, step, margin), forEach);
    const std::vector<double> areas = exposedAreas(balls, margin, step, forEach);
    std::vector<Ball> grown(balls.begin(), balls.end());
    for (Ball& ball : grown)
        ball.radius += static_cast<float>(margin);
    divideAtCreases(mesh, grown);
    mesh.area = std::accumulate(areas.begin(), areas.end(), 0.0);
    return mesh;
}

} // namespace solid
