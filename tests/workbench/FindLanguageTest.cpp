// What the find box makes of a text: which conditions, in which order, or what is wrong with it.
#include "FindLanguage.h"
#include "TestSupport.h"

#include <QElapsedTimer>

using namespace workbench;

class FindLanguageTest : public test_support::TestCase {
    Q_OBJECT

    /// The steps in the order in which they are taken: "water ligand within5 and".
    static QString stepsOf(const QString& text) {
        const FindExpression expression = readFindText(text);
        if (!expression.isGood())
            return '!' + expression.problem;
        QStringList steps;
        for (const FindStep& step : expression.steps) {
            switch (step.kind) {
            case FindStep::Kind::Not:
                steps << "not";
                break;
            case FindStep::Kind::And:
                steps << "and";
                break;
            case FindStep::Kind::Or:
                steps << "or";
                break;
            case FindStep::Kind::Within:
                steps << "within" + QString::number(step.radius);
                break;
            case FindStep::Kind::Term:
                steps << termOf(step.term);
                break;
            }
        }
        return steps.join(' ');
    }
    static QString termOf(const FindTerm& term) {
        switch (term.kind) {
        case FindTerm::Kind::Water:
            return "water";
        case FindTerm::Kind::Ligand:
            return "ligand";
        case FindTerm::Kind::Protein:
            return "protein";
        case FindTerm::Kind::Alternate:
            return "altloc:" + QString::fromStdString(term.text);
        case FindTerm::Kind::Path:
            return "path:" + QString::fromStdString(term.text);
        default:
            break;
        }
        QStringList parts;
        const auto add = [&parts](const QString& mark, const std::vector<std::string>& names) {
            for (const std::string& name : names)
                parts << mark + QString::fromStdString(name);
        };
        add("/", term.chains);
        add(":", term.residues);
        for (const NumberRange& range : term.numbers) {
            QString number = '#' + QString::number(range.first);
            if (range.last != range.first)
                number += ".." + QString::number(range.last);
            if (range.insertion != ' ')
                number += QChar(range.insertion);
            parts << number;
        }
        add("@", term.atoms);
        return (term.text.empty() ? QString() : QString::fromStdString(term.text) + '=') +
               parts.join("");
    }

private slots:
    void namesAndNumbers() {
        QCOMPARE(stepsOf("REA"), "REA=");
        QCOMPARE(stepsOf("LC0 45"), "LC0=#45");
        QCOMPARE(stepsOf("2 45B"), "2=#45B");
        QCOMPARE(stepsOf("45"), "45=#45");
        QCOMPARE(stepsOf("A -5--2"), "A=#-5..-2");
        QCOMPARE(stepsOf("/C:45@CA"), "/C#45@CA");
        QCOMPARE(stepsOf("/C,D:45,50-60,MSE@CA,CB"), "/C/D:MSE#45#50..60@CA@CB");
        QCOMPARE(stepsOf("@CA"), "@CA");
        QCOMPARE(stepsOf("ARG@CZ,NE"), ":ARG@CZ@NE");
        QCOMPARE(stepsOf("45@CA"), "#45@CA");
        QCOMPARE(stepsOf("LC0:45"), "/LC0#45");
        QCOMPARE(stepsOf("A,B:ARG@CZ and not 5@CZ"), "/A/B:ARG@CZ #5@CZ not and");
        QCOMPARE(stepsOf("chain 5"), "/5");
        QCOMPARE(stepsOf("entry 1d3z.5 and chain A"), "path:/1d3z.5 /A and");
        QCOMPARE(stepsOf("altloc B"), "altloc:B");
        QCOMPARE(stepsOf("/1ubq/A/Groups/MET 1/CA"), "path:/1ubq/A/Groups/MET 1/CA");
        QCOMPARE(stepsOf(""), "");
        QCOMPARE(stepsOf("   "), "");
    }

    void notBindsMoreThanAndAndAndMoreThanOr() {
        QCOMPARE(stepsOf("water or ligand and not protein"), "water ligand protein not and or");
        QCOMPARE(stepsOf("(water or ligand) and protein"), "water ligand or protein and");
        QCOMPARE(stepsOf("NOT Water And LIGAND"), "water not ligand and");
        QCOMPARE(stepsOf("not not water"), "water not not");
        QCOMPARE(stepsOf("within 5 of ligand and water"), "ligand within5 water and");
        QCOMPARE(stepsOf("not within 2.5 of ligand"), "ligand within2.5 not");
        QCOMPARE(stepsOf("within 5 of not ligand"), "ligand not within5");
        QCOMPARE(stepsOf("within 5 of (ligand or water)"), "ligand water or within5");
        QCOMPARE(stepsOf("not(water)"), "water not");
    }

    void onlyWhatNamesAtomsIsOfAtoms() {
        QVERIFY(readFindText("@CA").ofAtoms);
        QVERIFY(readFindText("water or altloc A").ofAtoms);
        QVERIFY(!readFindText("within 5 of ligand").ofAtoms);
        QVERIFY(!readFindText("/A:5").ofAtoms);
    }

    void whatIsWrongIsSaidInPlainWords_data() {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("said");
        const auto row = [](const char* text, const char* said) {
            QTest::newRow(text) << text << QString::fromUtf8(said);
        };
        row("water ligand", "before “ligand” there must be “and” or “or”");
        row("REA FOO", "“FOO” is no residue number; between two names there must be “and” or “or”");
        row("water and", "the text ends where a name is expected");
        row("and water", "“and” stands where a name is expected");
        row("(water", "a bracket is not closed");
        row("water)", "a bracket is closed that was not opened");
        row("()", "a bracket is closed where a name is expected");
        row("within of ligand", "“within” needs a distance in Å, and “of” is none");
        row("within nan of ligand", "“within” needs a distance in Å, and “nan” is none");
        row("within -1 of ligand", "“within” needs a distance in Å, and “-1” is none");
        row("within 1e9 of ligand", "“within” goes up to 100 Å, and “1e9” is more");
        row("within 5", "after “within 5” comes “of”, as in “within 5 of ligand”");
        row("altloc", "“altloc” needs a letter, as in “altloc B”");
        row("altloc BB", "“altloc” needs one letter, as in “altloc B”");
        row("entry", "“entry” needs a name, as in “entry 1cbs”");
        row("element", "“element” needs a symbol, as in “element FE”");
        row("@CA:45",
            "“@CA:45” is not understood: chain, residue and atom come in this order, as in "
            "/A:45@CA");
        row("/", "“/” lacks the chain behind “/”");
        row("/A:", "“/A:” lacks the residue's number or name behind “:”");
        row("/A@", "“/A@” lacks the atom's name behind “@”");
    }
    void whatIsWrongIsSaidInPlainWords() {
        QFETCH(const QString, text);
        QFETCH(const QString, said);
        const FindExpression expression = readFindText(text);
        QCOMPARE(expression.problem, said);
        QVERIFY(expression.isEmpty());
    }

    void aTextOf100000CharactersIsRefusedAtOnce() {
        QElapsedTimer timer;
        timer.start();
        for (const QString& text :
             {QString(100'000, '('), QString("not ").repeated(25'000), QString(100'000, 'x'),
              QString("water or ").repeated(11'000), QString(100'000, '@')}) {
            QVERIFY(!readFindText(text).isGood());
            QVERIFY(readFindText(text).problem.size() < 100);
        }
        QVERIFY(timer.elapsed() < 1000);
    }

    void whatIsDeepWithinTheLimitIsReadOrRefused() {
        QVERIFY(readFindText(QString(40, '(') + "water" + QString(40, ')')).isGood());
        QCOMPARE(readFindText(QString(400, '(') + "water" + QString(400, ')')).problem,
                 "there are too many brackets inside of each other");
        QCOMPARE(readFindText(QString("not ").repeated(200) + "water").steps.size(),
                 std::size_t{201});
    }

    void aLongWordIsNotRepeatedInFull() {
        const QString problem = readFindText("water " + QString(500, 'x')).problem;
        QVERIFY2(problem.size() < 100, qPrintable(problem));
    }
};

REGISTER_TEST(FindLanguageTest)
#include "FindLanguageTest.moc"
