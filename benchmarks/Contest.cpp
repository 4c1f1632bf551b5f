#include "Contest.h"

#include "Plot.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <fstream>
#include <iomanip>
#include <iostream>
#include <limits>
#include <map>
#include <optional>
#include <sstream>
#include <vector>

#include <malloc.h>
#include <time.h>

namespace benchmarks {

namespace {

using Clock = std::chrono::steady_clock;

struct Line {
    Contest contest;
    double ourSeconds = 0.0;
    double theirSeconds = 0.0;
    double ourPeak = 0.0; ///< bytes above what was in use before
    double theirPeak = 0.0;
    std::string ourOutcome{};
    std::string theirOutcome{};
};

Clock::time_point started;
double processorStarted = 0.0; // seconds
std::optional<double> told;    // seconds, by setTime()
std::vector<Line> lines;
std::vector<MemoryLine> memoryLines;
std::string wanted; // part of a work's name
std::vector<std::string> unwanted;
bool isLong = false;

// A field of the kernel's status of this process, in bytes. Writing to clear_refs resets the peak
// of its memory.
double statusBytes(const std::string& field) {
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);)
        if (line.rfind(field, 0) == 0)
            return std::stod(line.substr(field.size() + 1)) * 1024.0;
    return 0.0;
}

void resetPeak() {
    std::ofstream("/proc/self/clear_refs") << 5;
}

// Keeps the best time of each name; the table is written from it at the end.
class BestTimes : public benchmark::BenchmarkReporter {
public:
    bool ReportContext(const Context&) override { return true; }
    void ReportRuns(const std::vector<Run>& runs) override {
        for (const Run& run : runs) {
            if (run.run_type != Run::RT_Iteration)
                continue;
            const auto [at, isNew] =
                m_best.emplace(run.run_name.function_name, std::numeric_limits<double>::max());
            at->second = std::min(at->second,
                                  run.real_accumulated_time / static_cast<double>(run.iterations));
        }
    }
    double seconds(const std::string& name) const { return m_best.at(name); }

private:
    std::map<std::string, double> m_best;
};

// Of all threads of this process, in seconds.
double processorTime() {
    timespec time{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

// In seconds, since startClock().
double timeTaken(bool isProcessorTime) {
    if (told)
        return *told;
    if (isProcessorTime)
        return processorTime() - processorStarted;
    return std::chrono::duration<double>(Clock::now() - started).count();
}

void registerTurns(const std::string& name, const Contestant& contestant, bool isProcessorTime,
                   double& peak, int turns) {
    const auto takeTurn = [&contestant, &peak, isProcessorTime](benchmark::State& state) {
        for (auto _ : state) {
            if (contestant.prepare)
                contestant.prepare();
            resetPeak();
            const double before = statusBytes("VmRSS:");
            startClock();
            contestant.work();
            state.SetIterationTime(timeTaken(isProcessorTime));
            peak = std::max(peak, statusBytes("VmHWM:") - before);
            if (contestant.finish)
                contestant.finish();
        }
    };
    benchmark::RegisterBenchmark(name.c_str(), takeTurn)
        ->UseManualTime()
        ->Iterations(1)
        ->Repetitions(turns);
}

std::string number(double value) {
    std::ostringstream text;
    text << std::fixed << std::setprecision(value < 10.0 ? 2 : value < 100.0 ? 1 : 0) << value;
    return text.str();
}

// A bar in a cell of the Markdown table is escaped, because it would end the cell.
std::string cell(std::string text) {
    for (std::size_t at = 0; (at = text.find('|', at)) != std::string::npos; at += 2)
        text.insert(at, 1, '\\');
    return text;
}

std::string sizeName(std::size_t atoms) {
    if (atoms < 2000)
        return std::to_string(atoms);
    return atoms >= 900'000 ? number(std::round(static_cast<double>(atoms) / 1e5) / 10.0) + " M"
                            : std::to_string(atoms / 1000) + " k";
}

// A time, and what came of it.
std::string timeCell(double seconds, const std::string& outcome) {
    return number(seconds * 1e3) + " ms" + (outcome.empty() ? "" : ": " + outcome);
}

// In the table, the competitor's time or why there is none, its memory, and the ratio.
std::string theirCells(const Line& line) {
    const Contest& c = line.contest;
    if (c.peer.empty())
        return "| | | | ";
    if (line.theirSeconds == 0.0)
        return c.peer + " | " +
               (hasMemory(c.theirBytes) ? "takes minutes"
                                        : "needs " + number(c.theirBytes / 1e9) + " GB") +
               " | | | ";
    return c.peer + " | " + timeCell(line.theirSeconds, line.theirOutcome) + " | " +
           number(line.theirPeak / 1e6) + " MB | " + number(line.theirSeconds / line.ourSeconds) +
           " | ";
}

} // namespace

void startClock() {
    told.reset();
    processorStarted = processorTime();
    started = Clock::now();
}

void setTime(double seconds) {
    told = seconds;
}

void runOnly(const std::string& text) {
    wanted = text;
}

void leaveOut(const std::string& text) {
    unwanted.push_back(text);
}

bool isWanted(const std::string& work) {
    const auto isIn = [&work](const std::string& text) {
        return work.find(text) != std::string::npos;
    };
    return isIn(wanted) && std::none_of(unwanted.begin(), unwanted.end(), isIn);
}

void runLong() {
    isLong = true;
}

bool isLongRun() {
    return isLong;
}

void run(const Contest& contest, int turns) {
    if (!isWanted(contest.work))
        return;
    Line line{contest};
    std::cerr << contest.work << ", " << contest.size << " atoms ..." << std::flush;
    benchmark::ClearRegisteredBenchmarks();
    registerTurns("ours", contest.ours, contest.isProcessorTime, line.ourPeak, turns);
    const bool theyRun = !contest.peer.empty() && hasMemory(contest.theirBytes) &&
                         (isLong || !contest.takeTheyMinutes);
    if (theyRun)
        registerTurns("theirs", contest.theirs, contest.isProcessorTime, line.theirPeak, turns);
    BestTimes best;
    benchmark::RunSpecifiedBenchmarks(&best);
    line.ourSeconds = best.seconds("ours");
    line.theirSeconds = theyRun ? best.seconds("theirs") : 0.0;
    if (contest.ours.outcome)
        line.ourOutcome = contest.ours.outcome();
    if (theyRun && contest.theirs.outcome)
        line.theirOutcome = contest.theirs.outcome();
    std::cerr << ' ' << number(line.ourSeconds * 1e3) << " ms";
    if (theyRun)
        std::cerr << ", " << contest.peer << ' ' << number(line.theirSeconds * 1e3) << " ms";
    std::cerr << '\n';
    lines.push_back(std::move(line));
}

void add(const MemoryLine& line) {
    memoryLines.push_back(line);
}

void writeTable(std::ostream& out) {
    out << "| work | atoms | ours | per item | peak | competitor | theirs | peak | ratio | to "
           "reach "
           "|\n|---|--:|--:|--:|--:|---|--:|--:|--:|---|\n";
    for (const Line& line : lines) {
        const Contest& c = line.contest;
        const double each = line.ourSeconds * 1e9 / static_cast<double>(c.items);
        out << "| " << cell(c.work) << " | " << sizeName(c.size)
            << (c.sizeName.empty() ? "" : ' ' + c.sizeName) << " | "
            << timeCell(line.ourSeconds, line.ourOutcome) << " | " << number(each) << " ns per "
            << c.itemName << " | " << number(line.ourPeak / 1e6) << " MB | " << theirCells(line);
        out << c.target << " |\n";
    }
    out << "\n| heap | atoms | ours | competitor | theirs | ratio | to reach |\n"
           "|---|--:|--:|---|--:|--:|---|\n";
    for (const MemoryLine& line : memoryLines) {
        const auto items = static_cast<double>(line.items);
        out << "| " << line.work << " | " << sizeName(line.size) << " | "
            << number(line.ourBytes / items) << " bytes per " << line.itemName << " | ";
        if (line.theirBytes < 0.0)
            out << "| | | ";
        else
            out << line.peer << " | " << number(line.theirBytes / items) << " bytes | "
                << number(line.theirBytes / line.ourBytes) << " | ";
        out << line.target << " |\n";
    }
}

void writePlots(std::ostream& out) {
    std::vector<Curve> curves;
    for (const Line& line : lines) {
        if (!line.contest.sizeName.empty())
            continue;
        const auto known = std::find_if(curves.begin(), curves.end(), [&](const Curve& curve) {
            return curve.work == line.contest.work;
        });
        Curve& curve = known != curves.end()
                           ? *known
                           : curves.emplace_back(Curve{line.contest.work, line.contest.peer, {}});
        curve.samples.push_back(
            {static_cast<double>(line.contest.size), line.ourSeconds, line.theirSeconds});
    }
    drawPlots(out, curves);
}

bool hasMemory(double bytes) {
    std::ifstream memory("/proc/meminfo");
    const std::string field = "MemAvailable:";
    for (std::string line; std::getline(memory, line);)
        if (line.rfind(field, 0) == 0)
            return bytes <= 0.95 * 1024.0 * std::stod(line.substr(field.size()));
    return true;
}

double heapBytes() {
    const struct mallinfo2 info = mallinfo2();
    return static_cast<double>(info.uordblks) + static_cast<double>(info.hblkhd);
}

} // namespace benchmarks
