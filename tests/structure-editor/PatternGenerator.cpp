#include "PatternGenerator.h"

namespace {

const char16_t* const chains[] = {u"A", u"B", u"L5", u"", u"é", u"A-2"};
const char16_t* const residues[] = {u"MET 1",  u"GLY 10", u"A",   u"ALA -3", u"G 123A",
                                    u"HOH 77", u"",       u"É 1", u"GLY 1"};
const char16_t* const atoms[] = {u"CA", u"C", u"N", u"O5'", u"HB2", u"1HB", u"", u"ca", u"é", u"A"};

} // namespace

QString PatternGenerator::literal() {
    static const char16_t* const few[] = {u"a", u"a", u"b", u"b", u"-", u" "};
    static const char16_t* const many[] = {u"A", u"C", u"CA", u"GLY", u"MET", u" ",     u"1",
                                           u"0", u"/", u"N",  u"O",   u"'",   u"-",     u"é",
                                           u"É", u"H", u"B",  u"5",   u"2",   u"Groups"};
    static const char16_t* const rare[] = {u"\\/",    u"\\.",  u"\\x41", u"\\x0061", u"\\0101",
                                           u"\\0141", u"\\t",  u"\\-",   u"\\x",     u"\\0",
                                           u"\\x20",  u"ʀ",    u"\\q",   u"_",       u",",
                                           u"\\xe9",  u"\\\\", u"\\n",   u"\\e",     u"\\x062"};
    if (chance(8))
        return pick(rare);
    return m_short ? pick(few) : pick(many);
}

QString PatternGenerator::characterClass() {
    static const char16_t* const ready[] = {u"\\d", u"\\D", u"\\w", u"\\W", u"\\s",
                                            u"\\S", u".",   u".",   u".",   u"[^/]"};
    if (chance(50))
        return pick(ready);
    static const char16_t* const members[] = {
        u"a",   u"b", u"-",     u"-",   u"A", u"C",   u"z",      u"Z", u"0",
        u"9",   u"^", u"\\d",   u"\\s", u" ", u"\\]", u"\\-",    u"[", u"$",
        u"\\W", u".", u"\\x61", u"é",   u"/", u"ʀ",   u"\\0142", u"|", u"("};
    QString text = QStringLiteral("[");
    if (chance(25))
        text += u'^';
    if (chance(5))
        text += u']';
    const unsigned count = 1 + below(4);
    for (unsigned i = 0; i < count; ++i) {
        text += pick(members);
        if (chance(25))
            text += u'-';
    }
    return text + u']';
}

QString PatternGenerator::quantifier() {
    static const char16_t* const ready[] = {u"*",     u"*",     u"+",    u"?",    u"?",    u"{2}",
                                            u"{1,2}", u"{0,2}", u"{,2}", u"{2,}", u"{,}",  u"{}",
                                            u"{0}",   u"{1}",   u"{1,}", u"{,0}", u"{3,5}"};
    return pick(ready);
}

QString PatternGenerator::atom(int depth) {
    if (chance(m_assertions))
        return depth <= 0 || chance(60) ? pick({u"^", u"$", u"\\b", u"\\B"})
                                        : pick({u"(?=", u"(?!"}) + choice(depth - 1) + u')';
    const unsigned kind = below(100);
    if (kind < 50 || depth <= 0)
        return chance(20) ? characterClass() : literal();
    if (kind < 62)
        return characterClass();
    if (kind < 68)
        return pick({u"^", u"$", u"\\b", u"\\B"});
    if (kind < 69)
        return pick({u"\\1", u"\\2"});
    if (kind < 71)
        return pick({u"(?=", u"(?!"}) + choice(depth - 1) + u')';
    if (kind < 76)
        return QStringLiteral("(?:") + choice(depth - 1) + u')';
    return u'(' + choice(depth - 1) + u')';
}

QString PatternGenerator::sequence(int depth) {
    QString text;
    const unsigned count = below(4) + (chance(90) ? 1 : 0);
    for (unsigned i = 0; i < count; ++i) {
        text += atom(depth);
        if (chance(30))
            text += quantifier();
    }
    return text;
}

QString PatternGenerator::choice(int depth) {
    QString text = sequence(depth);
    while (chance(20))
        text += u'|' + sequence(depth);
    return text;
}

QString PatternGenerator::damage(QString text) {
    static const char16_t* const scraps[] = {
        u"(", u")",  u"[",  u"]",  u"{",      u"}",   u"*",     u"+",     u"?",
        u"|", u"\\", u"^",  u"$",  u"(?",     u"-",   u"{2",    u",3}",   u"(?:",
        u"/", u"**", u"]*", u"[^", u"\\0777", u"\\9", u"{3,1}", u"{1025}"};
    const unsigned wounds = 1 + below(2);
    for (unsigned i = 0; i < wounds; ++i) {
        const auto at = static_cast<qsizetype>(below(static_cast<unsigned>(text.size()) + 1));
        switch (below(4)) {
        case 0:
            text.remove(at, 1);
            break;
        case 1:
            text.truncate(at);
            break;
        default:
            text.insert(at, pick(scraps));
            break;
        }
    }
    return text;
}

QString PatternGenerator::field() {
    switch (below(10)) {
    case 0:
        return QStringLiteral(".*");
    case 1:
        return pick(atoms);
    case 2:
        return QString();
    case 3:
        return pick(residues) + quantifier();
    default: {
        const QString text = choice(2);
        return chance(10) ? damage(text) : text;
    }
    }
}

std::string PatternGenerator::rootName() {
    static const char* const names[] = {
        "",     "/1ubq",           "/1.ubq(2)+[x]", "/a|b", "/(x",   "/x)", "/6zu5",
        "/[A",  "/1ubq/A",         "/\xe9t\xe9",    "/m*",  "/a^b$", "/q?", "/tail\\",
        "/{2}", "/A/Groups/MET 1", "/(a|\\b)1ub",   "/x y"};
    return names[below(std::size(names))];
}

QString PatternGenerator::expressionFor(const std::string& rootName) {
    QString chain = chance(40) ? QStringLiteral(".*") : field();
    QString residue = chance(30) ? QStringLiteral(".*") : field();
    QString atom = chance(30) ? QStringLiteral(".*") : field();
    switch (below(14)) {
    case 0: // a bracket opens in one field and closes in a later one
        chain.prepend(u'(');
        (chance(50) ? residue : atom).append(u')');
        break;
    case 1:
        residue = u'(' + residue + u'|' + sequence(1);
        atom = sequence(1) + u')' + (chance(50) ? quantifier() : QString());
        break;
    case 2: // a class that swallows a separator
        chain += QStringLiteral("[^");
        residue.prepend(u']');
        break;
    case 3:
        residue += QStringLiteral("/Groups/") + field();
        break;
    case 4: // an alternation that runs over the separators
        (chance(50) ? chain : atom) += u'|' + QString::fromLatin1(rootName) + u'/' + sequence(1);
        break;
    default:
        break;
    }
    return QString::fromLatin1(rootName) + u'/' + chain + QStringLiteral("/Groups/") + residue +
           u'/' + atom + u'$';
}

std::vector<std::string> PatternGenerator::namesBelow(const std::string& rootName, int count) {
    std::vector<std::string> names;
    for (int i = 0; i < count; ++i) {
        QString name = QString::fromLatin1(rootName) + u'/' + pick(chains) +
                       QStringLiteral("/Groups/") + pick(residues) + u'/' + pick(atoms);
        if (chance(20)) {
            const auto at = static_cast<qsizetype>(below(static_cast<unsigned>(name.size()) + 1));
            switch (below(5)) {
            case 0:
                name.remove(at, 1);
                break;
            case 1:
                name.truncate(at);
                break;
            case 2:
                name.prepend(u'x');
                break;
            case 3:
                name.insert(at, pick({u"/", u"\n", u"A", u" ", u"\u00b2", u"_"}));
                break;
            default:
                name += pick({u"/CA", u"\n", u"x", u"/A/Groups/A/A"});
                break;
            }
        }
        names.push_back(name.toLatin1().toStdString());
    }
    return names;
}

QString PatternGenerator::anyText() {
    static const char16_t signs[] = u"ab(((|)))**+??{{,}}[]^^$\\\\--:=!0123dwsbxnDWSB. Aé";
    QString text;
    const unsigned length = 1 + below(12);
    for (unsigned i = 0; i < length; ++i)
        text += QChar(signs[below(std::size(signs) - 1)]);
    return text;
}

QString PatternGenerator::shortExpression() {
    if (chance(15))
        return anyText();
    m_short = true;
    m_assertions = chance(30) ? 30 : 0;
    QString text = choice(1 + static_cast<int>(below(3)));
    if (chance(8))
        text = damage(text);
    if (chance(30))
        text += u'$';
    m_short = false;
    m_assertions = 0;
    return text;
}

std::string PatternGenerator::shortName() {
    static const char characters[] = "aaaabbbb-- A\xe9"
                                     "1/\n\0_"; // the terminator is a NUL more
    std::string name;
    const unsigned length = below(7);
    for (unsigned i = 0; i < length; ++i)
        name += characters[below(sizeof characters)];
    return name;
}
