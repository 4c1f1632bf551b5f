#include "SaveDialogs.h"

#include "files/Formats.h"

#include <QCheckBox>
#include <QCoreApplication>
#include <QFileDialog>
#include <QFileInfo>
#include <QGridLayout>
#include <QMessageBox>
#include <QPointer>
#include <QPushButton>

namespace workbench {

namespace {

using memory_host::FileFormat;

QString say(const char* text) {
    return QCoreApplication::translate("workbench::SaveDialogs", text);
}

/// A format that can be saved, as a line of the file dialog.
struct Offer {
    QStringList endings;
    QString filter;

    bool fits(const QString& file) const {
        const QString name =
            file.endsWith(QLatin1String(".gz"), Qt::CaseInsensitive) ? file.chopped(3) : file;
        return std::any_of(endings.begin(), endings.end(), [&name](const QString& ending) {
            return name.endsWith(ending, Qt::CaseInsensitive);
        });
    }
};

QString fromLatin1(std::string_view text) {
    return QString::fromLatin1(text.data(), static_cast<qsizetype>(text.size()));
}

QList<Offer> offers(Kept kept) {
    const auto wanted = kept == Kept::Map ? FileFormat::Holds::Map : FileFormat::Holds::Structure;
    QList<Offer> all;
    for (const FileFormat* const format : memory_host::fileFormats()) {
        if ((!format->write && !format->edit) || format->holds != wanted)
            continue;
        Offer offer;
        QStringList patterns;
        for (const std::string_view ending : format->endings) {
            offer.endings << fromLatin1(ending);
            patterns << u'*' + offer.endings.constLast()
                     << u'*' + offer.endings.constLast() + QStringLiteral(".gz");
        }
        offer.filter = say("%1 (%2)").arg(fromLatin1(format->name), patterns.join(u' '));
        all << offer;
    }
    return all;
}

/// The first offer that fits, or the first one.
const Offer& offerFor(const QString& file, const QList<Offer>& all) {
    const auto found = std::find_if(all.begin(), all.end(),
                                    [&file](const Offer& offer) { return offer.fits(file); });
    return found == all.end() ? all.constFirst() : *found;
}

/// `proposed` with an ending that can be saved.
QString withEnding(const QString& proposed, const Offer& offer) {
    if (offer.fits(proposed))
        return proposed;
    const QFileInfo info(proposed);
    const bool hasEnding = info.isAbsolute() && !info.completeBaseName().isEmpty();
    const QString name = hasEnding ? info.path() + u'/' + info.completeBaseName() : proposed;
    return name + offer.endings.constFirst();
}

/// Shows a question until it is answered; returns the button, null where the window went.
template <class Box> QAbstractButton* answerTo(const QPointer<Box>& box) {
    box->exec();
    QAbstractButton* const clicked = box ? box->clickedButton() : nullptr;
    delete box;
    return clicked;
}

QString nameOf(const QString& file) {
    return QFileInfo(file).fileName();
}

} // namespace

bool isSavable(const QString& file, Kept kept) {
    const QList<Offer> all = offers(kept);
    return std::any_of(all.begin(), all.end(),
                       [&file](const Offer& offer) { return offer.fits(file); });
}

std::optional<SaveTarget> askForTarget(QWidget* window, const QString& title,
                                       const QString& proposed, Kept kept) {
    const QList<Offer> all = offers(kept);
    const Offer& usual = offerFor(proposed, all);
    const QString file = withEnding(proposed, usual);
    const QPointer<QFileDialog> dialog(new QFileDialog(window, title));
    dialog->setAcceptMode(QFileDialog::AcceptSave);
    // Only Qt's own has room for the check box.
    dialog->setOption(QFileDialog::DontUseNativeDialog);
    QStringList filters;
    for (const Offer& offer : all)
        filters << offer.filter;
    dialog->setNameFilters(filters);
    dialog->selectNameFilter(usual.filter);
    dialog->setDefaultSuffix(usual.endings.constFirst().mid(1));
    QObject::connect(dialog, &QFileDialog::filterSelected, dialog, [&](const QString& filter) {
        dialog->setDefaultSuffix(all[filters.indexOf(filter)].endings.constFirst().mid(1));
    });
    if (QFileInfo(file).isAbsolute())
        dialog->setDirectory(QFileInfo(file).path());
    dialog->selectFile(nameOf(file));
    auto* const asShown = new QCheckBox(say("As sho&wn: only the active models"), dialog);
    asShown->setObjectName(QStringLiteral("asShown"));
    asShown->setToolTip(say("Leaves out the alternative models of residues that are not active"));
    asShown->setVisible(kept == Kept::Structure);
    if (auto* const grid = qobject_cast<QGridLayout*>(dialog->layout()))
        grid->addWidget(asShown, grid->rowCount(), 0, 1, -1);
    std::optional<SaveTarget> target;
    if (dialog->exec() == QDialog::Accepted && dialog && !dialog->selectedFiles().isEmpty())
        target = {dialog->selectedFiles().constFirst(), asShown->isChecked()};
    delete dialog;
    return target;
}

Replacing askToReplace(QWidget* window, const QString& file, Losing losing) {
    const bool isChanged = losing == Losing::ChangesByOthers;
    const QPointer<QMessageBox> box(
        new QMessageBox(QMessageBox::Warning, say("Save"),
                        (isChanged ? say("%1 was changed by someone else after it was opened.")
                                   : say("%1 holds entries that are closed here."))
                            .arg(nameOf(file)),
                        QMessageBox::Cancel, window));
    box->setTextFormat(Qt::PlainText);
    box->setInformativeText(
        isChanged ? say("Replacing it loses these changes. As another file, what is open here is "
                        "kept as well.")
                  : say("Replacing it loses them. As another file, what is open here is kept as "
                        "well."));
    const QAbstractButton* const replace =
        box->addButton(say("&Replace"), QMessageBox::DestructiveRole);
    const QAbstractButton* const saveAs =
        box->addButton(say("Save &As..."), QMessageBox::AcceptRole);
    box->setDefaultButton(QMessageBox::Cancel);
    const QAbstractButton* const clicked = answerTo(box);
    return !clicked             ? Replacing::Cancel
           : clicked == replace ? Replacing::Replace
           : clicked == saveAs  ? Replacing::SaveAs
                                : Replacing::Cancel;
}

Unsaved askForUnsaved(QWidget* window, const QStringList& files) {
    constexpr qsizetype mostNames = 10;
    const bool isOne = files.size() == 1;
    const QPointer<QMessageBox> box(
        new QMessageBox(QMessageBox::Warning, say("Unsaved changes"),
                        isOne ? say("The changes to %1 are not saved.").arg(files.constFirst())
                              : say("The changes to %1 files are not saved.").arg(files.size()),
                        QMessageBox::Save | QMessageBox::Discard | QMessageBox::Cancel, window));
    box->setTextFormat(Qt::PlainText);
    QStringList names = files.mid(0, mostNames);
    if (names.size() < files.size())
        names << say("and %1 more").arg(files.size() - names.size());
    if (!isOne)
        box->setInformativeText(names.join(u'\n'));
    box->setDefaultButton(QMessageBox::Save);
    box->setEscapeButton(QMessageBox::Cancel);
    const QAbstractButton* const save = box->button(QMessageBox::Save);
    const QAbstractButton* const discard = box->button(QMessageBox::Discard);
    const QAbstractButton* const clicked = answerTo(box);
    return !clicked             ? Unsaved::Cancel
           : clicked == save    ? Unsaved::Save
           : clicked == discard ? Unsaved::Discard
                                : Unsaved::Cancel;
}

} // namespace workbench
