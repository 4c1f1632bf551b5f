// Gathers what differs between the plain model and the real thing.
#pragma once

#include "plain/PlainItems.h"

#include <QStringList>

namespace plain {

class Comparison {
public:
    QStringList lines;

    /// Of what the next values are; null for no item.
    void lookAt(const char* kind, const Item* item) {
        m_kind = kind;
        m_item = item;
    }
    template <class Value> void same(const char* what, const Value& expected, const Value& real) {
        if (!(expected == real) && !isFull())
            lines << where() + QLatin1String(what) + ": " + inText(expected) +
                         " was expected, and it is " + inText(real);
    }
    bool isFull() const { return lines.size() >= enough; }

private:
    static constexpr int enough = 12;

    QString where() const {
        return m_item ? QStringLiteral("%1 %2 (%3): ")
                            .arg(QLatin1String(m_kind),
                                 QString::fromLatin1(Host::qualifiedName(*m_item)))
                            .arg(m_item->id)
                      : QString();
    }
    static QString inText(bool value) { return QLatin1String(value ? "true" : "false"); }
    static QString inText(int value) { return QString::number(value); }
    static QString inText(unsigned int value) { return QString::number(value); }
    static QString inText(float value) { return QString::number(double(value)); }
    static QString inText(const QString& value) { return u'"' + value + u'"'; }
    static QString inText(const std::string& value) { return inText(QString::fromLatin1(value)); }
    static QString inText(const QStringList& value) { return inText(value.join(u'|')); }
    static QString inText(const std::vector<std::array<float, 3>>& value) {
        QStringList texts;
        for (const auto& at : value)
            texts << QStringLiteral("(%1, %2, %3)").arg(at[0]).arg(at[1]).arg(at[2]);
        return u'[' + texts.join(u' ') + u']';
    }
    static QString inText(const std::vector<unsigned int>& value) {
        QStringList texts;
        for (const unsigned int each : value)
            texts << QString::number(each);
        return u'[' + texts.join(u' ') + u']';
    }

    const char* m_kind = "";
    const Item* m_item = nullptr;
};

} // namespace plain
