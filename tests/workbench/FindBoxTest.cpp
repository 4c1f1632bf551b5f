// The find box as its user meets it: hits while typing, and what the keys do with them.
#include "FindBox.h"
#include "DataDelete.h"
#include "DataPoint.h"
#include "Focus.h"
#include "TestData.h"
#include "TestSupport.h"
#include "Traversal.h"
#include "items/SpaceLock.h"

#include <QElapsedTimer>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QMenu>
#include <QSignalSpy>
#include <QVBoxLayout>

#include <memory>
#include <vector>

using workbench::FindBox;

class FindBoxTest : public test_support::TestCase {
    Q_OBJECT

    /// A window with a find box and another field.
    struct Window : QWidget {
        Window() : find(new FindBox(this)), other(new QLineEdit(this)) {
            auto* const column = new QVBoxLayout(this);
            column->addWidget(find);
            column->addWidget(other, 1, Qt::AlignBottom);
            resize(700, 500);
            show();
        }
        QString count() const { return findChild<QLabel*>("count")->text(); }
        QListView* list() const { return findChild<QListView*>(); }
        bool showsHits() const { return findChild<QWidget*>("hits")->isVisible(); }
        QString hit(int row) const { return list()->model()->index(row, 0).data().toString(); }
        int hits() const { return list()->model()->rowCount(); }
        void type(const QString& text) const {
            find->field()->clear();
            QTest::keyClicks(find->field(), text);
            QTRY_VERIFY(!find->search().isRunning());
        }

        FindBox* find;
        QLineEdit* other;
    };

    std::unique_ptr<Window> m_window;

    static std::size_t selected() {
        std::vector<TAVIK::Compound*> atoms;
        TAVIK::GetAtoms(TAVIK::Space::instance(), atoms, false);
        return atoms.size();
    }

private slots:
    void init() override {
        TestCase::init();
        m_window = std::make_unique<Window>();
        QVERIFY(QTest::qWaitForWindowActive(m_window.get()));
        m_window->find->begin();
        QTRY_VERIFY(m_window->find->field()->hasFocus());
    }
    void cleanup() override {
        m_window.reset();
        TestCase::cleanup();
    }

    void hitsAreListedAsOneTypes() {
        const test_data::Chains chains(2, 3);
        m_window->type("GLY");
        QVERIFY(m_window->showsHits());
        QCOMPARE(m_window->count(), "6 residues with 12 atoms");
        QCOMPARE(m_window->hit(0), "made/A GLY 1");
        QCOMPARE(m_window->hit(5), "made/B GLY 3");
        QTest::keyClicks(m_window->find->field(), " 2");
        QTRY_COMPARE(m_window->count(), "2 residues with 4 atoms");
        m_window->type("/B:2@ca");
        QCOMPARE(m_window->count(), "1 atom");
        QCOMPARE(m_window->hit(0), "made/B GLY 2 CA");
        m_window->type("nothing");
        QCOMPARE(m_window->count(), "nothing is found");
        m_window->type("GLY GLY");
        QVERIFY(m_window->count().contains("is no residue number"));
        QCOMPARE(m_window->hits(), 0);
        m_window->find->field()->clear();
        QTRY_VERIFY(!m_window->showsHits());
    }

    void enterPutsTheFocusOnTheHit() {
        const test_data::Chains chains(2, 3);
        m_window->type("B");
        QTest::keyClick(m_window->find->field(), Qt::Key_Return);
        QCOMPARE(TAVIK::Focus::item(), chains.residue(1, 0));
        QVERIFY(!m_window->showsHits());
        QTest::keyClick(m_window->find->field(), Qt::Key_Down);
        QVERIFY(m_window->showsHits());
        QTest::keyClick(m_window->find->field(), Qt::Key_Return);
        QCOMPARE(TAVIK::Focus::item(), chains.residue(1, 1));
        m_window->type("@CA");
        QTest::keyClick(m_window->find->field(), Qt::Key_Return);
        QCOMPARE(TAVIK::Focus::item(), chains.atom(0, 0, 1));
    }

    void enterRightAfterTheLastKeyWaitsForTheHits() {
        const test_data::Chains chains(2, 3);
        QTest::keyClicks(m_window->find->field(), "B 3");
        QTest::keyClick(m_window->find->field(), Qt::Key_Return);
        QTRY_COMPARE(TAVIK::Focus::item(), chains.residue(1, 2));
    }

    void aClickOnAHitDoesWhatEnterDoes() {
        const test_data::Chains chains(2, 3);
        m_window->type("B");
        const QListView* const list = m_window->list();
        QTest::mouseClick(list->viewport(), Qt::LeftButton, {},
                          list->visualRect(list->model()->index(2, 0)).center());
        QCOMPARE(TAVIK::Focus::item(), chains.residue(1, 2));
        QVERIFY(m_window->find->field()->hasFocus());
    }

    void controlEnterSelectsTheFoundAtomsAndWithShiftTheirResidues() {
        const test_data::Chains chains(2, 3);
        m_window->type("/A@CA");
        QTest::keyClick(m_window->find->field(), Qt::Key_Return, Qt::ControlModifier);
        QCOMPARE(selected(), std::size_t{3});
        QVERIFY(chains.atom(0, 1, 1)->IsSelected() && !chains.atom(0, 1, 0)->IsSelected());
        m_window->type("B 2");
        QTest::keyClick(m_window->find->field(), Qt::Key_Return, Qt::ControlModifier);
        QCOMPARE(selected(), std::size_t{2});
        QVERIFY(chains.residue(1, 1)->IsSelected());
        m_window->type("@N");
        QTest::keyClick(m_window->find->field(), Qt::Key_Return,
                        Qt::ControlModifier | Qt::ShiftModifier);
        QCOMPARE(selected(), std::size_t{12});
    }

    void theListStaysClosedWhenTheHitsAreSelected() {
        const test_data::Chains chains(2, 3);
        m_window->type("within 1 of /A");
        QVERIFY(m_window->showsHits());
        QTest::keyClick(m_window->find->field(), Qt::Key_Return, Qt::ControlModifier);
        QVERIFY(!m_window->showsHits());
        // The hits are found anew, as the data have changed.
        {
            const DataPoint<TAVIK::Space> guard(nullptr, TAVIK::Space::instance());
            chains.residue(1, 1)->SetSelected(true);
        }
        QSignalSpy finished(&m_window->find->search(), &workbench::FindSearch::finished);
        QVERIFY(finished.wait());
        QVERIFY(!m_window->showsHits());
        QTest::keyClick(m_window->find->field(), Qt::Key_Down);
        QVERIFY(m_window->showsHits());
    }

    void aRefusedChangeIsSaid() {
        const test_data::Chains chains(1, 1);
        QStringList said;
        connect(m_window->find, &FindBox::said, this, [&](const QString& text) { said << text; });
        m_window->type("GLY");
        const memory_host::SpaceLock lock;
        QTest::keyClick(m_window->find->field(), Qt::Key_Return, Qt::ControlModifier);
        QCOMPARE(selected(), std::size_t{0});
        QCOMPARE(said, QStringList("Nothing is selected: another change is under way"));
    }

    void hitsFollowTheData() {
        const test_data::Chains chains(2, 3);
        m_window->type("all");
        QCOMPARE(m_window->hits(), 6);
        {
            const DataDelete<TAVIK::Space> guard(nullptr, TAVIK::Space::instance());
            TAVIK::DataMaker::Destroy(chains.chain(0));
            // Nothing is asked of what is gone.
            QCOMPARE(m_window->hits(), 0);
        }
        QTRY_COMPARE(m_window->hits(), 3);
        m_window->type("selected");
        QCOMPARE(m_window->hits(), 0);
        {
            const DataPoint<TAVIK::Space> guard(nullptr, TAVIK::Space::instance());
            chains.residue(1, 1)->SetSelected(true);
        }
        QTRY_COMPARE(m_window->hits(), 1);
    }

    void whatIsNearFollowsAtomsThatAreMoved() {
        const test_data::Chains chains(2, 3);
        m_window->type("within 2 of /A:1@N");
        QCOMPARE(m_window->count(), "2 atoms");
        const auto move = [](TAVIK::Compound* atom, float x) {
            const DataPoint<TAVIK::Space> guard(nullptr, TAVIK::Space::instance());
            TAVIK::SetAtomPosition(static_cast<TAVIK::Atom*>(atom), TAVIK::Vertex(x, 0, 0, true));
        };
        move(chains.atom(1, 2, 0), 1.5F);
        QTRY_COMPARE(m_window->count(), "3 atoms");
        // A field that is not in use is not kept up to date, and yet is when it is used again.
        m_window->other->setFocus();
        m_window->find->field()->clear();
        move(chains.atom(1, 2, 0), 50.0F);
        m_window->find->begin();
        m_window->type("within 2 of /A:1@N");
        QCOMPARE(m_window->count(), "2 atoms");
    }

    void theDataAreReadWhileTheFieldHasTheKeyboard() {
        const test_data::Chains chains(2, 3);
        const workbench::FindSearch& search = m_window->find->search();
        QTRY_VERIFY(search.isReady());
        {
            const DataDelete<TAVIK::Space> guard(nullptr, TAVIK::Space::instance());
            TAVIK::DataMaker::Destroy(chains.residue(0, 0));
            QVERIFY(!search.isReady());
        }
        QTRY_VERIFY(search.isReady());
        m_window->type("within 2 of /A@N");
        QCOMPARE(m_window->count(), "4 atoms");
        m_window->other->setFocus();
        const test_data::Chains more(1, 1);
        QTest::qWait(20);
        QVERIFY(!search.isReady());
    }

    void escapeClosesTheListAndThenEmptiesTheField() {
        const test_data::Chains chains(1, 1);
        m_window->type("GLY");
        QTest::keyClick(m_window->find->field(), Qt::Key_Escape);
        QVERIFY(!m_window->showsHits());
        QCOMPARE(m_window->find->field()->text(), "GLY");
        QTest::keyClick(m_window->find->field(), Qt::Key_Escape);
        QCOMPARE(m_window->find->field()->text(), "");
        QSignalSpy left(m_window->find, &FindBox::left);
        QTest::keyClick(m_window->find->field(), Qt::Key_Escape);
        QCOMPARE(left.size(), 1);
    }

    void theListGoesWithTheKeyboard() {
        const test_data::Chains chains(1, 1);
        m_window->type("GLY");
        m_window->other->setFocus();
        QTRY_VERIFY(!m_window->showsHits());
    }

    void theListStaysClosedAfterAMenu() {
        const test_data::Chains chains(1, 1);
        m_window->type("GLY");
        QVERIFY(m_window->showsHits());
        QMenu menu;
        menu.addAction("Hide");
        menu.popup(m_window->mapToGlobal(QPoint(5, 5)));
        QTRY_VERIFY(!m_window->showsHits());
        QTest::keyClick(&menu, Qt::Key_Escape);
        QVERIFY(!menu.isVisible());
        QVERIFY(m_window->find->field()->hasFocus());
        QVERIFY(!m_window->showsHits());
        // It comes back with the keyboard.
        m_window->other->setFocus();
        m_window->find->begin();
        QTRY_VERIFY(m_window->showsHits());
    }

    void aTextOf100000CharactersIsRefusedInWords() {
        const test_data::Chains chains(1, 1);
        for (const QString& text : {QString(100'000, '('), QString("not ").repeated(25'000)}) {
            QElapsedTimer timer;
            timer.start();
            m_window->find->field()->setText(text);
            QTRY_VERIFY(!m_window->find->search().isRunning());
            QCOMPARE(m_window->count(),
                     "the text is too long: up to 1000 characters are searched for");
            QVERIFY(timer.elapsed() < 5000);
            QCOMPARE(m_window->find->field()->text().size(), text.size());
        }
        QTest::keyClick(m_window->find->field(), Qt::Key_Return);
        QVERIFY(!TAVIK::Focus::item());
    }
};

REGISTER_TEST(FindBoxTest)
#include "FindBoxTest.moc"
