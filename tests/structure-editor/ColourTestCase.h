// What the tests of the commands that colour share: the commands, colours, and the dialog's answer.
#pragma once

#include "CommandTools.h"
#include "Compound.h"
#include "WindowTestCase.h"

#include <QColorDialog>

#include <iterator>
#include <string>
#include <vector>

namespace colour_tools {

/// A command that colours, by its menu entry.
struct Command {
    const char* menu;
    const char* label;
    const char* line; ///< written before anything else
};

inline const Command commands[] = {
    {"Display", "Set color", "ProteinPage::SelectedColor()"},
    {"Display", "Default color", "ProteinPage::RestoreColor()"},
    {"Display", "Color by Temp", "ProteinPage::SelectedColorTemp()"},
    {"Modify", "Colour Atoms by Residue", "Color atoms by residue color"}};
inline const Command& setColor = commands[0];
inline const Command& defaultColor = commands[1];
inline const Command& byTemperature = commands[2];
inline const Command& byResidue = commands[3];

/// A row of test data for each command: its index.
inline void addCommandRows() {
    QTest::addColumn<int>("index");
    for (int i = 0; i < int(std::size(commands)); ++i)
        QTest::newRow(commands[i].label) << i;
}

inline const Color teal(0xff008080U);
inline const Color seeThrough(0x40123456U);
inline const Color white(0xffffffffU);
inline const Color carbon(0xffc8c8c8U);
inline const Color blue(0xff0000ffU);
inline const Color red(0xffff0000U);

/// An item and all that it holds, parents first.
inline std::vector<TAVIK::Compound*> itemsOf(TAVIK::Compound* root) {
    std::vector<TAVIK::Compound*> items{root};
    for (TAVIK::Compound** child = root->ChildBegin(); child != root->ChildEnd(); ++child) {
        const std::vector<TAVIK::Compound*> below = itemsOf(*child);
        items.insert(items.end(), below.begin(), below.end());
    }
    return items;
}

inline std::vector<Color> coloursOf(const std::vector<TAVIK::Compound*>& items) {
    std::vector<Color> colours;
    for (const TAVIK::Compound* item : items)
        colours.push_back(item->GetColor());
    return colours;
}

inline void paint(const std::vector<TAVIK::Compound*>& items, const Color& color) {
    for (TAVIK::Compound* item : items)
        item->SetColor(color);
}

/// A structure of one residue of carbons with these temperature factors.
inline TAVIK::Compound* addWarm(const std::string& name, const std::vector<float>& temperatures) {
    command_tools::ResidueSpec residue{"UNL 1", {}};
    for (const float temperature : temperatures)
        residue.atoms.push_back({"C", "C", {}, 0, temperature});
    return command_tools::addChain(name, {residue});
}

class ColourTestCase : public window_tools::WindowTestCase {
protected:
    /// Runs a command; where it asks for a colour, it gets `answer`. Returns whether it asked.
    bool run(const Command& command, const std::function<void(QColorDialog&)>& answer) {
        return command_tools::withDialog<QColorDialog>(
            [&] { command_tools::trigger(*m_window, command.menu, command.label); }, answer);
    }
    bool run(const Command& command, const Color& chosen = teal) {
        return run(command, [&](QColorDialog& dialog) {
            dialog.setCurrentColor(chosen.toQColor());
            command_tools::pressEnter(dialog);
        });
    }
};

} // namespace colour_tools
