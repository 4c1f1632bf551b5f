// Name patterns: the first line of an input is an expression (UTF-8), each further one a name. The
// answers are compared with QRegExp's where QRegExp can be run; the time is always bounded.
#include "DataMaker.h"
#include "Fuzzing.h"
#include "Space.h"
#include "Traversal.h"
#include "data/NamePredicates.h"
#include "items/Building.h"
#include "names/NamePattern.h"

#include <QRegularExpression>

#include <algorithm>
#include <limits>

namespace {

using fuzzing::require;
using TAVIK::Compound;

/// Processor time for one expression and few names. Without sanitizers the default bounds are
/// reached in a tenth of it.
constexpr double mostSeconds = 30;
constexpr std::size_t mostNames = 24;
constexpr std::size_t longestName = 64;
/// Expressions with more instructions are not compared on each atom, because that copies their
/// QRegExp: large ones take seconds under AddressSanitizer.
constexpr double mostInstructions = 500;

QString latin1(std::string_view text) {
    return QString::fromLatin1(text.data(), static_cast<qsizetype>(text.size()));
}

struct Input {
    explicit Input(std::string_view text) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        expression = QString::fromUtf8(text.data(), static_cast<qsizetype>(end));
        text.remove_prefix(std::min(end + 1, text.size()));
        names = {"", "/r/A/Groups/MET 1/CA", "a", "ab\n"};
        while (!text.empty() && names.size() < mostNames) {
            const std::size_t line = std::min(text.find('\n'), text.size());
            names.emplace_back(text.substr(0, std::min(line, longestName)));
            text.remove_prefix(std::min(line + 1, text.size()));
        }
    }

    QString expression;
    std::vector<std::string> names;
};

/// Low bounds, which many expressions reach.
NamePattern::Limits smallLimits() {
    NamePattern::Limits limits;
    limits.instructions = 5000;
    limits.automaton.memory = std::size_t{1} << 20;
    limits.automaton.work = 1e6;
    limits.matchSteps = 1e7;
    limits.seconds = 0.1;
    return limits;
}

/// Whether the product of all counts in an expression is small.
bool repeatsLittle(const QString& expression) {
    static const QRegularExpression count(QStringLiteral("[{,]([0-9]+)"));
    double copies = 1;
    for (auto found = count.globalMatch(expression); found.hasNext();)
        copies *= std::max(1.0, found.next().captured(1).toDouble());
    return copies <= 200;
}

/// The QRegExp of an expression, if it is cheap for the names of this input.
std::optional<QRegExp> plainPattern(const QString& expression) {
    const name_pattern::Syntax syntax = name_pattern::parse(expression);
    // QRegExp builds what precedes a syntax error, which may take seconds and a gigabyte.
    if (!syntax.wellFormed)
        return repeatsLittle(expression) ? std::optional<QRegExp>(expression) : std::nullopt;
    const name_pattern::Cost cost = name_pattern::estimate(syntax);
    if (!cost.compilable || !(cost.matchSteps(longestName) <= 1e7))
        return std::nullopt;
    return QRegExp(expression);
}

bool isSmall(const QString& expression) {
    const name_pattern::Syntax syntax = name_pattern::parse(expression);
    return !syntax.wellFormed || name_pattern::estimate(syntax).instructions <= mostInstructions;
}

/// Compares all ways of asking for an answer. `cut` divides the name into prefix and rest; the
/// prefix is read in two parts, with another one that is taken off again between them.
void compare(NamePattern& pattern, const std::string& name, std::size_t cut,
             const std::optional<QRegExp>& plain) {
    const std::string_view text = name;
    const bool answer = pattern.matches(name);
    const std::size_t half = cut / 2;
    pattern.addPart(text.substr(0, half));
    pattern.addPart(text.substr(cut));
    pattern.matchesRest(text.substr(half));
    pattern.removePart();
    pattern.addPart(text.substr(half, cut - half));
    const std::optional<bool> forAll = pattern.answerForAll();
    const bool answerByParts = pattern.matchesRest(text.substr(cut));
    pattern.removePart();
    pattern.removePart();
    if (!pattern.cutOff().isEmpty())
        return;
    require(answer == answerByParts, "a name read by parts has the same answer", name);
    require(forAll.value_or(answer) == answer, "an answer for all names holds for each", name);
    if (plain)
        require(answer == (plain->indexIn(latin1(name), 0) == 0), "the answer is QRegExp's", name);
}

void compareOnNames(const Input& input, NamePattern& pattern, const std::optional<QRegExp>& plain) {
    if (plain)
        require(pattern.isValid() == plain->isValid(), "QRegExp says what is valid");
    for (std::size_t i = 0; i != input.names.size(); ++i)
        compare(pattern, input.names[i], i % (input.names[i].size() + 1), plain);
    if (pattern.cutOff().isEmpty())
        return;
    fuzzing::requireLine(pattern.cutOff().toStdString(), "Name pattern \"");
    require(!pattern.matches(input.names.front()), "what is cut off matches nothing");
}

/// An entry of two chains; some residues have groups, which qualified names leave out.
Compound* entry() {
    using TAVIK::DataMaker;
    static Compound* const made = [] {
        Compound* const root = DataMaker::makeCore(TAVIK::Space::instance(), "r", "Composite");
        for (const char* const chainName : {"A", "\xe9"}) {
            Compound* const chain = DataMaker::makeCore(root, chainName, "Molecule");
            Compound* const groups = DataMaker::makeCore(chain, "Groups", "Composite");
            for (const char* const residueName : {"MET 1", "a", "HOH 12A"}) {
                Compound* const residue = DataMaker::makeCore(groups, residueName, "Residue");
                Compound* const group = residueName[0] == 'M'
                                            ? DataMaker::makeCore(residue, "Backbone", "Group")
                                            : residue;
                for (const char* const atomName : {"N", "CA", "O5'", "a"})
                    memory_host::addAtom(group,
                                         {atomName, "C", TAVIK::Vertex(0, 0, 0, true), 0, 0});
            }
        }
        return root;
    }();
    return made;
}

std::vector<bool> selectionOf(const std::vector<Compound*>& atoms) {
    std::vector<bool> selection;
    for (const Compound* atom : atoms)
        selection.push_back(atom->IsSelected());
    return selection;
}

/// Starts from every third atom being selected, and compares an operation on the whole entry with
/// its predicate on one atom after the other.
void compareOnEntry(SetOperation operation, const QString& expression,
                    const std::optional<QRegExp>& plain) {
    std::vector<Compound*> atoms;
    TAVIK::GetAtoms(entry(), atoms, true);
    const auto start = [&atoms] {
        for (std::size_t i = 0; i != atoms.size(); ++i)
            atoms[i]->SetSelected(i % 3 == 0);
        return selectionOf(atoms);
    };
    const std::vector<bool> before = start();
    const QString cutOff = applySetOperation(entry(), operation, expression);
    const std::vector<bool> after = selectionOf(atoms);
    if (!cutOff.isEmpty()) {
        fuzzing::requireLine(cutOff.toStdString(), "Name pattern \"");
        require(after == before, "an operation that is cut off changes nothing");
        return;
    }
    if (!plain)
        return;
    start();
    for (std::size_t i = 0; i != atoms.size(); ++i) {
        if (operation == SetOperation::Union)
            SelectIf(atoms[i], *plain);
        else if (operation == SetOperation::Difference)
            UnSelectIf(atoms[i], *plain);
        else if (before[i])
            UnSelectIfNot(atoms[i], *plain);
    }
    require(after == selectionOf(atoms), "an operation does what its predicate does to each atom");
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const double start = fuzzing::secondsUsed();
    const Input input(fuzzing::textOf(data, size));
    const std::optional<QRegExp> plain = plainPattern(input.expression);
    NamePattern pattern(input.expression, smallLimits());
    compareOnNames(input, pattern, plain);
    // Few of the inputs that exceed the low bounds are run with the default ones: they take long.
    if (pattern.cutOff().isEmpty() || size % 32 == 0)
        for (const SetOperation operation :
             {SetOperation::Union, SetOperation::Difference, SetOperation::Intersection})
            compareOnEntry(operation, input.expression,
                           isSmall(input.expression) ? plain : std::nullopt);
    require(fuzzing::secondsUsed() - start < mostSeconds, "the time for a pattern is bounded");
    return 0;
}
