#include "Step.h"

#include <QStringList>

namespace plain {

namespace {

const char* const actionNames[] = {
    "Idle",        "Slot",     "Menu",   "Press",    "PressBelow", "Move",       "Release",
    "DoubleClick", "Open",     "Key",    "Type",     "Header",     "PressEntry", "ListKey",
    "Field",       "TreeOnly", "Button", "Call",     "Window",     "Lock",       "Outside",
    "Answering",   "Build",    "Load",   "Sabotage", "Crash"};
static_assert(std::size(actionNames) == actionCount);

const char* const editNames[] = {"None",     "Select",  "Show",   "Paint",     "AddAtom", "AddBond",
                                 "AddLeaf",  "AddBox",  "AddSet", "AddTop",    "Destroy", "Swap",
                                 "AddAmong", "SetAtom", "Model",  "Highlight", "Look",    "Command",
                                 "Entry",    "Kill",    "Throw"};
static_assert(std::size(editNames) == editCount);

const char* const startNames[] = {"Generated", "Sample", "Ubiquitin", "Crambin", "Crabp", "Empty"};

QString quoted(const std::string& text) {
    QString escaped;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (c == '"' || c == '\\')
            escaped += u'\\';
        if (byte < 0x20 || byte > 0x7e)
            escaped += QStringLiteral("\\%1").arg(byte, 3, 8, QLatin1Char('0'));
        else
            escaped += QLatin1Char(c);
    }
    return u'"' + escaped + u'"';
}

} // namespace

AtomValues madeAtom(unsigned int value) {
    return {choose(madeTypes, value),
            {static_cast<float>(value % 13) * 1.5F, static_cast<float>(value % 7),
             static_cast<float>(value % 5)},
            value % 11 != 0,
            static_cast<float>(value % 90) - 5.0F,
            value % 5 == 0 ? 1 + value % 3 : 0};
}

QString text(const Step& step) {
    QString fields =
        QStringLiteral(".action = Action::") + QLatin1String(actionNames[int(step.action)]);
    const auto add = [&fields](const char* name, unsigned int value) {
        if (value)
            fields += QStringLiteral(", .%1 = %2").arg(QLatin1String(name)).arg(value);
    };
    add("target", step.target);
    add("a", step.a);
    add("b", step.b);
    add("c", step.c);
    if (step.answer == Answer::Cancel)
        fields += QStringLiteral(", .answer = Answer::Cancel");
    if (!step.text.empty())
        fields += QStringLiteral(", .text = ") + quoted(step.text);
    if (step.edit.kind != EditKind::None)
        fields += QStringLiteral(", .edit = {EditKind::%1, %2, %3}")
                      .arg(QLatin1String(editNames[int(step.edit.kind)]))
                      .arg(step.edit.target)
                      .arg(step.edit.value);
    return u'{' + fields + u'}';
}

QString text(const Session& session) {
    QStringList lines;
    lines << QStringLiteral("{{Start::%1, %2, %3},")
                 .arg(QLatin1String(startNames[session.start.kind]))
                 .arg(session.start.seed)
                 .arg(session.start.plugins ? QLatin1String("true") : QLatin1String("false"));
    if (session.steps.empty())
        lines << QStringLiteral(" {}}");
    for (std::size_t i = 0; i != session.steps.size(); ++i)
        lines << (i == 0 ? QStringLiteral(" {") : QStringLiteral("  ")) + text(session.steps[i]) +
                     (i + 1 == session.steps.size() ? QStringLiteral("}}") : QStringLiteral(","));
    return lines.join(u'\n');
}

} // namespace plain
