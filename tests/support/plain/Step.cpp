#include "Step.h"

#include <QMetaEnum>
#include <QStringList>

#include <iterator>

namespace plain {

namespace {

const char* const actionNames[] = {
    "Idle",        "Slot",     "Menu",   "Press",      "PressBelow", "Move",       "Release",
    "DoubleClick", "Open",     "Key",    "Type",       "Header",     "PressEntry", "ListKey",
    "Field",       "TreeOnly", "Button", "Command",    "CommandC",   "Execute0",   "Cleanup",
    "Hide",        "Minimise", "Close",  "ClosePanel", "Lock",       "Outside",    "Answering",
    "Build",       "Load",     "Save",   "Sabotage",   "Crash"};
static_assert(std::size(actionNames) == actionCount);

const char* const placeNames[] = {"Object",      "Show",      "Select",  "Partial",    "RightOfAll",
                                  "Indentation", "MarkBegin", "MarkEnd", "NameMargin", "NameBegin"};
static_assert(std::size(placeNames) == placeCount);

const char* const editNames[] = {"None",     "Select",  "Show",   "Paint",     "AddAtom", "AddBond",
                                 "AddLeaf",  "AddBox",  "AddSet", "AddTop",    "Destroy", "Swap",
                                 "AddAmong", "SetAtom", "Model",  "Highlight", "Look",    "Command",
                                 "Entry",    "Undo",    "Redo",   "UndoData",  "Kill",    "Throw"};
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

// As the toolkit's header names it. `Enum` is one that the toolkit knows the names of.
template <class Enum> QString nameIn(int value) {
    return QLatin1String("Qt::") + QLatin1String(QMetaEnum::fromType<Enum>().valueToKey(value));
}

QString nameOf(Qt::KeyboardModifiers modifiers) {
    QStringList names;
    for (const Qt::KeyboardModifier each : {Qt::ShiftModifier, Qt::ControlModifier})
        if (modifiers & each)
            names << nameIn<Qt::KeyboardModifiers>(each);
    return names.join(QLatin1String(" | "));
}

} // namespace

QString text(const Step& step) {
    QString fields =
        QStringLiteral(".action = Action::") + QLatin1String(actionNames[int(step.action)]);
    const auto add = [&fields](const char* name, const QString& value) {
        fields += QStringLiteral(", .%1 = %2").arg(QLatin1String(name), value);
    };
    if (!step.name.empty())
        add("name", quoted(step.name));
    if (step.target)
        add("target", QString::number(step.target));
    if (step.button != Qt::LeftButton)
        add("button", nameIn<Qt::MouseButtons>(step.button));
    if (step.place != Place::Object)
        add("place", QStringLiteral("Place::") + QLatin1String(placeNames[int(step.place)]));
    if (step.key != Qt::Key_unknown)
        add("key", nameIn<Qt::Key>(step.key));
    if (step.modifiers)
        add("modifiers", nameOf(step.modifiers));
    if (step.value)
        add("value", QString::number(step.value));
    if (step.answer == Answer::Cancel)
        add("answer", QStringLiteral("Answer::Cancel"));
    if (!step.text.empty())
        add("text", quoted(step.text));
    if (step.edit.kind != EditKind::None) {
        QString edit = QStringLiteral("{EditKind::%1, %2, %3")
                           .arg(QLatin1String(editNames[int(step.edit.kind)]))
                           .arg(step.edit.target)
                           .arg(step.edit.value);
        if (!step.edit.name.empty())
            edit += QLatin1String(", ") + quoted(step.edit.name);
        add("edit", edit + u'}');
    }
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
