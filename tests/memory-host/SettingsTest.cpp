#include "services/Settings.h"
#include "Config.h"
#include "TestSupport.h"

#include <QFile>
#include <QTemporaryDir>

#include <memory>

using namespace memory_host;

class SettingsTest : public test_support::TestCase {
    Q_OBJECT

    std::unique_ptr<QTemporaryDir> m_folder;

    QString path() const { return m_folder->filePath("settings.ini"); }
    void write(const QByteArray& text) {
        QFile file(path());
        QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
        QCOMPARE(file.write(text), text.size());
    }
    static std::string get(const std::string& section, const std::string& key) {
        bool ok = false;
        const std::string text = Config::GetSetting(section, key).ToString(&ok);
        return ok ? text : "(none)";
    }

private slots:
    void init() override {
        TestCase::init();
        m_folder = std::make_unique<QTemporaryDir>();
        QVERIFY(m_folder->isValid());
        setSettingsFile(path());
    }
    void cleanup() override {
        setSettingsFile(QString());
        m_folder.reset();
        TestCase::cleanup();
    }

    void aSettingIsFoundBySectionAndKey() {
        write("[Vuxo]\nHelp = structure-editor\n[Other]\nHelp=other\nempty=\n");
        QCOMPARE(get("Vuxo", "Help"), "structure-editor");
        QCOMPARE(get("Other", "Help"), "other");
        QCOMPARE(get("Other", "empty"), "");
        QCOMPARE(get("Other", "help"), "(none)");
        QCOMPARE(get("other", "Help"), "(none)");
        QCOMPARE(get("", "Help"), "(none)");
    }

    void aMissingSettingIsEmptyAndSaysSo() {
        write("[Vuxo]\n");
        bool ok = true;
        QCOMPARE(Config::GetSetting("Vuxo", "Help").ToString(&ok), "");
        QVERIFY(!ok);
        QCOMPARE(Config::GetSetting("Vuxo", "Help").ToString(nullptr), "");
    }

    void theFileNeedNotExist() {
        QCOMPARE(get("Vuxo", "Help"), "(none)");
        setSettingsFile(QString());
        QCOMPARE(get("Vuxo", "Help"), "(none)");
    }

    void theDefaultSettingsStandInForWhatTheFileDoesNotHold() {
        const QString defaults = m_folder->filePath("defaults.ini");
        setDefaultSettingsFile(defaults);
        QCOMPARE(get("Vuxo", "Help"), "(none)");
        QFile file(defaults);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("[Vuxo]\nHelp = shipped\nOther = shipped\n");
        file.close();
        QCOMPARE(get("Vuxo", "Help"), "shipped");
        write("[Vuxo]\nHelp =\n");
        QCOMPARE(get("Vuxo", "Help"), "");
        QCOMPARE(get("Vuxo", "Other"), "shipped");
        setDefaultSettingsFile(QString());
        QCOMPARE(get("Vuxo", "Other"), "(none)");
    }

    void aValueIsTheRestOfItsLine() {
        write("[A]\r\n k = a, b; c = \"d\" \\n # e \t\r\n");
        QCOMPARE(get("A", "k"), "a, b; c = \"d\" \\n # e");
    }

    void commentsAndEmptyLinesDoNotCount() {
        write("\xef\xbb\xbf# first\n\n  ; second\n[ A ]\n  # k = 1\nk = 2");
        QCOMPARE(get("A", "k"), "2");
    }

    void theLastOfTwoSettingsHolds() {
        write("[A]\nk=1\n[B]\nk=2\n[A]\nk=3\n");
        QCOMPARE(get("A", "k"), "3");
        QCOMPARE(get("B", "k"), "2");
    }

    void aChangeOfTheFileIsSeenAtOnce() {
        write("[A]\nk=1\n");
        QCOMPARE(get("A", "k"), "1");
        write("[A]\nk=2\n");
        QCOMPARE(get("A", "k"), "2");
        QVERIFY(QFile::remove(path()));
        QCOMPARE(get("A", "k"), "(none)");
        write("[A]\nk=2\n");
        QCOMPARE(get("A", "k"), "2");
    }

    void valuesAreHandedOnAsLatin1() {
        write("[A]\nutf8=caf\xc3\xa9\nlatin1=caf\xe9\nk\xc3\xa9y=1\n");
        QCOMPARE(get("A", "utf8"), "caf\xe9");
        QCOMPARE(get("A", "latin1"), "caf\xe9");
        QCOMPARE(get("A", "k\xe9y"), "1");
    }

    void aWrongLineIsNamedOnceAChangeAndTheRestHolds() {
        write("[A]\nwrong line\nk=1\n=2\n[B\n" + QByteArray(100, 'x') + "\n");
        for (int i = 0; i < 2; ++i)
            QCOMPARE(get("A", "k"), "1");
        const QString file = "Settings file " + path();
        const QString is = " is neither [section], key = value nor a # comment";
        QCOMPARE(takeHostLog(),
                 QStringList({file + ", line 2: 'wrong line'" + is, file + ", line 4: '=2'" + is,
                              file + ", line 5: '[B'" + is,
                              file + ", line 6: '" + QString(60, 'x') + "...'" + is}));
        write("[A]\nwrong line\nk=2\n");
        QCOMPARE(get("A", "k"), "2");
        QCOMPARE(takeHostLog(), QStringList(file + ", line 2: 'wrong line'" + is));
    }

    void tenThousandWrongLinesAreTenMessagesAndACount() {
        QByteArray lines;
        for (int i = 0; i != 10'000; ++i)
            lines += "wrong line\n";
        write("[A]\n" + lines + "k=1\n");
        for (int i = 0; i < 2; ++i)
            QCOMPARE(get("A", "k"), "1");
        QStringList log = takeHostLog();
        QCOMPARE(log.size(), 11);
        QVERIFY2(log.at(9).startsWith("Settings file " + path() + ", line 11: 'wrong line'"),
                 qPrintable(log.at(9)));
        QCOMPARE(log.at(10), "Settings file " + path() + ": 9990 more lines are wrong");
        write("[A]\nk=2\n" + lines.left(11 * 11));
        QCOMPARE(get("A", "k"), "2");
        log = takeHostLog();
        QCOMPARE(log.size(), 11);
        QCOMPARE(log.at(10), "Settings file " + path() + ": 1 more line is wrong");
    }

    void aValueThatTheHostsTextCannotHoldIsNamed() {
        write("[A]\nk=\xe2\x82\xac 5\n");
        QCOMPARE(get("A", "k"), "? 5");
        QCOMPARE(takeHostLog(),
                 QStringList("Settings file " + path() +
                             ", line 2: the value of 'k' has characters outside of Latin-1"));
    }

    void whatCannotBeReadIsNamedOnce() {
        setSettingsFile(m_folder->path());
        QCOMPARE(get("A", "k"), "(none)");
        QCOMPARE(get("A", "k"), "(none)");
        QCOMPARE(takeHostLog(),
                 QStringList("Settings file " + m_folder->path() + ": it is not a file"));
        setSettingsFile(path());
        write("[A]\nk=1\n" + QByteArray(1 << 20, '\n'));
        QCOMPARE(get("A", "k"), "(none)");
        QCOMPARE(takeHostLog(),
                 QStringList("Settings file " + path() + ": it is larger than 1 MB"));
    }
};

REGISTER_TEST(SettingsTest)
#include "SettingsTest.moc"
