#include "FindSearch.h"

#include "ChangeData.h"
#include "Changed.h"
#include "Focus.h"
#include "Space.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <utility>

namespace workbench {

namespace {

/// What is read ahead. Selection and visibility change too often.
constexpr auto partsAhead = std::to_array(
    {FindValues::Part::Positions, FindValues::Part::Elements, FindValues::Part::Alternates});

/// For how long positions are kept that may have changed.
constexpr std::chrono::seconds timeForOld(10);

} // namespace

FindSearch::FindSearch() : m_listener(*this) {
    m_ahead.setSingleShot(true);
    connect(&m_ahead, &QTimer::timeout, this, &FindSearch::readAhead);
    m_timer.setSingleShot(true);
    connect(&m_timer, &QTimer::timeout, this, &FindSearch::start);
    m_old.setSingleShot(true);
    connect(&m_old, &QTimer::timeout, this, [this] { m_values.forgetOldPositions(); });
}

FindSearch::~FindSearch() {
    m_stop.request_stop();
}

void FindSearch::setText(const QString& text) {
    m_expression = readFindText(text);
    m_problem = m_expression.problem;
    clear();
    // At once with the next event: of several keys that have come by then, the last one counts.
    m_timer.start(0);
}

void FindSearch::setReady(bool on) {
    m_isReady = on;
    if (on)
        m_ahead.start(0);
    else
        m_ahead.stop();
}

bool FindSearch::isReady() const {
    return hasReadAhead() &&
           m_values.near.wait_for(std::chrono::seconds(0)) == std::future_status::ready;
}

bool FindSearch::hasReadAhead() const {
    return m_index && std::all_of(partsAhead.begin(), partsAhead.end(),
                                  [this](FindValues::Part part) { return m_values.has(part); });
}

// One piece, of some 20 ms for a million atoms, and then the next. What fails is tried again when
// it is needed.
void FindSearch::readAhead() {
    const auto isMissing = [this](FindValues::Part part) { return !m_values.has(part); };
    if (!m_index) {
        readIndex();
    } else if (const auto part = std::find_if(partsAhead.begin(), partsAhead.end(), isMissing);
               part != partsAhead.end()) {
        if (*part == FindValues::Part::Positions)
            readPositions();
        else
            m_values.read(*m_index, *part);
    }
    if (!hasReadAhead())
        m_ahead.start(0);
}

void FindSearch::readIndex() {
    if (!m_index)
        m_index = FindIndex::read(
            m_values.has(FindValues::Part::Positions) ? m_values.positions->size() : 0);
}

void FindSearch::readPositions() {
    m_values.readPositions();
    m_threads.push_back(std::async(std::launch::async, [near = m_values.near] { near.wait(); }));
}

void FindSearch::clear() {
    m_stop.request_stop();
    m_isSearching = false;
    ++m_number;
    m_hits = {};
    emit cleared();
}

void FindSearch::stateChanged() {
    m_values.forgetState();
    if (m_isReady)
        m_ahead.start(0);
    if (m_expression.has(FindTerm::Kind::Selected) || m_expression.has(FindTerm::Kind::Hidden) ||
        m_expression.has(FindStep::Kind::Within)) {
        clear();
        m_timer.start(0);
    }
}

void FindSearch::itemsChanged() {
    // Told of each of a million destructions, it has something to do at the first.
    if (!m_index && !m_values.has(FindValues::Part::Positions) && !m_isSearching &&
        m_hits.hits.empty())
        return;
    const bool wasRead = m_index != nullptr;
    clear();
    m_index.reset();
    m_values.forgetItems();
    m_old.start(timeForOld);
    if (m_isReady)
        m_ahead.start(0);
    if (wasRead && !m_expression.isEmpty())
        m_timer.start(0);
}

void FindSearch::start() {
    m_timer.stop();
    std::erase_if(m_threads, [](const std::future<void>& thread) {
        return thread.wait_for(std::chrono::seconds(0)) == std::future_status::ready;
    });
    if (m_expression.isEmpty()) {
        emit finished();
        return;
    }
    // The positions first, which are prepared while the index is read.
    if (m_expression.has(FindStep::Kind::Within) && !m_values.has(FindValues::Part::Positions))
        readPositions();
    readIndex();
    m_values.read(*m_index, m_expression);
    m_stop = std::stop_source();
    m_isSearching = true;
    const auto search = [this, number = ++m_number, index = m_index, values = m_values,
                         expression = m_expression, stop = m_stop.get_token()] {
        FindHits hits;
        QString problem;
        try {
            hits = findHits(*index, values, expression, stop);
        } catch (const std::bad_alloc&) {
            problem = tr("there is not enough memory to search");
        }
        if (stop.stop_requested())
            return;
        // Shared, as a function that is queued may be copied.
        const auto found = std::make_shared<FindHits>(std::move(hits));
        QMetaObject::invokeMethod(
            this, [this, number, found, problem] { take(number, std::move(*found), problem); },
            Qt::QueuedConnection);
    };
    m_threads.push_back(std::async(std::launch::async, search));
}

void FindSearch::take(std::uint64_t number, FindHits&& hits, const QString& problem) {
    if (number != m_number)
        return;
    m_isSearching = false;
    m_hits = std::move(hits);
    m_problem = problem;
    emit finished();
}

QString FindSearch::hitText(std::size_t hit) const {
    const std::string text = workbench::hitText(*m_index, m_hits, m_hits.hits[hit]);
    return QString::fromLatin1(text.data(), static_cast<qsizetype>(text.size()));
}

TAVIK::Compound* FindSearch::hitItem(std::size_t hit) const {
    const std::uint32_t found = m_hits.hits[hit];
    if (m_hits.ofAtoms)
        return m_index->atoms[found];
    const FindIndex::Residue& residue = m_index->residues[found];
    return residue.item ? residue.item : m_index->atoms[m_hits.atoms.next(residue.begin)];
}

bool FindSearch::selectHits(bool wholeResidues) {
    if (!m_index || m_hits.atoms.size() != m_index->atoms.size())
        return false;
    bool isDone = false;
    // What is told of the change may end the search.
    const FindHits hits = m_hits;
    const std::shared_ptr<const FindIndex> index = m_index;
    const auto select = [&](DataPointBase& guard) {
        std::size_t count = 0;
        TAVIK::Space::instance()->SetSelected(false);
        std::size_t atom = hits.atoms.next(0);
        for (const FindIndex::Residue& residue : index->residues) {
            if (atom < residue.begin)
                atom = hits.atoms.next(residue.begin);
            if (atom >= residue.end)
                continue;
            std::size_t found = 0;
            for (std::size_t i = residue.begin; i != residue.end; ++i)
                found += hits.atoms.has(i) ? 1 : 0;
            const bool isWhole = wholeResidues || found == residue.end - residue.begin;
            if (residue.item && isWhole) {
                residue.item->SetSelected(true);
                found = residue.end - residue.begin;
            } else {
                for (std::size_t i = residue.begin; i != residue.end; ++i)
                    if (hits.atoms.has(i))
                        index->atoms[i]->SetSelected(true);
            }
            count += found;
        }
        TAVIK::setLabel(guard, "Select %1 found", TAVIK::Changed("atom", count));
        isDone = true;
    };
    changeData(DataPointBase(nullptr, Publisher::Update), select, Refusal::Silent);
    return isDone;
}

} // namespace workbench
