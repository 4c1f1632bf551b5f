#include "Inspector.h"

#include "AtomTable.h"
#include "Progress.h"
#include "SelectionChanges.h"
#include "Space.h"

#include <QApplication>
#include <QClipboard>
#include <QFileDialog>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLocale>
#include <QPointer>
#include <QScopedValueRollback>
#include <QTableWidget>
#include <QToolButton>
#include <QVBoxLayout>

#include <algorithm>

namespace workbench {

namespace {

/// A value as the table shows it: where a line ends, units stay with their numbers.
QString unitsKept(QString value) {
    return value.replace(QStringLiteral(" Å"), QStringLiteral("\u00A0Å"));
}

} // namespace

Inspector::Inspector(QWidget* parent)
    : QWidget(parent), m_title(new QLabel(this)), m_table(new QTableWidget(0, 2, this)),
      m_copy(new QToolButton(this)), m_save(new QToolButton(this)),
      m_selectionSeen(TAVIK::SelectionChanges()), m_listener(*this) {
    setObjectName(QStringLiteral("Inspector"));
    m_title->setTextFormat(Qt::PlainText);
    m_title->setWordWrap(true);
    m_title->setTextInteractionFlags(Qt::TextSelectableByMouse);
    m_title->setObjectName(QStringLiteral("title"));

    m_table->setAccessibleName(tr("Inspector"));
    m_table->horizontalHeader()->hide();
    m_table->verticalHeader()->hide();
    m_table->horizontalHeader()->setSectionResizeMode(0, QHeaderView::ResizeToContents);
    m_table->horizontalHeader()->setSectionResizeMode(1, QHeaderView::Stretch);
    // Another width breaks lines elsewhere; later, when the table has it, too.
    connect(m_table->horizontalHeader(), &QHeaderView::sectionResized, m_table,
            &QTableWidget::resizeRowsToContents, Qt::QueuedConnection);
    m_table->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_table->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_table->setShowGrid(false);
    m_table->setWordWrap(true);
    m_table->setTabKeyNavigation(false);

    connect(m_table, &QTableWidget::cellActivated, this, &Inspector::goTo);

    m_copy->setText(tr("Copy"));
    m_copy->setToolTip(tr("Copies the selected lines, or all, to the clipboard"));
    connect(m_copy, &QToolButton::clicked, this, &Inspector::copy);
    m_save->setText(tr("CSV..."));
    m_save->setToolTip(tr("Writes the selected atoms to a file, as a table"));
    connect(m_save, &QToolButton::clicked, this, &Inspector::saveTable);

    auto* const column = new QVBoxLayout(this);
    column->setContentsMargins(4, 4, 4, 4);
    column->addWidget(m_title);
    column->addWidget(m_table, 1);
    auto* const buttons = new QHBoxLayout;
    buttons->addWidget(m_copy);
    buttons->addWidget(m_save);
    buttons->addStretch();
    column->addLayout(buttons);

    m_timer.setSingleShot(true);
    connect(&m_timer, &QTimer::timeout, this, &Inspector::look);
    m_selected.update();
    show(Inspection());
    m_timer.start(0);
}

Inspector::~Inspector() = default;

QSize Inspector::sizeHint() const {
    return {fontMetrics().averageCharWidth() * 44, 300};
}

void Inspector::dataChanged() {
    // At once, or the order of what was selected would be lost. It costs little.
    m_selected.update();
    const std::uint64_t now = TAVIK::SelectionChanges();
    if (std::exchange(m_selectionSeen, now) != now)
        m_showsFocus = !TAVIK::Space::instance()->HasSelected();
    m_timer.start(0);
}

void Inspector::focusMoved(TAVIK::Compound* item) {
    // A click may select and set the focus: then it is the selection that grows.
    m_showsFocus = item && !item->IsSelected();
    m_timer.start(0);
}

void Inspector::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    m_timer.start(0);
}

void Inspector::look() {
    if (!isVisible())
        return;
    TAVIK::Compound* const focus = TAVIK::Focus::item();
    Inspection inspection;
    if (!m_showsFocus)
        inspection = inspectSelection(m_selected.atoms());
    m_isOfSelection = !inspection.title.isEmpty();
    if (!m_isOfSelection)
        inspection = inspectItem(focus);
    show(std::move(inspection));
}

TAVIK::Compound* Inspector::itemOf(int row) const {
    if (!m_isOfSelection)
        return TAVIK::Focus::item();
    const std::vector<TAVIK::Compound*>& atoms = m_selected.atoms();
    if (atoms.size() == 1)
        return atoms.front();
    const std::size_t atom = m_inspection.rows.at(static_cast<std::size_t>(row)).atom;
    return atom != 0 && atom <= atoms.size() ? atoms[atom - 1] : nullptr;
}

void Inspector::goTo(int row) const {
    // What is shown is of other data while they change.
    TAVIK::Compound* const item = isUpToDate() ? itemOf(row) : nullptr;
    if (item)
        TAVIK::Focus::set(item, nullptr, true);
}

void Inspector::show(Inspection inspection) {
    m_inspection = std::move(inspection);
    const bool isEmpty = m_inspection.title.isEmpty();
    m_title->setText(isEmpty
                         ? tr("Select atoms, or click on something, to see what is known of it.")
                         : m_inspection.title);
    m_table->setRowCount(static_cast<int>(m_inspection.rows.size()));
    int at = 0;
    for (const Inspection::Row& row : m_inspection.rows) {
        m_table->setItem(at, 0, new QTableWidgetItem(row.label));
        auto* const value = new QTableWidgetItem(unitsKept(row.value));
        value->setToolTip(Qt::convertFromPlainText(row.value));
        m_table->setItem(at++, 1, value);
    }
    m_table->resizeRowsToContents();
    m_copy->setEnabled(!isEmpty);
    m_save->setEnabled(m_selected.hasAtoms());
}

QString Inspector::textToCopy() const {
    QList<int> rows;
    for (const QModelIndex& index : m_table->selectionModel()->selectedRows())
        rows << index.row();
    if (rows.isEmpty())
        return m_inspection.text();
    std::sort(rows.begin(), rows.end());
    QString text;
    for (const int at : rows) {
        const Inspection::Row& row = m_inspection.rows[static_cast<std::size_t>(at)];
        text += row.label + u'\t' + row.value + u'\n';
    }
    return text;
}

void Inspector::copy() const {
    if (const QString text = textToCopy(); !text.isEmpty())
        QApplication::clipboard()->setText(text);
}

void Inspector::saveTable() {
    auto* const dialog =
        new QFileDialog(this, tr("Save the selected atoms"), QString(), tr("Tables (*.csv)"));
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setAcceptMode(QFileDialog::AcceptSave);
    dialog->setDefaultSuffix(QStringLiteral("csv"));
    dialog->selectFile(tr("selected atoms.csv"));
    // Later, when the dialog is closed: what it takes may have a window of its own.
    connect(dialog, &QFileDialog::fileSelected, this, &Inspector::writeTable, Qt::QueuedConnection);
    dialog->open();
}

void Inspector::writeTable(const QString& file) {
    // Read only now: anything may have changed while the dialog was open.
    const AtomTable table = AtomTable::ofSelected(TAVIK::Space::instance());
    if (table.size() == 0) {
        emit failed(tr("%1 is not written: no atom is selected any more").arg(file));
        return;
    }
    QString problem;
    const QPointer<Inspector> inspector(this);
    const bool isWhole =
        Progress::Run(tr("Save the selected atoms"),
                      [&](ProgressReporter& reporter, const std::stop_token& stop) {
                          problem = table.save(file, &reporter, stop);
                      });
    if (!inspector)
        return;
    if (!isWhole)
        emit done(tr("%1 is not written").arg(file));
    else if (!problem.isEmpty())
        emit failed(problem);
    else
        emit done(table.size() == 1 ? tr("1 atom written to %1").arg(file)
                                    : tr("%1 atoms written to %2").arg(table.size()).arg(file));
}

} // namespace workbench
