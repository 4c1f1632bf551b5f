// The dialogs of the window's commands. Each runs an event loop of its own, in which items and the
// window itself may be destroyed. A caller must find again what it held before.
#pragma once

#include <QColor>
#include <QPointer>
#include <QString>

#include <optional>
#include <string>
#include <utility>

class QWidget;

/// Opens `dialog`, and returns `answer(dialog)` unless the dialog's result is 0, which means that
/// it was cancelled. The dialog is deleted here, unless its parent was deleted while it was open.
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
/// Asks for a text; an empty text counts as no answer.
std::optional<QString> askText(const QString& caption, const QString& label,
                               const QString& initial);
/// Asks for a number as text; invalid text counts as no answer.
std::optional<double> askLimit(const QString& label);
/// Asks for a colour with alpha, initially white.
std::optional<QColor> askColor(QWidget* parent);
/// Asks whether to destroy the item of that name. Meanwhile the item may have been destroyed and,
/// if the answer is no, also the window, which is the parent.
bool confirmDelete(QWidget* window, const std::string& name);
