// The examples of the help page "Find", read from the page and compared with the sample's own
// lines.
#include "FindMatch.h"
#include "FindReader.h"
#include "TestSupport.h"
#include "files/Files.h"

#include <QFile>
#include <QRegularExpression>
#include <QTemporaryDir>

#include <array>
#include <functional>
#include <map>
#include <set>
#include <vector>

using namespace workbench;

namespace {

/// An atom as a line of the file has it.
struct Line {
    QString name, residue, chain, element;
    char alternate = ' ';
    int number = 0;
    bool isProtein = false;
    std::array<double, 3> at{};

    bool isWater() const { return residue == "HOH"; }
    bool isLigand() const { return !isProtein && !isWater(); }
};

QString textOf(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

std::vector<Line> sampleLines() {
    std::vector<Line> lines;
    for (const QString& row : textOf(SOURCE_DIR "/data/sample.pdb").split('\n')) {
        if (!row.startsWith("ATOM  ") && !row.startsWith("HETATM"))
            continue;
        Line line;
        line.name = row.mid(12, 4).trimmed();
        line.alternate = row[16].toLatin1();
        line.residue = row.mid(17, 3).trimmed();
        line.chain = row.mid(21, 1);
        line.number = row.mid(22, 4).toInt();
        for (std::size_t axis = 0; axis != 3; ++axis)
            line.at[axis] = row.mid(30 + 8 * static_cast<int>(axis), 8).toDouble();
        line.element = row.mid(76, 2).trimmed();
        line.isProtein = row.startsWith("ATOM  ");
        lines.push_back(line);
    }
    return lines;
}

using Holds = std::function<bool(const Line&)>;

/// What the examples mean, told by the lines of the file.
std::map<QString, Holds> meanings(const std::vector<Line>& lines) {
    const auto near = [&lines](double radius, const Holds& holds) {
        std::vector<const Line*> centres;
        for (const Line& line : lines)
            if (holds(line))
                centres.push_back(&line);
        return [centres, radius](const Line& line) {
            for (const Line* centre : centres) {
                double sum = 0.0;
                for (std::size_t axis = 0; axis != 3; ++axis)
                    sum += (line.at[axis] - centre->at[axis]) * (line.at[axis] - centre->at[axis]);
                if (sum <= radius * radius)
                    return true;
            }
            return false;
        };
    };
    const auto isLigand = [](const Line& line) { return line.isLigand(); };
    const Holds nearLigand = near(5, isLigand);
    const Holds closeToLigand = near(4, isLigand);
    const auto isBackbone = [](const Line& line) {
        return QStringList{"N", "CA", "C", "O"}.contains(line.name);
    };
    return {
        {"NAG", [](const Line& line) { return line.residue == "NAG"; }},
        {"383", [](const Line& line) { return line.number == 383; }},
        {"A 383", [](const Line& line) { return line.chain == "A" && line.number == 383; }},
        {"NAG 383", [](const Line& line) { return line.residue == "NAG" && line.number == 383; }},
        {"A 100-110",
         [](const Line& line) {
             return line.chain == "A" && line.number >= 100 && line.number <= 110;
         }},
        {"/C", [](const Line& line) { return line.chain == "C"; }},
        {"/A:383", [](const Line& line) { return line.chain == "A" && line.number == 383; }},
        {"/A:100@CA",
         [](const Line& line) {
             return line.chain == "A" && line.number == 100 && line.name == "CA";
         }},
        {"A:100@CA",
         [](const Line& line) {
             return line.chain == "A" && line.number == 100 && line.name == "CA";
         }},
        {"CYS@SG", [](const Line& line) { return line.residue == "CYS" && line.name == "SG"; }},
        {":100-110@CA",
         [](const Line& line) {
             return line.number >= 100 && line.number <= 110 && line.name == "CA";
         }},
        {"/A,B:CYS@SG",
         [](const Line& line) {
             return (line.chain == "A" || line.chain == "B") && line.residue == "CYS" &&
                    line.name == "SG";
         }},
        {"/sample/C", [](const Line& line) { return line.chain == "C"; }},
        {"NAG or SO4",
         [](const Line& line) { return line.residue == "NAG" || line.residue == "SO4"; }},
        {"not water", [](const Line& line) { return !line.isWater(); }},
        {":383,SO4", [](const Line& line) { return line.number == 383 || line.residue == "SO4"; }},
        {"@CA", [](const Line& line) { return line.name == "CA"; }},
        {"altloc B", [](const Line& line) { return line.alternate == 'B'; }},
        {"element S", [](const Line& line) { return line.element == "S"; }},
        {"chain C", [](const Line& line) { return line.chain == "C"; }},
        {"entry sample", [](const Line&) { return true; }},
        {"protein", [](const Line& line) { return line.isProtein; }},
        {"nucleic", [](const Line&) { return false; }},
        {"water", [](const Line& line) { return line.isWater(); }},
        {"ion", [](const Line&) { return false; }},
        {"ligand", isLigand},
        {"selected", [](const Line&) { return false; }},
        // The first of two alternatives is the active one.
        {"hidden", [](const Line& line) { return line.alternate == 'B'; }},
        {"all", [](const Line&) { return true; }},
        {"within 5 of ligand", nearLigand},
        {"/sample/A/Groups/ASN 4/CA",
         [](const Line& line) {
             return line.chain == "A" && line.number == 4 && line.name == "CA";
         }},
        {"water and within 4 of ligand",
         [closeToLigand](const Line& line) { return line.isWater() && closeToLigand(line); }},
        {"within 5 of ligand and not ligand",
         [nearLigand](const Line& line) { return nearLigand(line) && !line.isLigand(); }},
        {"protein and not @N,CA,C,O",
         [isBackbone](const Line& line) { return line.isProtein && !isBackbone(line); }},
        {"not (protein or water)", isLigand},
        {"within 4 of (SO4 and element O)",
         near(4, [](const Line& line) { return line.residue == "SO4" && line.element == "O"; })},
    };
}

/// The rows of the page's tables of examples: text and number of atoms.
QList<std::pair<QString, int>> examples() {
    static const QRegularExpression row("^\\| `([^`]+)` \\|.*\\| ([0-9,]+) \\|$");
    QList<std::pair<QString, int>> all;
    for (const QString& line : textOf(SOURCE_DIR "/data/help/find.md").split('\n'))
        if (const QRegularExpressionMatch match = row.match(line); match.hasMatch())
            all << std::pair(match.captured(1), match.captured(2).remove(',').toInt());
    return all;
}

} // namespace

class FindHelpTest : public test_support::TestCase {
    Q_OBJECT

private slots:
    void everyExampleFindsWhatThePageSays() {
        memory_host::openFile(SOURCE_DIR "/data/sample.pdb");
        const std::vector<Line> lines = sampleLines();
        FindReader reader;
        reader.finish({});
        QCOMPARE(reader.index()->atoms.size(), lines.size());
        const std::map<QString, Holds> meaning = meanings(lines);
        std::set<QString> seen;
        for (const auto& [text, atoms] : examples()) {
            const FindExpression expression = readFindText(text);
            QVERIFY2(expression.isGood(), qPrintable(text + ": " + expression.problem));
            reader.finish(partsOf(expression));
            const FindHits hits = findHits(*reader.index(), reader.values(), expression);
            const auto found = meaning.find(text);
            QVERIFY2(found != meaning.end(), qPrintable(text));
            const auto expected = std::count_if(lines.begin(), lines.end(), found->second);
            QVERIFY2(hits.atomCount == static_cast<std::size_t>(expected), qPrintable(text));
            QVERIFY2(atoms == expected, qPrintable(text));
            seen.insert(text);
        }
        QCOMPARE(seen.size(), meaning.size());
    }

    // What the page's sentences show has no place in the sample.
    void insertionCodesAndNumbersBelowZeroAreFoundAsThePageSays() {
        const QString page = textOf(SOURCE_DIR "/data/help/find.md");
        QTemporaryDir folder;
        QFile file(folder.filePath("numbers.pdb"));
        QVERIFY(file.open(QIODevice::WriteOnly));
        int serial = 0;
        const auto write = [&](const char* residue, char chain, int number, char insertion) {
            ++serial;
            const QString line = QString::asprintf(
                "ATOM  %5d  CA  %3s %c%4d%c   %8.3f%8.3f%8.3f  1.00 10.00           C  \n", serial,
                residue, chain, number, insertion, serial * 4.0, 0.0, 0.0);
            file.write(line.toLatin1());
        };
        for (int number = -7; number != 1; ++number)
            write("GLY", 'A', number, ' ');
        write("ALA", 'A', 52, ' ');
        write("SER", 'A', 52, 'A');
        write("THR", 'A', 52, 'B');
        write("THR", 'B', 52, 'B');
        write("ION", 'B', 60, ' ');
        file.close();
        memory_host::openFile(file.fileName().toStdString());
        FindReader reader;
        reader.finish({});
        QCOMPARE(reader.index()->atoms.size(), std::size_t(serial));
        const std::pair<const char*, std::size_t> found[] = {
            {"A 52B", 1}, {"A -5--2", 4}, {":ION", 1}, {"52B", 2}, {"A 52", 1}, {"/B:52B", 1}};
        for (const QString shown : {"A 52B", "A -5--2", ":ION"})
            QVERIFY2(page.contains('`' + shown + '`'), qPrintable(shown));
        for (const auto& [text, atoms] : found)
            QCOMPARE(findHits(*reader.index(), reader.values(), readFindText(text)).atomCount,
                     atoms);
    }

    void everyKeywordStandsOnThePage() {
        const QString page = textOf(SOURCE_DIR "/data/help/find.md");
        for (const QString word :
             {"and", "or", "not", "within", "of", "altloc", "element", "chain", "entry", "protein",
              "nucleic", "water", "ion", "ligand", "selected", "hidden", "all"})
            QVERIFY2(page.contains(QRegularExpression("`[^`]*\\b" + word + "\\b[^`]*`")),
                     qPrintable(word));
    }
};

REGISTER_TEST(FindHelpTest)
#include "FindHelpTest.moc"
