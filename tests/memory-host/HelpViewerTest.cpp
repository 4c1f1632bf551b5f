#include "HelpViewer.h"
#include "Legible.h"
#include "TestSupport.h"
#include "services/DataFolder.h"

#include <QAction>
#include <QApplication>
#include <QBuffer>
#include <QDesktopServices>
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QScreen>
#include <QScrollBar>
#include <QTemporaryDir>
#include <QTextBlock>
#include <QTextBrowser>
#include <QToolBar>
#include <QToolButton>

#include <memory>
#include <sys/stat.h>

using namespace memory_host;

namespace {

QWidget* viewer() {
    for (QWidget* widget : QApplication::topLevelWidgets()) {
        if (widget->objectName() == "HelpViewer")
            return widget;
    }
    return nullptr;
}

QTextBrowser* browser() {
    return viewer() ? viewer()->findChild<QTextBrowser*>() : nullptr;
}

QString shownText() {
    return browser() && browser()->isVisible() ? browser()->toPlainText() : QString();
}

/// Clicks on the first place where `text` stands in the page, which must be in view.
void clickOn(const QString& text) {
    QTextCursor cursor = browser()->document()->find(text);
    QVERIFY2(!cursor.isNull(), qPrintable(text));
    cursor.setPosition(cursor.selectionStart() + 1);
    const QPoint place = browser()->cursorRect(cursor).center();
    QVERIFY(browser()->viewport()->rect().contains(place));
    QTest::mouseClick(browser()->viewport(), Qt::LeftButton, {}, place);
}

void clickButton(const QString& text) {
    for (QToolButton* button : viewer()->findChildren<QToolButton*>()) {
        if (button->text() == text && button->isVisible()) {
            QTest::mouseClick(button, Qt::LeftButton);
            return;
        }
    }
    QFAIL(qPrintable(text + " is no button"));
}

/// How far below the upper edge of the view the heading stands, in pixels.
int topOf(const QString& heading) {
    for (QTextBlock block = browser()->document()->begin(); block.isValid(); block = block.next()) {
        if (block.text() == heading && block.blockFormat().headingLevel() > 0)
            return browser()->cursorRect(QTextCursor(block)).top();
    }
    return -1000000;
}

} // namespace

class HelpViewerTest : public test_support::TestCase {
    Q_OBJECT

    std::unique_ptr<QTemporaryDir> m_folder;
    QString m_dataFolder;

    QString path(const QString& page) const { return m_folder->filePath("help/" + page); }
    void write(const QString& page, const QByteArray& text) {
        QFile file(path(page));
        QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
        QCOMPARE(file.write(text), text.size());
    }
    /// A page that is some screens long, with headings far from each other.
    void writeLongPage(const QString& page) {
        QByteArray text = "# Long page\n\nTo [the end](#the-end), [here](#Mouse%20%26%20keys).\n\n";
        for (const char* heading : {"First part", "Mouse & keys", "First part", "The end"}) {
            text += "## " + QByteArray(heading) + "\n\n";
            for (int i = 0; i < 60; ++i)
                text += "A line of the page.\n\n";
        }
        write(page, text);
    }

    /// Writes a file by its path from above the help folder.
    void writeSecret(const QString& file, const QByteArray& bytes) {
        QFile secret(m_folder->filePath(file));
        QVERIFY(secret.open(QIODevice::WriteOnly));
        QCOMPARE(secret.write(bytes), bytes.size());
    }
    /// A PNG file in one colour.
    static QByteArray picture(Qt::GlobalColor color) {
        QImage image(40, 40, QImage::Format_RGB32);
        image.fill(color);
        QByteArray bytes;
        QBuffer buffer(&bytes);
        return buffer.open(QIODevice::WriteOnly) && image.save(&buffer, "PNG") ? bytes
                                                                               : QByteArray();
    }
    /// Whether a pixel of the page has that colour.
    static bool shows(Qt::GlobalColor color) {
        const QImage page = browser()->viewport()->grab().toImage();
        for (int y = 0; y != page.height(); ++y)
            for (int x = 0; x != page.width(); ++x)
                if (page.pixelColor(x, y) == QColor(color))
                    return true;
        return false;
    }

    QList<QUrl> m_opened; ///< by the desktop

public slots:
    void openUrl(const QUrl& url) { m_opened << url; }

private slots:
    void init() override {
        TestCase::init();
        m_opened.clear();
        m_folder = std::make_unique<QTemporaryDir>();
        QVERIFY(m_folder->isValid() && QDir(m_folder->path()).mkdir("help"));
        m_dataFolder = dataFolder();
        setDataFolder(m_folder->path());
    }
    void cleanup() override {
        delete viewer();
        setDataFolder(m_dataFolder);
        m_folder.reset();
        TestCase::cleanup();
    }

    void aPageIsShownInAWindow() {
        write("page.md",
              "# The title\n\nSome *words*, caf\xc3\xa9.\n\n| a | b |\n|---|---|\n| 1 | 2 |\n");
        HelpViewer::Show("page");
        QVERIFY(viewer() && viewer()->isVisible());
        QVERIFY(viewer()->isWindow());
        QCOMPARE(viewer()->windowTitle(), "Help: The title");
        const QString text = shownText();
        QVERIFY2(text.startsWith(QString::fromUtf8("The title\nSome words, caf\xc3\xa9.")),
                 qPrintable(text));
        QVERIFY(!text.contains(u'|'));
    }

    // What a reader sees of code is what is to be typed.
    void aBarInACellNeedsABackslashThatIsNotShown() {
        write("page.md",
              "# The title\n\n`a\\|b`\n\n| one | two |\n|---|---|\n"
              "| `(A\\|B)` x\\|y | `\\d\\|\\|` |\n| [here](#the-end) | `c` |\n\n# The end\n");
        const QString expected = "The title\na\\|b\none\ntwo\n(A|B) x|y\n\\d||\nhere\nc\n\nThe end";
        HelpViewer::Show("page");
        QCOMPARE(shownText(), expected);
        HelpViewer::Show("page");
        QCOMPARE(shownText(), expected);
        clickOn("here");
        QCOMPARE(shownText(), expected);
        QTextCursor code = browser()->document()->find("(A|B)");
        QVERIFY(code.charFormat().fontFixedPitch());
    }

    void theEndingMayBeNamed() {
        write("page.md", "# The title\n");
        HelpViewer::Show("page.md");
        QCOMPARE(shownText(), "The title");
    }

    void theSameViewerShowsTheNextPage() {
        write("a.md", "first\n");
        write("b.md", "second\n");
        HelpViewer::Show("a");
        QWidget* const window = viewer();
        QCOMPARE(window->windowTitle(), "Help: a");
        window->close();
        QVERIFY(!window->isVisible());
        HelpViewer::Show("b");
        QCOMPARE(viewer(), window);
        QCOMPARE(shownText(), "second");
        window->showMinimized();
        HelpViewer::Show("a");
        QVERIFY(!window->isMinimized());
        QCOMPARE(shownText(), "first");
    }

    void aPageThatHasChangedIsReadAnew() {
        write("a.md", "before\n");
        HelpViewer::Show("a");
        write("a.md", "after\n");
        HelpViewer::Show("a");
        QCOMPARE(shownText(), "after");
    }

    void aLinkLeadsToAnotherPageAndBack() {
        write("a.md", "# A\n\nGo to [the other page](b.md).\n");
        write("b.md", "# B\n\nBack to [the first page](a).\n");
        HelpViewer::Show("a");
        clickOn("the other page");
        QCOMPARE(viewer()->windowTitle(), "Help: B");
        QVERIFY(shownText().startsWith("B\n"));
        clickButton("Back");
        QVERIFY(shownText().startsWith("A\n"));
        clickButton("Forward");
        QVERIFY(shownText().startsWith("B\n"));
        clickOn("the first page");
        QVERIFY(shownText().startsWith("A\n"));
    }

    void aLinkLeadsToAHeading() {
        writeLongPage("long.md");
        HelpViewer::Show("long");
        QCOMPARE(browser()->verticalScrollBar()->value(), 0);
        clickOn("the end");
        QVERIFY(browser()->verticalScrollBar()->value() > 0);
        QVERIFY2(qAbs(topOf("The end")) < 40, qPrintable(QString::number(topOf("The end"))));
        clickButton("Back");
        QCOMPARE(browser()->verticalScrollBar()->value(), 0);
    }

    void aPageCanBeShownAtAHeading() {
        writeLongPage("long.md");
        write("other.md", "[there](long.md#the-end)\n");
        HelpViewer::Show("long#mouse--keys");
        QVERIFY(qAbs(topOf("Mouse & keys")) < 40);
        HelpViewer::Show("long#first-part-1");
        QVERIFY(topOf("First part") < -1000);
        HelpViewer::Show("other");
        clickOn("there");
        QVERIFY(qAbs(topOf("The end")) < 40);
        // Also after a way back, which loads the page again.
        clickButton("Back");
        clickButton("Forward");
        HelpViewer::Show("long#first-part");
        QVERIFY(qAbs(topOf("First part")) < 40);
        QVERIFY(browser()->verticalScrollBar()->value() > 0);
    }

    void aHeadingThatIsNotThereShowsThePage() {
        writeLongPage("long.md");
        HelpViewer::Show("long#nowhere");
        QVERIFY(shownText().startsWith("Long page\n"));
    }

    void aMissingPageIsSaidInTheViewerAndTheLog() {
        write("listed.md", "# B\n");
        write("a.md", "# A\n\n[broken](gone_for.good)\n");
        HelpViewer::Show("no *such* page");
        QCOMPARE(viewer()->windowTitle(), "Help: Help page not found");
        QVERIFY2(shownText().contains(
                     "The help page \"no *such* page\" cannot be shown: there is no such file."),
                 qPrintable(shownText()));
        QCOMPARE(takeHostLog(), QStringList("Help page " + path("no *such* page.md") +
                                            " cannot be shown: there is no such file"));
        // What can be shown is offered.
        clickOn("listed");
        QCOMPARE(shownText(), "B");
        HelpViewer::Show("a");
        clickOn("broken");
        QVERIFY2(shownText().contains("gone_for.good"), qPrintable(shownText()));
        QCOMPARE(takeHostLog(), QStringList("Help page " + path("gone_for.good.md") +
                                            " cannot be shown: there is no such file"));
        clickButton("Back");
        QVERIFY(shownText().startsWith("A\n"));
    }

    void aPageWithoutANameOffersThePagesThatThereAre() {
        HelpViewer::Show("");
        QVERIFY(shownText().contains("There are no help pages."));
        write("odd name_1.md", "# Odd\n");
        HelpViewer::Show("");
        QCOMPARE(takeHostLog().size(), 2);
        clickOn("odd name_1");
        QCOMPARE(shownText(), "Odd");
    }

    void pagesThatAreEmptyTooLargeOrNoFileAreSaid() {
        write("empty.md", " \n");
        write("large.md", QByteArray((1 << 20) + 1, 'x'));
        QVERIFY(QDir(m_folder->path()).mkdir("help/folder.md"));
        QStringList log;
        for (const auto& [page, problem] :
             {std::pair("empty", "it is empty"), std::pair("large", "it is larger than 1 MB"),
              std::pair("folder", "it is not a file")}) {
            HelpViewer::Show(page);
            QVERIFY2(shownText().contains(problem), qPrintable(shownText()));
            log << "Help page " + path(page) + ".md cannot be shown: " + problem;
        }
        QCOMPARE(takeHostLog(), log);
    }

    void nothingOutsideOfTheFolderIsShown() {
        QFile secret(m_folder->filePath("secret.md"));
        QVERIFY(secret.open(QIODevice::WriteOnly) && secret.write("secret text") > 0);
        secret.close();
        for (const QString& page :
             {QString("../secret"), m_folder->filePath("secret.md"), QString("x/../../secret")}) {
            HelpViewer::Show(page);
            QVERIFY(!shownText().contains("secret text"));
            QVERIFY(shownText().contains("outside of the help folder"));
        }
        write("a.md", "[leak](../secret.md)\n");
        HelpViewer::Show("a");
        clickOn("leak");
        QVERIFY(shownText().contains("outside of the help folder"));
        QCOMPARE(takeHostLog().size(), 4);
    }

    // On a screen of any size; see below.
    void theWindowFitsIntoTheScreen() {
        writeLongPage("long.md");
        for (int i = 0; i != 2; ++i) {
            HelpViewer::Show("long");
            QTest::qWait(20);
            const QRect room = viewer()->screen()->availableGeometry();
            const QRect frame = viewer()->frameGeometry();
            QVERIFY2(room.contains(frame), qPrintable(QStringLiteral("%1 x %2 at %3, %4 on %5 x %6")
                                                          .arg(frame.width())
                                                          .arg(frame.height())
                                                          .arg(frame.x())
                                                          .arg(frame.y())
                                                          .arg(room.width())
                                                          .arg(room.height())));
            QVERIFY(browser()->viewport()->width() > 100);
            if (room.width() > 760 && room.height() > 720)
                QCOMPARE(viewer()->size(), QSize(720, 640));
            // Where a user, or a larger screen that is gone, has left it.
            viewer()->move(room.bottomRight() - QPoint(50, 50));
        }
    }

    void theWindowFitsIntoASmallScreen_data() {
        QTest::addColumn<QString>("screen");
        QTest::newRow("640 x 480") << R"("width": 640, "height": 480, "dpr": 1)";
        QTest::newRow("320 x 240") << R"("width": 320, "height": 240, "dpr": 1)";
        QTest::newRow("scaled") << R"("width": 640, "height": 400, "dpr": 2)";
    }
    void theWindowFitsIntoASmallScreen() {
        QFETCH(QString, screen);
        QFile file(m_folder->filePath("screen.json"));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(QString(R"({"screens": [{"name": "small", "x": 0, "y": 0, )"
                           R"("logicalDpi": 96, "logicalBaseDpi": 96, %1}]})")
                       .arg(screen)
                       .toUtf8());
        file.close();
        QProcess self;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert("QT_QPA_PLATFORM", "offscreen:configfile=" + file.fileName());
        self.setProcessEnvironment(environment);
        self.setProcessChannelMode(QProcess::MergedChannels);
        self.start(QCoreApplication::applicationFilePath(),
                   {"HelpViewerTest", "theWindowFitsIntoTheScreen"});
        QVERIFY(self.waitForFinished());
        const QByteArray said = self.readAll();
        QVERIFY2(self.exitStatus() == QProcess::NormalExit && self.exitCode() == 0, said);
    }

    void textAndLinksCanBeReadInEveryPalette() {
        const QPalette before = QApplication::palette();
        write("a.md", "# A\n\nSome text and [a link](b.md), [another](#a).\n");
        HelpViewer::Show("a");
        QVERIFY(QTest::qWaitForWindowActive(viewer()));
        for (const QColor& base : {QColor(Qt::white), QColor(35, 35, 35), QColor(Qt::black),
                                   QColor(128, 128, 128), QColor(0, 0, 120), QColor(Qt::white)}) {
            QPalette palette(base);
            palette.setColor(QPalette::Base, base);
            palette.setColor(QPalette::Highlight, QColor(90, 90, 200));
            QApplication::setPalette(palette); // at run time
            QTRY_COMPARE(browser()->palette().color(QPalette::Base), base);
            int links = 0;
            for (const char* text : {"a link", "another", "Some"}) {
                const QTextCursor found = browser()->document()->find(text);
                const QTextCharFormat format = found.charFormat();
                links += format.isAnchor() ? 1 : 0;
                const QColor color = format.isAnchor() ? format.foreground().color()
                                                       : browser()->palette().color(QPalette::Text);
                QVERIFY2(legible::contrast(color, base) >= 4.5,
                         qPrintable(text + QString(": ") + color.name() + " on " + base.name()));
                QVERIFY(!format.isAnchor() || format.fontUnderline());
            }
            QCOMPARE(links, 2);
            for (const auto group : {QPalette::Active, QPalette::Inactive, QPalette::Disabled}) {
                const QPalette shown = browser()->palette();
                QVERIFY(legible::contrast(shown.color(group, QPalette::HighlightedText),
                                          shown.color(group, QPalette::Highlight)) >= 4.5);
                QVERIFY(legible::contrast(shown.color(group, QPalette::Text),
                                          shown.color(group, QPalette::Base)) >= 4.5);
            }
            // The link's colour is on screen.
            const QRgb link =
                browser()->document()->find("a link").charFormat().foreground().color().rgb();
            const QImage image =
                browser()->viewport()->grab().toImage().convertToFormat(QImage::Format_RGB32);
            int pixels = 0;
            for (int y = 0; y != image.height(); ++y)
                for (int x = 0; x != image.width(); ++x)
                    pixels += image.pixel(x, y) == link ? 1 : 0;
            QVERIFY(pixels > 20);
            // A page that is read now is as legible.
            HelpViewer::Show("a");
            QVERIFY(legible::contrast(
                        browser()->document()->find("a link").charFormat().foreground().color(),
                        base) >= 4.5);
        }
        QApplication::setPalette(before);
    }

    void aLinkInTheFileSystemDoesNotLeadOutOfTheFolder() {
        writeSecret("secret.md", "secret text");
        QVERIFY(QFile::link(m_folder->filePath("secret.md"), path("link.md")));
        QVERIFY(QFile::link(m_folder->path(), path("folder")));
        for (const QString page : {"link", "folder/secret"}) {
            HelpViewer::Show(page);
            QVERIFY(!shownText().contains("secret text"));
            QVERIFY2(shownText().contains("outside of the help folder"), qPrintable(shownText()));
        }
        QCOMPARE(takeHostLog().size(), 2);
        // Within the folder one may lead to another page, and to the folder itself.
        write("page.md", "the page\n");
        QVERIFY(QFile::link(path("page.md"), path("alias.md")));
        HelpViewer::Show("alias");
        QCOMPARE(shownText(), "the page");
        const QString data = m_folder->filePath("data");
        QVERIFY(QDir().mkdir(data) && QFile::link(path(""), data + "/help"));
        setDataFolder(data);
        HelpViewer::Show("page");
        QCOMPARE(shownText(), "the page");
    }

    void anImageOfTheFolderIsShown() {
        writeSecret("help/red.png", picture(Qt::red));
        write("page.md", "![an image](red.png)\n");
        HelpViewer::Show("page");
        QVERIFY(shows(Qt::red));
    }

    void noImageFromOutsideOfTheFolderIsShown() {
        const QString outside = m_folder->filePath("outside");
        QVERIFY(QDir().mkdir(outside));
        writeSecret("outside/blue.png", picture(Qt::blue));
        QVERIFY(QFile::link(outside + "/blue.png", path("link.png")));
        // What has no image in the folder may have one of that name in the working directory.
        const QString before = QDir::currentPath();
        QVERIFY(QDir::setCurrent(outside));
        const QStringList images{"../outside/blue.png",
                                 "link.png",
                                 "blue.png",
                                 outside + "/blue.png",
                                 QUrl::fromLocalFile(outside + "/blue.png").toString(),
                                 "http://localhost/blue.png",
                                 "data:image/png;base64," + picture(Qt::blue).toBase64()};
        for (const QString& image : images) {
            write("page.md", "![an image](" + image.toUtf8() + ")\n");
            HelpViewer::Show("page");
            QVERIFY2(!shows(Qt::blue), qPrintable(image));
            const QStringList log = takeHostLog();
            QCOMPARE(log.size(), 1);
            QVERIFY2(log.constFirst().startsWith("Help image "), qPrintable(log.constFirst()));
        }
        QVERIFY(QDir::setCurrent(before));
    }

    void aStyleSheetIsNotRead() {
        const QString outside = m_folder->filePath("outside");
        QVERIFY(QDir().mkdir(outside));
        writeSecret("outside/blue.css", "p { background-color: #0000ff; }");
        for (const QString& sheet : {QStringLiteral("../outside/blue.css"), outside + "/blue.css",
                                     QUrl::fromLocalFile(outside + "/blue.css").toString()}) {
            write("page.md", "<div><link rel=\"stylesheet\" type=\"text/css\" href=\"" +
                                 sheet.toUtf8() + "\" /><p>the text</p></div>\n");
            HelpViewer::Show("page");
            QCOMPARE(shownText(), "the text");
            QVERIFY2(!shows(Qt::blue), qPrintable(sheet));
        }
    }

    void whatIsNoImageOrTooLargeIsSaid() {
        write("text.png", "no image");
        write("large.png", picture(Qt::red) + QByteArray(1 << 20, 'x'));
        QCOMPARE(mkfifo(QFile::encodeName(path("pipe.png")).constData(), 0600), 0);
        QStringList log;
        for (const auto& [image, problem] : {std::pair("text.png", "it is no image"),
                                             std::pair("large.png", "it is larger than 1 MB"),
                                             std::pair("pipe.png", "it is not a file")}) {
            write("page.md", QByteArray("![an image](") + image + ")\n");
            HelpViewer::Show("page");
            QVERIFY(!shows(Qt::red));
            log << "Help image " + path(image) + " cannot be shown: " + problem;
        }
        QCOMPARE(takeHostLog(), log);
    }

    void aLinkOfAnotherSchemeOpensNothing() {
        write("page.md", "# The page\n\n[away](http://localhost/x) [mail](mailto:a@b) "
                         "[code](qrc:/x.md)\n");
        HelpViewer::Show("page");
        for (const QString scheme : {"http", "mailto", "qrc"})
            QDesktopServices::setUrlHandler(scheme, this, "openUrl");
        for (const QString text : {"away", "mail", "code"}) {
            clickOn(text);
            QVERIFY(shownText().startsWith("The page\n"));
        }
        for (const QString scheme : {"http", "mailto", "qrc"})
            QDesktopServices::unsetUrlHandler(scheme);
        QCOMPARE(m_opened, QList<QUrl>());
        QCOMPARE(
            takeHostLog(),
            QStringList({"Help link http://localhost/x is not opened: it leads out of the help "
                         "folder",
                         "Help link mailto:a@b is not opened: it leads out of the help folder",
                         "Help link qrc:/x.md is not opened: it leads out of the help folder"}));
    }

    void escapeClosesTheViewer() {
        write("a.md", "# A\n");
        HelpViewer::Show("a");
        QVERIFY(QTest::qWaitForWindowActive(viewer()));
        QTest::keyClick(browser(), Qt::Key_Escape);
        QVERIFY(!viewer()->isVisible());
        HelpViewer::Show("a");
        clickButton("Close");
        QVERIFY(!viewer()->isVisible());
    }

    void theViewerDoesNotKeepTheProgramRunning() {
        write("a.md", "# A\n");
        HelpViewer::Show("a");
        QVERIFY(!viewer()->testAttribute(Qt::WA_QuitOnClose));
    }

    void theNameMayBeGoneAfterTheCall() {
        write("a.md", "# A\n");
        write("b.md", "# B\n\n[link](a.md)\n");
        {
            char16_t name[] = u"b";
            HelpViewer::Show(QString::fromRawData(reinterpret_cast<const QChar*>(name), 1));
            name[0] = u'?';
        }
        clickOn("link");
        clickButton("Back");
        QVERIFY(shownText().startsWith("B\n"));
    }
};

REGISTER_TEST(HelpViewerTest)
#include "HelpViewerTest.moc"
