// The frame of plug-ins without a window. What COMMAND_PLUGIN makes of it is a plug-in of its own,
// which ExamplePluginsTest loads.
#include "CommandPlugin.h"

#include "TestSupport.h"

#include <stdexcept>

namespace {

struct Call {
    int number = 0;
    const void* data = nullptr;
    PluginResult* result = nullptr;
} called;

void writing(void* data, PluginResult* result) {
    called = {1, data, result};
}
void reading(const void* data, PluginResult* result) {
    called = {2, data, result};
}
void failing(void*, PluginResult* result) {
    result->SetResultCode(PluginResult::Failure);
    result->SetResultText("it did not work");
}
void throwing(void*, PluginResult*) {
    throw std::runtime_error("thrown by a command");
}

} // namespace

class CommandPluginTest : public test_support::TestCase {
    Q_OBJECT

    const CommandPlugin m_plugin{
        {"Write", &writing}, {"Read", &reading}, {"Fail", &failing}, {"Throw", &throwing}};
    PluginResult m_result;

    void command(const char* name, void* data = nullptr) {
        m_result = {};
        m_plugin.Command(name, data, &m_result);
    }
    void commandC(const char* name, const void* data = nullptr) {
        m_result = {};
        m_plugin.CommandC(name, data, &m_result);
    }
    void compareResult(int code, const std::string& text) {
        QCOMPARE(int(m_result.GetResultCode()), code);
        QCOMPARE(m_result.GetResultText(), text);
    }

private slots:
    void init() override {
        TestCase::init();
        called = {};
    }

    void aCommandGetsDataAndResult() {
        int data = 0;
        command("Write", &data);
        QCOMPARE(called.number, 1);
        QCOMPARE(called.data, &data);
        QCOMPARE(called.result, &m_result);
        compareResult(0, "");
    }

    void whatOnlyReadsIsFoundByBothEntryPoints() {
        int data = 0;
        commandC("Read", &data);
        QCOMPARE(called.number, 2);
        QCOMPARE(called.data, &data);
        called = {};
        command("Read", &data);
        QCOMPARE(called.number, 2);
        QCOMPARE(called.data, &data);
        QCOMPARE(called.result, &m_result);
    }

    void whatWritesIsRefusedReadOnlyData() {
        const int data = 0;
        commandC("Write", &data);
        QCOMPARE(called.number, 0);
        compareResult(1, "CommandC 'Write' needs writable data");
    }

    void unknownNamesAreAnsweredWithCode10_data() {
        QTest::addColumn<QByteArray>("name");
        for (const char* name : {"Dance", "write", "READ", "Read ", "", "100%s %d", "'"})
            QTest::newRow(name) << QByteArray(name);
    }
    void unknownNamesAreAnsweredWithCode10() {
        QFETCH(const QByteArray, name);
        command(name.constData());
        compareResult(10, "Command '" + name.toStdString() + "' not recognized");
        commandC(name.constData());
        compareResult(10, "CommandC '" + name.toStdString() + "' not recognized");
        QCOMPARE(called.number, 0);
    }

    void aNullNameWarnsAndIsUnknown() {
        command(nullptr);
        compareResult(10, "Command '' not recognized");
        commandC(nullptr);
        compareResult(10, "CommandC '' not recognized");
        const QStringList messages = takeMessages();
        QCOMPARE(messages.size(), 2);
        for (const QString& message : messages)
            QVERIFY(message.startsWith("In file ../../include/CommandPlugin, line "));
    }

    void aCommandAnswersForItself() {
        command("Fail");
        compareResult(1, "it did not work");
    }

    void anExceptionPasses() {
        QVERIFY_EXCEPTION_THROWN(command("Throw"), std::runtime_error);
        command("Write");
        QCOMPARE(called.number, 1);
    }

    void whatIsNoCommandWarnsAndIsLeftOut() {
        const CommandPlugin plugin{{"", &writing},
                                   {"Null", static_cast<CommandPlugin::Action>(nullptr)},
                                   {"Twice", &writing},
                                   {"Twice", &reading}};
        const QStringList messages = takeMessages();
        QCOMPARE(messages.size(), 3);
        for (const QString& message : messages)
            QVERIFY(message.startsWith("ASSERT: \""));
        for (const char* name : {"", "Null"}) {
            m_result = {};
            plugin.Command(name, nullptr, &m_result);
            QCOMPARE(int(m_result.GetResultCode()), 10);
        }
        plugin.Command("Twice", nullptr, &m_result);
        QCOMPARE(called.number, 1);
    }
};

REGISTER_TEST(CommandPluginTest)
#include "CommandPluginTest.moc"
