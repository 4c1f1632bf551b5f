// That every widget made with "new" is checked at once, in the window and in its dialogs. Read from
// the sources, because no program can show it: an allocation that fails throws.
#include "TestSupport.h"

#include <QDirIterator>
#include <QFile>
#include <QRegularExpression>

class NullChecksTest : public test_support::TestCase {
    Q_OBJECT

    static QString withoutComments(QString text) {
        static const QRegularExpression comment(QStringLiteral("//[^\n]*"));
        return text.remove(comment);
    }
    static bool isWidget(const QString& name) {
        static const QRegularExpression other(
            QStringLiteral("(Model|Delegate|Layout|Item|Action|Shortcut|Timer)$"));
        return !other.match(name).hasMatch();
    }
    /// What is made with "new" in `text`: classes, and whether the next statement checks it.
    static QList<std::pair<QString, bool>> madeIn(const QString& text) {
        static const QRegularExpression made(
            QStringLiteral("(?:(\\w+)\\s*=\\s*)?\\bnew ([A-Z]\\w+)"));
        QList<std::pair<QString, bool>> all;
        for (auto it = made.globalMatch(text); it.hasNext();) {
            const QRegularExpressionMatch match = it.next();
            const QString next = text.mid(text.indexOf(u';', match.capturedEnd()) + 1).trimmed();
            const QString check =
                QStringLiteral("checkPtr(%1, source, __LINE__);").arg(match.captured(1));
            all.append({match.captured(2), next.startsWith(check)});
        }
        return all;
    }

private slots:
    void aCheckCountsOnlyRightAfterItsWidget() {
        using Made = QList<std::pair<QString, bool>>;
        QCOMPARE(madeIn("auto* a = new QFrame(this); checkPtr(a, source, __LINE__);"),
                 (Made{{"QFrame", true}}));
        QCOMPARE(madeIn("a = new QFrame(this); b(); checkPtr(a, source, __LINE__);"),
                 (Made{{"QFrame", false}}));
        QCOMPARE(madeIn("a = new QFrame; checkPtr(b, source, __LINE__); add(new QMenu(a));"),
                 (Made{{"QFrame", false}, {"QMenu", false}}));
        QVERIFY(isWidget("QMessageBox") && !isWidget("QVBoxLayout") && !isWidget("TreeItem"));
    }

    void everyWidgetOfTheWindowAndItsDialogsIsChecked() {
        QStringList checked;
        QStringList unchecked;
        QDirIterator sources(QStringLiteral(SOURCE_DIR "/structure-editor"), {"*.cpp", "*.h"},
                             QDir::Files, QDirIterator::Subdirectories);
        while (sources.hasNext()) {
            QFile file(sources.next());
            QVERIFY(file.open(QFile::ReadOnly));
            for (const auto& [name, isChecked] : madeIn(withoutComments(file.readAll())))
                if (isWidget(name))
                    (isChecked ? checked : unchecked) << name;
        }
        QCOMPARE(unchecked.join(u' '), QString());
        for (const char* name : {"WindowPanes", "ListBox", "TreeView", "QFrame", "QMenu",
                                 "QInputDialog", "QColorDialog", "QMessageBox"})
            QVERIFY2(checked.contains(QLatin1String(name)), name);
    }
};

REGISTER_TEST(NullChecksTest)
#include "NullChecksTest.moc"
