// Bringing back a journal of any content: it is refused with a line, or done, and the data are
// sound before and after it is taken back. The input is the journal's bytes, packed or not yet.
#include "DataMaker.h"
#include "DataPointBase.h"
#include "Fuzzing.h"
#include "History.h"
#include "Opening.h"
#include "Space.h"
#include "files/Files.h"
#include "history/Steps.h"
#include "journal/Recovery.h"

#include <QtGlobal>

#include <algorithm>
#include <fstream>

#include <sys/stat.h>
#include <unistd.h>
#include <zlib.h>

namespace {

using fuzzing::require;
using fuzzing::requireInvariants;
using memory_host::JournalRecovery;

// What the made journals are about: two atoms of one residue, beside the journal.
constexpr const char* structure =
    "ATOM      1  N   ALA A   1       0.000   0.000   0.000  1.00 10.00           N  \n"
    "ATOM      2  CA  ALA A   1       1.400   0.000   0.000  1.00 10.00           C  \n";

// The folder of a journal.
class Folder {
public:
    Folder() : m_file("journal"), m_texts(m_file.folder() + "/text-1") {
        require(::mkdir(m_texts.c_str(), 0700) == 0, "a folder for a text can be made", m_texts);
        std::ofstream(text()) << structure;
        // Refusals of makers are no matter of the user's.
        qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
    }
    ~Folder() {
        ::unlink(text().c_str());
        ::rmdir(m_texts.c_str());
    }
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;

    const std::string& path() const { return m_file.folder(); }
    void write(std::string_view content) const {
        if (content.starts_with("\x1f\x8b")) {
            m_file.write(content);
            return;
        }
        const gzFile packed = gzopen(m_file.path().c_str(), "wb1");
        require(packed && gzwrite(packed, content.data(), static_cast<unsigned>(content.size())) ==
                              static_cast<int>(content.size()),
                "the input can be packed", m_file.path());
        gzclose(packed);
    }

private:
    std::string text() const { return m_texts + "/input.pdb"; }

    fuzzing::InputFile m_file;
    std::string m_texts;
};

// As the workbench does.
JournalRecovery::Outcome recover(const Folder& folder) {
    JournalRecovery recovery(folder.path());
    (void)recovery.entries();
    for (std::size_t file = 0; file != recovery.fileCount(); ++file) {
        const std::string content = recovery.contentPath(file);
        try {
            if (content.empty())
                continue;
            memory_host::openFile(content);
            recovery.setOpened(file);
        } catch (const memory_host::FileError&) { // What files hold is for other targets.
        }
    }
    requireInvariants();
    return recovery.apply();
}

void check(const JournalRecovery::Outcome& outcome) {
    for (const std::string& line : outcome.lines)
        require(line.size() > 10 && line.size() < 5000 &&
                    std::ranges::none_of(line, [](unsigned char c) { return c < 0x20; }),
                "a message is a line that can be read", line);
    require(outcome.isDone || !outcome.lines.empty(), "what is not brought back is said");
    require(outcome.isWhole <= outcome.isDone, "what is whole is done");
    requireInvariants();
    if (outcome.isDone && History::undo()) {
        requireInvariants();
        require(History::redo(), "what was taken back is done again");
        requireInvariants();
    }
}

void clear() {
    {
        const DataPointBase guard(nullptr, Publisher::Delete);
        while (TAVIK::Space::instance()->HasChildren())
            TAVIK::DataMaker::Destroy(*TAVIK::Space::instance()->ChildBegin());
    }
    memory_host::forgetHistory();
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const Folder folder;
    (void)fuzzing::takeLog();
    folder.write(fuzzing::textOf(data, size));
    const fuzzing::Budget budget(size, {.seconds = 20.0e-6, .memory = 1000.0});
    try {
        check(recover(folder));
    } catch (const memory_host::FileError& error) {
        fuzzing::requireLine(error.what(), folder.path());
        require(!TAVIK::Space::instance()->HasChildren(), "what is refused changes nothing");
    }
    clear();
    budget.check();
    return 0;
}
