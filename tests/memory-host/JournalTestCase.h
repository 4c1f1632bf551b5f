// What the tests of the journal start from: files that are open, a journal of them, and changes of
// each kind.
#pragma once

#include "FileTesting.h"
#include "Geometry.h"
#include "Kinds.h"
#include "TestSupport.h"
#include "journal/JournalFolder.h"
#include "journal/Recovery.h"

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace journal_testing {

/// Makes a change below a guard.
void change(const std::function<void()>& change);
TAVIK::Atom* atomAt(std::size_t i);
TAVIK::Compound* residueAt(std::size_t i);
TAVIK::SurfaceMesh triangle();
TAVIK::GridValues smallGrid();
TAVIK::GridValues otherGrid();

struct JournalChange {
    std::string_view name;
    std::function<void()> change;
    bool isLast = false; ///< takes away what others change
};
/// A change of each kind, in what openAll() opens.
const std::vector<JournalChange>& journalChanges();
/// One of them.
const std::function<void()>& changeOf(std::string_view name);

class JournalTestCase : public test_support::TestCase {
protected:
    void init() override;
    void cleanup() override;

    std::string path(const QString& name) const {
        return (m_folder->path() + u'/' + name).toStdString();
    }
    /// A real file, copied.
    std::string copyOf(const QString& name) const;
    /// An entry "1ejg" of one chain with alternative locations, and the entries of two models.
    void openAll() const;
    /// One entry of two atoms.
    void openSmall() const;
    void gather();
    bool isJournalThere() const;
    QString journal() const { return QString::fromStdString(m_journal->path()) + "/journal"; }
    /// As a new start does.
    void recover();
    static void clear();
    static QStringList unsaved();
    static QStringList entryNames();
    /// What is open is so after an end without a word, too.
    void comesBack();

    std::optional<file_testing::Folder> m_folder;
    std::optional<memory_host::JournalFolder> m_journal;
    memory_host::JournalRecovery::Outcome m_outcome;
};

} // namespace journal_testing
