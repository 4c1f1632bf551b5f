// Does the steps of a session for real: with mouse and keys on the window, through the plug-in's
// entry points, and as others do who work on the same data.
#pragma once

#include "SavedBonds.h"
#include "plain/PlainWindow.h"
#include "plain/Step.h"

#include "Subscriber.h"

#include <QAbstractItemModelTester>
#include <QPointer>
#include <QTemporaryDir>

#include <functional>
#include <memory>
#include <optional>

class ListBox;
class QFrame;
class QMenu;
class TreeItem;
class TreeView;
class Vuxo;
namespace TAVIK {
class Compound;
}
namespace memory_host {
struct SaveOptions;
class SpaceLock;
} // namespace memory_host

namespace random_use {

using namespace plain;

/// Another subscriber, who was there before the window: it writes down what it hears and what the
/// window then shows, and may answer with a change of its own.
class Listener : public Subscriber {
public:
    QStringList told;
    Edit answer;
    /// Does what others may do to the window itself, which has not heard yet of what they have.
    std::function<void(const Edit&)> useWindow;

private:
    void commUpdate() override { hear(QStringLiteral("update")); }
    void commAdd() override { hear(QStringLiteral("add")); }
    void commDelete() override { hear(QStringLiteral("delete")); }
    void hear(const QString& kind);
};

/// The entries of the window's list.
QStringList entriesOf(const Vuxo* window);

/// Does what others do to the data, under a guard of `who`, which may be null.
void editData(Subscriber* who, const Edit& edit);
/// Builds a structure, other for each seed, as a file reader does; nothing happens when the host
/// refuses it.
void buildStructure(unsigned int seed);
/// Opens a file. Returns whether the host let it in.
bool openStructure(const std::string& path);
inline constexpr const char* sampleFile = "sample.pdb";
inline constexpr const char* modelsFile = "models.pdb";
inline constexpr const char* missingFile = "no such file.pdb";
/// The file that a session begins with; null for none.
const char* fileOf(Start::Kind kind);

class Driver {
public:
    /// Fills the empty data space with what `start` says, and `model` with the same.
    Driver(const Start& start, Model& model);
    ~Driver();
    /// Unlocks the space, and answers no change from now on.
    void rest();
    Driver(const Driver&) = delete;
    Driver& operator=(const Driver&) = delete;

    /// Does a step for real, then in the model. What is said in the real world is returned.
    Said act(const Step& step);

    static Vuxo* window();
    static TreeView* treeOf(const Vuxo* window);
    static ListBox* listOf(const Vuxo* window);
    static QFrame* panelOf(const Vuxo* window);
    bool isDone() const;
    /// The name of an entry's file in the session's folder; empty for none.
    std::string fileOf(const TAVIK::Compound* entry) const;

private:
    bool isUsable() const;
    /// Runs `work`, and answers the dialog that it opens as the step says.
    void answering(const Step& step, const std::function<void()>& work);
    void answer(const Step& step);
    void answerMenu(QMenu* menu, const Step& step);
    /// The steps that need no usable window, and those that do.
    void doAnywhere(const Step& step);
    void putAway(const Step& step);
    void useWindow(const Edit& edit);
    void doInWindow(const Step& step);
    void invoke(const Step& step);
    void trigger(const Step& step);
    void call(const Step& step);
    void openOrBuild(const Step& step);
    /// In the session's own folder.
    std::string pathOf(const std::string& name) const;
    QString nameOf(const std::string& path) const;
    void fetch(const std::string& name) const;
    /// Enters what was opened of a file, the top-level items from that one on, and compares it with
    /// what was saved.
    void enterFile(const std::string& name, unsigned int first);
    void save(const Step& step);
    void saveAs(const std::vector<TAVIK::Compound*>& entries, const std::string& path,
                memory_host::SaveOptions options, const Step& step);
    /// Reads what was saved in this step, and compares it.
    void readSaved();
    /// Enters the top-level items from that one on in the model.
    void enterFrom(unsigned int first);

    /// The row that the step is about; null when there is none.
    TreeItem* rowInStep() const;
    QPoint placeIn(const TreeItem* row, Place place) const;
    QPoint belowRows() const;
    /// Where a drag goes to or ends; nowhere when that is below rows that fill the screen: what a
    /// mouse that rests outside drags along depends on the time.
    std::optional<QPoint> dragPlace();
    void press(const Step& step);
    void doubleClick();
    void openRows();
    void key(const Step& step);
    void lookAtScreen();
    void listKey(const Step& step);
    void pressEntry(const Step& step);
    void clickHeader(const Step& step);
    void usePanel(const Step& step);
    void activate() const;

    Model& m_model;
    Step m_step; ///< the one that is done
    Meaning m_meaning;
    Seen m_seen;
    Said m_said;
    Listener m_listener;
    std::unique_ptr<memory_host::SpaceLock> m_lock;
    QTemporaryDir m_folder;
    std::vector<std::string> m_saved; ///< paths, in this step
    SavedBonds m_savedBonds;
    bool m_isLow;
    bool m_watched;
    QPointer<QAbstractItemModel> m_rows;
    std::unique_ptr<QAbstractItemModelTester> m_tester;
};

} // namespace random_use
