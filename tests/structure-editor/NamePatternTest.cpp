// Name patterns against their plain definition, one QRegExp match a name: the dialect case by case,
// and generated patterns and names.
#include "names/NamePattern.h"
#include "PatternGenerator.h"
#include "PlainPattern.h"
#include "TestSupport.h"

using name_pattern::CharSet;

namespace {

QString show(const QString& expression, const std::string& name) {
    return QStringLiteral("|%1| on |%2|").arg(expression, QString::fromLatin1(name));
}

/// How many patterns were answered which way.
struct Tally {
    int patterns = 0;
    int fast = 0;
    int slow = 0;
    int invalid = 0;
    int cutOff = 0;  ///< slow ones, which QRegExp would take too long for
    int telling = 0; ///< fast ones that match some of the names, but not all
};

/// Answers by each way of asking, which must agree. The name is cut somewhere for the way by parts:
/// the prefix is read in two, with another part that is taken off again between them.
bool agree(NamePattern& pattern, const std::string& name, std::size_t cut, bool expected) {
    const std::string_view text = name;
    const std::size_t half = cut / 2;
    pattern.addPart(text.substr(0, half));
    pattern.addPart(text.substr(cut));
    pattern.matchesRest(text.substr(half));
    pattern.removePart();
    pattern.addPart(text.substr(half, cut - half));
    const bool forAll = pattern.answerForAll().value_or(expected);
    const bool byParts = pattern.matchesRest(text.substr(cut));
    pattern.removePart();
    pattern.removePart();
    return pattern.matches(name) == expected && forAll == expected && byParts == expected;
}

/// Compares one pattern with its plain definition on all names; empty when there is no difference.
QString difference(const QString& expression, const std::vector<std::string>& names, Tally& tally) {
    const QRegExp plain(expression);
    const name_pattern::Syntax syntax = name_pattern::parse(expression);
    NamePattern pattern(expression);
    ++tally.patterns;
    if (pattern.isValid() != plain.isValid())
        return show(expression, "") + " validity";
    // The number of look-aheads and what back-references mean is QRegExp's to say.
    if (!syntax.hasLookAheads && !syntax.hasBackReferences && syntax.wellFormed != plain.isValid())
        return show(expression, "") + " syntax";
    if (!plain.isValid())
        ++tally.invalid;
    else
        ++(pattern.isFast() ? tally.fast : tally.slow);
    int found = 0;
    for (std::size_t i = 0; i < names.size(); ++i) {
        const bool expected = matchesPlainly(plain, names[i]);
        const bool agrees = agree(pattern, names[i], i % (names[i].size() + 1), expected);
        if (!pattern.cutOff().isEmpty()) {
            ++tally.cutOff;
            return pattern.isFast() ? pattern.cutOff() : QString();
        }
        if (!agrees)
            return show(expression, names[i]);
        found += expected;
    }
    tally.telling += pattern.isFast() && found > 0 && found < static_cast<int>(names.size());
    return {};
}

/// Number of generated patterns; more of them, by hand, with PATTERNS in the environment.
int patternCount(int usual) {
    const int wanted = qEnvironmentVariableIntValue("PATTERNS");
    return wanted > 0 ? wanted : usual;
}

unsigned seed(unsigned usual) {
    const int wanted = qEnvironmentVariableIntValue("PATTERN_SEED");
    return wanted > 0 ? static_cast<unsigned>(wanted) : usual;
}

void report(const Tally& tally) {
    if (qEnvironmentVariableIsSet("PATTERNS"))
        std::fprintf(stderr,
                     "%d patterns: %d fast, %d slow, %d of them cut off, %d invalid; %d fast ones "
                     "tell names apart\n",
                     tally.patterns, tally.fast, tally.slow, tally.cutOff, tally.invalid,
                     tally.telling);
    // What is cut off is compared with nothing.
    QVERIFY(tally.cutOff <= tally.patterns / 1000);
}

/// The Latin-1 characters that an expression matches by themselves.
template <class Matches> CharSet matched(Matches matches) {
    CharSet set;
    for (std::size_t c = 0; c < set.size(); ++c)
        set[c] = matches(std::string(1, static_cast<char>(c)));
    return set;
}

} // namespace

class NamePatternTest : public test_support::TestCase {
    Q_OBJECT

    /// Requires that the pattern is answered as by QRegExp on the names.
    static void compare(const QString& expression, const std::vector<std::string>& names) {
        Tally tally;
        QCOMPARE(difference(expression, names, tally), QString());
    }

private slots:
    void aMatchCoversTheNameFromTheFirstCharacterToTheLast() {
        NamePattern pattern("/1ubq/A/Groups/.*/CA$");
        QVERIFY(pattern.matches("/1ubq/A/Groups/MET 1/CA"));
        QVERIFY(!pattern.matches("/1ubq/A/Groups/MET 1/CA1"));
        QVERIFY(!pattern.matches("x/1ubq/A/Groups/MET 1/CA"));
        QVERIFY(!pattern.matches("/1ubq/B/Groups/MET 1/CA"));
        QVERIFY(!pattern.matches("/1ubq/A/Groups/MET 1/CA\n"));
        QVERIFY(!pattern.matches(""));
        QVERIFY(pattern.isFast());
    }

    void caseMatters() {
        NamePattern pattern("/r/.*/Groups/.*/ca$");
        QVERIFY(!pattern.matches("/r/A/Groups/MET 1/CA"));
        QVERIFY(pattern.matches("/r/A/Groups/MET 1/ca"));
    }

    void aFieldMayRunAcrossSeparators() {
        NamePattern open("/r/.*/Groups/.*/.*$");
        QVERIFY(open.matches("/r/A/Groups/B/Groups/MET 1/CA"));
        QVERIFY(!open.matches("/r/A/CA"));
        NamePattern exact("/r/.*/Groups/A/.*$");
        QVERIFY(exact.matches("/r/B/Groups/A/CA"));
        QVERIFY(!exact.matches("/r/B/Groups/ALA 1/CA"));
    }

    void alternativesBeforeTheLastOneHaveNoEndAnchor() {
        NamePattern pattern("/r/A|B/Groups/.*/.*$");
        QVERIFY(pattern.matches("/r/A"));
        QVERIFY(pattern.matches("/r/A/Groups/MET 1/CA"));
        QVERIFY(pattern.matches("/r/A and whatever"));
        QVERIFY(!pattern.matches("/r/B/Groups/MET 1/CA")); // its match starts at the "B"
        QVERIFY(pattern.matches("B/Groups/MET 1/CA"));
    }

    void aRootsNameKeepsItsMeaning() {
        NamePattern pattern("/1.ubq(2)+[x]/.*/Groups/.*/.*$");
        QVERIFY(!pattern.matches("/1.ubq(2)+[x]/A/Groups/MET 1/CA"));
        QVERIFY(pattern.matches("/1-ubq22x/A/Groups/MET 1/CA"));
    }

    void anInvalidExpressionMatchesNothing() {
        for (const char* text : {"(", "a)", "[a", "a{2", "*a", "a**", "\\", "a{3,1}", "a{1025}",
                                 "]", "(?<a)", "\\0777", "[\\b]"}) {
            NamePattern pattern(QString::fromLatin1(text));
            QVERIFY2(!pattern.isValid(), text);
            QVERIFY2(!pattern.matches("a"), text);
            QVERIFY2(!pattern.matches(""), text);
            QCOMPARE(pattern.answerForAll(), std::optional<bool>(false));
            QVERIFY2(pattern.cutOff().isEmpty(), text);
        }
    }

    void everyEscapeMeansWhatItMeansToQRegExp() {
        for (int c = 1; c < 0x180; ++c) {
            const QString escape = u'\\' + QString(QChar(c));
            for (const QString& expression :
                 {escape, u'[' + escape + u']', QStringLiteral("[^") + escape + u']',
                  u'[' + escape + QStringLiteral("-z]"), QStringLiteral("[!-") + escape + u']',
                  escape + QStringLiteral("41"), QString(QChar(c)), u'[' + QString(QChar(c))}) {
                const QRegExp plain(expression);
                NamePattern pattern(expression);
                QVERIFY2(pattern.isValid() == plain.isValid(), qPrintable(expression));
                QVERIFY2(matched([&](const std::string& name) { return pattern.matches(name); }) ==
                             matched([&](const std::string& name) {
                                 return matchesPlainly(plain, name);
                             }),
                         qPrintable(expression));
            }
        }
    }

    void wordBoundariesKnowTheSameWords() {
        const QString expression("a\\b");
        const QRegExp plain(expression);
        NamePattern pattern(expression);
        for (int c = 0; c < 256; ++c) {
            const std::string name = std::string("a") + static_cast<char>(c);
            QCOMPARE(pattern.matches(name), matchesPlainly(plain, name));
        }
    }

    void theDialectIsQRegExps_data() {
        QTest::addColumn<QString>("expression");
        for (const char* text :
             {// characters and classes
              "", "a", ".", "a.b", "[abc]", "[a-c]", "[c-a]", "[^a-c]", "[]a]", "[^]a]", "[a-]",
              "[-a]", "[a-c-e]", "[a--c]", "[---]", "[^^]", "[a^]", "[\\d-z]", "[a-\\d]", "[[a]",
              "[$.|*+?(){}]", "[\\x41-\\x43]", "[\\0101-C]", "\\x41\\x42", "\\x00412", "\\x",
              "\\xg", "\\0101b", "\\08", "\\d+", "\\w\\W\\w", "\\s", "a\\/b", "\\.", "[a\\]b]",
              // quantifiers
              "a*", "a+b", "a?b", "a{2}", "a{2,}", "a{,2}b", "a{1,2}b", "a{}b", "a{,}b", "a{0}b",
              "(ab){2}", "(a|b){2,3}c", "(a*)*b", "(a+)+b", "(a?){3}b", "a{1024}", "a{00002}",
              "((a{2}){2}){2}", "(a{0,3}b){1,2}", "((a|)b){2,}", "()*a", "(){3}a",
              // alternatives
              "a|b", "a|", "|a", "a||b", "(|a)b", "ab|ac$", "(a|ab)(c|bcd)$", "a|b$", "(a|b$)c*",
              // conditions
              "^a", "a^b", "(^|b)a", "a$", "a$b", "(a$|ab)", "^*a", "$*a", "(^a|b)*c", "\\ba\\b",
              "a\\Bb", "(\\b|\\B)a", "\\b*a", "(a?\\b)*b", "(\\b\\B)?a", "a\\b\\W", "\\B", "\\b",
              "(^|\\b)(\\B|$)a*", "((^|\\b)|(\\B|$))*a", "a(\\b|c)b", "^^a$$",
              // look-aheads
              "(?=a)a", "(?!a).*", "(?!a)", "a(?=b)", "a(?!b).", "(?=.*b)a", "(?!.*b$)a.*$",
              "(?=a|b)[^b]", "((?=a)|b)a", "(?=a)*b", "(?=a){2}a", "((?!b).)*b", "(?=(?!b)a)a",
              "a(?=\\b)", "a(?=\\bb)b", "a(?=^b)b", "(?=^a)a", "a(?=$)", "(?!$)a", "(?=)", "(?!)",
              "(?:(?=a)a|(?!a)b)*$", "a(?!(?=b)b)", "(?=a(?=b))ab",
              // back-references, which are QRegExp's alone
              "(a)\\1", "(a|b)\\1", "(a)|\\1", "\\1", "(a)\\2", "(a*)b\\1$", "(?=(a))\\1b",
              "(a)\\10",
              // fields that open what another one closes, and separators inside classes
              "/r/(A/Groups/B)/C$", "/r/[A/Groups/]*/C$", "/r/A{2/Groups/}/C$",
              "/r/(A|B/Groups/.*)/C$", "/r/\\/Groups/\\/C$", "/r/(?:/Groups/):/C$"})
            QTest::newRow(text) << QString::fromLatin1(text);
        QTest::newRow("beyond Latin-1") << QStringLiteral(u"[\u0100a-\u0280]\u0280?");
        QTest::newRow("Latin-1") << QStringLiteral(u"\u00e9[\u00e8-\u00ea]*");
        QTest::newRow("NUL") << QStringLiteral("a") + QChar(0) + QStringLiteral("b");
        QTest::newRow("escaped NUL") << QStringLiteral("a\\") + QChar(0) + QStringLiteral("b");
    }

    void theDialectIsQRegExps() {
        QFETCH(QString, expression);
        std::vector<std::string> names = {"",
                                          "/r/A/Groups/B/C",
                                          "/r/BB/Groups/A/C",
                                          "/r/GG/C",
                                          "/r//Groups//C",
                                          "\xe9\xe9",
                                          "\xe9x",
                                          "ABC",
                                          "A1",
                                          "abcd",
                                          "a b",
                                          "a-b",
                                          "a/b",
                                          "\\",
                                          "a\\b",
                                          "$",
                                          "a.b",
                                          "aaaaaaab",
                                          "A\x02",
                                          std::string("a\0b", 3)};
        // All texts of up to four of these characters.
        const std::string_view characters = "abc- ";
        for (std::size_t from = 0, length = 0; length < 4; ++length) {
            const std::size_t to = names.size();
            if (length == 0)
                names.push_back("");
            for (std::size_t i = length == 0 ? to : from; i < names.size(); ++i) {
                if (names[i].size() != length)
                    continue;
                if (names.size() > 2000)
                    break;
                for (const char c : characters)
                    names.push_back(names[i] + c);
            }
            from = to;
        }
        compare(expression, names);
    }

    void generatedExpressionsAreAnsweredAsByQRegExp() {
        PatternGenerator generator(seed(1));
        Tally tally;
        for (int i = 0, count = patternCount(8000); i < count; ++i) {
            const QString expression = generator.shortExpression();
            std::vector<std::string> names;
            for (int k = 0; k < 60; ++k)
                names.push_back(generator.shortName());
            QCOMPARE(difference(expression, names, tally), QString());
        }
        report(tally);
        // The comparison would mean little if most were QRegExp's own answers, or alike for all.
        QVERIFY(tally.fast > tally.patterns / 2);
        QVERIFY(tally.telling > tally.patterns / 4);
        QVERIFY(tally.invalid > tally.patterns / 20);
        QVERIFY(tally.slow > 0);
    }

    void generatedFieldsAreAnsweredAsByQRegExp() {
        PatternGenerator generator(seed(2));
        Tally tally;
        for (int i = 0, count = patternCount(4000); i < count; ++i) {
            const std::string root = generator.rootName();
            const QString expression = generator.expressionFor(root);
            QCOMPARE(difference(expression, generator.namesBelow(root, 200), tally), QString());
        }
        report(tally);
        QVERIFY(tally.fast > tally.patterns / 2);
        QVERIFY(tally.telling > tally.patterns / 10);
        QVERIFY(tally.invalid > tally.patterns / 20);
    }

    void forgettingStatesChangesNoAnswer() {
        PatternGenerator generator(3);
        NamePattern::Limits limits;
        limits.automaton.memory = 300;
        int forgotten = 0;
        for (int i = 0; i < 1000; ++i) {
            const QString expression = generator.shortExpression();
            const name_pattern::Syntax syntax = name_pattern::parse(expression);
            if (!syntax.wellFormed || syntax.hasBackReferences || syntax.hasLookAheads)
                continue;
            const QRegExp plain(expression);
            NamePattern pattern(expression, limits);
            name_pattern::Automaton automaton(name_pattern::translate(syntax),
                                              std::make_shared<name_pattern::Alphabet>(syntax),
                                              limits.automaton);
            for (std::size_t k = 0; k < 100; ++k) {
                const std::string name = generator.shortName();
                const bool expected = matchesPlainly(plain, name);
                QVERIFY2(agree(pattern, name, k % (name.size() + 1), expected),
                         qPrintable(show(expression, name)));
                QCOMPARE(automaton.matches(name), expected);
            }
            forgotten += automaton.timesForgotten() > 0;
            QCOMPARE(pattern.cutOff(), QString());
        }
        QVERIFY2(forgotten > 100, qPrintable(QString::number(forgotten)));
    }

    void patternsThatQRegExpIsNotAskedAboutAreAnsweredAsByIt() {
        // Too costly to ask at each operation, but not to compare with once.
        const std::vector<std::string> names = {"", "aaa", "ab", "b", "ababc"};
        for (const QString& expression :
             {repeated("a?", 1300) + "$", repeated("(?:a|b?)", 700) + "$",
              QStringLiteral("(a?b?){350}$")}) {
            QVERIFY(!name_pattern::estimate(name_pattern::parse(expression)).compilable);
            compare(expression, names);
        }
    }

    void asManyLookAheadsAsQRegExpTakesAreValid() {
        for (const char* form :
             {"(?=a){%1}", "(?:(?=a)|b){%1}", "(?!a){0,%1}", "(?!a){%1,}x", "((?=a){%1}){0}",
              "(?=(?=a){%1})", "(?!b|((?=a)c){0,%1})d", "(?=(?=a){7}){%1}"})
            for (const int count : {12, 13, 14, 30}) {
                const QString expression = QString(form).arg(count);
                const bool expected = QRegExp(expression).isValid();
                QCOMPARE(expected, count <= 13);
                QVERIFY2(NamePattern(expression).isValid() == expected, qPrintable(expression));
            }
    }
};

REGISTER_TEST(NamePatternTest)
#include "NamePatternTest.moc"
