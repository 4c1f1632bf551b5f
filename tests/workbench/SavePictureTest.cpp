// "Save Picture" of the main window: the view's dialog, and what becomes of it.
#include "ErrorBar.h"
#include "MainWindowCase.h"
#include "StatusLine.h"

#include <QAbstractButton>
#include <QApplication>
#include <QDialogButtonBox>
#include <QFile>
#include <QImage>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QSpinBox>

class SavePictureTest : public test_support::MainWindowCase {
    Q_OBJECT

    /// The modal window that is open; waits for it.
    static QWidget* modal() {
        return QTest::qWaitFor([] { return QApplication::activeModalWidget() != nullptr; })
                   ? QApplication::activeModalWidget()
                   : nullptr;
    }
    static QLineEdit* pathField(const QWidget* dialog) {
        for (auto* const line : dialog->findChildren<QLineEdit*>())
            if (line->parent() == dialog)
                return line;
        return nullptr;
    }
    static void click(const QWidget* dialog, QDialogButtonBox::StandardButton button) {
        QTest::mouseClick(dialog->findChild<QDialogButtonBox*>()->button(button), Qt::LeftButton);
    }
    /// Opens the dialog by the menu and fills it in.
    QWidget* filled(const QString& path, QSize size) {
        entry("File", "Save Picture...")->trigger();
        QWidget* const dialog = modal();
        if (!dialog || dialog->windowTitle() != "Save picture")
            return nullptr;
        const auto sides = dialog->findChildren<QSpinBox*>();
        const auto type = [](QLineEdit* field, const QString& text) {
            field->setFocus();
            field->selectAll();
            QTest::keyClicks(field, text);
        };
        type(sides[0]->findChild<QLineEdit*>(), QString::number(size.width()));
        type(sides[1]->findChild<QLineEdit*>(), QString::number(size.height()));
        type(pathField(dialog), path);
        return dialog;
    }
    QString said() const { return m_window->status().said(); }
    QString path() const { return m_folder->filePath("p.png"); }
    QStringList written() const {
        return QDir(m_folder->path()).entryList({"*.png*"}, QDir::Files);
    }
    void openSample() {
        open();
        m_window->openFiles({sample()});
        takeMessages();
    }

private slots:
    void theViewAsksAndWrites() {
        openSample();
        QWidget* const dialog = filled(path(), {90, 60});
        QVERIFY(dialog);
        QCOMPARE(dialog->window()->parentWidget()->window(), m_window.get());
        click(dialog, QDialogButtonBox::Save);
        QTRY_COMPARE(said(), path() + " is written");
        QCOMPARE(QImage(path()).size(), QSize(90, 60));
        QCOMPARE(takeHostLog(), QStringList(path() + " is written"));
        QVERIFY(!m_window->errors().isVisible());
    }

    void theFileIsAskedForFirstAndEachFieldHasItsLetter() {
        openSample();
        entry("File", "Save Picture...")->trigger();
        QWidget* const dialog = modal();
        QVERIFY(dialog);
        QCOMPARE(dialog->focusWidget(), pathField(dialog));
        for (const auto* const label : dialog->findChildren<QLabel*>())
            QVERIFY2(label->buddy() || !label->text().contains('&'), qPrintable(label->text()));
        QTest::keyClicks(pathField(dialog), path());
        QTest::keyClick(dialog->focusWidget(), Qt::Key_Return);
        QTRY_COMPARE(said(), path() + " is written");
        takeHostLog();
    }

    void aViewThatIsNotShownDrawsThePictureAsWell() {
        open();
        dock(m_view)->close();
        m_window->openFiles({sample()});
        QWidget* const dialog = filled(path(), {90, 60});
        QVERIFY(dialog);
        click(dialog, QDialogButtonBox::Save);
        QTRY_COMPARE(said(), path() + " is written");
        const QImage picture(path());
        int drawn = 0;
        for (int y = 0; y != picture.height(); ++y)
            for (int x = 0; x != picture.width(); ++x)
                drawn += picture.pixel(x, y) != picture.pixel(0, 0);
        QVERIFY2(drawn > 100, qPrintable(QString::number(drawn)));
        takeMessages();
        takeHostLog();
    }

    void aDialogThatIsCancelledWritesNothing() {
        openSample();
        QWidget* const dialog = filled(path(), {90, 60});
        QVERIFY(dialog);
        QTest::keyClick(dialog, Qt::Key_Escape);
        QTRY_VERIFY(!QApplication::activeModalWidget());
        QCOMPARE(written(), QStringList());
    }

    void aPathThatCannotBeWrittenIsSaidWhereTheUserLooks() {
        openSample();
        const QString nowhere = m_folder->filePath("nowhere/p.png");
        QWidget* const dialog = filled(nowhere, {90, 60});
        QVERIFY(dialog);
        click(dialog, QDialogButtonBox::Save);
        QTRY_VERIFY(m_window->errors().isVisible());
        const QStringList lines = m_window->errors().lines();
        QCOMPARE(lines.size(), 1);
        QVERIFY(lines.constFirst().startsWith(nowhere + ": the picture cannot be written"));
        QCOMPARE(takeHostLog(), lines);
    }

    void aFileThatIsThereIsReplacedOnlyWhenTheUserSaysSo() {
        openSample();
        QFile old(path());
        QVERIFY(old.open(QIODevice::WriteOnly) && old.write("old") == 3);
        old.close();
        QWidget* const dialog = filled(path(), {90, 60});
        QVERIFY(dialog);
        const auto answer = [&](QMessageBox::StandardButton button) {
            click(dialog, QDialogButtonBox::Save);
            auto* const question = qobject_cast<QMessageBox*>(modal());
            QVERIFY(question);
            QVERIFY(question->text().contains(path()));
            QTest::mouseClick(question->button(button), Qt::LeftButton);
        };
        answer(QMessageBox::No);
        QTRY_COMPARE(QApplication::activeModalWidget(), dialog);
        QVERIFY(QImage(path()).isNull());
        answer(QMessageBox::Yes);
        QTRY_COMPARE(said(), path() + " is written");
        QCOMPARE(QImage(path()).size(), QSize(90, 60));
        takeHostLog();
    }

    void aLargePictureShowsItsProgressAndCanBeCancelled() {
        openSample();
        // Writing so much alone takes longer than a progress window waits before it comes.
        QWidget* const dialog = filled(path(), {6000, 6000});
        QVERIFY(dialog);
        bool wasThere = false;
        const auto press = [&wasThere] {
            QWidget* const progress = QApplication::activeModalWidget();
            if (!progress || wasThere || !progress->inherits("memory_host::ProgressWindow"))
                return;
            wasThere = true;
            click(progress, QDialogButtonBox::Cancel);
        };
        QTimer watch;
        connect(&watch, &QTimer::timeout, this, press);
        watch.start(20);
        click(dialog, QDialogButtonBox::Save);
        QTRY_COMPARE_WITH_TIMEOUT(said(), path() + " is not written", 60'000);
        QVERIFY(wasThere);
        QCOMPARE(written(), QStringList());
        QVERIFY(!m_window->errors().isVisible());
        takeHostLog();
    }
};

REGISTER_TEST(SavePictureTest)
#include "SavePictureTest.moc"
