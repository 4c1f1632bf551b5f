#include "Balls.h"
#include "Contest.h"
#include "Works.h"
#include "mesh/ExposedArea.h"

#include <QProcess>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QTemporaryDir>

#include <array>
#include <numeric>
#include <optional>
#include <stdexcept>

#include <sys/resource.h>

namespace benchmarks {

namespace {

constexpr std::size_t manyAtoms = 50'000;

struct Kind {
    std::string name;
    double probe; ///< Å
};
const std::array<Kind, 2> kinds = {{{"solvent-accessible area", probe}, {"van der Waals area", 0}}};

/// Å of the lattice, and how far the area may be from the competitor's.
struct Step {
    double length;
    std::string name;
    std::string target;
};
const std::array<Step, 2> steps = {
    {{0.5, "0.5 Å", "within 0.5 %"}, {0.25, "0.25 Å", "within 0.2 %"}}};

std::string workOf(const Kind& kind, const Step& step) {
    return kind.name + ", " + step.name;
}

/// The program freesasa, and a file of the same balls for it.
class FreeSasa {
public:
    explicit FreeSasa(const std::vector<solid::Ball>& balls) {
        QFile file(path());
        if (!file.open(QFile::WriteOnly))
            throw std::runtime_error("cannot write balls for freesasa");
        std::size_t serial = 0;
        for (const solid::Ball& ball : balls) {
            // The radius stands where the occupancy does.
            file.write(QString::asprintf("ATOM  %5zu  C   ALA A%4zu    %8.3f%8.3f%8.3f%6.2f%6.2f\n",
                                         serial % 100'000, 1 + serial / 20 % 9999,
                                         static_cast<double>(ball.centre[0]),
                                         static_cast<double>(ball.centre[1]),
                                         static_cast<double>(ball.centre[2]),
                                         static_cast<double>(ball.radius), 0.0)
                           .toLatin1());
            ++serial;
        }
        if (!file.flush())
            throw std::runtime_error("cannot write balls for freesasa");
    }

    static bool isThere() { return !QStandardPaths::findExecutable("freesasa").isEmpty(); }

    /// In Å². Its processor time becomes that of the work in progress.
    double area(double probe) const {
        const double before = childrensTime();
        QProcess program;
        program.start("freesasa",
                      {"--lee-richards", "--resolution=200", "--radius-from-occupancy",
                       "--n-threads=1", "--no-warnings",
                       "--probe-radius=" + QString::number(probe > 0 ? probe : nearlyNone),
                       path()});
        if (!program.waitForFinished(-1) || program.exitCode() != 0)
            throw std::runtime_error("freesasa: " + program.readAllStandardError().toStdString());
        setTime(childrensTime() - before);
        const QRegularExpression total("Total\\s*:\\s*([0-9.]+)");
        return total.match(program.readAllStandardOutput()).captured(1).toDouble();
    }

private:
    static constexpr double nearlyNone = 1e-5; // Å; it refuses 0

    QString path() const { return m_folder.filePath("balls.pdb"); }

    // Of all processes that were waited for, in seconds.
    static double childrensTime() {
        rusage usage{};
        getrusage(RUSAGE_CHILDREN, &usage);
        const auto seconds = [](const timeval& time) {
            return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) * 1e-6;
        };
        return seconds(usage.ru_utime) + seconds(usage.ru_stime);
    }

    QTemporaryDir m_folder;
};

std::string squareAngstroms(double area) {
    return counted(static_cast<std::size_t>(area + 0.5), "Å²");
}

void compare(const std::vector<solid::Ball>& balls, const FreeSasa& freeSasa, const Kind& kind,
             const Step& step, int turns) {
    double ours = 0;
    double theirs = 0;
    const auto difference = [&] {
        return theirs > 0 ? QString::asprintf(", %+.3f %%", 100 * (ours / theirs - 1)).toStdString()
                          : std::string();
    };
    run({.work = workOf(kind, step),
         .size = balls.size(),
         .items = balls.size(),
         .itemName = "atom",
         .peer = FreeSasa::isThere() ? "FreeSASA, 200 slices" : "",
         .target = step.target,
         .isProcessorTime = true,
         .takeTheyMinutes = balls.size() > manyAtoms && kind.probe > 0,
         .ours = {{},
                  [&] {
                      const std::vector<double> areas =
                          solid::exposedAreas(balls, kind.probe, step.length, inTurn());
                      ours = std::accumulate(areas.begin(), areas.end(), 0.0);
                  },
                  {},
                  [&] { return squareAngstroms(ours) + difference(); }},
         .theirs = {{},
                    [&] { theirs = freeSasa.area(kind.probe); },
                    {},
                    [&] { return squareAngstroms(theirs); }}},
        balls.size() > manyAtoms ? 1 : turns);
}

} // namespace

// Ours on one thread, and the competitor's likewise, which also reads a file.
void benchmarkAreas(const std::string& path, int turns) {
    std::vector<solid::Ball> balls;
    std::optional<FreeSasa> freeSasa;
    for (const Kind& kind : kinds)
        for (const Step& step : steps) {
            if (!isWanted(workOf(kind, step)))
                continue;
            if (!freeSasa) {
                balls = ballsOf(path);
                freeSasa.emplace(balls);
            }
            if (balls.size() <= manyAtoms || step.length > 0.25 || isLongRun())
                compare(balls, *freeSasa, kind, step, turns);
        }
}

} // namespace benchmarks
