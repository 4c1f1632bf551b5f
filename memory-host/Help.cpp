#include "HelpViewer.h"
#include "Logger.h"
#include "Services.h"
#include "Text.h"

#include <QAbstractTextDocumentLayout>
#include <QAction>
#include <QApplication>
#include <QDir>
#include <QFileInfo>
#include <QMainWindow>
#include <QPointer>
#include <QScrollBar>
#include <QTextBlock>
#include <QTextBrowser>
#include <QTextCursor>
#include <QToolBar>

#include <cctype>
#include <unordered_map>
#include <utility>

namespace {

using namespace memory_host;

QDir helpFolder() {
    return QDir(QDir::cleanPath(QDir(dataFolder()).absoluteFilePath(QStringLiteral("help"))));
}

/// The file of a page that is named with or without its ending.
QString pageFile(const QString& page) {
    return page.endsWith(u".md") ? page : page + QStringLiteral(".md");
}

/// What a link to a heading calls it: its words in lower case, joined with hyphens.
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

/// Text as Markdown that shows it letter by letter.
QString plain(const QString& text) {
    QString escaped;
    for (const QChar c : text.simplified()) {
        if (c.unicode() < 128 && std::ispunct(c.unicode()))
            escaped += u'\\';
        escaped += c;
    }
    return escaped;
}

/// The page that stands for one that cannot be shown: why, and which pages there are.
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

/// A page of the help folder. Links may name another page, a heading ("#mouse"), or both; what
/// stands outside of the folder is not shown.
class HelpBrowser : public QTextBrowser {
public:
    explicit HelpBrowser(QWidget* parent) : QTextBrowser(parent) {
        setOpenExternalLinks(true);
        document()->setDocumentMargin(12);
    }

    /// Shows `page`, read anew.
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
        page.setPath(pageFile(page.path()));
        QTextBrowser::doSetSource(page, QTextDocument::MarkdownResource);
        if (std::exchange(m_isNew, false))
            freeBars();
        if (page.hasFragment())
            scrollToHeading(page.fragment(QUrl::FullyDecoded));
    }

    QVariant loadResource(int type, const QUrl& name) override {
        if (type != QTextDocument::MarkdownResource)
            return QTextBrowser::loadResource(type, name);
        m_isNew = true;
        const QString path = QDir::cleanPath(name.toLocalFile());
        TextFile file;
        if (path.startsWith(helpFolder().path() + u'/'))
            file = readTextFile(path);
        else
            file.problem = "it is outside of the help folder";
        if (file.problem.empty() && file.bytes.trimmed().isEmpty())
            file.problem = "it is empty";
        if (file.problem.empty())
            return decodeText(file.text());
        Logger::Write("Help page " + path.toStdString() + " cannot be shown: " + file.problem);
        return missingPage(QFileInfo(path).completeBaseName(), file.problem);
    }

private:
    /// A bar within a cell of a table has a backslash before it. Qt takes that away in text, but
    /// leaves it in code, where a reader would take it for a part of what to type.
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

    /// Markdown names no places, so that the headings are looked through. The second heading of the
    /// same words is "words-1", the third "words-2".
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

    bool m_isNew = false; ///< a page was read whose bars are not free yet
};

class HelpWindow : public QMainWindow {
public:
    HelpWindow() : m_browser(new HelpBrowser(this)) {
        setObjectName(QStringLiteral("HelpViewer"));
        setCentralWidget(m_browser);
        // Help alone does not keep the program running.
        setAttribute(Qt::WA_QuitOnClose, false);
        resize(720, 640);

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
        // First the window, so that the page is laid out for its width when it scrolls to a place.
        show();
        if (isMinimized())
            showNormal();
        m_browser->showPage(page);
        raise();
        activateWindow();
    }

private:
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
