// The panel of the set algebra: its widgets, and what its three operations select.
#include "Space.h"
#include "Traversal.h"
#include "WindowTestCase.h"
#include "data/NamePredicates.h"
#include "items/Building.h"
#include "items/SpaceLock.h"
#include "window/Vuxo.h"

#include <QApplication>
#include <QCheckBox>
#include <QClipboard>
#include <QFrame>
#include <QLabel>
#include <QLayout>
#include <QLineEdit>
#include <QPushButton>

using namespace window_tools;
using TAVIK::Compound;

class QueryPanelTest : public WindowTestCase {
    Q_OBJECT

    Compound* m_first = nullptr;
    Compound* m_second = nullptr;

    QPushButton* button(const QString& word) const {
        for (QPushButton* each : panelOf(*m_window)->findChildren<QPushButton*>())
            if (each->text().startsWith(word))
                return each;
        return nullptr;
    }

    void press(const QString& word) { QTest::mouseClick(button(word), Qt::LeftButton); }

    void type(const QString& chain, const QString& residue, const QString& atom) {
        const QList<QLineEdit*> fields = panelOf(*m_window)->findChildren<QLineEdit*>();
        const QStringList texts = {chain, residue, atom};
        for (qsizetype i = 0; i < fields.size(); ++i) {
            fields[i]->selectAll();
            QTest::keyClick(fields[i], Qt::Key_Delete);
            QTest::keyClicks(fields[i], texts[i]);
        }
    }

    /// The selected atoms' names, in the host's order.
    QString selected() const { return selectedIn(m_first); }

    static QString selectedIn(Compound* structure) {
        std::vector<Compound*> atoms;
        TAVIK::GetAtoms(structure, atoms, false);
        QStringList names;
        for (const Compound* atom : atoms)
            names << QString::fromLatin1(atom->GetName());
        return names.join(u' ');
    }

private slots:
    void init() override {
        TestCase::init();
        m_first = addStructure("1abc");
        m_second = addStructure("2abc");
        openWindow();
        panelOf(*m_window)->show();
        clickEntry(*m_window, 0);
    }

    void itsWidgetsStandInOrder() {
        const QLayout* column = panelOf(*m_window)->layout();
        QStringList seen;
        int bottom = 0;
        for (int i = 0; i < column->count(); ++i) {
            QWidget* widget = column->itemAt(i)->widget();
            QVERIFY(widget->isVisible());
            QVERIFY(widget->y() >= bottom);
            bottom = widget->geometry().bottom();
            if (const auto* label = qobject_cast<QLabel*>(widget))
                seen << "label:" + label->text();
            else if (const auto* field = qobject_cast<QLineEdit*>(widget))
                seen << "field:" + field->text();
            else if (const auto* box = qobject_cast<QCheckBox*>(widget))
                seen << (box->isChecked() ? "checked:" : "unchecked:") + box->text();
            else if (const auto* pushed = qobject_cast<QPushButton*>(widget))
                seen << "button:" + pushed->text();
        }
        QCOMPARE(seen,
                 QStringList({"label:Chain", "field:.*", "label:Residue", "field:.*", "label:Atom",
                              "field:.*", "checked:Current tree only",
                              "button:Union        ( A | B )", "button:Intersection ( A & B )",
                              "button:Difference   ( A - B )", "button:Close"}));
    }

    void closeHidesThePanelAndKeepsWhatWasTyped() {
        type("A", "MET 1", "CA");
        press("Close");
        QVERIFY(panelOf(*m_window)->isHidden());
        QVERIFY(m_window->isVisible());
        panelOf(*m_window)->show();
        press("Union");
        QCOMPARE(selected(), "CA");
    }

    void unionAddsWhatMatchesAndTwiceIsOnce() {
        OtherPlugin other;
        selectElsewhere(itemAt(m_first, {"A", "Groups", "HOH 2"}), true);
        type("A", "MET 1", "C.?");
        for (int times = 0; times < 2; ++times) {
            press("Union");
            QCOMPARE(selected(), "CA C CB O");
        }
        QVERIFY(!m_second->HasSelected());
        QCOMPARE(other.updates, 3);
        QCOMPARE(entries(*m_window), QStringList({" / 1abc", " _ 2abc"}));
        QVERIFY(isMarked(*m_window, {"1abc", "A", "Groups", "MET 1", "Backbone", "CA"}));
    }

    void allFieldsOpenMeanEveryAtom() {
        press("Union");
        QCOMPARE(selected(), "N CA C CB SD O");
        press("Intersection");
        QCOMPARE(selected(), "N CA C CB SD O");
        press("Difference");
        QCOMPARE(selected(), "");
    }

    void intersectionUnselectsWhatDoesNotMatch() {
        selectElsewhere(m_first, true);
        type(".*", ".*", "(CA|O)");
        press("Intersection");
        QCOMPARE(selected(), "CA O");
    }

    void differenceUnselectsWhatMatches() {
        selectElsewhere(m_first, true);
        type("A", "MET .", ".*");
        press("Difference");
        QCOMPARE(selected(), "O");
    }

    void caseMattersAndAMatchCoversTheComponent() {
        type(".*", ".*", "ca");
        press("Union");
        QCOMPARE(selected(), "");
        type(".*", "MET", ".*");
        press("Union");
        QCOMPARE(selected(), "");
        type(".*", "MET 1", "C");
        press("Union");
        QCOMPARE(selected(), "C");
    }

    void aFieldMeansOneComponentUnlessItRunsAcross() {
        type(".*", "A", ".*");
        press("Union");
        QCOMPARE(selected(), "");
        type(".*", "MET", "1/CA"); // the separator stands after MET
        press("Union");
        QCOMPARE(selected(), "");
        type("A", "MET.*", "A"); // nor does the end of a component belong to the next
        press("Union");
        QCOMPARE(selected(), "");
        type("A/Groups/MET 1/CA|x", ".*", ".*");
        press("Union");
        QCOMPARE(selected(), "CA");
    }

    void emptyFieldsDescribeEmptyComponents() {
        Compound* odd = addStructure("odd");
        clickEntry(*m_window, 2);
        type("", "", "");
        press("Union");
        QCOMPARE(selectedIn(odd), "");
        type("A", "", "O");
        press("Union");
        QCOMPARE(selectedIn(odd), "");
        selectElsewhere(odd, true);
        press("Intersection");
        QCOMPARE(selectedIn(odd), "");
        type("A", ".*", "");
        press("Union");
        QCOMPARE(selectedIn(odd), "");
    }

    // The fixed parts alone make a pattern, so that empty fields stop no press: nothing matches.
    void intersectionWithThreeEmptyFieldsUnselectsEverythingShown() {
        selectElsewhere(m_first, true);
        selectElsewhere(m_second, true);
        type("", "", "");
        press("Intersection");
        QCOMPARE(selected(), "");
        QVERIFY(m_second->IsSelected());
    }

    // The alternative "O$" is found in a name, but not from its first character on.
    void whatIsFoundOnlyLaterInANameIsNoMatch() {
        type(".*", ".*", "CA|O");
        press("Union");
        QCOMPARE(selected(), "CA");
        selectElsewhere(m_first, true);
        press("Intersection");
        QCOMPARE(selected(), "CA");
    }

    void charactersOutsideLatin1MatchNothingOfTheirOwn() {
        Compound* odd = addStructure("odd");
        addAtomTo(itemAt(odd, {"A", "Groups", "HOH 2"}), "\xe9?");
        clickEntry(*m_window, 2);
        panelOf(*m_window)->findChildren<QLineEdit*>()[2]->setText(
            QString::fromUtf8("\u00e9\u03a9"));
        press("Union");
        QCOMPARE(selectedIn(odd), "");
        panelOf(*m_window)->findChildren<QLineEdit*>()[2]->setText(QString::fromUtf8("\u00e9."));
        press("Union");
        QCOMPARE(selectedIn(odd), QString::fromLatin1("\xe9?"));
        panelOf(*m_window)->findChildren<QLineEdit*>()[2]->setText(QString::fromUtf8("[^\u03a9]"));
        press("Union");
        QCOMPARE(selectedIn(odd), QString::fromLatin1("N C O \xe9?"));
    }

    void aPatternOf100000CharactersIsPastedWhole() {
        auto* field = panelOf(*m_window)->findChild<QLineEdit*>();
        const QString all = "N CA C CB SD O";
        const QList<QPair<QString, QString>> patterns = {
            {"(A" + QString("|x").repeated(49998) + ")", all},
            {"(x" + QString("|x").repeated(49998) + ")", ""},
            {QString("A?").repeated(50000), all},
            {QString("(.?)").repeated(25000), all},
            {QString(100000, u'.'), ""},
            {QString(100000, u'('), ""}};
        for (const auto& [pattern, expected] : patterns) {
            QVERIFY(pattern.size() >= 99999);
            QApplication::clipboard()->setText(pattern);
            field->setFocus();
            field->selectAll();
            QTest::keyClick(field, Qt::Key_V, Qt::ControlModifier);
            QCOMPARE(field->text(), pattern);
            m_first->SetSelected(false);
            press("Union");
            QCOMPARE(selected(), expected);
            press("Difference");
            QCOMPARE(selected(), "");
        }
    }

    // Tab leads through the fields to the buttons.
    void thePanelIsWorkedByKeyboardAlone() {
        QFrame* panel = panelOf(*m_window);
        panel->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(panel));
        const QStringList typed = {"A", "MET 1", "C"};
        for (const QString& text : typed) {
            auto* field = qobject_cast<QLineEdit*>(panel->focusWidget());
            QVERIFY(field);
            field->selectAll();
            QTest::keyClicks(field, text);
            QTest::keyClick(field, Qt::Key_Tab);
        }
        QVERIFY(qobject_cast<QCheckBox*>(panel->focusWidget()));
        QTest::keyClick(panel->focusWidget(), Qt::Key_Space);
        QTest::keyClick(panel->focusWidget(), Qt::Key_Space);
        QTest::keyClick(panel->focusWidget(), Qt::Key_Tab);
        QTest::keyClick(panel->focusWidget(), Qt::Key_Space);
        QCOMPARE(selected(), "C");
        QTest::keyClick(panel->focusWidget(), Qt::Key_Tab);
        QTest::keyClick(panel->focusWidget(), Qt::Key_Space);
        QCOMPARE(selected(), "C");
        QTest::keyClick(panel->focusWidget(), Qt::Key_Tab);
        QTest::keyClick(panel->focusWidget(), Qt::Key_Space);
        QCOMPARE(selected(), "");
        QTest::keyClick(panel->focusWidget(), Qt::Key_Tab);
        QTest::keyClick(panel->focusWidget(), Qt::Key_Space);
        QVERIFY(panel->isHidden());
    }

    void anInvalidPatternMatchesNothing() {
        selectElsewhere(itemAt(m_first, {"A", "Groups", "MET 1"}), true);
        type("(A", ".*", ".*");
        press("Union");
        QCOMPARE(selected(), "N CA C CB SD");
        press("Difference");
        QCOMPARE(selected(), "N CA C CB SD");
        press("Intersection");
        QCOMPARE(selected(), "");
    }

    void withTheBoxOffTheRootIsTheWholeSpace() {
        QTest::mouseClick(panelOf(*m_window)->findChild<QCheckBox*>(), Qt::LeftButton, {},
                          QPoint(8, 8));
        QVERIFY(!panelOf(*m_window)->findChild<QCheckBox*>()->isChecked());
        type(".*", ".*", "CA");
        press("Union");
        QCOMPARE(selected(), "CA");
        QCOMPARE(selectedIn(m_second), "CA");
        // The chain's fragment stands right below the space: it takes in the structure's name.
        type("1abc/A", ".*", "N");
        press("Union");
        QCOMPARE(selected(), "N CA");
        QCOMPARE(selectedIn(m_second), "CA");
    }

    void withoutAShownTreeNothingHappens() {
        destroyElsewhere(m_second);
        takeMessages();
        const memory_host::SpaceLock lock; // a guard would say that it is refused
        for (const char* word : {"Union", "Intersection", "Difference"})
            press(word);
        QVERIFY(!m_first->HasSelected());
    }

    void aRefusedOperationChangesNothingAndSaysSoOnce() {
        selectElsewhere(m_first, true);
        OtherPlugin other;
        const memory_host::SpaceLock lock;
        for (const char* word : {"Union", "Intersection", "Difference"}) {
            press(word);
            QCOMPARE(takeMessages(), QStringList("Cannot update CDB!"));
        }
        QCOMPARE(selected(), "N CA C CB SD O");
        QCOMPARE(other.updates, 0);
    }

    void anOperationThatIsCutOffChangesNothingAndIsLogged() {
        selectElsewhere(itemAt(m_first, {"A", "Groups", "MET 1"}), true);
        type("(.{0,900}){0,900}", ".*", ".*");
        for (const char* word : {"Union", "Intersection", "Difference"}) {
            press(word);
            QCOMPARE(takeHostLog(),
                     QStringList("Name pattern \"/1abc/(.{0,900}){0,900}/Groups/.*/.*$\" cut off: "
                                 "with its repetitions written out it is longer than 500000 "
                                 "characters"));
            QCOMPARE(selected(), "N CA C CB SD");
        }
    }

    void theRootsNameKeepsItsMeaningAsAnExpression() {
        Compound* odd = addStructure("1+abc");
        clickEntry(*m_window, 2);
        press("Union");
        QCOMPARE(selectedIn(odd), ""); // "1+abc" means 1abc, 11abc ...
        selectElsewhere(odd, true);
        press("Intersection");
        QCOMPARE(selectedIn(odd), "");
    }

    void aPatternIsMadeOfItsFragmentsAsTheyStand() {
        QCOMPARE(namePattern("A|B", "", "["), "/A|B/Groups//[$");
        QCOMPARE(nameExpression(m_first, "/x$"), "/1abc/x$");
    }

    void aMatchThatStartsLaterIsNone() {
        Compound* atom = itemAt(m_first, {"A", "Groups", "HOH 2", "O"});
        const QRegExp later("Groups/.*");
        QVERIFY(SelectIf(atom, later));
        QVERIFY(!atom->IsSelected());
        atom->SetSelected(true);
        QVERIFY(UnSelectIf(atom, later));
        QVERIFY(atom->IsSelected());
        QVERIFY(UnSelectIfNot(atom, later));
        QVERIFY(!atom->IsSelected());
    }
};

REGISTER_TEST(QueryPanelTest)
#include "QueryPanelTest.moc"
