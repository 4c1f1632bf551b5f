#include "FindLanguage.h"

#include <QCoreApplication>
#include <QStringList>

#include <algorithm>
#include <optional>
#include <utility>

namespace workbench {

namespace {

/// Bounds the depth of the reader's own calls.
constexpr int deepestBrackets = 40;

QString say(const char* text) {
    return QCoreApplication::translate("Find", text);
}

/// What is wrong, on its way out of the reader.
struct Problem {
    QString text;
};

[[noreturn]] void refuse(const char* text) {
    throw Problem{say(text)};
}
[[noreturn]] void refuse(const char* text, const QString& word) {
    constexpr qsizetype longest = 30;
    throw Problem{say(text).arg(word.size() > longest ? word.left(longest) + QChar(0x2026) : word)};
}

std::string latin1(const QString& text) {
    return text.toLatin1().toStdString();
}

/// Reads a whole number at `at`, of at most nine digits, and moves behind it.
std::optional<std::int64_t> readNumber(const QString& text, qsizetype& at) {
    qsizetype here = at;
    const bool negative = here < text.size() && text[here] == u'-';
    if (negative)
        ++here;
    const qsizetype first = here;
    std::int64_t value = 0;
    while (here < text.size() && text[here] >= u'0' && text[here] <= u'9' && here - first < 9)
        value = 10 * value + text[here++].unicode() - u'0';
    if (here == first)
        return {};
    at = here;
    return negative ? -value : value;
}

/// "45", "45A", "40-60", "-5--2"; nothing for any other text.
std::optional<NumberRange> readRange(const QString& text) {
    qsizetype at = 0;
    const std::optional<std::int64_t> first = readNumber(text, at);
    if (!first)
        return {};
    if (at == text.size())
        return NumberRange{*first, *first, ' '};
    if (text[at] == u'-') {
        ++at;
        const std::optional<std::int64_t> last = readNumber(text, at);
        if (!last || at != text.size() || *last < *first)
            return {};
        return NumberRange{*first, *last, ' '};
    }
    if (at + 1 == text.size() && text[at].isLetter() && text[at].unicode() < 128)
        return NumberRange{*first, *first, text[at].toUpper().toLatin1()};
    return {};
}

enum class Word { Plain, And, Or, Not, Within, Of, Alternate, Element, Chain, Entry, Kind };

struct Keyword {
    const char* text;
    Word word;
    FindTerm::Kind kind = FindTerm::Kind::All;
};

constexpr Keyword keywords[] = {
    {"and", Word::And},
    {"or", Word::Or},
    {"not", Word::Not},
    {"within", Word::Within},
    {"of", Word::Of},
    {"altloc", Word::Alternate},
    {"element", Word::Element},
    {"chain", Word::Chain},
    {"entry", Word::Entry},
    {"protein", Word::Kind, FindTerm::Kind::Protein},
    {"nucleic", Word::Kind, FindTerm::Kind::Nucleic},
    {"water", Word::Kind, FindTerm::Kind::Water},
    {"ion", Word::Kind, FindTerm::Kind::Ion},
    {"ligand", Word::Kind, FindTerm::Kind::Ligand},
    {"selected", Word::Kind, FindTerm::Kind::Selected},
    {"hidden", Word::Kind, FindTerm::Kind::Hidden},
    {"all", Word::Kind, FindTerm::Kind::All},
};

const Keyword& keywordOf(const QString& text) {
    static constexpr Keyword plain{"", Word::Plain};
    for (const Keyword& keyword : keywords)
        if (text.compare(QLatin1String(keyword.text), Qt::CaseInsensitive) == 0)
            return keyword;
    return plain;
}

/// The words of a text, and brackets as words of their own. A qualified name, which may hold
/// blanks, is one word up to its end.
QStringList wordsOf(const QString& text) {
    QStringList words;
    QString word;
    const auto end = [&] {
        if (!word.isEmpty())
            words << std::exchange(word, {});
    };
    for (qsizetype at = 0; at < text.size(); ++at) {
        const QChar c = text[at];
        if (c.isSpace()) {
            end();
        } else if (c == u'(' || c == u')') {
            end();
            words << QString(c);
        } else if (c == u'/' && word.startsWith(u'/')) {
            words << word + text.mid(at).trimmed();
            return words;
        } else {
            word += c;
        }
    }
    end();
    return words;
}

/// "/C:45@CA", with commas between several of one kind.
FindTerm readPlace(const QString& word) {
    FindTerm term;
    term.kind = FindTerm::Kind::Place;
    constexpr QStringView marks = u"/:@";
    qsizetype rank = -1;
    for (qsizetype at = 0; at < word.size();) {
        const qsizetype mark = marks.indexOf(word[at]);
        if (mark <= rank)
            refuse("“%1” is not understood: chain, residue and atom come in this order, as in "
                   "/A:45@CA",
                   word);
        rank = mark;
        qsizetype end = at + 1;
        while (end < word.size() && !marks.contains(word[end]))
            ++end;
        for (const QString& name : word.mid(at + 1, end - at - 1).split(u',')) {
            if (name.isEmpty())
                refuse(rank == 0   ? "“%1” lacks the chain behind “/”"
                       : rank == 1 ? "“%1” lacks the residue's number or name behind “:”"
                                   : "“%1” lacks the atom's name behind “@”",
                       word);
            if (rank == 0)
                term.chains.push_back(latin1(name));
            else if (rank == 2)
                term.atoms.push_back(latin1(name));
            else if (const std::optional<NumberRange> range = readRange(name))
                term.numbers.push_back(*range);
            else
                term.residues.push_back(latin1(name));
        }
        at = end;
    }
    return term;
}

class Reader {
public:
    explicit Reader(QStringList words) : m_words(std::move(words)) {}

    FindExpression read() {
        if (m_words.isEmpty())
            return {};
        readOr(0);
        if (!atEnd())
            refuseRest();
        return std::move(m_out);
    }

private:
    [[noreturn]] void refuseRest() const {
        if (isNext(u")"))
            refuse("a bracket is closed that was not opened");
        refuse("before “%1” there must be “and” or “or”", m_words[m_at]);
    }
    bool atEnd() const { return m_at == m_words.size(); }
    bool isNext(QStringView bracket) const { return !atEnd() && m_words[m_at] == bracket; }
    bool isNext(Word word) const { return !atEnd() && keywordOf(m_words[m_at]).word == word; }
    /// Whether the next word may be a name or a number.
    bool isPlainNext() const {
        return isNext(Word::Plain) && !isNext(u"(") && !isNext(u")") && !isPlace(m_words[m_at]);
    }
    static bool isPlace(const QString& word) {
        return word.startsWith(u'/') || word.startsWith(u':') || word.startsWith(u'@');
    }
    QString take(const char* lacking) {
        if (atEnd())
            refuse(lacking);
        return m_words[m_at++];
    }

    void put(FindStep::Kind kind, double radius = 0.0) {
        m_out.steps.push_back({kind, {}, radius});
    }
    void put(FindTerm term) {
        m_out.ofAtoms = m_out.ofAtoms || !term.atoms.empty() ||
                        term.kind == FindTerm::Kind::Alternate ||
                        term.kind == FindTerm::Kind::Element;
        m_out.steps.push_back({FindStep::Kind::Term, std::move(term), 0.0});
    }

    void readOr(int depth) {
        readAnd(depth);
        while (isNext(Word::Or)) {
            ++m_at;
            readAnd(depth);
            put(FindStep::Kind::Or);
        }
    }
    void readAnd(int depth) {
        readFactor(depth);
        while (isNext(Word::And)) {
            ++m_at;
            readFactor(depth);
            put(FindStep::Kind::And);
        }
    }
    // What stands before a term works on it in the reverse order, without a call for each.
    void readFactor(int depth) {
        std::vector<FindStep> before;
        while (true) {
            if (isNext(Word::Not)) {
                ++m_at;
                before.push_back({FindStep::Kind::Not, {}, 0.0});
            } else if (isNext(Word::Within)) {
                ++m_at;
                before.push_back({FindStep::Kind::Within, {}, readRadius()});
            } else {
                break;
            }
        }
        readTerm(depth);
        std::move(before.rbegin(), before.rend(), std::back_inserter(m_out.steps));
    }
    double readRadius() {
        const QString word = take("“within” needs a distance in Å, as in “within 5 of ligand”");
        bool isNumber = false;
        const double radius = word.toDouble(&isNumber);
        if (!isNumber || !(radius > 0.0))
            refuse("“within” needs a distance in Å, and “%1” is none", word);
        if (radius > largestFindRadius)
            refuse("“within” goes up to 100 Å, and “%1” is more", word);
        if (!isNext(Word::Of))
            refuse("after “within %1” comes “of”, as in “within 5 of ligand”", word);
        ++m_at;
        return radius;
    }
    void readTerm(int depth) {
        const QString word =
            take(m_at == 0 ? "nothing is asked for" : "the text ends where a name is expected");
        if (word == u"(") {
            if (depth == deepestBrackets)
                refuse("there are too many brackets inside of each other");
            readOr(depth + 1);
            if (!isNext(u")"))
                refuse("a bracket is not closed");
            ++m_at;
            return;
        }
        if (word == u")")
            refuse("a bracket is closed where a name is expected");
        const Keyword& keyword = keywordOf(word);
        FindTerm term;
        switch (keyword.word) {
        case Word::Kind:
            term.kind = keyword.kind;
            break;
        case Word::Alternate:
            term.kind = FindTerm::Kind::Alternate;
            term.text = latin1(take("“altloc” needs a letter, as in “altloc B”"));
            if (term.text.size() != 1)
                refuse("“altloc” needs one letter, as in “altloc B”");
            break;
        case Word::Element:
            term.kind = FindTerm::Kind::Element;
            term.text = latin1(take("“element” needs a symbol, as in “element FE”"));
            break;
        case Word::Chain:
            term.kind = FindTerm::Kind::Place;
            term.chains = {latin1(take("“chain” needs a name, as in “chain A”"))};
            break;
        case Word::Entry:
            term.kind = FindTerm::Kind::Path;
            term.text = '/' + latin1(take("“entry” needs a name, as in “entry 1cbs”"));
            break;
        case Word::Plain:
            term = readName(word);
            break;
        case Word::And:
        case Word::Or:
        case Word::Not:
        case Word::Within:
        case Word::Of:
            refuse("“%1” stands where a name is expected", word);
        }
        put(std::move(term));
    }
    FindTerm readName(const QString& word) {
        FindTerm term;
        if (word.startsWith(u'/') && word.indexOf(u'/', 1) > 0) {
            term.kind = FindTerm::Kind::Path;
            term.text = latin1(word);
            return term;
        }
        if (isPlace(word))
            return readPlace(word);
        // "A:45" and "ARG@CZ": the first mark tells what stands before it.
        for (qsizetype at = 0; at != word.size(); ++at)
            if (word[at] == u':' || word[at] == u'@')
                return readPlace((word[at] == u':' ? u'/' : u':') + word);
        term.text = latin1(word);
        if (isPlainNext()) {
            const std::optional<NumberRange> number = readRange(m_words[m_at]);
            if (!number)
                refuse("“%1” is no residue number; between two names there must be “and” or “or”",
                       m_words[m_at]);
            ++m_at;
            term.kind = FindTerm::Kind::Pair;
            term.numbers = {*number};
            return term;
        }
        term.kind = FindTerm::Kind::Word;
        if (const std::optional<NumberRange> number = readRange(word))
            term.numbers = {*number};
        return term;
    }

    QStringList m_words;
    qsizetype m_at = 0;
    FindExpression m_out;
};

} // namespace

bool FindExpression::has(FindTerm::Kind kind) const {
    return std::any_of(steps.begin(), steps.end(), [kind](const FindStep& step) {
        return step.kind == FindStep::Kind::Term && step.term.kind == kind;
    });
}

bool FindExpression::has(FindStep::Kind kind) const {
    return std::any_of(steps.begin(), steps.end(),
                       [kind](const FindStep& step) { return step.kind == kind; });
}

FindExpression readFindText(const QString& text) {
    FindExpression failed;
    if (text.size() > longestFindText) {
        failed.problem =
            say("the text is too long: up to %1 characters are searched for").arg(longestFindText);
        return failed;
    }
    try {
        return Reader(wordsOf(text)).read();
    } catch (const Problem& problem) {
        failed.problem = problem.text;
    }
    return failed;
}

} // namespace workbench
