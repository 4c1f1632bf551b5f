#include "FindSearch.h"

#include "ChangeData.h"
#include "Changed.h"
#include "Focus.h"
#include "Space.h"

#include <chrono>
#include <new>
#include <utility>

namespace workbench {

namespace {

/// What is read ahead. Selection and visibility change too often.
FindParts partsAhead() {
    FindParts parts;
    return parts.set(FindValues::Positions).set(FindValues::Elements).set(FindValues::Alternates);
}

/// Of reading, between which other events have their turn.
constexpr std::chrono::milliseconds piece(10);

/// For how long positions are kept that may have changed.
constexpr std::chrono::seconds timeForOld(10);

} // namespace

FindSearch::FindSearch() : m_listener(*this) {
    m_ahead.setSingleShot(true);
    connect(&m_ahead, &QTimer::timeout, this, &FindSearch::readAhead);
    m_timer.setSingleShot(true);
    connect(&m_timer, &QTimer::timeout, this, &FindSearch::start);
    m_old.setSingleShot(true);
    connect(&m_old, &QTimer::timeout, this, [this] { m_reader.forgetOldPositions(); });
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
    return m_reader.has(partsAhead()) &&
           m_reader.values().near.wait_for(std::chrono::seconds(0)) == std::future_status::ready;
}

// What fails is tried again when it is needed.
void FindSearch::readAhead() {
    try {
        if (!readPiece(partsAhead()))
            m_ahead.start(0);
    } catch (const std::bad_alloc&) {
    }
}

bool FindSearch::readPiece(FindParts parts) {
    const bool isRead = m_reader.advance(parts, piece);
    prepare();
    return isRead;
}

// While more is read, or until a search asks for it.
void FindSearch::prepare() {
    const FindValues& values = m_reader.values();
    if (!values.positions || values.positions == m_prepared.lock())
        return;
    m_threads.push_back(std::async(std::launch::async, [near = values.near] { near.wait(); }));
    m_prepared = values.positions;
}

void FindSearch::clear() {
    m_stop.request_stop();
    m_isSearching = false;
    ++m_number;
    m_hits = {};
    emit cleared();
}

void FindSearch::stateChanged() {
    m_reader.forgetState();
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
    if (m_reader.isEmpty() && !m_isSearching && m_hits.hits.empty())
        return;
    const bool wasRead = m_reader.index() != nullptr;
    clear();
    m_reader.forgetItems();
    m_old.start(timeForOld);
    if (m_isReady)
        m_ahead.start(0);
    if (wasRead && !m_expression.isEmpty())
        m_timer.start(0);
}

// What is typed meanwhile counts at once: what was read serves for that, too.
void FindSearch::start() {
    m_timer.stop();
    std::erase_if(m_threads, [](const std::future<void>& thread) {
        return thread.wait_for(std::chrono::seconds(0)) == std::future_status::ready;
    });
    if (m_expression.isEmpty()) {
        emit finished();
        return;
    }
    try {
        if (readPiece(partsOf(m_expression)))
            search();
        else
            m_timer.start(0);
    } catch (const std::bad_alloc&) {
        end(tr("there is not enough memory to search"));
    }
}

void FindSearch::search() {
    m_stop = std::stop_source();
    const auto search = [this, number = ++m_number, index = m_reader.index(),
                         values = m_reader.values(), expression = m_expression,
                         stop = m_stop.get_token()] {
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
    m_isSearching = true;
}

void FindSearch::end(const QString& problem) {
    m_isSearching = false;
    m_problem = problem;
    emit finished();
}

void FindSearch::take(std::uint64_t number, FindHits&& hits, const QString& problem) {
    if (number != m_number)
        return;
    m_hits = std::move(hits);
    end(problem);
}

QString FindSearch::hitText(std::size_t hit) const {
    const std::string text = workbench::hitText(*m_reader.index(), m_hits, m_hits.hits[hit]);
    return QString::fromLatin1(text.data(), static_cast<qsizetype>(text.size()));
}

TAVIK::Compound* FindSearch::hitItem(std::size_t hit) const {
    const FindIndex& index = *m_reader.index();
    const std::uint32_t found = m_hits.hits[hit];
    if (m_hits.ofAtoms)
        return index.atoms[found];
    const FindIndex::Residue& residue = index.residues[found];
    return residue.item ? residue.item : index.atoms[m_hits.atoms.next(residue.begin)];
}

bool FindSearch::selectHits(bool wholeResidues) {
    const std::shared_ptr<const FindIndex> index = m_reader.index();
    if (!index || m_hits.atoms.size() != index->atoms.size())
        return false;
    bool isDone = false;
    // What is told of the change may end the search.
    const FindHits hits = m_hits;
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
