// Keeps a journal of what is changed, so that the next start can bring it back if the program ends
// in the middle of its work: gathered in pieces while the program is idle, and written on a thread.
#pragma once

#include "Subscriber.h"
#include "journal/JournalFolder.h"

#include <QDeadlineTimer>
#include <QObject>
#include <QTimer>

#include <chrono>
#include <cstddef>
#include <future>
#include <optional>
#include <string>
#include <vector>

namespace workbench {

class CrashJournal : public QObject, private Subscriber {
    Q_OBJECT
public:
    /// What is set as "Seconds" of "Journal", or else 5; zero is no journal. What is no number is
    /// told to the log.
    static std::chrono::milliseconds intervalFromSettings();

    /// `all` is the folder with the journals of all programs. What is changed is on the disk about
    /// `interval` later, if the program is idle in between. With zero there is no journal.
    CrashJournal(std::string all, std::chrono::milliseconds interval);
    /// Leaves the journal there.
    ~CrashJournal() override;

    /// Takes over a journal whose content is open now. It is removed when there is one of this
    /// program that has this content, too, and at the end; if `isToStay`, it is not.
    void adopt(memory_host::JournalFolder folder, bool isToStay);
    /// The program ends in good order: there is nothing to bring back; or, if `isToStay`, the
    /// journal is written once more for the next start.
    void end(bool isToStay);

public slots:
    /// What is to be written may be another than before: the data, or what is saved of them.
    void changed();

signals:
    /// What was gathered is on the disk; if `isAll`, nothing has changed since.
    void written(bool isAll);

private:
    void commUpdate() override { changed(); }
    void commAdd() override { changed(); }
    void commDelete() override { changed(); }

    void goOn();
    bool gather(std::chrono::microseconds time);
    void write();
    void finishWriting();
    bool writeLast();
    void removeAdopted(std::size_t count);
    void tryAgain(const std::string& problem);
    void sayOnce(const std::string& problem);

    std::string m_all;
    std::chrono::milliseconds m_interval;
    std::optional<memory_host::JournalFolder> m_folder;
    std::vector<memory_host::JournalFolder> m_adopted; ///< to be removed
    std::size_t m_replaced = 0; ///< how many of them what is being written replaces
    std::vector<memory_host::JournalFolder> m_staying;
    std::optional<memory_host::JournalGathering> m_gathering;
    QTimer m_timer;                     ///< until gathering begins or goes on
    QDeadlineTimer m_due;               ///< then what changed first is to be written
    std::future<std::string> m_writing; ///< brings what went wrong
    bool m_hasChanged = false;          ///< since the gathering that is written
    bool m_hasSaid = false;             ///< that there is no journal
};

} // namespace workbench
