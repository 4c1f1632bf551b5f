// What the tests of the commands share: structures with known positions, commands called by their
// menu entries, and answers to the dialogs that they open.
#pragma once

#include "Compound.h"
#include "window/Vuxo.h"

#include <QApplication>
#include <QDialog>
#include <QTest>
#include <QTimer>

#include <functional>
#include <string>
#include <vector>

namespace command_tools {

struct AtomSpec {
    std::string name;
    std::string type;
    TAVIK::Vertex position;
    unsigned int model = 0;
    float temperature = 0.0F;
};

/// One residue as it is to be made: its name, and its atoms in one group of the name "Group".
struct ResidueSpec {
    std::string name;
    std::vector<AtomSpec> atoms;
};

/// Adds a top-level structure with one chain "A" under a guard that tells every subscriber. All
/// neighbouring atoms of a residue are bonded.
TAVIK::Compound* addChain(const std::string& name, const std::vector<ResidueSpec>& residues);
/// A structure with one residue of carbons at the x coordinates.
TAVIK::Compound* addLine(const std::string& name, const std::vector<float>& x);

/// All atoms below `root`.
std::vector<TAVIK::Compound*> atomsOf(TAVIK::Compound* root);
/// The names of the selected, and of the visible, atoms below `root`, in order, with blanks
/// between.
QString selectedNames(TAVIK::Compound* root);
QString visibleNames(TAVIK::Compound* root);

/// Triggers the menu entry of that menu and label.
void trigger(Vuxo& window, const QString& menu, const QString& label);

/// Runs `act`, and `answer` on the dialog of that class that it opens, which `answer` must close.
/// Returns whether there was one.
template <class Dialog>
bool withDialog(const std::function<void()>& act, const std::function<void(Dialog&)>& answer) {
    bool asked = false;
    QTimer timer;
    timer.setSingleShot(true);
    QObject::connect(&timer, &QTimer::timeout, [&] {
        if (auto* dialog = qobject_cast<Dialog*>(QApplication::activeModalWidget())) {
            asked = true;
            answer(*dialog);
        }
    });
    timer.start(0);
    act();
    return asked;
}
/// Enter and Escape, as a user answers a dialog.
void pressEnter(QDialog& dialog);
void pressEscape(QDialog& dialog);

} // namespace command_tools
