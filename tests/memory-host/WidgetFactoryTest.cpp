#include "WidgetFactory.h"
#include "TestSupport.h"

#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>
#include <QPointer>
#include <QPushButton>

#include <memory>

class WidgetFactoryTest : public test_support::TestCase {
    Q_OBJECT

    WidgetFactory m_factory;
    int m_clicks = 0;

public slots:
    void count() { ++m_clicks; }

private slots:
    void everyWidgetBelongsToItsParent() {
        auto parent = std::make_unique<QWidget>();
        const QList<QPointer<QWidget>> widgets{
            m_factory.CreateQLabel(parent.get(), "text"), m_factory.CreateQLineEdit(parent.get()),
            m_factory.CreateCheckBox(parent.get(), "text", true),
            m_factory.CreateQPushButton(parent.get(), "text", this, SLOT(count()))};
        for (const QPointer<QWidget>& widget : widgets)
            QCOMPARE(widget->parentWidget(), parent.get());
        parent.reset();
        for (const QPointer<QWidget>& widget : widgets)
            QVERIFY(!widget);
    }

    void aLabelShowsItsTextLetterByLetter() {
        QWidget parent;
        const QLabel* const label = m_factory.CreateQLabel(&parent, "<b>Chain</b> & co");
        QCOMPARE(label->text(), "<b>Chain</b> & co");
        QCOMPARE(label->textFormat(), Qt::PlainText);
    }

    void aLineEditIsEmptyAndTakesText() {
        QWidget parent;
        QLineEdit* const edit = m_factory.CreateQLineEdit(&parent);
        QCOMPARE(edit->text(), QString());
        QTest::keyClicks(edit, "CA");
        QCOMPARE(edit->text(), "CA");
    }

    void aCheckBoxStartsAsAskedFor() {
        QWidget parent;
        QCheckBox* const on = m_factory.CreateCheckBox(&parent, "Current tree only", true);
        QCheckBox* const off = m_factory.CreateCheckBox(&parent, "other", false);
        QCOMPARE(on->text(), "Current tree only");
        QVERIFY(on->isChecked());
        QVERIFY(!off->isChecked());
        QTest::mouseClick(off, Qt::LeftButton, {}, QPoint(8, off->height() / 2));
        QVERIFY(off->isChecked());
    }

    void aClickOnAButtonCallsTheSlot() {
        QWidget parent;
        QPushButton* const button =
            m_factory.CreateQPushButton(&parent, "Union", this, SLOT(count()));
        QCOMPARE(button->text(), "Union");
        m_clicks = 0;
        QTest::mouseClick(button, Qt::LeftButton);
        QTest::keyClick(button, Qt::Key_Space);
        QCOMPARE(m_clicks, 2);
        QTest::mouseClick(button, Qt::RightButton);
        QCOMPARE(m_clicks, 2);
    }

    void anAmpersandBetweenBlanksIsReadAndAnnouncesNoKey() {
        QWidget parent;
        QPushButton* const button =
            m_factory.CreateQPushButton(&parent, "( A & B )", this, SLOT(count()));
        QPushButton plain("( A && B )", &parent);
        QCOMPARE(button->text(), "( A & B )");
        QVERIFY(button->shortcut().isEmpty());
        plain.resize(button->size());
        QCOMPARE(button->grab().toImage(), plain.grab().toImage());
        const QPushButton* const other =
            m_factory.CreateQPushButton(&parent, "&Close", this, SLOT(count()));
        QCOMPARE(other->shortcut(), QKeySequence(Qt::ALT | Qt::Key_C));
    }

    void aSlotThatIsNotThereIsAWarning() {
        QWidget parent;
        QPushButton* const button =
            m_factory.CreateQPushButton(&parent, "Union", this, SLOT(nothing()));
        QVERIFY(button);
        const QStringList messages = takeMessages();
        QCOMPARE(messages.size(), 1);
        QVERIFY2(messages.first().contains("nothing()"), qPrintable(messages.first()));
        QTest::mouseClick(button, Qt::LeftButton);
    }
};

REGISTER_TEST(WidgetFactoryTest)
#include "WidgetFactoryTest.moc"
