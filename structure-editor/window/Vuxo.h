// The main window of the Structure Editor: the list of the data space's top-level items, the tree
// of the one that is shown, and a slot for each command.
#pragma once

#include "BaseWindow.h"
#include "ChangeData.h"
#include "Changed.h"
#include "Compound.h"
#include "DataAdder.h"
#include "DataDelete.h"
#include "DataPoint.h"
#include "FocusWatch.h"
#include "Subscriber.h"
#include "data/DestructionWatch.h"
#include "data/ItemRef.h"

#include <QPointer>
#include <QtGlobal>

#include <memory>
#include <string>
#include <type_traits>

class ListBox;
class QCheckBox;
class QFrame;
class QLineEdit;
class QListWidgetItem;
class TreeItem;
class TreeView;
enum class SetOperation;

/// What the window refreshes after a change of data.
enum class Refresh {
    Nothing,   ///< only the guard's end tells of the change
    Everything ///< all that the window shows
};

/// What a change of data has done.
struct Done {
    TAVIK::Changed changed;
    Refresh refresh = Refresh::Everything;
    const char* deed = nullptr; ///< for the label, where it is not that of the command

    /// Nothing, so that there is nothing to show or to tell.
    static Done nothing() { return {{}, Refresh::Nothing, ""}; }
};

/// The Structure Editor's one window. It owns no data: it shows the host's data, changes them only
/// inside change guards, and is told of every change by others, even while it is hidden.
///
/// Qt's parents own all widgets. Notifications arrive through a member and the second base class,
/// both destroyed before the widgets are, so that none reaches a half destroyed window.
class Vuxo : public BaseWindow, public Subscriber {
    Q_OBJECT
public:
    /// Builds the window, hidden, with the list filled and the tree empty.
    Vuxo();
    ~Vuxo() override;

    /// Data changed: refreshes the marks of rows and entries.
    void commUpdate() override;
    /// Data were added: shows them too, and leaves what is shown as it is.
    void commAdd() override;
    /// Data were destroyed: empties the tree, whose rows may point to destroyed items.
    void commDelete() override;

    // Each command of the menu bar is a slot. Local ones work on the item that the tree shows and
    // do nothing without one; global ones on the whole data space.
public slots:
    /// Shows the help page.
    void help();
    /// Builds the list anew if the number of its entries is not that of the top-level items.
    void MakeList();
    /// Refreshes the text of every entry.
    void UpdateList();
    /// A mouse button went down on entry `item`; null for none. Left shows the item, right hides or
    /// shows it in the host's display, middle destroys it after a question.
    void ListEvent(int button, QListWidgetItem* item, const QPoint& pos);
    /// Shows top-level item `index` in the tree; nothing happens when there is no such item.
    void Populate(int index);

    // Selecting.
    void showQuery();
    void SelectGroups();
    void SelectRadius();
    void SelectGroupsG();
    void SelectHydrogens();
    void SelectRadiusG();
    void SelectGridBounds();
    // Displaying, and other changes of selected items.
    void SelectedHide();
    void SelectedShow();
    void SelectedClear();
    void SelectedToggle();
    void SelectedColor();
    void SelectedColorTemp();
    void SelectedUnColor();
    void SelectedRotamers();
    void SelectedPrevModel();
    void SelectedNextModel();
    void SelectedOrigModel();
    void SelectedColorGrp2Atom();
    void UnselectedHide();
    void UnselectedHideG();
    // Adding.
    void MakeContourHi();
    void MakeContourLo();
    void MakeSurface();
    void MakeSurfaceED();
    void MakeSurfaceGauss();
    void MakeSurfaceVdW();
    void MakeSurfaceSolv();
    void MakeSubSurface();
    void MakeCartesian();
    void MakeSet();
    void MapGrid2Surf();
    // Deleting.
    void KillAll();
    void KillGroups();
    void KillResidues();
    void KillGrids();
    void KillSurfaces();
    void KillBonds();
    void KillAtoms();
    void KillMolecules();
    void KillClump();
    /// Does nothing.
    void KillItems();

private slots:
    void applySelect();
    void applyMask();
    void applyDiff();
    void SelectionChanged();
    void KillBranch(TreeItem* Victim);

private:
    /// The name of the help page in the current settings.
    static QString helpSetting();
    void CreateMenubar();
    void populateBoxes(QWidget* panel);

    /// The item that the tree shows: that of its first row; null when the tree is empty.
    TAVIK::Compound* rootItem() const;
    /// The item that the tree showed before a dialog; null unless it still does. The tree is empty
    /// when anything was destroyed meanwhile.
    TAVIK::Compound* stillShown(const ItemRef& item) const;
    /// Top-level item `index`; null when there is none.
    static TAVIK::Compound* topLevelItem(int index);
    static int topLevelCount();
    /// The tool tip of entry `index` with the text `text`: name and file.
    static QString entryToolTip(int index, const QString& text);
    /// Makes the rows of `item` in the empty tree.
    void showItem(TAVIK::Compound* item);
    /// Shows the entry of an item, opens the branches above its row, and makes that current.
    void showFocus(TAVIK::Compound* item);
    /// Updates the list after items in `shown`, and perhaps others with them, were destroyed.
    /// `shown` stays the current item; it is null if it was destroyed itself.
    void renewList(TAVIK::Compound* shown);

    /// Updates the list after a destruction of which the window has not been told yet. Returns
    /// whether `entry` still stands for the same item; if not, it may be deleted.
    bool isUpToDate(const QListWidgetItem* entry);
    void showEntryMenu(QListWidgetItem* entry);
    void pick(int index);
    void setCurrent(int index);
    void followCurrentItem();
    void toggleVisible(int index, const std::string& name);
    void killTopLevel(int index, const std::string& name);
    // Functions that several slots share take the name of the slot, for the log.
    void selectFullGroups(TAVIK::Compound* root, const char* slot = __builtin_FUNCTION());
    void selectWithinRadius(TAVIK::Compound* root, const QString& label,
                            const char* slot = __builtin_FUNCTION());
    void setSelectedVisible(bool on, const char* slot = __builtin_FUNCTION());
    void hideUnselected(TAVIK::Compound* root, const char* slot = __builtin_FUNCTION());
    template <class Change, class Leave>
    TAVIK::Changed forSelectedRows(Change apply, Leave leave) const;
    void ForSelectedResidues(void (*function)(TAVIK::Compound*),
                             const char* slot = __builtin_FUNCTION());
    void makeSurface(const char* command, const char* argument,
                     const char* slot = __builtin_FUNCTION());
    void MakeContour(bool high, const char* slot = __builtin_FUNCTION());
    void makeAtLevel(const QString& label, const char* command, const char* argument,
                     const char* slot = __builtin_FUNCTION());
    template <class Tell> void tellPlugin(Tell tell, const char* slot);
    template <class T> void killShown(const char* slot = __builtin_FUNCTION());
    template <class T>
    friend void KillItem(Vuxo* window, TreeItem* row, T* typeTag, const char* slot);
    void applyPattern(SetOperation operation, const char* slot = __builtin_FUNCTION());

    /// A command that changes data: withGuard() inside of attempt().
    template <template <class> class Guard, class Item, class Apply>
    void change(Item* item, Apply apply, Refusal refusal = Refusal::Report,
                const char* slot = __builtin_FUNCTION()) {
        attempt([&] { withGuard<Guard>(slot, item, apply, refusal); }, slot);
    }

    /// The sequence of every change of data: does nothing without an `item`. Takes the guard; if it
    /// is refused, reports that and changes nothing. Otherwise changes the data by `apply(item)`,
    /// labels the change (see changeLabel()) and shows it, before the guard ends and the host tells
    /// the others. `apply` may return what was changed, for the label, or a Done. Exceptions pass
    /// through: to be used inside of attempt().
    template <template <class> class Guard, class Item, class Apply>
    void withGuard(const char* slot, Item* item, Apply apply, Refusal refusal = Refusal::Report) {
        if (!item)
            return;
        const ChangeLabel label = changeLabel(slot);
        const auto run = [&](DataPointBase& guard) {
            Done done;
            if constexpr (std::is_void_v<decltype(apply(item))>)
                apply(item);
            else
                done = {apply(item)};
            setLabel(guard, done.deed ? done.deed : label.deed, done.changed);
            // Without a refresh the window may already be destroyed.
            if (done.refresh == Refresh::Everything)
                showChange(static_cast<Guard<Item>&>(guard));
        };
        changeData(Guard<Item>(this, item, label.command), run, refusal);
    }

    /// The label of a command's change: what the command did, for TAVIK::setLabel(), or the
    /// command's name where that is not known.
    struct ChangeLabel {
        const char* command;
        const char* deed;
    };
    static ChangeLabel changeLabel(const char* slot);

    // The refresh for each kind of change. Code that destroys items updates list and tree itself.
    template <class T> void showChange(const DataPoint<T>&) { commUpdate(); }
    template <class T> void showChange(const DataAdder<T>&) { commAdd(); }
    template <class T> void showChange(const DataDelete<T>&) {}

    /// Runs a command and catches its exceptions: an exception is logged with the name of the slot,
    /// which is the calling function, and the window is rebuilt from the data. `f` may destroy the
    /// window.
    template <class F> void attempt(F f, const char* slot = __builtin_FUNCTION()) {
        const QPointer<Vuxo> window(this);
        try {
            f();
        } catch (...) {
            commandFailed(window, slot);
        }
    }
    static void commandFailed(Vuxo* window, const char* slot);
    /// Builds list and tree anew from the data.
    void rebuild();
    /// Data are about to be destroyed: empties the tree at once, because others may run an event
    /// loop before the window is told of the deletion. If the window itself destroys data, the tree
    /// is empty already.
    void emptyForDestruction();

    /// The source's name in the window's checks.
    static constexpr const char* source = "Vuxo";

    bool m_isBehind = false;        ///< memory ran out while the list was updated
    bool m_hasStaleEntries = false; ///< items were destroyed, and the list is not updated yet
    TreeView* m_Tree;
    ListBox* m_List;
    int m_Current; ///< index of the shown item among the top-level items; -1 for none
    ItemRef m_currentItem{nullptr}; ///< had that index when it was set
    QFrame* m_SelectBox;
    QLineEdit* m_ChainEdit;
    QLineEdit* m_ResidueEdit;
    QLineEdit* m_AtomEdit;
    QCheckBox* m_CurrentOnly;
    // Last, and so the first to be destroyed.
    std::unique_ptr<FocusWatch> m_focus;
    DestructionWatch m_destructions;
};
