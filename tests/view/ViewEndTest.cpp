// The view's window goes while it is in the middle of something: a dialog, a click, a picture that
// is written.
#include "Subscriber.h"
#include "ViewTestCase.h"

#include <QApplication>
#include <QDialog>
#include <QDialogButtonBox>
#include <QDir>
#include <QLineEdit>
#include <QPushButton>
#include <QSpinBox>
#include <QTemporaryDir>
#include <QTimer>

#include <algorithm>
#include <functional>
#include <utility>

using namespace view_tools;

namespace {

/// Does something when it is told of a change.
class WhenChanged : public Subscriber {
public:
    explicit WhenChanged(std::function<void()> deed) : m_deed(std::move(deed)) {}
    void commUpdate() override { m_deed(); }
    void commAdd() override {}
    void commDelete() override {}

private:
    std::function<void()> m_deed;
};

/// Does something when the focus moves.
class WhenFocused : public TAVIK::FocusObserver {
public:
    explicit WhenFocused(std::function<void()> deed) : m_deed(std::move(deed)) {}
    void focusMoved(TAVIK::Compound*, bool) override { m_deed(); }

private:
    std::function<void()> m_deed;
};

} // namespace

class ViewEndTest : public ViewTestCase {
    Q_OBJECT

    /// Has a picture of side x side pixels written, and does not wait for it.
    void writePicture(const QString& path, int side) {
        m_view->askForPicture();
        auto* const dialog = QApplication::activeModalWidget();
        QVERIFY(dialog);
        for (auto* const length : dialog->findChildren<QSpinBox*>())
            length->setValue(side);
        for (auto* const line : dialog->findChildren<QLineEdit*>())
            if (line->parent() == dialog)
                line->setText(path);
        dialog->findChild<QDialogButtonBox*>()->button(QDialogButtonBox::Save)->click();
    }

private slots:
    void picturesThatAreAskedForInARowAreAllWritten() {
        fourAtoms().attach();
        show();
        const QTemporaryDir folder;
        for (const QString name : {"a.png", "b.png", "c.png"})
            writePicture(folder.filePath(name), 1000);
        QTRY_COMPARE(QDir(folder.path()).entryList(QDir::Files),
                     QStringList({"a.png", "b.png", "c.png"}));
        QTRY_VERIFY(m_view->line().contains("c.png is written"));
        QCOMPARE(takeHostLog().size(), 3);
    }

    void theWindowMayGoWhilePicturesAreWritten() {
        fourAtoms().attach();
        show();
        const QTemporaryDir folder;
        for (const QString name : {"a.png", "b.png"})
            writePicture(folder.filePath(name), 10'000);
        m_view.reset();
        QCOMPARE(QDir(folder.path()).entryList(QDir::Files), QStringList());
    }

    void aPictureThatIsBeingWrittenStopsWithItsWindow() {
        fourAtoms().attach();
        show();
        const QTemporaryDir folder;
        QTimer watch;
        connect(&watch, &QTimer::timeout, this, [this] {
            const QWidgetList all = QApplication::topLevelWidgets();
            if (std::any_of(all.begin(), all.end(), [](const QWidget* window) {
                    return window->inherits("memory_host::ProgressWindow");
                }))
                m_view.reset();
        });
        watch.start(1);
        writePicture(folder.filePath("a.png"), 6'000);
        QTRY_VERIFY_WITH_TIMEOUT(!m_view, 60'000);
        watch.stop();
        QCOMPARE(QDir(folder.path()).entryList(QDir::Files), QStringList());
    }

    void theWindowMayGoWhileItAsksForAPicture() {
        fourAtoms().attach();
        show();
        bool wasOpen = false;
        QTimer::singleShot(0, this, [&] {
            wasOpen = qobject_cast<QDialog*>(QApplication::activeModalWidget()) != nullptr;
            m_view.reset();
        });
        m_view->askForPicture();
        QTRY_VERIFY(!m_view);
        QVERIFY(wasOpen);
        QVERIFY(!QApplication::activeModalWidget());
    }

    void theWindowMayGoWhenItsClickIsTold() {
        const Structure made = fourAtoms().attach();
        show();
        const QPoint place = placeOf(made.atoms[0]);
        const WhenChanged ending([this] { m_view.reset(); });
        QTest::mouseClick(&canvas(), Qt::LeftButton, {}, place);
        QVERIFY(!m_view);
        QCOMPARE(selectedNames(), "A");
    }

    void theWindowMayGoWhenItsFocusIsTold() {
        const Structure made = fourAtoms().attach();
        show();
        const QPoint place = placeOf(made.atoms[0]);
        const WhenFocused ending([this] { m_view.reset(); });
        QTest::mouseClick(&canvas(), Qt::LeftButton, {}, place);
        QVERIFY(!m_view);
        QCOMPARE(TAVIK::Focus::item(), made.atoms[0]);
    }
};

REGISTER_TEST(ViewEndTest)
#include "ViewEndTest.moc"
