#include "FindBox.h"

#include "Focus.h"

#include <QAbstractListModel>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QLocale>
#include <QVBoxLayout>

#include <algorithm>
#include <limits>
#include <utility>

namespace workbench {

/// The hits as a list, of which the view only asks for those in sight.
class HitList : public QAbstractListModel {
public:
    HitList(const FindSearch& search, QObject* parent)
        : QAbstractListModel(parent), m_search(search) {}

    int rowCount(const QModelIndex& parent = {}) const override {
        return parent.isValid() ? 0 : m_rows;
    }
    QVariant data(const QModelIndex& index, int role) const override {
        if (role != Qt::DisplayRole || !index.isValid() || index.row() >= m_rows)
            return {};
        return m_search.hitText(static_cast<std::size_t>(index.row()));
    }
    /// Follows the search: no row is left of hits that are gone.
    void renew() {
        beginResetModel();
        constexpr std::size_t most = std::numeric_limits<int>::max() / 2;
        m_rows = static_cast<int>(std::min(m_search.hitCount(), most));
        endResetModel();
    }

private:
    const FindSearch& m_search;
    int m_rows = 0;
};

namespace {

constexpr int mostRows = 14;

QString several(std::size_t count, const QString& one, const QString& many) {
    static const QLocale plain(QLocale::English, QLocale::UnitedStates);
    return plain.toString(static_cast<qulonglong>(count)) + u' ' + (count == 1 ? one : many);
}

} // namespace

FindBox::FindBox(QWidget* window)
    : m_window(window), m_field(new QLineEdit(this)), m_panel(new QFrame(window)),
      m_count(new QLabel(m_panel)), m_view(new QListView(m_panel)),
      m_list(new HitList(m_search, this)) {
    m_field->setObjectName(QStringLiteral("find"));
    m_field->setAccessibleName(tr("Find"));
    m_field->setPlaceholderText(tr("Find: LC0 45   /C:45@CA   ligand   within 5 of ligand"));
    m_field->setClearButtonEnabled(true);
    // What is too long is said to be, and not cut off in silence.
    m_field->setMaxLength(std::numeric_limits<int>::max());
    m_field->setMinimumWidth(fontMetrics().averageCharWidth() * 50);
    m_field->installEventFilter(this);
    auto* const row = new QHBoxLayout(this);
    row->setContentsMargins(4, 2, 4, 2);
    row->addWidget(m_field);
    row->addStretch();

    m_panel->setObjectName(QStringLiteral("hits"));
    m_panel->setFrameShape(QFrame::StyledPanel);
    m_panel->setAutoFillBackground(true);
    m_panel->hide();
    m_count->setTextFormat(Qt::PlainText);
    m_count->setWordWrap(true);
    m_count->setObjectName(QStringLiteral("count"));
    m_view->setModel(m_list);
    m_view->setUniformItemSizes(true);
    m_view->setAccessibleName(tr("Hits"));
    m_view->setFocusPolicy(Qt::NoFocus);
    m_view->setTextElideMode(Qt::ElideMiddle);
    auto* const column = new QVBoxLayout(m_panel);
    column->setContentsMargins(4, 4, 4, 4);
    column->addWidget(m_count);
    column->addWidget(m_view, 1);

    connect(m_field, &QLineEdit::textChanged, this, [this](const QString& text) {
        m_asked = Deed::None;
        m_isTyped = true;
        m_search.setText(text);
    });
    connect(&m_search, &FindSearch::cleared, m_list, &HitList::renew);
    connect(&m_search, &FindSearch::finished, this, [this] {
        m_list->renew();
        // A list that was closed does not come back because data change.
        if (m_field->hasFocus() && (std::exchange(m_isTyped, false) || m_panel->isVisible()))
            showHits();
        if (m_asked != Deed::None)
            doIt(std::exchange(m_asked, Deed::None));
    });
    connect(m_view, &QListView::clicked, this,
            [this](const QModelIndex& index) { focusOn(index.row()); });
    m_window->installEventFilter(this);
}

FindBox::~FindBox() {
    m_window->removeEventFilter(this);
}

void FindBox::begin() {
    m_field->setFocus(Qt::ShortcutFocusReason);
    m_field->selectAll();
}

bool FindBox::eventFilter(QObject* watched, QEvent* event) {
    if (watched == m_window) {
        if (event->type() == QEvent::Resize && m_panel->isVisible())
            place();
        return false;
    }
    switch (event->type()) {
    case QEvent::KeyPress:
        return takeKey(*static_cast<QKeyEvent*>(event));
    case QEvent::FocusIn:
        m_search.setReady(true);
        // After a menu or another window the list would lie over what is wanted next.
        if (const Qt::FocusReason reason = static_cast<QFocusEvent*>(event)->reason();
            reason != Qt::PopupFocusReason && reason != Qt::ActiveWindowFocusReason &&
            reason != Qt::MenuBarFocusReason)
            showHits();
        return false;
    case QEvent::FocusOut:
        m_search.setReady(false);
        hideHits();
        return false;
    default:
        return false;
    }
}

bool FindBox::takeKey(const QKeyEvent& key) {
    switch (key.key()) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
        if (!(key.modifiers() & Qt::ControlModifier))
            askFor(Deed::Focus);
        else
            askFor(key.modifiers() & Qt::ShiftModifier ? Deed::SelectResidues : Deed::SelectAtoms);
        return true;
    case Qt::Key_Escape:
        if (m_panel->isVisible())
            hideHits();
        else if (!m_field->text().isEmpty())
            m_field->clear();
        else
            emit left();
        return true;
    case Qt::Key_Up:
    case Qt::Key_Down:
    case Qt::Key_PageUp:
    case Qt::Key_PageDown: {
        if (m_list->rowCount() == 0)
            return true;
        showHits();
        const int page = key.key() == Qt::Key_PageUp || key.key() == Qt::Key_PageDown ? 10 : 1;
        const int step = key.key() == Qt::Key_Up || key.key() == Qt::Key_PageUp ? -page : page;
        const int row = m_view->currentIndex().row() + step; // -1 without a current one
        m_view->setCurrentIndex(m_list->index(std::clamp(row, 0, m_list->rowCount() - 1)));
        return true;
    }
    default:
        return false;
    }
}

void FindBox::askFor(Deed deed) {
    if (m_search.isRunning())
        m_asked = deed;
    else
        doIt(deed);
}

void FindBox::doIt(Deed deed) {
    if (m_search.hitCount() == 0) {
        showHits();
        return;
    }
    if (deed == Deed::Focus) {
        focusOn(std::max(0, m_view->currentIndex().row()));
        return;
    }
    if (m_search.selectHits(deed == Deed::SelectResidues))
        hideHits();
    else
        emit said(tr("Nothing is selected: another change is under way"));
}

void FindBox::focusOn(int hit) {
    if (hit >= m_list->rowCount())
        return;
    const auto index = static_cast<std::size_t>(hit);
    emit said(m_search.hitText(index));
    TAVIK::Compound* const item = m_search.hitItem(index);
    m_view->setCurrentIndex(m_list->index(hit));
    hideHits();
    TAVIK::Focus::set(item, nullptr, true);
}

QString FindBox::countText() const {
    if (!m_search.problem().isEmpty())
        return m_search.problem();
    const QString atoms = several(m_search.atomCount(), tr("atom"), tr("atoms"));
    if (m_search.hitCount() == 0)
        return tr("nothing is found");
    return m_search.isOfAtoms()
               ? atoms
               : several(m_search.hitCount(), tr("residue"), tr("residues")) + tr(" with ") + atoms;
}

void FindBox::showHits() {
    if (m_search.isEmpty() && m_search.problem().isEmpty()) {
        hideHits();
        return;
    }
    m_count->setText(countText());
    m_view->setVisible(m_list->rowCount() > 0);
    place();
    m_panel->show();
    m_panel->raise();
}

void FindBox::hideHits() {
    m_panel->hide();
}

void FindBox::place() {
    const QPoint below = m_field->mapTo(m_window, QPoint(0, m_field->height()));
    const int room = m_window->height() - below.y() - 8;
    const int width = std::min(std::max(m_field->width(), 200), m_window->width() - below.x());
    const int lines = std::min(m_list->rowCount(), mostRows);
    const int line = m_list->rowCount() > 0 ? std::max(1, m_view->sizeHintForRow(0)) : 0;
    const int frame = 2 * m_view->frameWidth();
    const QMargins margins = m_panel->layout()->contentsMargins();
    const int count = m_count->heightForWidth(width - margins.left() - margins.right() - 4);
    const int height = std::max(count, fontMetrics().height()) + margins.top() + margins.bottom() +
                       4 + (lines > 0 ? lines * line + frame + m_panel->layout()->spacing() : 0);
    m_panel->setGeometry(below.x(), below.y(), width, std::min(height, std::max(room, 60)));
}

} // namespace workbench
