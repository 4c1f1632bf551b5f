// A screen that nobody sees, and a hand on its mouse and keyboard.
#pragma once

#include "Program.h"

#include <QImage>
#include <QPoint>
#include <QProcess>

namespace end_to_end {

/// An X server of its own on a display number that is free.
class VirtualScreen {
public:
    VirtualScreen();
    ~VirtualScreen();
    VirtualScreen(const VirtualScreen&) = delete;
    VirtualScreen& operator=(const VirtualScreen&) = delete;

    QString name() const { return m_name; }
    /// Lets a program open its windows here.
    void show(Program& program) const;

    /// Waits for a window with exactly this title; 0 when `program` ends without one.
    qint64 waitForWindow(const QString& title, Program& program) const;
    /// The visible window with exactly this title; 0 when there is none.
    qint64 findWindow(const QString& title) const;
    /// How many windows are visible, open menus included.
    int windowCount() const;

    void click(qint64 window, QPoint position, Qt::MouseButton button = Qt::LeftButton) const;
    /// Presses the button at `from`, moves the mouse to `to` on the way that a hand would, and lets
    /// go there.
    void drag(qint64 window, QPoint from, QPoint to, Qt::MouseButton button = Qt::LeftButton) const;
    /// Gives a window the keyboard, as a window manager would.
    void focus(qint64 window) const;
    /// Types a text in the window that has the focus.
    void type(const QString& text) const;
    /// Presses and releases a key, by its name in X, in the window that has the focus.
    void key(const QString& key) const;
    /// The same in a window that may not have it.
    void key(const QString& key, qint64 window) const;
    /// Moves the mouse to the corner of the screen, where it highlights nothing.
    void moveMouseAway() const;
    QImage picture(qint64 window) const;

private:
    /// What a tool prints on standard output; empty when it fails.
    QByteArray runTool(const QString& tool, const QStringList& arguments) const;

    QProcess m_server;
    QString m_name;
    QProcessEnvironment m_environment;
};

} // namespace end_to_end
