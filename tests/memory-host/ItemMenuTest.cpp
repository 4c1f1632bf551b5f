// The context menu of an item, used with the mouse.
#include "DataPointBase.h"
#include "Sample.h"
#include "Subscriber.h"
#include "TestSupport.h"
#include "items/SpaceLock.h"

#include <QApplication>
#include <QMenu>
#include <QPointer>
#include <QTimer>

using namespace memory_host;
using namespace TAVIK;

class ItemMenuTest : public test_support::TestCase {
    Q_OBJECT
private slots:
    void init() override {
        TestCase::init();
        m_texts.clear();
    }
    void itNamesTheItemAndItsPlace();
    void itNamesItemsWithoutAPlace();
    void namesAreShownLetterByLetter();
    void hideHides();
    void showShows();
    void selectSelects();
    void unselectUnselects();
    void defaultColorRestoresTheColour();
    void theTitleCannotBeChosen();
    void escapeChangesNothing();
    void aChoiceIsTold();
    void escapeTellsNothing();
    void aChoiceInALockedSpaceIsRefused();
    void theMenuClosesWhenAnythingIsDestroyed();
    void theMenuStaysOpenThroughOtherChanges();
    void itDoesWhatItSaidAlsoWhenTheItemHasChangedMeanwhile();

private:
    /// Opens the menu of `item`, does `use` with it, and keeps its texts.
    void open(Compound* item, const std::function<void(QMenu*)>& use);
    void choose(Compound* item, const QString& text);

    QStringList m_texts;
};

namespace {

class Counting : public Subscriber {
public:
    void commUpdate() override { ++m_updates; }
    void commAdd() override { ++m_others; }
    void commDelete() override { ++m_others; }

    int m_updates = 0;
    int m_others = 0;
};

} // namespace

void ItemMenuTest::open(Compound* item, const std::function<void(QMenu*)>& use) {
    bool opened = false;
    QTimer::singleShot(0, this, [&] {
        const QPointer<QMenu> menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
        opened = menu;
        if (!menu)
            return;
        m_texts.clear();
        for (const QAction* action : menu->actions())
            if (!action->isSeparator())
                m_texts << action->text();
        use(menu);
        if (menu)
            menu->close();
    });
    item->ShowMenu();
    QVERIFY(opened);
    QVERIFY(!QApplication::activePopupWidget());
}

void ItemMenuTest::choose(Compound* item, const QString& text) {
    open(item, [&](QMenu* menu) {
        for (QAction* action : menu->actions())
            if (action->text() == text) {
                QTest::mouseClick(menu, Qt::LeftButton, {}, menu->actionGeometry(action).center());
                return;
            }
        QFAIL(qPrintable(text));
    });
}

void ItemMenuTest::itNamesTheItemAndItsPlace() {
    open(makeAtom(space()), [](QMenu*) {});
    QCOMPARE(m_texts, (QStringList{QString::fromUtf8("C: CA  (1, 2, 3) Å"), "Hide", "Select",
                                   "Default color"}));
}

void ItemMenuTest::itNamesItemsWithoutAPlace() {
    const Sample sample;
    sample.residues[0]->SetVisible(false);
    sample.residues[0]->SetSelected(true);
    open(sample.residues[0], [](QMenu*) {});
    QCOMPARE(m_texts, (QStringList{"Residue: ALA 1", "Show", "Unselect", "Default color"}));
}

void ItemMenuTest::namesAreShownLetterByLetter() {
    open(make(space(), "Composite", "a&b \xe9"), [](QMenu*) {});
    QCOMPARE(m_texts.first(), QString::fromUtf8("Composite: a&&b é"));
}

void ItemMenuTest::hideHides() {
    const Sample sample;
    choose(sample.residues[0], "Hide");
    QVERIFY(!sample.residues[0]->IsVisible());
    QVERIFY(sample.residues[1]->IsVisible());
}

void ItemMenuTest::showShows() {
    Compound* const atom = makeAtom(space());
    atom->SetVisible(false);
    choose(atom, "Show");
    QVERIFY(atom->IsVisible());
}

void ItemMenuTest::selectSelects() {
    const Sample sample;
    choose(sample.residues[0], "Select");
    QVERIFY(sample.residues[0]->IsSelected());
    QVERIFY(!sample.residues[1]->HasSelected());
}

void ItemMenuTest::unselectUnselects() {
    const Sample sample;
    space()->SetSelected(true);
    choose(sample.residues[0], "Unselect");
    QVERIFY(!sample.residues[0]->HasSelected());
    QVERIFY(sample.residues[1]->IsSelected());
}

void ItemMenuTest::defaultColorRestoresTheColour() {
    Compound* const atom = makeAtom(space());
    const Color before = atom->GetColor();
    atom->SetColor(Color(0xff010203U));
    choose(atom, "Default color");
    QVERIFY(atom->GetColor() == before);
}

void ItemMenuTest::theTitleCannotBeChosen() {
    Compound* const atom = makeAtom(space());
    open(atom, [&](QMenu* menu) {
        QAction* const title = menu->actions().first();
        QVERIFY(!title->isEnabled());
        QTest::mouseClick(menu, Qt::LeftButton, {}, menu->actionGeometry(title).center());
    });
    QVERIFY(atom->IsVisible() && !atom->IsSelected());
}

void ItemMenuTest::escapeChangesNothing() {
    Compound* const atom = makeAtom(space());
    open(atom, [](QMenu* menu) { QTest::keyClick(menu, Qt::Key_Escape); });
    QVERIFY(atom->IsVisible() && !atom->IsSelected());
}

void ItemMenuTest::aChoiceIsTold() {
    const Counting counting;
    choose(makeAtom(space()), "Hide");
    QCOMPARE(counting.m_updates, 1);
    QCOMPARE(counting.m_others, 0);
}

void ItemMenuTest::escapeTellsNothing() {
    const Counting counting;
    open(makeAtom(space()), [](QMenu* menu) { QTest::keyClick(menu, Qt::Key_Escape); });
    QCOMPARE(counting.m_updates, 0);
}

void ItemMenuTest::aChoiceInALockedSpaceIsRefused() {
    const Counting counting;
    Compound* const atom = makeAtom(space());
    {
        const SpaceLock lock;
        choose(atom, "Hide");
    }
    QVERIFY(atom->IsVisible());
    QCOMPARE(counting.m_updates, 0);
    QCOMPARE(takeMessages(), QStringList{"Cannot update CDB!"});
}

void ItemMenuTest::theMenuClosesWhenAnythingIsDestroyed() {
    Compound* const atom = makeAtom(space());
    open(atom, [&](QMenu* menu) {
        {
            const DataPointBase guard(nullptr, Publisher::Delete);
            DataMaker::Destroy(atom);
        }
        QVERIFY(!menu->isVisible());
    });
    QVERIFY(!space()->HasChildren());
}

void ItemMenuTest::theMenuStaysOpenThroughOtherChanges() {
    Compound* const atom = makeAtom(space());
    open(atom, [&](QMenu* menu) {
        {
            const DataPointBase guard(nullptr, Publisher::Add);
            makeAtom(space());
        }
        {
            const DataPointBase guard(nullptr, Publisher::Update);
            atom->SetVisible(false);
        }
        QVERIFY(menu->isVisible());
    });
}

void ItemMenuTest::itDoesWhatItSaidAlsoWhenTheItemHasChangedMeanwhile() {
    Compound* const atom = makeAtom(space());
    open(atom, [&](QMenu* menu) {
        {
            const DataPointBase guard(nullptr, Publisher::Update);
            atom->SetVisible(false);
        }
        QAction* const hide = menu->actions().at(2);
        QCOMPARE(hide->text(), QString("Hide"));
        QTest::mouseClick(menu, Qt::LeftButton, {}, menu->actionGeometry(hide).center());
    });
    QVERIFY(!atom->IsVisible());
}

REGISTER_TEST(ItemMenuTest)
#include "ItemMenuTest.moc"
