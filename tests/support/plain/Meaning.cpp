#include "Meaning.h"

#include "PlainWindow.h"

#include <algorithm>
#include <iterator>

namespace plain {

namespace {

int targetOf(const Step& step, Model& model, const Command* command) {
    const unsigned int number = step.target;
    switch (step.action) {
    case Action::Press:
    case Action::DoubleClick:
        return countedRound(number, model.tree.shown().size());
    case Action::Move:
    case Action::Release: {
        const auto count = static_cast<int>(model.tree.shown().size());
        const int row = countedRound(number, static_cast<std::size_t>(count) + 1);
        return row == count ? -1 : row;
    }
    case Action::PressEntry: {
        const int entry = countedRound(number, static_cast<std::size_t>(model.list.size()) + 1);
        return entry == model.list.size() ? -1 : entry;
    }
    case Action::Slot:
        break;
    default:
        return -1;
    }
    const std::string_view slot = command->slot;
    if (slot == "Populate(int)") // from one before the first to one behind the last
        return countedRound(number, model.topLevel().size() + 2) - 1;
    if (slot == "KillBranch(TreeItem*)")
        return countedRound(number, model.tree.all().size());
    return countedRound(number, static_cast<std::size_t>(model.list.size()));
}

int fieldOf(const Step& step) {
    if (step.action != Action::Field)
        return -1;
    const auto* const found = std::find(std::begin(fieldNames), std::end(fieldNames), step.name);
    return found == std::end(fieldNames) ? -1 : static_cast<int>(found - std::begin(fieldNames));
}

int buttonOf(const Step& step) {
    if (step.action != Action::Button)
        return -1;
    const auto* const found =
        std::find_if(std::begin(panelButtons), std::end(panelButtons),
                     [&](const PanelButton& button) { return button.name == step.name; });
    return found == std::end(panelButtons) ? -1
                                           : static_cast<int>(found - std::begin(panelButtons));
}

} // namespace

Meaning meaningOf(const Step& step, Model& model, const Tables& tables) {
    Meaning meaning;
    if (step.action == Action::Slot)
        meaning.command = findCommand(tables.commands, step.name);
    if (step.action == Action::Menu)
        meaning.entry = findEntry(tables.entries, step.name);
    meaning.field = fieldOf(step);
    meaning.button = buttonOf(step);
    meaning.at = targetOf(step, model, meaning.command);
    return meaning;
}

QString unknownName(const Step& step, const Tables& tables) {
    const auto missing = [](const char* what, const std::string& name) {
        return QStringLiteral("there is no %1 \"%2\"")
            .arg(QLatin1String(what), QString::fromStdString(name));
    };
    if (step.action == Action::Slot && !findCommand(tables.commands, step.name))
        return missing("slot", step.name);
    if (step.action == Action::Menu && !findEntry(tables.entries, step.name))
        return missing("menu entry", step.name);
    if (step.action == Action::Field && fieldOf(step) < 0)
        return missing("field", step.name);
    if (step.action == Action::Button && buttonOf(step) < 0)
        return missing("button", step.name);
    if (step.edit.kind == EditKind::Command && !findCommand(tables.commands, step.edit.name))
        return missing("slot", step.edit.name);
    return {};
}

} // namespace plain
