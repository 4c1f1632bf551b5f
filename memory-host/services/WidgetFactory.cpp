#include "WidgetFactory.h"

#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QStyleOptionButton>

namespace {

/// Shows the ampersand in "A & B", where Qt would make a mnemonic of the blank.
class Button : public QPushButton {
public:
    Button(const QString& text, QWidget* parent) : QPushButton(text, parent) {
        if (shortcut() == QKeySequence(Qt::ALT | Qt::Key_Space))
            setShortcut(QKeySequence());
    }

protected:
    void initStyleOption(QStyleOptionButton* option) const override {
        QPushButton::initStyleOption(option);
        option->text.replace(QStringLiteral(" & "), QStringLiteral(" && "));
    }
};

} // namespace

QLabel* WidgetFactory::CreateQLabel(QWidget* parent, const QString& text) {
    auto* const label = new QLabel(text, parent);
    // Plain text, because names may contain "<".
    label->setTextFormat(Qt::PlainText);
    return label;
}

QLineEdit* WidgetFactory::CreateQLineEdit(QWidget* parent) {
    return new QLineEdit(parent);
}

QCheckBox* WidgetFactory::CreateCheckBox(QWidget* parent, const QString& text, bool checked) {
    auto* const box = new QCheckBox(text, parent);
    box->setChecked(checked);
    return box;
}

QPushButton* WidgetFactory::CreateQPushButton(QWidget* parent, const QString& text,
                                              const QObject* receiver, const char* slot) {
    auto* const button = new Button(text, parent);
    QObject::connect(button, SIGNAL(clicked()), receiver, slot);
    return button;
}
