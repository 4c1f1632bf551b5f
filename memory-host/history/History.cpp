#include "History.h"

#include "Config.h"
#include "Logger.h"
#include "Messages.h"
#include "Publisher.h"
#include "Steps.h"
#include "items/ObserverList.h"
#include "items/Publishing.h"
#include "items/Recording.h"
#include "items/Subscribers.h"

#include <QApplication>
#include <QBasicTimer>
#include <QObject>
#include <QString>

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <iterator>
#include <list>
#include <new>
#include <string>
#include <system_error>

namespace memory_host {

namespace {

struct Entry {
    Step step;
    std::string label;
    std::size_t selecting = 0; ///< how many in a row only select, up to this one
};
using Entries = std::list<Entry>;

/// Steps that nobody can take any more. What belongs to them is freed bit by bit while the program
/// has nothing else to do, as it may be millions of items.
class Forgotten final : public QObject {
public:
    /// Takes the first of some steps.
    void take(Entries& from) noexcept {
        m_bytes += from.front().step.bytes();
        m_steps.splice(m_steps.end(), from, from.begin());
        if (!isFreeing())
            freeAll();
    }
    void freeAll() noexcept {
        m_steps.clear();
        m_bytes = 0;
        m_timer.stop();
    }
    std::size_t bytes() const { return m_bytes; }

protected:
    void timerEvent(QTimerEvent* /*event*/) override {
        constexpr std::size_t itemsAtOnce = 10'000; // a millisecond or two
        Step& step = m_steps.front().step;
        const std::size_t bytes = step.bytes();
        if (!step.forgetSome(itemsAtOnce))
            return;
        m_bytes -= bytes;
        m_steps.pop_front();
        if (m_steps.empty())
            m_timer.stop();
    }

private:
    // Whether there is a timer; without one, or without memory for it, nothing is put off.
    bool isFreeing() noexcept {
        try {
            if (!m_timer.isActive() && QCoreApplication::instance())
                m_timer.start(0, this);
        } catch (const std::bad_alloc&) {
        }
        return m_timer.isActive();
    }

    Entries m_steps;
    std::size_t m_bytes = 0;
    QBasicTimer m_timer;
};

class Steps final : public StepKeeper {
public:
    Steps() { makeNext(); }

    Begun begin() noexcept override {
        if (m_most == 0)
            return {nullptr, false};
        if (m_next.empty() && !makeNext())
            return {nullptr, true};
        return {&m_next.back().step, false};
    }

    void end(std::string_view label) noexcept override {
        Entry& entry = m_next.back();
        if (entry.step.isEmpty())
            return;
        try {
            entry.label = label;
        } catch (const std::bad_alloc&) { // It is a change without a name.
        }
        entry.step.finish();
        if (entry.step.onlySelects())
            entry.selecting = 1 + (m_done.empty() ? 0 : m_done.back().selecting);
        while (!m_undone.empty())
            forgetFirst(m_undone);
        m_bytes += entry.step.bytes();
        m_done.splice(m_done.end(), m_next);
        makeNext();
        m_hasChanged = true;
        trim();
    }

    void drop() noexcept override {
        if (!m_next.empty())
            m_next.back().step.forget();
    }

    bool hasRoomFor(std::size_t bytes) noexcept override {
        if (m_next.back().step.bytes() + bytes <= m_most)
            return true;
        Messages::Show(QStringLiteral("This change cannot be undone: it would take more than the "
                                      "%1 MB of memory that are set for that")
                           .arg(m_most >> 20U));
        lose();
        return false;
    }

    void lose() noexcept override {
        recording.step = nullptr;
        if (!m_hasChanged && !publishing().changing && (!m_done.empty() || !m_undone.empty()))
            tellLater();
        for (Entries* entries : {&m_done, &m_undone})
            while (!entries->empty())
                forgetFirst(*entries);
        drop();
    }

    void tell() noexcept override {
        if (!m_hasChanged)
            return;
        m_hasChanged = false;
        m_observers.tellEach([](HistoryObserver& observer) {
            callHandler([&] { observer.historyChanged(); });
            return true;
        });
    }

    bool go(bool back, std::size_t count) noexcept {
        Entries& from = back ? m_done : m_undone;
        Entries& to = back ? m_undone : m_done;
        Publishing& state = publishing();
        if (count == 0 || from.size() < count || state.changing || state.locks > 0 ||
            state.tellings > 0 || QApplication::activeModalWidget() ||
            QApplication::activePopupWidget())
            return false;
        state.changing = true;
        bool adds = false, removes = false;
        for (; count != 0; --count) {
            Step& step = from.back().step;
            adds = adds || step.adds(back);
            removes = removes || step.removes(back);
            m_bytes -= step.bytes();
            if (back)
                step.takeBack();
            else
                step.doAgain();
            m_bytes += step.bytes();
            to.splice(to.end(), from, std::prev(from.end()));
        }
        state.changing = false;
        m_hasChanged = true;
        trim();
        if (removes)
            tellAll(nullptr, Publisher::Delete);
        if (adds)
            tellAll(nullptr, Publisher::Add);
        // What holds items that come or go is selected or shown otherwise, and entries may have
        // taken the place of others.
        tellAll(nullptr, Publisher::Update);
        tell();
        return true;
    }

    void setMost(std::size_t bytes) noexcept {
        m_most = bytes;
        trim();
        tell();
    }
    std::size_t bytes() const { return m_bytes; }
    Forgotten& forgotten() { return m_forgotten; }
    const Entries& entries(bool back) const { return back ? m_done : m_undone; }
    ObserverList<HistoryObserver>& observers() { return m_observers; }

private:
    // The oldest steps go first; then those that would be done again last. What is too large alone
    // takes only those along that would follow it.
    void trim() noexcept {
        if (m_bytes <= m_most)
            return;
        const auto kept =
            std::find_if(m_undone.rbegin(), m_undone.rend(), [this](const Entry& entry) {
                return entry.step.bytes() > m_most;
            }).base();
        while (m_undone.begin() != kept)
            forgetFirst(m_undone);
        for (Entries* entries : {&m_done, &m_undone})
            while (m_bytes > m_most && !entries->empty())
                forgetFirst(*entries);
    }
    // What changes without a guard is in the middle of it.
    void tellLater() noexcept {
        try {
            if (QCoreApplication* const program = QCoreApplication::instance())
                QMetaObject::invokeMethod(
                    program, [this] { tell(); }, Qt::QueuedConnection);
        } catch (const std::bad_alloc&) { // The next guard tells.
        }
    }
    // The next change begins without asking for memory, if it can.
    bool makeNext() noexcept {
        try {
            m_next.emplace_back();
        } catch (const std::bad_alloc&) {
        }
        return !m_next.empty();
    }
    void forgetFirst(Entries& entries) noexcept {
        m_bytes -= entries.front().step.bytes();
        m_forgotten.take(entries);
        // Who changes much at one go does not wait for the program to be idle.
        if (m_forgotten.bytes() > m_most)
            m_forgotten.freeAll();
        m_hasChanged = true;
    }

    Entries m_done;   ///< the last one at the end
    Entries m_undone; ///< the next one at the end
    Entries m_next;   ///< the one in progress, or to come
    Forgotten m_forgotten;
    std::size_t m_bytes = 0; ///< of those that are done or were taken back
    std::size_t m_most = defaultHistoryBytes;
    bool m_hasChanged = false; ///< and observers have not been told
    ObserverList<HistoryObserver> m_observers;
};

Steps& steps() {
    // Never destroyed: items may outlive every static object.
    static auto* const all = new Steps;
    return *all;
}

[[maybe_unused]] const bool isKept = [] {
    recording.keeper = &steps();
    return true;
}();

std::vector<HistoryStep> listed(bool back, std::size_t most) {
    const Entries& entries = steps().entries(back);
    std::vector<HistoryStep> all;
    for (auto entry = entries.rbegin(); entry != entries.rend() && all.size() < most; ++entry)
        all.push_back({entry->label, entry->step.onlySelects()});
    return all;
}

} // namespace

void setHistoryBytes(std::size_t bytes) {
    steps().setMost(bytes);
}

void readHistorySetting() {
    bool isSet = false;
    const std::string text = Config::GetSetting("History", "Megabytes").ToString(&isSet);
    if (!isSet)
        return;
    std::uint32_t megabytes = 0;
    const char* const end = text.data() + text.size();
    const auto read = std::from_chars(text.data(), end, megabytes);
    if (read.ec != std::errc() || read.ptr != end) {
        Logger::Write("The setting Megabytes of History is no number of megabytes: " + text);
        return;
    }
    setHistoryBytes(std::size_t{megabytes} << 20U);
}

std::size_t historyBytes() {
    return steps().bytes();
}

std::size_t forgottenBytes() {
    return steps().forgotten().bytes();
}

void forgetHistory() {
    steps().lose();
    steps().forgotten().freeAll();
    steps().tell();
}

} // namespace memory_host

using namespace memory_host;

HistoryObserver::HistoryObserver() {
    steps().observers().add(this);
}

HistoryObserver::~HistoryObserver() {
    steps().observers().remove(this);
}

std::vector<HistoryStep> History::undoable(std::size_t most) {
    return listed(true, most);
}

std::vector<HistoryStep> History::redoable(std::size_t most) {
    return listed(false, most);
}

std::size_t History::toLastOfData() {
    const Entries& done = steps().entries(true);
    const std::size_t selecting = done.empty() ? 0 : done.back().selecting;
    return selecting < done.size() ? selecting + 1 : 0;
}

bool History::undo(std::size_t count) {
    return steps().go(true, count);
}

bool History::redo(std::size_t count) {
    return steps().go(false, count);
}
