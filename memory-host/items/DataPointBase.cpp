#include "DataPointBase.h"

#include "Logger.h"
#include "Messages.h"
#include "ObserverList.h"
#include "Publishing.h"
#include "Recording.h"

#include <exception>
#include <new>
#include <string>

using namespace memory_host;

namespace {

void logChange(const std::string& label) noexcept {
    try {
        if (!label.empty())
            Logger::Debug(label);
    } catch (...) { // A line that nobody may read is not worth an exception.
    }
}

// Made before memory runs out.
const std::string withoutMemory = "Change: not done, as memory is short";

void tellTakenBack(const std::string& label) noexcept {
    try {
        Messages::Show(QStringLiteral("%1: not done, as memory is short")
                           .arg(QString::fromLatin1(label.empty() ? "Change" : label)));
    } catch (...) {
        Logger::Write(withoutMemory);
    }
}

} // namespace

DataPointBase::DataPointBase(Subscriber* originator, Publisher::ActionType kind)
    : DataPointBase(originator, kind, {}) {}

DataPointBase::DataPointBase(Subscriber* originator, Publisher::ActionType kind,
                             std::string_view label)
    : m_good(false), m_holds(false), m_kind(kind), m_originator(originator) {
    Publishing& state = publishing();
    if (state.tellings >= deepestTelling) {
        Logger::Write("a change is refused: it answers a change that answers another, " +
                      std::to_string(deepestTelling) + " times over");
        return;
    }
    if (state.changing || state.locks > 0)
        return;
    if (!beginRecording())
        return;
    state.changing = true;
    state.exceptions = std::uncaught_exceptions();
    m_good = true;
    m_holds = true;
    setLabel(label);
}

void DataPointBase::setLabel(std::string_view label) noexcept {
    if (!m_holds)
        return;
    std::string& kept = publishing().label;
    try {
        kept = label;
    } catch (const std::bad_alloc&) { // The one before says less of the same change.
    }
}

DataPointBase::~DataPointBase() {
    if (!m_holds)
        return;
    Publishing& state = publishing();
    const bool isBroken = std::uncaught_exceptions() != state.exceptions;
    const bool isTakenBack = endRecording(isBroken, state.label);
    state.changing = false;
    // An exception that ends a change says itself what is wrong.
    if (isTakenBack && !isBroken)
        tellTakenBack(state.label);
    else if (!isBroken)
        logChange(state.label);
    state.label.clear();
    // Nobody knows what was taken back, whoever began it.
    tellAll(isTakenBack ? nullptr : m_originator, m_kind);
    if (recording.keeper)
        recording.keeper->tell();
}
