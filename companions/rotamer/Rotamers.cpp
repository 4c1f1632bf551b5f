#include "Rotamers.h"

#include "Ancestry.h"
#include "ChangeData.h"
#include "DataAdder.h"
#include "Progress.h"
#include "ResidueRotamers.h"
#include "SharedWork.h"
#include "Space.h"

#include <QLocale>

#include <algorithm>
#include <atomic>
#include <list>
#include <utility>

namespace rotamer {

namespace {

using TAVIK::Compound;

/// With commas in large numbers, the same on every machine.
QString number(std::size_t count) {
    return QLocale(QLocale::English, QLocale::UnitedStates).toString(qulonglong{count});
}

QString many(std::size_t count, const char* one) {
    return number(count) + u' ' + QLatin1String(one) + (count == 1 ? "" : "s");
}

/// Residues that get rotamers, and a line on each that gets none.
class Batch {
public:
    explicit Batch(std::span<TAVIK::Residue* const> residues);

    bool isEmpty() const { return m_all.empty(); }
    /// What is done, in the words of the change's label, in Latin-1.
    std::string label() const;
    /// Why the clashes are not known; else empty.
    QString judge();
    /// Adds all models, or none; the caller holds a good guard.
    void add();
    Report report() const;
    /// The report of a batch that is not added, and why.
    Report refusal(const QString& fault) const;

private:
    std::size_t count() const;

    std::list<ResidueRotamers> m_all; // which refer to parts of themselves
    QStringList m_faults;
};

Batch::Batch(std::span<TAVIK::Residue* const> residues) {
    for (TAVIK::Residue* residue : residues) {
        ResidueRotamers& last = m_all.emplace_back(residue);
        if (const QString fault = last.fault(); !fault.isEmpty()) {
            m_faults << "No rotamers of " + QString::fromLatin1(last.name()) + ": " + fault + ".";
            m_all.pop_back();
        }
    }
}

std::size_t Batch::count() const {
    std::size_t sum = 0;
    for (const ResidueRotamers& one : m_all)
        sum += one.count();
    return sum;
}

std::string Batch::label() const {
    return "Add " + many(count(), "rotamer").toStdString() + " of " +
           (m_all.size() == 1 ? m_all.front().name()
                              : number(m_all.size()).toStdString() + " residues");
}

QString Batch::judge() {
    std::vector<ResidueRotamers*> all;
    std::vector<Point> centres;
    for (ResidueRotamers& one : m_all) {
        all.push_back(&one);
        centres.push_back(one.centre());
    }
    const NearAtoms near(centres, ResidueRotamers::reach);
    bool hasBegun = false;
    const auto work = [&](ProgressReporter& progress, const std::stop_token& stop) {
        hasBegun = true;
        std::atomic<std::size_t> done = 0;
        onAllThreads(stop)(all.size(), [&](std::size_t i) {
            all[i]->judge(near);
            const auto count = static_cast<double>(++done);
            progress.report(QStringLiteral("looking for clashes"),
                            count / static_cast<double>(all.size()));
        });
    };
    const bool isOne = all.size() == 1;
    const QString title = "Rotamers of " + (isOne ? QString::fromLatin1(all.front()->name())
                                                  : many(all.size(), "residue"));
    if (Progress::Run(title, work))
        return {};
    return hasBegun ? QStringLiteral("cancelled") : QStringLiteral("another work is in progress");
}

void Batch::add() {
    auto one = m_all.begin();
    try {
        for (; one != m_all.end(); ++one)
            one->add();
    } catch (...) {
        // The one that failed has taken away what it made.
        while (one != m_all.begin())
            (--one)->undo();
        throw;
    }
}

Report Batch::report() const {
    Report result{{}, m_faults};
    QStringList& lines = result.lines;
    for (const ResidueRotamers& one : m_all) {
        lines << one.report();
        result.details << one.details();
    }
    if (lines.size() > 1) {
        const auto without = static_cast<std::size_t>(m_faults.size());
        lines << many(count(), "rotamer") + " of " + many(m_all.size(), "residue") +
                     (m_all.size() == 1 ? " are its models" : " are their models") +
                     (without == 0 ? QStringLiteral(".")
                                   : "; " + many(without, "residue") +
                                         (without == 1 ? " has none." : " have none."));
    }
    return result;
}

Report Batch::refusal(const QString& fault) const {
    QStringList lines = m_faults;
    for (const ResidueRotamers& one : m_all)
        if (m_all.size() == 1)
            lines << "No rotamers of " + QString::fromLatin1(one.name()) + ": " + fault + ".";
    if (m_all.size() > 1)
        lines << "No rotamers of " + many(m_all.size(), "residue") + ": " + fault + ".";
    return {{}, lines};
}

} // namespace

Report addRotamers(std::span<TAVIK::Residue* const> residues) {
    Batch batch(residues);
    if (batch.isEmpty())
        return batch.refusal({});
    if (const QString fault = batch.judge(); !fault.isEmpty())
        return batch.refusal(fault);
    // What is said is known before anything is made.
    Report report = batch.report();
    Report result = batch.refusal(QStringLiteral("another change of the data is under way"));
    changeData(
        DataAdder<TAVIK::Space>(nullptr, TAVIK::Space::instance(), batch.label()),
        [&](DataPointBase&) {
            batch.add();
            std::swap(result, report);
        },
        Refusal::Silent);
    return result;
}

WaitingResidues::WaitingResidues(std::function<void()> due) {
    m_timer.setSingleShot(true);
    QObject::connect(&m_timer, &QTimer::timeout, &m_timer, std::move(due));
}

void WaitingResidues::add(TAVIK::Residue* residue) {
    if (std::ranges::find(m_residues, residue) == m_residues.end())
        m_residues.push_back(residue);
    m_timer.start(0);
}

void WaitingResidues::aboutToDestroy(Compound* item) {
    std::erase_if(m_residues, [item](const Compound* residue) {
        while (residue && residue != item)
            residue = TAVIK::GetParent(residue);
        return residue != nullptr;
    });
}

} // namespace rotamer
