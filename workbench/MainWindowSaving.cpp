// What the main window offers to save, and how it shows what is not saved.
#include "MainWindow.h"

#include "Saving.h"

#include "Space.h"
#include "items/DataVersion.h"

#include <QAction>
#include <QMenu>

namespace workbench {

void MainWindow::makeSaveActions(QMenu* menu) {
    m_save = menu->addAction(tr("&Save"), QKeySequence::Save, this, &MainWindow::save);
    m_saveAs = menu->addAction(tr("Save &As..."), QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_S),
                               this, &MainWindow::saveAs);
    m_saveSelection =
        menu->addAction(tr("Save S&election As..."), this, &MainWindow::saveSelectionAs);
    m_saveAll = menu->addAction(tr("Sa&ve All"), this, &MainWindow::saveAll);
}

TAVIK::Compound* MainWindow::entryToSave() const {
    TAVIK::Compound* const entry = entryToClose();
    return canBeSaved(entry) ? entry : nullptr;
}

void MainWindow::save() {
    if (TAVIK::Compound* const entry = entryToSave())
        m_saving->save(entry);
    updateSaving();
}

void MainWindow::saveAs() {
    if (TAVIK::Compound* const entry = entryToSave())
        m_saving->saveAs(entry);
    updateSaving();
}

void MainWindow::saveSelectionAs() {
    m_saving->saveSelectionAs();
    updateSaving();
}

void MainWindow::saveAll() {
    m_saving->saveAll();
    updateSaving();
}

void MainWindow::updateSaving() {
    TAVIK::Compound* const entry = entryToSave();
    m_save->setEnabled(entry && isUnsaved(entry));
    m_saveAs->setEnabled(entry != nullptr);
    m_saveSelection->setEnabled(TAVIK::Space::instance()->HasSelected());
    const bool isAnyUnsaved = !unsavedEntries().empty();
    m_saveAll->setEnabled(isAnyUnsaved);
    updateTitle();
    setWindowModified(isAnyUnsaved);
}

// The window shows each "[*]" as a star while it is modified, and leaves them out else.
void MainWindow::updateTitle() {
    constexpr qsizetype mostNames = 3;
    const QString star = QStringLiteral("[*]");
    TAVIK::Space* const space = TAVIK::Space::instance();
    QStringList names;
    bool isRestUnsaved = false;
    for (TAVIK::Compound** entry = space->ChildBegin(); entry != space->ChildEnd(); ++entry) {
        if (!*entry)
            continue;
        const bool isChanged = canBeSaved(*entry) && memory_host::isUnsaved(*entry);
        if (names.size() == mostNames)
            names << QString(QChar(0x2026));
        if (names.size() > mostNames) {
            isRestUnsaved = isRestUnsaved || isChanged;
            continue;
        }
        names << QString::fromLatin1((*entry)->GetName().c_str()).replace(star, star + star) +
                     (isChanged ? star : QString());
    }
    if (isRestUnsaved)
        names.back() += star;
    setWindowTitle(names.isEmpty() ? tr("Workbench")
                                   : names.join(QStringLiteral(", ")) + tr(" - Workbench"));
}

} // namespace workbench
