#include "VuxoDialogs.h"

#include "Checks.h"

#include <QColorDialog>
#include <QInputDialog>
#include <QMessageBox>

namespace {

constexpr const char* source = "Vuxo"; // what the window's checks name

} // namespace

std::optional<double> askRadius(const QString& label) {
    auto* dialog = new QInputDialog;
    checkPtr(dialog, source, __LINE__);
    dialog->setInputMode(QInputDialog::DoubleInput);
    dialog->setWindowTitle(QStringLiteral("Radius"));
    dialog->setLabelText(label);
    dialog->setDoubleDecimals(3);
    dialog->setDoubleRange(0.0, 10000.0);
    dialog->setDoubleValue(4.0);
    return askWith(dialog, [](const QInputDialog& asked) { return asked.doubleValue(); });
}

std::optional<QString> askText(const QString& caption, const QString& label,
                               const QString& initial) {
    auto* dialog = new QInputDialog;
    checkPtr(dialog, source, __LINE__);
    dialog->setInputMode(QInputDialog::TextInput);
    dialog->setWindowTitle(caption);
    dialog->setLabelText(label);
    dialog->setTextValue(initial);
    std::optional<QString> text =
        askWith(dialog, [](const QInputDialog& asked) { return asked.textValue(); });
    return text && text->isEmpty() ? std::nullopt : std::move(text);
}

std::optional<double> askLimit(const QString& label) {
    const std::optional<QString> text =
        askText(QStringLiteral("Limit"), label, QString::number(0.0, 'g', 6));
    if (!text)
        return std::nullopt;
    bool isNumber = false;
    const double limit = text->toDouble(&isNumber);
    return isNumber ? std::optional(limit) : std::nullopt;
}

std::optional<QColor> askColor(QWidget* parent) {
    auto* dialog = new QColorDialog(Qt::white, parent);
    checkPtr(dialog, source, __LINE__);
    dialog->setOption(QColorDialog::ShowAlphaChannel);
    return askWith(dialog, [](const QColorDialog& asked) { return asked.selectedColor(); });
}

bool confirmDelete(QWidget* window, const std::string& name) {
    auto* question = new QMessageBox(QMessageBox::Warning, QStringLiteral("Warning"),
                                     QStringLiteral("Delete %1?").arg(QString::fromLatin1(name)),
                                     QMessageBox::Ok | QMessageBox::Cancel, window);
    checkPtr(question, source, __LINE__);
    question->setTextFormat(Qt::PlainText);
    question->setDefaultButton(QMessageBox::Ok);
    question->setEscapeButton(QMessageBox::Cancel);
    const std::optional<bool> isYes = askWith(
        question, [](const QMessageBox& asked) { return asked.result() == QMessageBox::Ok; });
    return isYes.value_or(false);
}
