// The panel of the set algebra: set A is the selected atoms, set B the atoms that match a name
// pattern.
#include "Vuxo.h"

#include "Logger.h"
#include "Space.h"
#include "WidgetFactory.h"
#include "data/NamePredicates.h"

#include <QCheckBox>
#include <QLabel>
#include <QLayout>
#include <QLineEdit>
#include <QPushButton>
#include <QShortcut>

#include <limits>

void Vuxo::populateBoxes(QWidget* panel) {
    QLayout* column = panel->layout();
    const auto addField = [&](const QString& label) {
        QLabel* name = m_Factory->CreateQLabel(panel, label);
        column->addWidget(name);
        QLineEdit* field = m_Factory->CreateQLineEdit(panel);
        name->setBuddy(field);
        // The default limit would silently cut a long pattern that is pasted.
        field->setMaxLength(std::numeric_limits<int>::max());
        field->setText(QStringLiteral(".*"));
        column->addWidget(field);
        return field;
    };
    const auto addButton = [&](const QString& label, const QObject* receiver, const char* slot) {
        QPushButton* button = m_Factory->CreateQPushButton(panel, label, receiver, slot);
        // For screen readers: without the blanks that align the brackets, and with the ampersand.
        button->setAccessibleName(label.simplified());
        column->addWidget(button);
        return button;
    };
    m_ChainEdit = addField(tr("Chain"));
    m_ResidueEdit = addField(tr("Residue"));
    m_AtomEdit = addField(tr("Atom"));
    m_CurrentOnly = m_Factory->CreateCheckBox(panel, tr("Current tree only"), true);
    column->addWidget(m_CurrentOnly);
    const QPushButton* unite = addButton(tr("Union        ( A | B )"), this, SLOT(applySelect()));
    for (const QLineEdit* field : {m_ChainEdit, m_ResidueEdit, m_AtomEdit})
        connect(field, SIGNAL(returnPressed()), unite, SLOT(click()));
    addButton(tr("Intersection ( A & B )"), this, SLOT(applyMask()));
    addButton(tr("Difference   ( A - B )"), this, SLOT(applyDiff()));
    addButton(tr("Close"), panel, SLOT(hide()));
    new QShortcut(Qt::Key_Escape, panel, SLOT(hide()));
}

void Vuxo::applySelect() {
    applyPattern(SetOperation::Union);
}

void Vuxo::applyMask() {
    applyPattern(SetOperation::Intersection);
}

void Vuxo::applyDiff() {
    applyPattern(SetOperation::Difference);
}

void Vuxo::applyPattern(SetOperation operation, const char* slot) {
    const QString pattern =
        namePattern(m_ChainEdit->text(), m_ResidueEdit->text(), m_AtomEdit->text());
    if (pattern.length() <= 4)
        return;
    TAVIK::Compound* root = m_CurrentOnly->isChecked() ? rootItem() : TAVIK::Space::instance();
    const auto apply = [&](TAVIK::Compound* item) {
        Done done;
        const QString refusal =
            applySetOperation(item, operation, nameExpression(item, pattern), &done.changed);
        if (!refusal.isEmpty()) {
            Logger::Write(refusal.toLatin1().toStdString());
            done.deed = "";
        }
        return done;
    };
    change<DataPoint>(root, apply, Refusal::Report, slot);
}
