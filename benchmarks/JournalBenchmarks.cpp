#include "Contest.h"
#include "DataPointBase.h"
#include "RealStructures.h"
#include "Space.h"
#include "Traversal.h"
#include "Works.h"
#include "files/Files.h"
#include "journal/JournalFolder.h"

#include <QFileInfo>
#include <QTemporaryDir>

#include <algorithm>
#include <chrono>
#include <ctime>
#include <optional>

namespace benchmarks {

namespace {

using memory_host::JournalFolder;
using memory_host::JournalGathering;

// Of this thread, in seconds: other programs have their turns, too.
double processorTime() {
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

// No two that follow one another have the same: nothing is a run.
void colourAtoms() {
    const DataPointBase guard(nullptr, Publisher::Update);
    unsigned int number = 0;
    TAVIK::ForAtoms(TAVIK::Space::instance(), true, [&number](TAVIK::Compound* atom) {
        atom->SetColor(Color(0xff000000U | (++number * 2654435761U) >> 8U));
    });
}

// A journal in a folder that goes away.
class Journal {
public:
    Journal() { clear(); }

    void clear() {
        if (m_folder)
            m_folder->remove();
        m_folder = JournalFolder::make(m_all.filePath("journal").toStdString());
    }
    /// Returns the longest piece, in seconds of processor time.
    double gather() {
        using std::chrono::microseconds;
        JournalGathering gathering(m_folder->written());
        double longest = 0.0;
        for (bool isDone = false; !isDone;) {
            const double begin = processorTime();
            isDone = gathering.advance(microseconds(2500)) == JournalGathering::Progress::Done;
            longest = std::max(longest, processorTime() - begin);
        }
        m_state = gathering.take();
        return longest;
    }
    void write() { m_folder->write(*m_state); }
    std::string size() const {
        const QFileInfo file(QString::fromStdString(m_folder->path() + "/journal"));
        return QString::number(static_cast<double>(file.size()) * 1e-6, 'f', 1).toStdString() +
               " MB";
    }

private:
    QTemporaryDir m_all;
    std::optional<JournalFolder> m_folder;
    memory_host::JournalStatePtr m_state;
};

} // namespace

void benchmarkJournal(const std::string& path, int turns) {
    const std::string piece = "longest piece of gathering the journal";
    const std::string gathering = "gathering the journal";
    const std::string writing = "writing the journal";
    const std::string first = "writing the first journal, with the file's text";
    if (!isWanted(piece) && !isWanted(gathering) && !isWanted(writing) && !isWanted(first))
        return;
    memory_host::openFile(path);
    colourAtoms();
    Journal journal;
    const std::size_t atoms = atomCount(TAVIK::Space::instance());
    const auto contest = [&](const std::string& work, const std::string& target,
                             const Contestant& ours) {
        if (isWanted(work))
            run({.work = work,
                 .size = atoms,
                 .items = atoms,
                 .itemName = "atom",
                 .target = target,
                 .isProcessorTime = true,
                 .ours = ours},
                turns);
    };
    contest(piece, "at most 5 ms", {.work = [&] { setTime(journal.gather()); }});
    contest(gathering, "", {.work = [&] { journal.gather(); }});
    contest(first, "",
            {.prepare =
                 [&] {
                     journal.clear();
                     journal.gather();
                 },
             .work = [&] { journal.write(); }});
    contest(writing, "",
            {.prepare = [&] { journal.gather(); },
             .work = [&] { journal.write(); },
             .outcome = [&] { return journal.size(); }});
    emptySpace();
}

} // namespace benchmarks
