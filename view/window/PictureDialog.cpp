#include "PictureDialog.h"

#include <QDialogButtonBox>
#include <QFileDialog>
#include <QFileInfo>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QSpinBox>

#include <algorithm>

namespace view {

PictureDialog::PictureDialog(QWidget* parent, const QSize& size)
    : QDialog(parent), m_width(new QSpinBox(this)), m_height(new QSpinBox(this)),
      m_path(new QLineEdit(this)) {
    setWindowTitle(tr("Save picture"));
    for (QSpinBox* side : {m_width, m_height}) {
        side->setRange(1, largestSide);
        side->setSuffix(tr(" pixels"));
        connect(side, &QSpinBox::valueChanged, this, &PictureDialog::check);
    }
    m_width->setValue(size.width());
    m_height->setValue(size.height());
    m_path->setMinimumWidth(320);
    connect(m_path, &QLineEdit::textChanged, this, &PictureDialog::check);
    auto* const browse = new QPushButton(tr("&Browse..."), this);
    browse->setAutoDefault(false);
    connect(browse, &QPushButton::clicked, this, &PictureDialog::browse);
    auto* const file = new QHBoxLayout;
    file->addWidget(m_path);
    file->addWidget(browse);
    auto* const buttons =
        new QDialogButtonBox(QDialogButtonBox::Save | QDialogButtonBox::Cancel, this);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    m_ok = buttons->button(QDialogButtonBox::Save);
    auto* const form = new QFormLayout(this);
    form->addRow(tr("&Width"), m_width);
    form->addRow(tr("&Height"), m_height);
    // A row of several widgets gets no buddy by itself.
    auto* const label = new QLabel(tr("&File"), this);
    label->setBuddy(m_path);
    form->addRow(label, file);
    form->addRow(buttons);
    m_path->setFocus();
    check();
}

void PictureDialog::check() {
    if (m_ok)
        m_ok->setEnabled(!m_path->text().isEmpty() &&
                         qint64(m_width->value()) * m_height->value() <= largestArea);
}

void PictureDialog::browse() {
    auto* const dialog =
        new QFileDialog(this, tr("Save picture"), m_path->text(), tr("Pictures (*.png)"));
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setAcceptMode(QFileDialog::AcceptSave);
    dialog->setDefaultSuffix(QStringLiteral("png"));
    connect(dialog, &QFileDialog::fileSelected, this, [this](const QString& path) {
        m_replaced = path;
        m_path->setText(path);
    });
    dialog->open();
}

void PictureDialog::accept() {
    const QString path = m_path->text();
    if (path == m_replaced || !QFileInfo(path).isFile()) {
        QDialog::accept();
        return;
    }
    auto* const question = new QMessageBox(QMessageBox::Question, windowTitle(),
                                           tr("%1 exists. Replace it?").arg(path),
                                           QMessageBox::Yes | QMessageBox::No, this);
    question->setTextFormat(Qt::PlainText);
    question->setAttribute(Qt::WA_DeleteOnClose);
    question->setDefaultButton(QMessageBox::No);
    connect(question, &QMessageBox::buttonClicked, this,
            [this, question, path](QAbstractButton* button) {
                if (question->buttonRole(button) != QMessageBox::YesRole)
                    return;
                m_replaced = path;
                accept();
            });
    question->open();
}

PictureRequest PictureDialog::request() const {
    return {m_path->text(), {m_width->value(), m_height->value()}};
}

} // namespace view
