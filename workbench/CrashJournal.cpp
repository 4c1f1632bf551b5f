#include "CrashJournal.h"

#include "Config.h"
#include "Logger.h"

#include <QMetaObject>

#include <algorithm>
#include <exception>
#include <memory>
#include <utility>

#include <sys/resource.h>
#include <unistd.h>

namespace workbench {

namespace {

using namespace std::chrono_literals;
using memory_host::JournalGathering;

constexpr std::chrono::microseconds piece = 2500us; // then other events have their turn
constexpr std::chrono::microseconds inOneGo = 1h;
constexpr auto again = 100ms; // where a change is under way

// What anybody waits for comes first.
void yieldToOthers() {
    setpriority(PRIO_PROCESS, static_cast<id_t>(gettid()), 10);
}

} // namespace

std::chrono::milliseconds CrashJournal::intervalFromSettings() {
    constexpr auto usual = 5s;
    bool isSet = false;
    const std::string text = Config::GetSetting("Journal", "Seconds").ToString(&isSet);
    bool isNumber = false;
    const ushort seconds = QString::fromStdString(text).toUShort(&isNumber);
    if (isSet && !isNumber)
        Logger::Write("The setting Seconds of Journal is no number of seconds: " + text);
    return isNumber ? std::chrono::seconds(seconds) : usual;
}

CrashJournal::CrashJournal(std::string all, std::chrono::milliseconds interval)
    : m_all(std::move(all)), m_interval(interval) {
    m_timer.setSingleShot(true);
    connect(&m_timer, &QTimer::timeout, this, &CrashJournal::goOn);
}

CrashJournal::~CrashJournal() {
    if (m_writing.valid())
        m_writing.wait();
}

void CrashJournal::adopt(memory_host::JournalFolder folder, bool isToStay) {
    (isToStay ? m_staying : m_adopted).push_back(std::move(folder));
    changed();
}

void CrashJournal::changed() {
    if (m_interval == 0ms)
        return;
    if (!std::exchange(m_hasChanged, true))
        m_due.setRemainingTime(m_interval);
    if (m_gathering) {
        m_gathering.reset();
        m_timer.start(0);
    } else if (!m_writing.valid() && !m_timer.isActive()) {
        m_timer.start(
            std::chrono::ceil<std::chrono::milliseconds>(m_due.remainingTimeAsDuration()));
    }
}

void CrashJournal::goOn() {
    try {
        // Changes that come again and again do not put it off for ever.
        const bool isLate = (m_due + (m_interval / 2).count()).hasExpired();
        if (gather(isLate ? inOneGo : piece))
            write();
    } catch (const std::exception& problem) {
        m_gathering.reset();
        tryAgain(problem.what());
    }
}

bool CrashJournal::gather(std::chrono::microseconds time) {
    if (!m_folder)
        m_folder = memory_host::JournalFolder::make(m_all);
    if (!m_gathering)
        m_gathering.emplace(m_folder->written());
    switch (m_gathering->advance(time)) {
    case JournalGathering::Progress::Done:
        return true;
    case JournalGathering::Progress::More:
        m_timer.start(0);
        break;
    case JournalGathering::Progress::Disturbed:
        m_gathering.reset();
        m_timer.start(again);
        break;
    }
    return false;
}

void CrashJournal::write() {
    std::shared_ptr<memory_host::JournalState> state = m_gathering->take();
    m_gathering.reset();
    m_hasChanged = false;
    m_replaced = m_adopted.size();
    m_writing = std::async(std::launch::async, [this, state = std::move(state)] {
        yieldToOthers();
        std::string problem;
        try {
            m_folder->write(*state);
        } catch (const std::bad_alloc&) {
            problem = "there is not enough memory";
        } catch (const std::exception& error) {
            problem = error.what();
        }
        QMetaObject::invokeMethod(this, &CrashJournal::finishWriting, Qt::QueuedConnection);
        return problem;
    });
}

void CrashJournal::finishWriting() {
    if (!m_writing.valid())
        return;
    const std::string problem = m_writing.get();
    if (!problem.empty()) {
        tryAgain(problem);
        return;
    }
    if (std::exchange(m_hasSaid, false))
        Logger::Write("What is changed is kept for the case of a crash again");
    removeAdopted(m_replaced);
    emit written(!m_hasChanged);
    if (m_hasChanged)
        changed();
}

// What could not be written, as the disk is full, is still to be written.
void CrashJournal::tryAgain(const std::string& problem) {
    sayOnce(problem);
    if (m_folder && !m_folder->isThere())
        m_folder.reset();
    m_hasChanged = true;
    m_due.setRemainingTime(m_interval);
    changed();
}

void CrashJournal::sayOnce(const std::string& problem) {
    if (!std::exchange(m_hasSaid, true))
        Logger::Write("What is changed is not kept for the case of a crash: " + problem);
}

void CrashJournal::removeAdopted(std::size_t count) {
    const auto end = m_adopted.begin() + static_cast<std::ptrdiff_t>(count);
    std::for_each(m_adopted.begin(), end, [](auto& folder) { folder.remove(); });
    m_adopted.erase(m_adopted.begin(), end);
}

bool CrashJournal::writeLast() {
    bool isWritten = false;
    try {
        isWritten = gather(inOneGo);
        if (isWritten)
            m_folder->write(*m_gathering->take());
    } catch (const std::exception& problem) {
        isWritten = false;
        sayOnce(problem.what());
    }
    m_timer.stop();
    return isWritten;
}

void CrashJournal::end(bool isToStay) {
    m_timer.stop();
    m_gathering.reset();
    if (m_writing.valid())
        m_writing.wait();
    m_writing = {};
    const bool isOn = std::exchange(m_interval, 0ms) != 0ms;
    const bool isWritten = isToStay && isOn && writeLast();
    if (!isToStay && m_folder)
        m_folder->remove();
    if (!isToStay || isWritten)
        removeAdopted(m_adopted.size());
}

} // namespace workbench
