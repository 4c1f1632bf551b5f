// Name patterns that must not get out of bounds in time, in memory, or in the work that they make.
#include "PlainPattern.h"
#include "TestSupport.h"
#include "names/NamePattern.h"

#include <QElapsedTimer>

#include <random>
#include <vector>

namespace {

/// Names of 40 characters that are a or b, by chance.
std::vector<std::string> namesOfTwoCharacters(int count) {
    std::mt19937 random(1);
    std::vector<std::string> names(static_cast<std::size_t>(count));
    for (std::string& name : names)
        for (int i = 0; i < 40; ++i)
            name += random() % 2 ? 'a' : 'b';
    return names;
}

/// Names as those of a ribosome's atoms.
std::vector<std::string> manyNames(int count) {
    std::vector<std::string> names;
    for (int i = 0; i < count; ++i)
        names.push_back("/6zu5/L" + std::to_string(i % 40) + "/Groups/" + "ACGU"[i % 4] + ' ' +
                        std::to_string(i / 20) + '/' + (i % 3 ? "C" : "O") +
                        std::to_string(i % 20));
    return names;
}

} // namespace

class NamePatternBoundsTest : public test_support::TestCase {
    Q_OBJECT

private slots:
    void repetitionsInRepetitionsAreAnsweredWhereTheNameIsTooShort() {
        NamePattern pattern("((((a{500}){500}){500}){500})");
        QVERIFY(pattern.isValid());
        QVERIFY(!pattern.matches(std::string(1000, 'a')));
        QCOMPARE(pattern.cutOff(), QString());
    }

    void aPatternThatIsTooLargeIsCutOffInOneLine() {
        NamePattern pattern("/r/(.{0,700}\n){0,700}" + repeated("(a{0,900}){0,900}", 10));
        QVERIFY(!pattern.matches("/r/x"));
        const QString line = pattern.cutOff();
        QCOMPARE(line, QString("Name pattern \"/r/(.{0,700}?){0,700}" +
                               repeated("(a{0,900}){0,900}", 10).left(39) +
                               "...\" cut off: with its repetitions written out it is longer "
                               "than 500000 characters"));
        QVERIFY(!pattern.matches("/r/"));
        QCOMPARE(pattern.answerForAll(), std::optional<bool>(false));
        QCOMPARE(pattern.cutOff(), line);
    }

    void longAndExplosivePatternsEndInBoundedTime_data() {
        QTest::addColumn<QString>("expression");
        QTest::addColumn<bool>("isCutOff");
        const auto row = [](const char* title, const QString& expression, bool isCutOff) {
            QTest::newRow(title) << expression << isCutOff;
        };
        row("open brackets", repeated("(", 100000), false);
        row("brackets", repeated("(", 49999) + "/" + repeated(")", 49999), false);
        row("characters", repeated("a", 100000), false);
        row("dots", repeated(".", 100000), false);
        row("maybe dots", repeated(".?", 50000), false);
        row("stars", repeated(".*", 50000), false);
        row("classes", repeated("[a-z]", 20000), false);
        row("alternatives", repeated("/6zu5/L1|", 11000), false);
        row("residues", "/6zu5/.*/Groups/(" + repeated("ALA 1|", 16000) + "G .*)/.*$", false);
        row("groups", repeated("(.?|A)", 16000), false);
        row("conditions", repeated("((^|\\b)|(\\B|$))", 6000), false);
        row("star of star", "(a*)*b", false);
        row("stars in a row", "/6zu5/(.*)*(.*)*x$", false);
        row("pluses", "((.+)+)+x", false);
        row("counted dots", "/6zu5/.{0,1000}.{0,1000}.{0,1000}$", false);
        row("long gap", ".*[0-9].{1000}", false);
        row("many states", "/6zu5/(.*[0-9A-G]){12}.{8}$", false);
        row("look-aheads in one another", repeated("(?=.*", 12) + "x" + repeated(")", 12), true);
        row("look-aheads in a row", repeated("(?=.*[0-9].*/)", 13), false);
        row("too many look-aheads", repeated("(?=.*[0-9].*/)", 14), false);
        row("repeated look-aheads", repeated("((?=.*)){0,848}|", 600), false);
        row("repeated look-aheads in another",
            "(?!((?=[02468]?)(?:C{13,})?){415})|((.*\\d){43,}){840}", false);
        row("costly look-aheads", repeated("(?=(C{51,}){4,200}){2}", 6), true);
        row("ways with look-aheads", "(" + repeated("(?=.*[0-9].*[A-Z].*x)|", 13) + ".)*$", false);
        row("counted and counted", "/6zu5/(.{0,700}){0,700}$", true);
        row("counts of nothing", "(((((){1000}){1000}){1000}){1000}){1000}", true);
        row("deep look-aheads", repeated("(?=", 25000) + repeated(")", 25000), true);
        row("groups and a reference", repeated("(.?)", 20000) + "\\1", true);
        row("conditions and a reference", repeated("((^|\\b)|(\\B|$))", 40) + "\\1", true);
        row("look-aheads and a reference",
            "(.)" + repeated(".*(?=.*", 8) + "\\1" + repeated("y)", 8), true);
    }

    void longAndExplosivePatternsEndInBoundedTime() {
        QFETCH(QString, expression);
        QFETCH(bool, isCutOff);
        QElapsedTimer timer;
        timer.start();
        NamePattern pattern(expression);
        for (const std::string& name : manyNames(20000))
            pattern.matches(name);
        QCOMPARE(!pattern.cutOff().isEmpty(), isCutOff);
        QVERIFY(!pattern.cutOff().contains(u'\n'));
        QVERIFY(pattern.cutOff().size() < 300);
        QVERIFY(timer.elapsed() < 30000); // well below a second each, on a machine that is free
    }

    // The states of ".*a.{12}" tell apart what the last twelve characters were.

    void manyStatesAreAnsweredInLittleMemory() {
        const QString expression(".*a.{12}$");
        const QRegExp plain(expression);
        NamePattern::Limits limits;
        limits.automaton.memory = 20000;
        NamePattern pattern(expression, limits);
        for (const std::string& name : namesOfTwoCharacters(3000))
            QCOMPARE(pattern.matches(name), matchesPlainly(plain, name));
        QCOMPARE(pattern.cutOff(), QString());
    }

    void workWithoutEndIsCutOff() {
        NamePattern::Limits limits;
        limits.automaton.memory = 20000;
        limits.automaton.work = 1e6;
        limits.automaton.workPerCharacter = 1;
        for (const bool byParts : {false, true}) {
            NamePattern pattern(".*a.{12}$", limits);
            for (const std::string& name : namesOfTwoCharacters(3000)) {
                if (byParts) {
                    pattern.addPart(std::string_view(name).substr(0, 30));
                    pattern.matchesRest(std::string_view(name).substr(30));
                    pattern.removePart();
                } else {
                    pattern.matches(name);
                }
            }
            QCOMPARE(pattern.cutOff(),
                     QStringLiteral("Name pattern \".*a.{12}$\" cut off: its repetitions and "
                                    "alternatives leave too many possibilities"));
            QVERIFY(!pattern.matches("aaaaaaaaaaaaa"));
        }
    }

    // QRegExp keeps room for as many groups as a back-reference counts, in each state.
    void aBackReferenceToAGroupFarAwayIsNotAsked_data() {
        QTest::addColumn<QString>("expression");
        QTest::addColumn<bool>("isCutOff");
        QTest::newRow("near") << "(a)b{1000}\\1" << false;
        QTest::newRow("to none") << "a\\99" << false;
        QTest::newRow("far") << "ab{1000}\\60000" << true;
        QTest::newRow("beyond all numbers") << "a\\" + repeated("7", 30) << true;
    }
    void aBackReferenceToAGroupFarAwayIsNotAsked() {
        QFETCH(QString, expression);
        QFETCH(bool, isCutOff);
        NamePattern pattern(expression);
        const std::string name = "a" + std::string(1000, 'b') + "a";
        const bool answer = pattern.matches(name);
        QCOMPARE(pattern.cutOff().endsWith("it is too large for look-aheads or back-references"),
                 isCutOff);
        if (!isCutOff)
            QCOMPARE(answer, QRegExp(expression).indexIn(QString::fromStdString(name)) == 0);
    }

    void timeInQRegExpIsBounded() {
        NamePattern::Limits limits;
        limits.seconds = 1e-3;
        limits.secondsPerName = 0;
        NamePattern pattern("/6zu5/(.*)\\1(.*)\\2x?", limits);
        int answers = 0;
        for (const std::string& name : manyNames(20000)) {
            pattern.matches(name);
            answers += pattern.cutOff().isEmpty();
        }
        QVERIFY(answers > 0);
        QVERIFY(answers < 20000);
        QVERIFY(pattern.cutOff().contains("take too long"));
    }

    void aSingleMatchThatTakesTooLongIsNotStarted() {
        const QString expression = "(.*)\\1" + repeated("(.*)", 20) + "\\2$";
        NamePattern pattern(expression);
        QVERIFY(pattern.isValid());
        QCOMPARE(pattern.matches("/r/x"), matchesPlainly(QRegExp(expression), "/r/x"));
        QCOMPARE(pattern.cutOff(), QString());
        QVERIFY(!pattern.matches(std::string(100000, 'a')));
        QVERIFY(pattern.cutOff().contains("take too long"));
    }
};

REGISTER_TEST(NamePatternBoundsTest)
#include "NamePatternBoundsTest.moc"
