#include "Recovery.h"

#include "CrashJournal.h"
#include "Opening.h"

#include "Logger.h"
#include "Progress.h"
#include "files/Files.h"
#include "journal/Recovery.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QFile>
#include <QLocale>
#include <QMessageBox>
#include <QPointer>
#include <QPushButton>

#include <memory>
#include <optional>
#include <utility>

namespace workbench {

namespace {

using memory_host::JournalRecovery;

QString say(const char* text) {
    return QCoreApplication::translate("workbench::Recovery", text);
}

QString timeOf(const memory_host::JournalFolder& folder) {
    return QLocale().toString(QDateTime::fromSecsSinceEpoch(folder.time()), QLocale::ShortFormat);
}

/// Names of files as the system has them, and of entries.
QString listed(const std::vector<std::string>& entries) {
    constexpr std::size_t mostNames = 10;
    QStringList names;
    for (std::size_t i = 0; i != std::min(entries.size(), mostNames); ++i)
        names << QFile::decodeName(entries[i].c_str());
    if (entries.size() > mostNames)
        names << say("and %1 more").arg(entries.size() - mostNames);
    return names.join(u'\n');
}

Recovery::Answer ask(QWidget* window, const JournalRecovery& recovery, const QString& time) {
    const std::vector<std::string> entries = recovery.entries();
    const QString text =
        entries.size() == 1
            ? say("The workbench did not end in good order while %1 was open.")
                  .arg(QFile::decodeName(entries.front().c_str()))
            : say("The workbench did not end in good order while %1 entries and files were open.")
                  .arg(entries.size());
    const QPointer<QMessageBox> box(new QMessageBox(QMessageBox::Question,
                                                    say("Changes that were not closed"), text,
                                                    QMessageBox::NoButton, window));
    box->setTextFormat(Qt::PlainText);
    QString more = say("It can be opened as it was on %1, with what was changed. \"Later\" asks "
                       "again at the next start.")
                       .arg(time);
    if (entries.size() > 1)
        more = listed(entries) + QStringLiteral("\n\n") + more;
    box->setInformativeText(more);
    QPushButton* const open = box->addButton(say("&Open"), QMessageBox::AcceptRole);
    const QAbstractButton* const discard =
        box->addButton(say("&Discard"), QMessageBox::DestructiveRole);
    QPushButton* const later = box->addButton(say("&Later"), QMessageBox::RejectRole);
    box->setDefaultButton(open);
    box->setEscapeButton(later);
    box->exec();
    const QAbstractButton* const clicked = box ? box->clickedButton() : nullptr;
    const Recovery::Answer answer = clicked == nullptr   ? Recovery::Answer::Later
                                    : clicked == open    ? Recovery::Answer::Open
                                    : clicked == discard ? Recovery::Answer::Discard
                                                         : Recovery::Answer::Later;
    delete box;
    return answer;
}

std::unique_ptr<JournalRecovery> read(const memory_host::JournalFolder& folder) {
    std::unique_ptr<JournalRecovery> recovery;
    try {
        Progress::Run(say("Reading the journal"), [&](ProgressReporter&, const std::stop_token&) {
            recovery = std::make_unique<JournalRecovery>(folder.path());
        });
    } catch (const memory_host::FileError& error) {
        Logger::Write(error.what());
    }
    return recovery;
}

} // namespace

QString Recovery::run(const std::string& all, CrashJournal& journal) {
    QString opened;
    for (memory_host::JournalFolder& folder : memory_host::JournalFolder::abandoned(all))
        if (const QString line = open(std::move(folder), journal); !line.isEmpty())
            opened = line;
    return opened;
}

void Recovery::openFiles(JournalRecovery& recovery) {
    std::vector<std::string> contents;
    std::vector<std::size_t> files;
    for (std::size_t file = 0; file != recovery.fileCount(); ++file) {
        std::string content = recovery.contentPath(file);
        if (content.empty()) {
            Logger::Write(recovery.path(file) + " was changed by someone else since it was opened");
            continue;
        }
        contents.push_back(std::move(content));
        files.push_back(file);
    }
    m_opening.open(contents, [&](std::size_t opened) { recovery.setOpened(files[opened]); });
}

QString Recovery::open(memory_host::JournalFolder folder, CrashJournal& journal) {
    const std::unique_ptr<JournalRecovery> recovery = read(folder);
    if (!recovery)
        return {};
    const QString time = timeOf(folder);
    switch (ask(m_window, *recovery, time)) {
    case Answer::Open:
        break;
    case Answer::Discard:
        folder.remove();
        return {};
    case Answer::Later:
        return {};
    }
    openFiles(*recovery);
    const JournalRecovery::Outcome outcome = recovery->apply();
    for (const std::string& line : outcome.lines)
        Logger::Write(line);
    if (!outcome.isWhole)
        Logger::Write("The journal is kept and offered again at the next start: " + folder.path());
    journal.adopt(std::move(folder), !outcome.isWhole);
    return outcome.hasEntries ? say("Opened as it was on %1").arg(time) : QString();
}

} // namespace workbench
