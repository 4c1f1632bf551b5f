#include "HelpViewer.h"
#include "DataFolder.h"
#include "Legible.h"
#include "Logger.h"
#include "TextFile.h"

#include <QAbstractTextDocumentLayout>
#include <QAction>
#include <QApplication>
#include <QDir>
#include <QFileInfo>
#include <QImage>
#include <QMainWindow>
#include <QPointer>
#include <QScopedValueRollback>
#include <QScreen>
#include <QScrollBar>
#include <QSignalBlocker>
#include <QStyle>
#include <QTextBlock>
#include <QTextBrowser>
#include <QTextCursor>
#include <QToolBar>

#include <algorithm>
#include <cctype>
#include <unordered_map>
#include <utility>
#include <vector>

namespace {

using namespace memory_host;

QDir helpFolder() {
    return QDir(QDir::cleanPath(QDir(dataFolder()).absoluteFilePath(QStringLiteral("help"))));
}

/// Reads a page or an image. Only files in the help folder are shown: neither a path nor a symbolic
/// link leads out of it.
TextFile readHelpFile(const QString& path) {
    const QString canonical = QFileInfo(path).canonicalFilePath();
    const QString folder = QFileInfo(helpFolder().path()).canonicalFilePath();
    const bool isWithin = path.startsWith(helpFolder().path() + u'/') &&
                          (canonical.isEmpty() || canonical.startsWith(folder + u'/'));
    return isWithin ? readTextFile(path) : TextFile{{}, "it is outside of the help folder"};
}

/// A placeholder for an image that cannot be shown. Never null: for a null image the text document
/// itself would look for the file.
QImage missingImage() {
    QImage image(16, 16, QImage::Format_RGB32);
    image.fill(Qt::lightGray);
    return image;
}

/// The file of a page that is named with or without its ending.
QString pageFile(const QString& page) {
    return page.endsWith(u".md") ? page : page + QStringLiteral(".md");
}

/// The anchor of a heading in links: its words in lower case, joined with hyphens.
QString anchorOf(const QString& heading) {
    QString anchor;
    for (const QChar c : heading.toLower()) {
        if (c.isLetterOrNumber() || c == u'-' || c == u'_')
            anchor += c;
        else if (c.isSpace())
            anchor += u'-';
    }
    return anchor;
}

/// Escapes text, so that Markdown shows it as it is.
QString plain(const QString& text) {
    QString escaped;
    for (const QChar c : text.simplified()) {
        if (c.unicode() < 128 && std::ispunct(c.unicode()))
            escaped += u'\\';
        escaped += c;
    }
    return escaped;
}

/// A placeholder for a page that cannot be shown: the reason, and which pages there are.
QString missingPage(const QString& name, const std::string& problem) {
    QString text =
        QStringLiteral("# Help page not found\n\nThe help page \"%1\" cannot be shown: %2.\n\n")
            .arg(plain(name), plain(decodeText(problem)));
    const QStringList pages = helpFolder().entryList({QStringLiteral("*.md")}, QDir::Files);
    text += pages.isEmpty() ? QStringLiteral("There are no help pages.\n")
                            : QStringLiteral("These pages can be shown:\n\n");
    for (const QString& page : pages)
        text += QStringLiteral("- [%1](<%2>)\n")
                    .arg(plain(QFileInfo(page).completeBaseName()),
                         QString::fromLatin1(QUrl::toPercentEncoding(page)));
    return text;
}

/// A page of the help folder. Links may name another page, a heading ("#mouse"), or both. Pages and
/// images outside of the folder are not shown.
class HelpBrowser : public QTextBrowser {
public:
    explicit HelpBrowser(QWidget* parent) : QTextBrowser(parent) {
        document()->setDocumentMargin(12);
        makeLegible();
    }

    /// Reads `page` anew and shows it.
    void showPage(const QString& page) {
        const qsizetype hash = page.indexOf(u'#');
        QUrl url = QUrl::fromLocalFile(
            QDir::cleanPath(helpFolder().absoluteFilePath(pageFile(page.left(hash)))));
        if (hash >= 0)
            url.setFragment(page.mid(hash + 1));
        if (source().matches(url, QUrl::RemoveFragment))
            reload();
        setSource(url);
    }

protected:
    void doSetSource(const QUrl& url, QTextDocument::ResourceType) override {
        QUrl page = source().resolved(url);
        if (!page.isLocalFile()) {
            Logger::Write("Help link " + page.toString().toStdString() +
                          " is not opened: it leads out of the help folder");
            return;
        }
        page.setPath(pageFile(page.path()));
        QTextBrowser::doSetSource(page, QTextDocument::MarkdownResource);
        if (std::exchange(m_isNew, false)) {
            freeBars();
            colourLinks();
        }
        if (page.hasFragment())
            scrollToHeading(page.fragment(QUrl::FullyDecoded));
    }

    void changeEvent(QEvent* event) override {
        QTextBrowser::changeEvent(event);
        const QEvent::Type type = event->type();
        if (type == QEvent::PaletteChange || type == QEvent::ApplicationPaletteChange)
            makeLegible();
    }

    QVariant loadResource(int type, const QUrl& name) override {
        if (type == QTextDocument::ImageResource)
            return loadImage(source().resolved(name));
        // For a null result the browser itself would look for the file.
        if (type != QTextDocument::MarkdownResource)
            return QByteArray("");
        m_isNew = true;
        const QString path = QDir::cleanPath(name.toLocalFile());
        TextFile file = readHelpFile(path);
        if (file.problem.empty() && file.bytes.trimmed().isEmpty())
            file.problem = "it is empty";
        if (file.problem.empty())
            return decodeText(file.text());
        Logger::Write("Help page " + path.toStdString() + " cannot be shown: " + file.problem);
        return missingPage(QFileInfo(path).completeBaseName(), file.problem);
    }

private:
    /// Makes text, links and selected text legible with any palette.
    void makeLegible() {
        if (m_isAdapting)
            return;
        const QScopedValueRollback adapting(m_isAdapting, true);
        const QPalette given = QApplication::palette(this);
        QPalette own; // of these colours alone: the others follow the program's
        const auto adapt = [&given, &own](QPalette::ColorGroup group, QPalette::ColorRole text,
                                          QPalette::ColorRole behind) {
            own.setColor(group, text,
                         legible::text(given.color(group, text), given.color(group, behind)));
        };
        for (const auto group : {QPalette::Active, QPalette::Inactive, QPalette::Disabled}) {
            for (const auto role : {QPalette::Text, QPalette::Link, QPalette::LinkVisited})
                adapt(group, role, QPalette::Base);
            adapt(group, QPalette::HighlightedText, QPalette::Highlight);
        }
        setPalette(own);
        colourLinks();
    }

    /// Qt stores the link colour of the program's palette when it reads Markdown, and keeps it.
    /// Links are also underlined, because not everybody sees their colour.
    void colourLinks() {
        // Without this the browser would reload the changed document.
        const QSignalBlocker unchanged(document());
        std::vector<std::pair<int, int>> links;
        for (QTextBlock block = document()->begin(); block.isValid(); block = block.next())
            for (auto part = block.begin(); !part.atEnd(); ++part)
                if (const QTextFragment text = part.fragment(); text.charFormat().isAnchor())
                    links.emplace_back(text.position(), text.position() + text.length());
        QTextCharFormat colour;
        colour.setForeground(palette().color(QPalette::Active, QPalette::Link));
        colour.setFontUnderline(true);
        QTextCursor cursor(document());
        for (const auto& [begin, end] : links) {
            cursor.setPosition(begin);
            cursor.setPosition(end, QTextCursor::KeepAnchor);
            cursor.mergeCharFormat(colour);
        }
    }

    static QImage loadImage(const QUrl& url) {
        const QString path = QDir::cleanPath(url.toLocalFile());
        TextFile file = readHelpFile(path);
        const QImage image = QImage::fromData(file.bytes);
        if (file.problem.empty() && image.isNull())
            file.problem = "it is no image";
        if (file.problem.empty())
            return image;
        Logger::Write("Help image " + (path.isEmpty() ? url.toString() : path).toStdString() +
                      " cannot be shown: " + file.problem);
        return missingImage();
    }

    /// In a cell of a table a bar is escaped with a backslash. Qt removes the backslash in text but
    /// not in code, where a reader would take it for a part of what to type.
    void freeBars() {
        const QString escaped = QStringLiteral("\\|");
        QTextCursor found = document()->find(escaped);
        while (!found.isNull()) {
            const int at = found.selectionStart();
            if (found.currentTable() && found.charFormat().fontFixedPitch())
                found.insertText(QStringLiteral("|"));
            found = document()->find(escaped, at + 1);
        }
    }

    /// Qt makes no anchors from Markdown, so that the headings are searched. The second heading of
    /// the same words is "words-1", the third "words-2".
    void scrollToHeading(const QString& anchor) {
        std::unordered_map<QString, int> used;
        for (QTextBlock block = document()->begin(); block.isValid(); block = block.next()) {
            if (block.blockFormat().headingLevel() == 0)
                continue;
            const QString words = anchorOf(block.text());
            const int before = used[words]++;
            if (anchor != (before > 0 ? words + u'-' + QString::number(before) : words))
                continue;
            const QRectF place = document()->documentLayout()->blockBoundingRect(block);
            verticalScrollBar()->setValue(static_cast<int>(place.top()));
            return;
        }
    }

    bool m_isNew = false; ///< a page was read whose bars are still escaped
    bool m_isAdapting = false;
};

class HelpWindow : public QMainWindow {
public:
    HelpWindow() : m_browser(new HelpBrowser(this)) {
        setObjectName(QStringLiteral("HelpViewer"));
        setCentralWidget(m_browser);
        // Help alone does not keep the program running.
        setAttribute(Qt::WA_QuitOnClose, false);

        m_bar = addToolBar(QStringLiteral("Navigation"));
        m_bar->setMovable(false);
        m_bar->setContextMenuPolicy(Qt::PreventContextMenu);
        QAction* const back = addAction(QStringLiteral("Back"), QKeySequence::Back);
        connect(back, &QAction::triggered, m_browser, &QTextBrowser::backward);
        connect(m_browser, &QTextBrowser::backwardAvailable, back, &QAction::setEnabled);
        QAction* const forward = addAction(QStringLiteral("Forward"), QKeySequence::Forward);
        connect(forward, &QAction::triggered, m_browser, &QTextBrowser::forward);
        connect(m_browser, &QTextBrowser::forwardAvailable, forward, &QAction::setEnabled);
        QAction* const close = addAction(QStringLiteral("Close"), QKeySequence::Cancel);
        close->setEnabled(true);
        connect(close, &QAction::triggered, this, &QWidget::close);

        connect(m_browser, &QTextBrowser::sourceChanged, this, [this](const QUrl& page) {
            const QTextBlock first = m_browser->document()->begin();
            setWindowTitle(QStringLiteral("Help: ") +
                           (first.blockFormat().headingLevel() > 0
                                ? first.text()
                                : QFileInfo(page.path()).completeBaseName()));
        });
    }

    void showPage(const QString& page) {
        fitIntoScreen();
        // Shown first, so that the page is laid out for its width when it scrolls to a heading.
        show();
        if (isMinimized())
            showNormal();
        m_browser->showPage(page);
        raise();
        activateWindow();
    }

private:
    /// The screen may be small, or have become so.
    void fitIntoScreen() {
        const QRect room = screen()->availableGeometry();
        const bool isPlaced = isVisible() && !isMinimized();
        // The window's frame has no known size before it is shown; the style's values stand in.
        const int border = style()->pixelMetric(QStyle::PM_MdiSubWindowFrameWidth);
        const int title = style()->pixelMetric(QStyle::PM_TitleBarHeight);
        const QSize around =
            isPlaced ? frameGeometry().size() - size() : QSize(2 * border, 2 * border + title);
        resize((isPlaced ? size() : QSize(720, 640)).boundedTo(room.size() - around));
        if (!isPlaced)
            return;
        const QRect frame = frameGeometry();
        move(std::max(room.left(), std::min(frame.left(), room.right() + 1 - frame.width())),
             std::max(room.top(), std::min(frame.top(), room.bottom() + 1 - frame.height())));
    }

    QAction* addAction(const QString& text, QKeySequence::StandardKey keys) {
        QAction* const action = m_bar->addAction(text);
        action->setShortcuts(keys);
        action->setEnabled(false);
        return action;
    }

    HelpBrowser* m_browser;
    QToolBar* m_bar;
};

QPointer<HelpWindow>& helpWindow() {
    static auto* const window = new QPointer<HelpWindow>;
    return *window;
}

} // namespace

void HelpViewer::Show(const QString& page) {
    QPointer<HelpWindow>& window = helpWindow();
    if (!window) {
        window = new HelpWindow;
        // No widget may outlive the application.
        qAddPostRoutine([] { delete helpWindow(); });
    }
    // A copy: the text may be a literal in a plug-in's library, and the viewer outlives that.
    window->showPage(QString(page.constData(), page.size()));
}
