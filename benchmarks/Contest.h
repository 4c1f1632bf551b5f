// A contest: our way of doing something beside a competitor's, timed in turns in the same run, with
// the ratio of the two as the result. Google Benchmark does the timing; this is the table.
#pragma once

#include <functional>
#include <iosfwd>
#include <string>

namespace benchmarks {

/// What a contestant does. It is set up untimed before each of its turns.
struct Contestant {
    std::function<void()> prepare{}; ///< may be empty
    std::function<void()> work;
    std::function<void()> finish{}; ///< may be empty; untimed, after the work
    /// What came of it, told beside the time when all turns are over; may be empty.
    std::function<std::string()> outcome{};
};

/// One line of the table. Times are the best of all turns.
struct Contest {
    std::string work;       ///< as "filling the tree"
    std::size_t size = 0;   ///< atoms in the structure, or what `sizeName` says
    std::string sizeName{}; ///< what is no number of atoms is not drawn over atoms
    std::size_t items = 0;  ///< divisor of the time
    std::string itemName;   ///< as "row"
    std::string peer{};     ///< who the competitor is; empty when there is none
    std::string target{};   ///< the goal, as text
    double theirBytes = 0;  ///< least memory that the competitor needs; it is left out on a
                            ///< machine with less
    /// Processor time of all threads, ours and the competitor's, instead of what a clock shows.
    bool isProcessorTime = false;
    bool takeTheyMinutes = false; ///< the competitor runs only after runLong()
    Contestant ours;
    Contestant theirs{};
};

/// A line of the table that counts bytes of heap instead of time.
struct MemoryLine {
    std::string work;
    std::size_t size = 0;
    std::size_t items = 0;
    std::string itemName;
    std::string peer;
    std::string target;
    double ourBytes = 0.0;
    double theirBytes = 0.0; ///< negative when there is no competitor
};

/// Restarts the clock of the work in progress: what came before, such as opening a dialog, does not
/// count.
void startClock();
/// What the work in progress took, in seconds, where the clock of this process cannot tell.
void setTime(double seconds);

/// From now on only works whose name contains `text` are run.
void runOnly(const std::string& text);
/// From now on works whose name contains `text` are left out; for each of several calls.
void leaveOut(const std::string& text);
bool isWanted(const std::string& work);
/// From now on what takes long is run, too: competitors that take minutes, and works that ask.
void runLong();
bool isLongRun();
/// Runs a contest in `turns` turns each and keeps its line.
void run(const Contest& contest, int turns);
void add(const MemoryLine& line);
/// Writes all lines as a Markdown table.
void writeTable(std::ostream& out);
/// Draws all times over the number of atoms, as SVG.
void writePlots(std::ostream& out);
/// Whether the machine has that much free memory.
bool hasMemory(double bytes);

/// Bytes of heap in use now.
double heapBytes();

} // namespace benchmarks
