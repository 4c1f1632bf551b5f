#include "DataPointBase.h"

#include "Logger.h"
#include "ObserverList.h"
#include "Publishing.h"

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
    state.changing = false;
    if (std::uncaught_exceptions() == state.exceptions)
        logChange(state.label);
    state.label.clear();
    tellAll(m_originator, m_kind);
}
