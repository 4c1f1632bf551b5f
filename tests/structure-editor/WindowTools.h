// What the tests of the window share: small structures in the data space, the window's widgets as a
// user meets them, another plug-in that looks at the same data, and answers to questions.
#pragma once

#include "Compound.h"
#include "Subscriber.h"

#include <QMessageBox>
#include <QModelIndex>
#include <QPointer>
#include <QStringList>

#include <functional>
#include <string>

class ListBox;
class QFrame;
class TreeView;
class Vuxo;

namespace window_tools {

/// What the window writes when the host refuses it a change, and when others have destroyed items.
inline const QString refused = QStringLiteral("Cannot update CDB!");
inline const QString deleted = QStringLiteral("Vuxo::commDelete(): Did somebody killed my data?");

/// Adds a structure as a file reader would, and tells every subscriber: chain "A" with the residues
/// "MET 1" (groups "Backbone" with N, CA, C and "Side chain" with CB, SD) and "HOH 2" (O), and a
/// composite "Bonds" with the bond of CA and C.
TAVIK::Compound* addStructure(const std::string& name);
/// Adds an item of that kind without anything in it, and tells every subscriber.
TAVIK::Compound* addEmpty(const std::string& name, const std::string& kind = "Composite");
/// Adds an atom to `parent` and tells every subscriber.
TAVIK::Compound* addAtomTo(TAVIK::Compound* parent, const std::string& name);
/// Destroys `item` and tells every subscriber.
void destroyElsewhere(TAVIK::Compound* item);
/// Selects or hides below a guard that tells every subscriber.
void selectElsewhere(TAVIK::Compound* item, bool on);
void showElsewhere(TAVIK::Compound* item, bool on);
/// The item at `path` (names of children) below `root`.
TAVIK::Compound* itemAt(TAVIK::Compound* root, const QStringList& path);

/// Another plug-in that looks at the data: counts what it hears, and does what a test wants.
class OtherPlugin : public Subscriber {
public:
    void commUpdate() override;
    void commAdd() override;
    void commDelete() override;

    std::function<void()> onUpdate;
    std::function<void()> onAdd;
    std::function<void()> onDelete;
    int updates = 0;
    int adds = 0;
    int deletes = 0;
};

ListBox* listOf(const Vuxo& window);
TreeView* treeOf(const Vuxo& window);
QFrame* panelOf(const Vuxo& window);
/// The list's entries as they read.
QStringList entries(const Vuxo& window);
/// The highlighted entry; -1 for none.
int highlighted(const Vuxo& window);
/// The names of all rows, each indented by a blank a level.
QStringList rows(const Vuxo& window);
/// The row at `path`, whose first name is the top row's.
QModelIndex rowAt(const Vuxo& window, const QStringList& path);
/// The four cells of the row at `path`.
QStringList cells(const Vuxo& window, const QStringList& path);
/// Whether the row paints as selected.
bool isMarked(const Vuxo& window, const QStringList& path);

/// A press of a mouse button, and a release if `widget` lives on: a press can end the window.
void click(QWidget* widget, const QPoint& pos, Qt::MouseButton button,
           Qt::KeyboardModifiers modifiers = Qt::NoModifier);
/// A click on list entry `index`.
void clickEntry(const Vuxo& window, int index, Qt::MouseButton button = Qt::LeftButton);
/// The same on column 0 of a tree row, which is scrolled to first.
void clickRow(const Vuxo& window, const QStringList& path, Qt::MouseButton button = Qt::LeftButton,
              Qt::KeyboardModifiers modifiers = Qt::NoModifier);

/// Runs `act`, and `answer` on the question that it opens. Returns whether there was one.
bool withQuestion(const std::function<void()>& act,
                  const std::function<void(QMessageBox&)>& answer);
void pressOk(QMessageBox& question);
void pressCancel(QMessageBox& question);

} // namespace window_tools
