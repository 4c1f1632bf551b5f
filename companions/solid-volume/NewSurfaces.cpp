#include "NewSurfaces.h"

#include "ChangeData.h"
#include "DataAdder.h"
#include "DataMaker.h"
#include "Messages.h"
#include "SharedWork.h"
#include "Space.h"

#include <QCoreApplication>
#include <QLocale>

#include <exception>
#include <new>
#include <stdexcept>
#include <string>
#include <unordered_set>
#include <utility>

namespace solid {

namespace {

// Names that no top-level item has: of several surfaces of one name the further ones get a number.
class FreeNames {
public:
    FreeNames() {
        TAVIK::Space* const space = TAVIK::Space::instance();
        for (TAVIK::Compound** item = space->ChildBegin(); item != space->ChildEnd(); ++item)
            if (*item)
                m_taken.insert((*item)->GetName());
    }

    std::string take(const std::string& name) {
        std::string free = name;
        for (int number = 2; !m_taken.insert(free).second; ++number)
            free = name + " (" + std::to_string(number) + ')';
        return free;
    }

private:
    std::unordered_set<std::string> m_taken;
};

// Makes all items, or none.
void makeAll(std::vector<NewSurface>& news) {
    FreeNames names;
    std::vector<TAVIK::Surface*> made;
    made.reserve(news.size());
    try {
        for (NewSurface& one : news) {
            if (one.mesh.triangles.empty())
                continue;
            TAVIK::Surface* const surface = TAVIK::DataMaker::makeSurface(
                TAVIK::Space::instance(), names.take(one.name), std::move(one.mesh));
            if (!surface)
                throw std::runtime_error("the host refuses it");
            made.push_back(surface);
            if (one.color)
                surface->SetColor(*one.color);
        }
    } catch (...) {
        for (TAVIK::Surface* surface : made)
            TAVIK::DataMaker::Destroy(surface);
        throw;
    }
}

QLocale grouped() {
    QLocale locale = QLocale::c();
    locale.setNumberOptions(QLocale::DefaultNumberOptions);
    return locale;
}

} // namespace

QString areaInWords(double area) {
    return tr("%1 Å²").arg(grouped().toString(area, 'f', area < 1000 ? 1 : 0));
}

QString countInWords(std::size_t count) {
    return grouped().toString(static_cast<qulonglong>(count));
}

QString tr(const char* text) {
    return QCoreApplication::translate("SolidVolume", text);
}

void sayWhy(const QString& title, const QString& failure) {
    if (!failure.isNull())
        Messages::Show(tr("%1: nothing is made: %2").arg(title, failure));
}

QString currentFailure() {
    try {
        throw;
    } catch (const std::bad_alloc&) {
        return tr("there is not enough memory");
    } catch (const std::exception& error) {
        return QString::fromUtf8(error.what());
    }
}

QString addSurfaces(const QString& title, const Compute& compute) {
    std::vector<NewSurface> news;
    bool hasBegun = false;
    const auto work = [&](ProgressReporter& progress, const std::stop_token& stop) {
        hasBegun = true;
        news = compute(progress, onAllThreads(stop));
    };
    if (!Progress::Run(title, work))
        return hasBegun ? tr("cancelled") : tr("another work is in progress");
    const std::string label = "Add " + title.toLatin1().toStdString();
    bool isMade = false;
    changeData(
        DataAdder<TAVIK::Space>(nullptr, TAVIK::Space::instance(), label),
        [&](DataPointBase&) {
            makeAll(news);
            isMade = true;
        },
        Refusal::Silent);
    if (!isMade)
        return tr("another change of the data is under way");
    try {
        for (const NewSurface& one : news)
            Messages::Show(one.report);
    } catch (const std::bad_alloc&) { // What is made stays, though nobody hears of it.
    }
    return {};
}

} // namespace solid
