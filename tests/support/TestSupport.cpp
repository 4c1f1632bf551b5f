#include "TestSupport.h"

#include "DataMaker.h"
#include "HostUnderTest.h"
#include "Space.h"

#include <QApplication>
#include <QFile>

#include <cstdio>
#include <map>
#include <memory>

namespace test_support {

namespace {

QStringList messages;
QStringList hostLog;

void takeMessage(QtMsgType type, const QMessageLogContext&, const QString& text) {
    if (type == QtFatalMsg) {
        std::fprintf(stderr, "fatal: %s\n", qPrintable(text));
        std::abort();
    }
    // The screen that the tests draw on is none, and says so.
    if (!text.startsWith(QLatin1String("This plugin does not support ")))
        messages << text;
}

std::map<std::string, std::function<QObject*()>>& tests() {
    static std::map<std::string, std::function<QObject*()>> all;
    return all;
}

void emptySpace() {
    TAVIK::Space* space = TAVIK::Space::instance();
    while (space->ChildBegin() != space->ChildEnd())
        TAVIK::DataMaker::Destroy(*space->ChildBegin());
}

} // namespace

QStringList TestCase::takeMessages() {
    return std::exchange(messages, {});
}

QStringList TestCase::takeHostLog() {
    return std::exchange(hostLog, {});
}

QString TestCase::structure(const QString& name) {
    const QString path = qEnvironmentVariable("STRUCTURES") + u'/' + name;
    if (!QFile::exists(path))
        qFatal("%s is missing: ./test fetches the structures that the tests read",
               qPrintable(path));
    return path;
}

void TestCase::init() {
    qInstallMessageHandler(takeMessage);
    host_under_test::hearLog([](const std::string& line) { hostLog << QString::fromLatin1(line); });
    messages.clear();
    hostLog.clear();
    emptySpace();
}

void TestCase::cleanup() {
    emptySpace();
    qInstallMessageHandler(nullptr);
    host_under_test::hearLog({});
    QCOMPARE(takeMessages().join(u'\n'), QString());
    QCOMPARE(takeHostLog().join(u'\n'), QString());
}

void registerTest(const char* name, const std::function<QObject*()>& make) {
    tests()[name] = make;
}

} // namespace test_support

// The first argument names the class to run; the rest goes to the test library.
int main(int argc, char** argv) {
    QApplication application(argc, argv);
    host_under_test::start(QStringLiteral(TEST_DATA_FOLDER));
    const auto found = argc > 1 ? test_support::tests().find(argv[1]) : test_support::tests().end();
    if (found == test_support::tests().end()) {
        std::fprintf(stderr, "usage: %s CLASS [OPTION...], where CLASS is one of:\n", argv[0]);
        for (const auto& [name, make] : test_support::tests())
            std::fprintf(stderr, "  %s\n", name.c_str());
        return 2;
    }
    const std::unique_ptr<QObject> test(found->second());
    argv[1] = argv[0];
    return QTest::qExec(test.get(), argc - 1, argv + 1);
}
