#include "AtomCharges.h"
#include "Balls.h"
#include "Contest.h"
#include "DataMaker.h"
#include "DataPointBase.h"
#include "Space.h"
#include "Works.h"
#include "files/Files.h"
#include "mesh/BallSurfaces.h"
#include "potential/Coulomb.h"

#include <chrono>
#include <vector>

namespace benchmarks {

namespace {

const std::string reading = "charges of atoms at pH 7";
const std::string mapping = "Coulomb potential on the excluded surface";

/// Opens a structure, and closes it.
class Opened {
public:
    explicit Opened(const std::string& path) { memory_host::openFile(path); }
    Opened(const Opened&) = delete;
    Opened& operator=(const Opened&) = delete;
    ~Opened() {
        const DataPointBase guard(nullptr, Publisher::Delete);
        TAVIK::Space* const space = TAVIK::Space::instance();
        while (space->ChildBegin() != space->ChildEnd())
            TAVIK::DataMaker::Destroy(*space->ChildBegin());
    }
};

} // namespace

// On one thread. All charges with all vertices would take minutes of a ribosome: every so many
// vertices are taken, and the time multiplied.
void benchmarkPotentials(const std::string& path, int turns) {
    if (!isWanted(reading) && !isWanted(mapping))
        return;
    using electrostatics::Charge;
    const std::vector<solid::Ball> balls = ballsOf(path);
    std::vector<Charge> charges;
    {
        const Opened opened(path);
        charges = electrostatics::readCharges({}).charges;
        run({.work = reading,
             .size = balls.size(),
             .items = balls.size(),
             .itemName = "atom",
             .ours = {.work = [&] { charges = electrostatics::readCharges({}).charges; },
                      .outcome = [&] { return counted(charges.size(), "charges"); }}},
            turns);
    }
    if (!isWanted(mapping))
        return;
    const double step = balls.size() > 50'000 ? 1.0 : 0.5; // Å
    const std::vector<electrostatics::Point> vertices =
        solid::excludedSurface(balls, probe, step, inTurn()).vertices;
    std::vector<float> values(vertices.size());
    const std::size_t every = balls.size() > 50'000 ? 200 : 1;
    run({.work = mapping,
         .size = balls.size(),
         .items = vertices.size(),
         .itemName = "vertex",
         .peer = "each vertex with each charge",
         .target = balls.size() > 50'000 ? "at most 10 s" : "at most 0.1 s",
         .isProcessorTime = true,
         .ours = {.work = [&] { electrostatics::ChargeTree(charges).at(vertices, values); },
                  .outcome = [&] { return counted(vertices.size(), "vertices"); }},
         .theirs = {.work =
                        [&] {
                            const auto start = std::chrono::steady_clock::now();
                            std::size_t count = 0;
                            for (std::size_t i = 0; i < vertices.size(); i += every, ++count)
                                values[i] = coulombPotential(vertices[i], charges);
                            const std::chrono::duration<double> time =
                                std::chrono::steady_clock::now() - start;
                            setTime(time.count() * static_cast<double>(vertices.size()) /
                                    static_cast<double>(count));
                        },
                    .outcome = [&] { return counted(charges.size(), "charges"); }}},
        turns);
}

} // namespace benchmarks
