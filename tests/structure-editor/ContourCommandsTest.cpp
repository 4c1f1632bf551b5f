// Contours, and every command that asks for a level: what is typed, and what is sent of it.
#include "CommandTools.h"
#include "DataPoint.h"
#include "RecordingTestCase.h"
#include "RepaintCount.h"
#include "Space.h"
#include "items/Building.h"
#include "items/SpaceLock.h"
#include "tree/TreeView.h"
#include "window/ListBox.h"

#include <QInputDialog>
#include <QLocale>

#include <stdexcept>

using namespace command_tools;
using namespace window_tools;
using TAVIK::Compound;
using TAVIK::Space;

namespace {

struct LevelCommand {
    const char* slot;
    const char* label;
    const char* question;
    const char* command;
    const char* argument;
};

const LevelCommand commands[] = {
    {"MakeContourHi", "ContourHi", "Enter minimum contour value", "AddContourHi", "ContourHigh"},
    {"MakeContourLo", "ContourLo", "Enter maximum contour value", "AddContourLo", "ContourLow"},
    {"MakeSubSurface", "SubSurface", "Enter minimum contour value for surface", "SubSurface",
     "AddSurface"},
};

struct Typed {
    const char* text;
    const char* level; ///< null when nothing is sent
};

const Typed texts[] = {
    {"0", "0"},
    {"-1.5", "-1.5"},
    {"1e3", "1000"},
    {"+2", "2"},
    {".5", "0.5"},
    {"1E-2", "0.01"},
    {" 2.5 ", "2.5"},
    {"inf", "inf"},
    {"-inf", "-inf"},
    {"nan", "nan"},
    {"1,5", nullptr},
    {"1.000,5", nullptr},
    {"1,000", nullptr},
    {"1 000", nullptr},
    {"abc", nullptr},
    {"1.5x", nullptr},
    {"0x10", nullptr},
    {"1e400", nullptr},
    {"", nullptr},
    {" ", nullptr},
    {"--1", nullptr},
    {"\xc2\xbd", nullptr},
    {"infinite", nullptr},
    {"\xd9\xa1", nullptr},     // an Arabic one
    {"\xef\xbc\x91", nullptr}, // a wide one
    {"1\xc2\xa0"
     "000",
     nullptr}, // a blank that does not break
    {"\xe2\x88\x92"
     "1",
     "-1"}, // a minus sign of its own is one
    {"+inf", "inf"},
    {"NaN", "nan"},
    {"-0", "-0"},
    {"1e308", "1e+308"},
    {"1d3", nullptr},
    {"1e", nullptr},
    {"5 6", nullptr},
    {"\t7", "7"},
};

} // namespace

class ContourCommandsTest : public RecordingTestCase {
    Q_OBJECT

    bool call(const LevelCommand& command, const std::function<void(QInputDialog&)>& answer) {
        return withDialog<QInputDialog>(
            [&] { QVERIFY(QMetaObject::invokeMethod(m_window.get(), command.slot)); }, answer);
    }
    static std::function<void(QInputDialog&)> type(const char* text) {
        return [text](QInputDialog& dialog) {
            dialog.setTextValue(QString::fromUtf8(text));
            pressEnter(dialog);
        };
    }
    static QStringList sent(const LevelCommand& command, const char* level) {
        return level ? QStringList(RecordingPlugins::sent(command.command, command.argument, level))
                     : QStringList();
    }
    static void addCommandRows() {
        QTest::addColumn<int>("index");
        for (int i = 0; i < int(std::size(commands)); ++i)
            QTest::newRow(commands[i].slot) << i;
    }

private slots:
    void cleanup() override {
        QLocale::setDefault(QLocale::c());
        RecordingTestCase::cleanup();
    }

    void theQuestionIsTheCommandsOwn_data() { addCommandRows(); }
    void theQuestionIsTheCommandsOwn() {
        QFETCH(int, index);
        showWindow();
        QVERIFY(call(commands[index], [&](QInputDialog& dialog) {
            QCOMPARE(dialog.windowTitle(), "Limit");
            QCOMPARE(dialog.labelText(), commands[index].question);
            QCOMPARE(dialog.textValue(), "0");
            QCOMPARE(dialog.inputMode(), QInputDialog::TextInput);
            QCOMPARE(dialog.textEchoMode(), QLineEdit::Normal);
            QVERIFY(!dialog.parentWidget());
            QVERIFY(dialog.isModal());
            QCOMPARE(takeHostLog(), QStringList()); // nothing is sent before the answer
            pressEnter(dialog);
        }));
        QCOMPARE(takeHostLog(), sent(commands[index], "0"));
    }

    void theMenuEntrySendsTheSame_data() { addCommandRows(); }
    void theMenuEntrySendsTheSame() {
        QFETCH(int, index);
        showWindow();
        QVERIFY(withDialog<QInputDialog>(
            [&] {
                trigger(*m_window, QStringLiteral("Add"),
                        QString::fromLatin1(commands[index].label));
            },
            type("-1.5")));
        QCOMPARE(takeHostLog(), sent(commands[index], "-1.5"));
    }

    void aNumberIsSentAndAnythingElseIsNot_data() {
        QTest::addColumn<int>("index");
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<QByteArray>("level");
        for (int i = 0; i < int(std::size(commands)); ++i)
            for (const Typed& typed : texts)
                QTest::addRow("%s '%s'", commands[i].slot, typed.text)
                    << i << QByteArray(typed.text) << QByteArray(typed.level);
    }
    void aNumberIsSentAndAnythingElseIsNot() {
        QFETCH(int, index);
        QFETCH(QByteArray, text);
        QFETCH(QByteArray, level);
        showWindow();
        const RepaintCount repaints;
        QVERIFY(call(commands[index], type(text.constData())));
        QCOMPARE(repaints.calls(), 1);
        QCOMPARE(takeHostLog(),
                 sent(commands[index], level.isNull() ? nullptr : level.constData()));
        QCOMPARE(takeMessages(), QStringList());
    }

    void aCommaIsNoPointInAnyLocale_data() { addCommandRows(); }
    void aCommaIsNoPointInAnyLocale() {
        QFETCH(int, index);
        QLocale::setDefault(QLocale(QLocale::German, QLocale::Germany));
        showWindow();
        QVERIFY(call(commands[index], type("1,5")));
        QCOMPARE(takeHostLog(), QStringList());
        QVERIFY(call(commands[index], [](QInputDialog& dialog) {
            QCOMPARE(dialog.textValue(), "0");
            type("1.5")(dialog);
        }));
        QCOMPARE(takeHostLog(), sent(commands[index], "1.5"));
    }

    void aCancelSendsNothingAndRepaintsOnce_data() { addCommandRows(); }
    void aCancelSendsNothingAndRepaintsOnce() {
        QFETCH(int, index);
        showWindow();
        const RepaintCount repaints;
        QVERIFY(call(commands[index], [](QInputDialog& dialog) {
            dialog.setTextValue(QStringLiteral("7"));
            pressEscape(dialog);
        }));
        QCOMPARE(repaints.calls(), 1);
        QVERIFY(call(commands[index], [](QInputDialog& dialog) {
            dialog.setTextValue(QStringLiteral("7"));
            dialog.close();
        }));
        QCOMPARE(repaints.calls(), 2);
        QCOMPARE(takeHostLog(), QStringList());
    }

    void withoutThePluginNothingHappens_data() { addCommandRows(); }
    void withoutThePluginNothingHappens() {
        QFETCH(int, index);
        const LevelCommand& command = commands[index];
        showWindow(false);
        const QStringList before = rows(*m_window);
        const RepaintCount repaints;
        QVERIFY(call(command, type("1")));
        QCOMPARE(repaints.calls(), 1);
        QCOMPARE(takeHostLog(),
                 QStringList(QStringLiteral("Plug-in Create/SolidVolume is not loaded (%1 %2 from "
                                            "Vuxo)")
                                 .arg(command.command, command.argument)));
        QCOMPARE(rows(*m_window), before);
    }

    void noGuardIsTakenAndNoTreeNeeded_data() { addCommandRows(); }
    void noGuardIsTakenAndNoTreeNeeded() {
        QFETCH(int, index);
        showWindow();
        {
            const memory_host::SpaceLock lock;
            QVERIFY(call(commands[index], type("1")));
        }
        QCOMPARE(takeHostLog(), sent(commands[index], "1"));
        QVERIFY(call(commands[index], [this](QInputDialog& dialog) {
            destroyElsewhere(m_shown);
            type("2")(dialog);
        }));
        QCOMPARE(takeHostLog(), sent(commands[index], "2"));
        QCOMPARE(takeMessages(), QStringList(deleted));
        QVERIFY(rows(*m_window).isEmpty());
        QVERIFY(call(commands[index], type("3")));
        QCOMPARE(takeHostLog(), sent(commands[index], "3"));
    }

    void aPluginThatThrowsIsLoggedAndDoesNoHarm_data() { addCommandRows(); }
    void aPluginThatThrowsIsLoggedAndDoesNoHarm() {
        QFETCH(int, index);
        showWindow();
        m_plugins->during([] { throw std::runtime_error("no contour today"); });
        const RepaintCount repaints;
        QVERIFY(call(commands[index], type("1")));
        QCOMPARE(repaints.calls(), 1);
        const QStringList log = takeHostLog();
        QCOMPARE(log.size(), 2);
        QVERIFY2(log.back().contains("no contour today"), qPrintable(log.back()));
        m_plugins->during({});
        QVERIFY(call(commands[index], type("1")));
        QCOMPARE(takeHostLog(), sent(commands[index], "1"));
    }

    void aPluginMayDeleteTheShownItemOrEndTheWindow_data() { addCommandRows(); }
    void aPluginMayDeleteTheShownItemOrEndTheWindow() {
        QFETCH(int, index);
        showWindow();
        m_plugins->during([this] { destroyElsewhere(m_shown); });
        QVERIFY(call(commands[index], type("1")));
        QVERIFY(rows(*m_window).isEmpty());
        QVERIFY(entries(*m_window).isEmpty());
        QCOMPARE(takeMessages(), QStringList(deleted));
        m_plugins->during([this] { m_window.reset(); });
        QVERIFY(call(commands[index], type("1")));
        QVERIFY(!m_window);
        QCOMPARE(takeHostLog(), sent(commands[index], "1") + sent(commands[index], "1"));
    }

    void aWindowThatGoesWhileTheLevelIsAskedSendsNothing_data() { addCommandRows(); }
    void aWindowThatGoesWhileTheLevelIsAskedSendsNothing() {
        QFETCH(int, index);
        showWindow();
        QVERIFY(call(commands[index], [this](QInputDialog& dialog) {
            m_window.reset();
            type("1")(dialog);
        }));
        QCOMPARE(takeHostLog(), QStringList());
    }
};

REGISTER_TEST(ContourCommandsTest)
#include "ContourCommandsTest.moc"
