// The dialogs that the window's commands ask with. All of them run an event loop of their own, in
// which anything may happen: items destroyed, and the window itself. What a caller held before, it
// finds again afterwards.
#pragma once

#include <QColor>
#include <QPointer>
#include <QString>

#include <optional>
#include <string>
#include <utility>

class QWidget;

/// Opens `dialog`, and gives what `answer(dialog)` makes of it unless its result is 0, as that of a
/// dialog that was cancelled. The dialog is deleted here, unless its parent went, and the dialog
/// with it, while it was open.
template <class Dialog, class Answer>
auto askWith(Dialog* dialog, Answer answer) -> std::optional<decltype(answer(*dialog))> {
    const QPointer<Dialog> open(dialog);
    const int result = dialog->exec();
    if (!open)
        return std::nullopt;
    std::optional<decltype(answer(*dialog))> given;
    if (result)
        given = answer(*dialog);
    delete dialog;
    return given;
}

/// Asks for a length in Å, from 0 to 10000 with 3 decimals.
std::optional<double> askRadius(const QString& label);
/// Asks for a text; an empty one counts as none.
std::optional<QString> askText(const QString& caption, const QString& label,
                               const QString& initial);
/// Asks for a number as text; one that is no number counts as none.
std::optional<double> askLimit(const QString& label);
/// Asks for a colour with alpha, white at first.
std::optional<QColor> askColor(QWidget* parent);
/// Asks whether the item of that name is to be destroyed. Anything can have happened meanwhile: the
/// item may be gone, and when the answer is no, also the window, which is the parent.
bool confirmDelete(QWidget* window, const std::string& name);
