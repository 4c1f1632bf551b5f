// Searches for what is typed in the find box: reads the data when they have changed, in pieces
// between which other events have their turn, and lets a thread look for the hits.
#pragma once

#include "DestroyObserver.h"
#include "FindIndex.h"
#include "FindLanguage.h"
#include "FindMatch.h"
#include "FindReader.h"
#include "Subscriber.h"

#include <QObject>
#include <QTimer>

#include <future>
#include <memory>
#include <stop_token>
#include <vector>

namespace workbench {

class FindSearch : public QObject {
    Q_OBJECT
public:
    FindSearch();
    /// Waits for the threads that have been told to stop.
    ~FindSearch() override;

    /// Looks for `text` from now on: finished() follows, now and whenever the data change.
    void setText(const QString& text);
    /// While true, the data are read ahead of the searches, when there is nothing else to do: no
    /// key has to wait for that.
    void setReady(bool on);
    /// Whether all is read, and prepared, that can be ahead.
    bool isReady() const;

    bool isRunning() const { return m_timer.isActive() || m_isSearching; }
    /// What is wrong with the text; empty when nothing is.
    const QString& problem() const { return m_problem; }
    bool isEmpty() const { return m_expression.isEmpty(); }
    std::size_t hitCount() const { return m_hits.hits.size(); }
    std::size_t atomCount() const { return m_hits.atomCount; }
    bool isOfAtoms() const { return m_hits.ofAtoms; }
    QString hitText(std::size_t hit) const;
    /// The residue or atom; for atoms outside of residues, the first of them.
    TAVIK::Compound* hitItem(std::size_t hit) const;

    /// Makes the found atoms the selection, or the residues that they are in. False, and nothing
    /// changes, while another change is under way.
    bool selectHits(bool wholeResidues);

signals:
    /// There are no hits any more, and perhaps others soon.
    void cleared();
    void finished();

private:
    class Listener : public Subscriber, public TAVIK::DestroyObserver {
    public:
        explicit Listener(FindSearch& search) : m_search(search) {}
        void commUpdate() override { m_search.stateChanged(); }
        void commAdd() override { m_search.itemsChanged(); }
        void commDelete() override { m_search.itemsChanged(); }
        void aboutToDestroy(TAVIK::Compound*) override { m_search.itemsChanged(); }

    private:
        FindSearch& m_search;
    };

    void readAhead();
    bool readPiece(FindParts parts);
    void prepare();
    void stateChanged();
    void itemsChanged();
    void clear();
    void start();
    void search();
    void end(const QString& problem);
    void take(std::uint64_t number, FindHits&& hits, const QString& problem);

    FindExpression m_expression;
    QString m_problem;
    FindReader m_reader;
    FindHits m_hits; ///< of the reader's index
    QTimer m_timer;  ///< before a search begins, and while there is something to read for it
    QTimer m_ahead;  ///< while there is something to read ahead
    QTimer m_old;    ///< before positions are forgotten that were not read again
    std::stop_source m_stop;
    std::uint64_t m_number = 0; ///< of the last search
    bool m_isSearching = false;
    bool m_isReady = false;                             ///< to be kept so
    std::weak_ptr<const FindValues::Points> m_prepared; ///< what is, or is being
    /// What may still be running: the last search, those that were told to stop, and preparations.
    std::vector<std::future<void>> m_threads;
    Listener m_listener;
};

} // namespace workbench
