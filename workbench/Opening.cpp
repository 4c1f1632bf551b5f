#include "Opening.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QFile>
#include <QFileInfo>

#include <memory>
#include <utility>

namespace workbench {

using memory_host::ProgressWindow;

namespace {

/// Thrown out of the progress callback when the user cancels.
struct Cancelled {};

QString displayName(const std::string& file) {
    return QFileInfo(QFile::decodeName(file.c_str())).fileName();
}

} // namespace

Opening::Opening(Report report) : m_report(std::move(report)) {}

Opening::~Opening() = default;

std::size_t Opening::open(const std::vector<std::string>& files,
                          const std::function<void(std::size_t file)>& opened) {
    ProgressWindow progress(ProgressWindow::tr("Opening files"));
    std::size_t count = 0;
    for (std::size_t i = 0; i < files.size(); ++i) {
        QString title = ProgressWindow::tr("Opening %1").arg(displayName(files[i]));
        if (files.size() > 1)
            title += ProgressWindow::tr(" (%1 of %2)").arg(i + 1).arg(files.size());
        progress.setTitleLine(title);
        try {
            if (!openOne(files[i], progress))
                continue;
            ++count;
            if (opened)
                opened(i);
        } catch (const Cancelled&) {
            m_report(files[i] + ": opening was cancelled");
            break;
        }
    }
    return count;
}

bool Opening::openOne(const std::string& file, ProgressWindow& progress) {
    const auto showStage = [&progress](const std::string& stage, double fraction) {
        progress.setStage(QString::fromUtf8(stage.c_str()), fraction);
        progress.handleEvents();
        if (progress.wasCancelled())
            throw Cancelled();
    };
    try {
        const memory_host::ParsedFilePtr parsed = parse(file, progress);
        for (const std::string& remark : memory_host::openParsed(*parsed, showStage).remarks)
            m_report(remark);
        return true;
    } catch (const memory_host::FileError& error) {
        m_report(error.what());
    } catch (const std::bad_alloc&) {
        m_report(file + ": not enough memory to open it");
    } catch (const std::exception& error) {
        m_report(file + ": " + error.what());
    }
    return false;
}

memory_host::ParsedFilePtr Opening::parse(const std::string& file, ProgressWindow& progress) {
    progress.setStage(ProgressWindow::tr("reading the file"), -1);
    progress.handleEvents();
    QEventLoop loop;
    // Read in this thread only; null once the event loop has ended.
    const auto waiting = std::make_shared<QEventLoop*>(&loop);
    std::stop_source stop;
    auto parsing = std::async(std::launch::async, [file, waiting, token = stop.get_token()] {
        struct Done {
            std::shared_ptr<QEventLoop*> waiting;
            ~Done() {
                const auto end = [waiting = waiting] {
                    if (*waiting)
                        (*waiting)->quit();
                };
                QMetaObject::invokeMethod(qApp, end, Qt::QueuedConnection);
            }
        } const done{waiting};
        return memory_host::parseFile(file, token);
    });
    QObject::connect(&progress, &QDialog::rejected, &loop, &QEventLoop::quit);
    loop.exec();
    *waiting = nullptr;
    if (progress.wasCancelled()) {
        stop.request_stop();
        m_abandoned.push_back(std::move(parsing));
        throw Cancelled();
    }
    return parsing.get();
}

} // namespace workbench
