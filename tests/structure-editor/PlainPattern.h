// What the tests of name patterns share: their plain definition, one QRegExp match a name.
#pragma once

#include <QRegExp>
#include <QString>

#include <string>

/// The answer of a pattern for a name, which is Latin-1.
inline bool matchesPlainly(const QRegExp& plain, const std::string& name) {
    return plain.indexIn(QString::fromLatin1(name), 0) == 0;
}

/// `text`, `count` times over: for long patterns.
inline QString repeated(const char* text, int count) {
    return QString::fromLatin1(text).repeated(count);
}
