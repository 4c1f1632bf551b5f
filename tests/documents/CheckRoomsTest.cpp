// cmake/CheckRooms.cmake, which ends the build where a folder includes what it must not know: run
// on small trees of sources.
#include "TestSupport.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>

class CheckRoomsTest : public test_support::TestCase {
    Q_OBJECT

    struct Result {
        bool passes = false;
        QStringList faults; ///< one line each
    };

    std::unique_ptr<QTemporaryDir> m_tree;

    void add(const QString& file, const QString& content) const {
        const QString path = m_tree->filePath(file);
        QVERIFY(QDir().mkpath(QFileInfo(path).path()));
        QFile written(path);
        QVERIFY(written.open(QFile::WriteOnly));
        QVERIFY(written.write(content.toLatin1()) == content.size());
    }

    static Result check(const QString& root) {
        QProcess cmake;
        cmake.setProcessChannelMode(QProcess::MergedChannels);
        cmake.start(CMAKE, {"-DROOT=" + root, "-P", SOURCE_DIR "/cmake/CheckRooms.cmake"});
        if (!cmake.waitForFinished(60'000))
            return {};
        Result result;
        result.passes = cmake.exitStatus() == QProcess::NormalExit && cmake.exitCode() == 0;
        // CMake breaks long lines.
        const QString output = QString::fromUtf8(cmake.readAll()).simplified();
        static const QRegularExpression fault(
            "\\(message\\): (.*?) Call Stack|\\(message\\): (.*?)(?= CMake Error|$)");
        for (auto it = fault.globalMatch(output); it.hasNext();) {
            const QRegularExpressionMatch match = it.next();
            result.faults << match.captured(match.lastCapturedIndex()).trimmed();
        }
        return result;
    }
    Result check() const { return check(m_tree->path()); }

    // From what knows nothing to what knows much.
    const QStringList m_upwards = {
        "host",
        "include",
        "structure-editor/names",
        "structure-editor/radius",
        "structure-editor/data",
        "structure-editor/tree",
        "structure-editor/window",
    };
    const QStringList m_hostUpwards = {"host", "memory-host/items", "memory-host/files",
                                       "memory-host/services", "workbench"};

    static QString headerIn(const QString& folder) {
        QString name = folder;
        return name.remove('-').replace('/', '_') + "_header.h";
    }
    /// How sources outside of the folder include its header.
    static QString includeOf(const QString& folder) {
        const QString below = folder.contains('/') ? folder.section('/', 1) + '/' : QString();
        return below + headerIn(folder);
    }

private slots:
    void init() override {
        TestCase::init();
        m_tree = std::make_unique<QTemporaryDir>();
        for (const QString& folder : m_upwards + m_hostUpwards)
            add(folder + '/' + headerIn(folder), "#pragma once\n#include <vector>\n");
    }

    void theSourcesThemselvesPass() {
        const Result result = check(SOURCE_DIR);
        QVERIFY2(result.passes, qPrintable(result.faults.join(u'\n')));
    }

    void aTreeWithoutIncludesPasses() { QVERIFY(check().passes); }

    void everyArrowThatRunsUpFails() {
        QStringList expected;
        const auto addArrow = [&](const QString& from, const QString& to) {
            add(QStringLiteral("%1/to_%2.cpp").arg(from, headerIn(to)),
                QStringLiteral("#include \"%1\"\n").arg(includeOf(to)));
            expected << QStringLiteral("%1/to_%2.cpp includes %3/%2: %1/ must not know %3/")
                            .arg(from, headerIn(to), to);
        };
        for (const QStringList& upwards : {m_upwards, m_hostUpwards})
            for (qsizetype from = 0; from != upwards.size(); ++from)
                for (qsizetype to = from + 1; to != upwards.size(); ++to)
                    addArrow(upwards[from], upwards[to]);
        // No plug-in knows a host, and no host a plug-in.
        for (const QString& editor : m_upwards.mid(2))
            for (const QString& host : m_hostUpwards.mid(1)) {
                addArrow(editor, host);
                addArrow(host, editor);
            }
        Result result = check();
        QVERIFY(!result.passes);
        result.faults.sort();
        expected.sort();
        QCOMPARE(result.faults, expected);
    }

    void whatAFolderMayKnowPasses() {
        add("structure-editor/window/Whole.cpp",
            QStringLiteral("#include \"%1\"\n#include \"%2\"\n  #  include <%3>\n")
                .arg(includeOf("structure-editor/tree"), headerIn("structure-editor/window"),
                     includeOf("host")));
        add("memory-host/services/Whole.cpp",
            QStringLiteral("#include \"%1\"\n").arg(includeOf("memory-host/items")));
        const Result result = check();
        QVERIFY2(result.passes, qPrintable(result.faults.join(u'\n')));
    }

    void noSpellingHidesAnArrow_data() {
        QTest::addColumn<QString>("line");
        QTest::newRow("angle brackets") << "#include <%1>";
        QTest::newRow("blanks") << " # include \"%1\" // why";
        QTest::newRow("path out of the folder") << "#include \"../%1\"";
        QTest::newRow("path around") << "#include \"radius/../%1\"";
    }
    void noSpellingHidesAnArrow() {
        QFETCH(const QString, line);
        add("structure-editor/radius/Search.cpp",
            line.arg(includeOf("structure-editor/tree")) + '\n');
        const Result result = check();
        QVERIFY(!result.passes);
        QCOMPARE(result.faults.size(), 1);
    }

    void thePlainModelKnowsOnlyItself() {
        add("tests/support/plain/Step.h", "#pragma once\n#include <vector>\n");
        add("tests/support/plain/Rows.cpp", "#include \"Step.h\"\n#include <QString>\n");
        QVERIFY(check().passes);
        const QStringList others = {"host", "structure-editor/tree", "memory-host/items",
                                    "tests/support", "tests/structure-editor"};
        QStringList expected;
        for (const QString& other : others) {
            add(other + '/' + headerIn(other), "#pragma once\n");
            const QString path = other.startsWith("tests/") ? headerIn(other) : includeOf(other);
            add("tests/support/plain/to_" + headerIn(other) + ".cpp",
                "#include \"" + path + "\"\n");
            expected << QStringLiteral("tests/support/plain/to_%1.cpp includes %2/%1: "
                                       "tests/support/plain/ must not know %2/")
                            .arg(headerIn(other), other);
        }
        QStringList faults = check().faults;
        faults.sort();
        expected.sort();
        QCOMPARE(faults, expected);
    }

    void aFolderThatThePlanDoesNotKnowFails() {
        add("structure-editor/corner/Some.cpp", "int some;\n");
        const Result result = check();
        QVERIFY(!result.passes);
        QCOMPARE(result.faults.join(u'\n'),
                 "structure-editor/corner/Some.cpp: the plan in CheckRooms.cmake does not know "
                 "structure-editor/corner/");
    }
};

REGISTER_TEST(CheckRoomsTest)
#include "CheckRoomsTest.moc"
