// A second view of the data: a window that counts the selected atoms, and unselects or names them.
// All that such a plug-in needs.
#include "GUIPlugin.h"

#include "BaseWindow.h"
#include "DataAdder.h"
#include "DataDelete.h"
#include "DataMaker.h"
#include "DataPoint.h"
#include "Space.h"
#include "Subscriber.h"
#include "Traversal.h"

#include <QLabel>
#include <QMenuBar>

#include <vector>

namespace {

using TAVIK::Space;

class SecondView : public BaseWindow, public Subscriber {
    Q_OBJECT
public:
    SecondView()
        : BaseWindow(QStringLiteral("Second view"), QSize(200, 100), QString(), false, nullptr,
                     nullptr),
          m_label(new QLabel(this)) {
        setCentralWidget(m_label);
        menuBar()->addAction(QStringLiteral("Select all"), this, [this] {
            const DataPoint<Space> guard(this, Space::instance());
            if (guard.m_good)
                Space::instance()->SetSelected(true);
            refresh();
        });
        menuBar()->addAction(QStringLiteral("Add"), this, [this] {
            const DataAdder<Space> guard(this, Space::instance());
            if (guard.m_good)
                TAVIK::DataMaker::makeCore(Space::instance(), "mine", "Surface");
            refresh();
        });
        menuBar()->addAction(QStringLiteral("Delete first"), this, [this] {
            const DataDelete<Space> guard(this, Space::instance());
            if (guard.m_good && Space::instance()->HasChildren())
                TAVIK::DataMaker::Destroy(*Space::instance()->ChildBegin());
            refresh();
        });
        refresh();
    }

    void commUpdate() override { refresh(); }
    void commAdd() override { refresh(); }
    void commDelete() override { refresh(); }

private:
    void refresh() {
        std::vector<TAVIK::Compound*> all;
        std::vector<TAVIK::Compound*> selected;
        TAVIK::GetAtoms(Space::instance(), all, true);
        TAVIK::GetAtoms(Space::instance(), selected, false);
        m_label->setText(QStringLiteral("%1 items, %2 of %3 atoms")
                             .arg(Space::instance()->ChildEnd() - Space::instance()->ChildBegin())
                             .arg(selected.size())
                             .arg(all.size()));
    }

    QLabel* m_label;
};

} // namespace

GUI_PLUGIN(SecondView)

#include "SecondView.moc"
