// The main window of the 3-D view: the picture, a menu, and what ties both to the data space.
#pragma once

#include "BaseWindow.h"
#include "Canvas.h"
#include "Compound.h"
#include "Focus.h"
#include "PictureFile.h"
#include "Subscriber.h"
#include "scene/DataReader.h"
#include "scene/Drawing.h"
#include "scene/Look.h"

#include <QSize>
#include <QTimer>

#include <cstdint>
#include <deque>
#include <functional>
#include <future>
#include <memory>
#include <optional>
#include <stop_token>
#include <string>
#include <vector>

class QActionGroup;
class QMenu;

namespace view {

class ElidedLabel;

/// The view's one window. It owns no data. It is told of every change, and reads the data again in
/// the event loop that follows, once for any number of changes and in pieces between which other
/// events have their turn; while it is hidden it reads nothing.
///
/// Qt's parents own all widgets. Notifications arrive through base classes and a member, which are
/// destroyed before the widgets are.
class View3D : public BaseWindow, public Subscriber, public TAVIK::FocusObserver {
    Q_OBJECT
public:
    View3D();
    ~View3D() override;

    void commUpdate() override;
    void commAdd() override;
    void commDelete() override;
    /// Another window looks at an item: it gets a mark, and if that is asked for, it goes to the
    /// middle and the view comes close.
    void focusMoved(TAVIK::Compound* item, bool center) override;

    /// Reads the data now, if they have changed since they were read.
    void bringUpToDate();
    /// Whether the picture on the screen is whole, and of the data as they are.
    bool isUpToDate() const;

    /// Draws what the window shows as a picture of that size in pixels, of the whole quality, and
    /// writes it to a file in the format PNG. Returns what went wrong, as one line; empty when
    /// nothing did. An existing picture is replaced when the new one is complete; a file that holds
    /// something else is kept.
    std::string savePicture(const QString& path, const QSize& size);

    Canvas* canvas() const { return m_canvas; }
    /// What the line at the lower edge says: the item under the pointer, or why something was not
    /// done.
    QString line() const;

public slots:
    /// Shows everything, as when the data were opened.
    void resetView();
    /// Shows everything, as one looks at it now.
    void showAll();
    /// Puts the middle of what is selected into the middle of the window; of everything that is
    /// drawn, if nothing is.
    void centreSelection();
    void setRepresentation(view::Representation representation);
    void setShowWaters(bool on);
    /// Of the selected surfaces; of all, if none is selected, and of those that will come.
    void setSurfaceStyle(view::SurfaceStyle style);
    void setLightBackground(bool on);
    void setDepthCue(bool on);
    /// Whether what hides the item in focus is cut away.
    void setClearsFront(bool on);
    void setFullScreen(bool on);
    /// Asks for size and file in a dialog, which saves a picture when it is accepted.
    void askForPicture();

protected:
    void showEvent(QShowEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    /// What savePicture() draws.
    Order pictureOrder(const QSize& size);
    /// Saves a picture, on another thread, while the user can see that and cancel it.
    void drawPicture(const PictureRequest& request);
    void drawPictureNow(const PictureRequest& asked);

    void createMenu();
    /// The entry that asks another plug-in for the colours of atoms on surfaces, while that one is
    /// there.
    void addSurfaceColours();
    void schedule(DataReader::What what);
    /// Reads a piece of what is due, and shows all of it once it is read.
    void readPiece();
    /// Begins to read what is due, if that is anything.
    void beginReading();
    void reportNoMemory();
    /// Hands over what was read to be drawn.
    void showData();
    std::optional<Colour> outlineColour() const;
    /// Works out where something is, and lets `use` have it: later, and on another thread, where
    /// there are so many atoms that it would be noticed. What is asked for last counts.
    void locate(const std::function<Canvas::Fit()>& work,
                const std::function<void(const Canvas::Fit&)>& use);

    void click(Id id, std::uint64_t generation, Qt::KeyboardModifiers modifiers);
    /// Marks the item in focus where it is now, if it is marked.
    void renewMark();
    /// Draws the atoms of the residue in focus, if that is asked for, by their ids as they are now.
    void renewFocusAtoms();
    void doubleClick(Id id, std::uint64_t generation, const Point& point);
    void hover(Id id, std::uint64_t generation);
    /// Opens a guard, changes the selection, and shows it. Says so if the guard is refused.
    template <class Change> void changeSelection(const char* command, Change change);
    /// Says something to the user, here and in the host's window.
    void say(const QString& text);

    Canvas* m_canvas;
    ElidedLabel* m_line;
    QMenu* m_menu = nullptr;
    QActionGroup* m_representations = nullptr;
    Look m_look;
    bool m_isLight = false;
    bool m_isEmpty = true;   ///< nothing was there when the data were last read
    bool m_isFitDue = false; ///< items were added since
    /// Whether the residue in focus is seen with its atoms: from when another window looks at it
    /// until something else is clicked.
    bool m_showsFocus = false;
    /// Where the data are that are read next, if that will be asked.
    std::shared_ptr<Canvas::Fit> m_fit;
    std::optional<DataReader::What> m_due = DataReader::What::Everything; ///< not begun yet
    QTimer m_nextPiece;
    std::deque<PictureRequest> m_toDraw; ///< the first is being drawn
    std::stop_source m_end;              ///< asked to stop when the window goes
    std::uint64_t m_locating = 0;        ///< the number of what is being located
    std::vector<std::future<void>> m_locatingThreads;
    DataReader m_reader; ///< last, and so the first to be destroyed
};

} // namespace view
