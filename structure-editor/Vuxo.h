// The main window of the Structure Editor: the list of the data space's top-level items, the tree
// of the one that is shown, and a slot for each command.
#pragma once

#include "BaseWindow.h"
#include "Compound.h"
#include "DataAdder.h"
#include "DataDelete.h"
#include "DataPoint.h"
#include "Subscriber.h"

#include <QPointer>
#include <QtGlobal>

#include <source_location>
#include <string>
#include <type_traits>

class ListBox;
class QCheckBox;
class QFrame;
class QLineEdit;
class QListWidgetItem;
class QRegExp;
class TreeItem;
class TreeView;

/// What the window says of a change that the host refuses.
enum class Refusal { Report, Silent };

/// The Structure Editor's one window. It owns no data: it shows the host's, changes them inside
/// change guards only, and hears of every change that others make, also while it is hidden.
///
/// Qt's parents own all widgets. The base `Subscriber` comes second, so that it ends before the
/// widgets do: no notification meets a half destroyed window.
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
    /// Data were destroyed: empties the tree, whose rows may stand for what is gone.
    void commDelete() override;

public slots:
    /// Builds the list anew when it has not as many entries as there are top-level items.
    void MakeList();
    /// Refreshes the text of every entry.
    void UpdateList();
    /// A mouse button went down on entry `item`; null for none. Left shows the item, right hides or
    /// shows it in the host's display, middle destroys it after a question.
    void ListEvent(int button, QListWidgetItem* item, const QPoint& pos);
    /// Shows top-level item `index` in the tree; nothing happens when there is no such item.
    void Populate(int index);

private slots:
    void applySelect();
    void applyMask();
    void applyDiff();
    void SelectionChanged();
    void KillBranch(TreeItem* Victim);

private:
    void CreateMenubar();
    void populateBoxes(QWidget* panel);

    /// The item that the tree shows: that of its first row; null when the tree is empty.
    TAVIK::Compound* rootItem() const;
    /// Top-level item `index`; null when there is none.
    static TAVIK::Compound* topLevelItem(int index);
    static int topLevelCount();
    /// Makes the rows of `item` in the empty tree.
    void showItem(TAVIK::Compound* item);

    void pick(int index);
    void toggleVisible(int index, const std::string& name);
    void killTopLevel(int index, const std::string& name);
    /// Asks whether the item of that name is to be destroyed. Anything can have happened meanwhile:
    /// the item may be gone, and when the answer is no, also the window.
    bool confirmDelete(const std::string& name);
    void applyPattern(bool all, bool (*predicate)(TAVIK::Compound*, const QRegExp&));

    /// The order of every command that changes data, in one place: finds nothing to do without an
    /// `item`; takes the guard; a refused one is said and changes nothing; else changes the data by
    /// `apply(item)` and shows the change, before the guard ends and the host tells the others. An
    /// `apply` that returns false leaves the window as it is.
    template <template <class> class Guard, class Item, class Apply>
    void change(Item* item, Apply apply, Refusal refusal = Refusal::Report,
                std::source_location where = std::source_location::current()) {
        if (!item)
            return;
        attempt(
            [&] {
                const Guard<Item> guard(this, item);
                if (!guard.m_good) {
                    if (refusal == Refusal::Report)
                        qDebug("%s", "Cannot update CDB!");
                } else if constexpr (std::is_same_v<decltype(apply(item)), bool>) {
                    if (apply(item))
                        showChange(guard);
                } else {
                    apply(item);
                    showChange(guard);
                }
            },
            where);
    }

    // What follows a change of each kind. Those who destroy items renew list and tree themselves.
    template <class T> void showChange(const DataPoint<T>&) { commUpdate(); }
    template <class T> void showChange(const DataAdder<T>&) { commAdd(); }
    template <class T> void showChange(const DataDelete<T>&) {}

    /// Runs a command, and is where an exception out of one ends: it is logged with the command's
    /// name, and the window shows the data as they then are. `f` may destroy the window.
    template <class F>
    void attempt(F f, std::source_location where = std::source_location::current()) {
        const QPointer<Vuxo> window(this);
        try {
            f();
        } catch (...) {
            commandFailed(window, where.function_name());
        }
    }
    static void commandFailed(Vuxo* window, const char* command);
    /// Builds list and tree anew from the data.
    void rebuild();

    /// What the window's checks name as their source.
    static constexpr const char* source = "Vuxo";

    TreeView* m_Tree;
    ListBox* m_List;
    int m_Current; ///< index among the top-level items of the one in the tree; -1 for none
    QFrame* m_SelectBox;
    QLineEdit* m_ChainEdit;
    QLineEdit* m_ResidueEdit;
    QLineEdit* m_AtomEdit;
    QCheckBox* m_CurrentOnly;
};
