// Keeps the letters of two menu bars apart, of which one stands in a dock of the other's window.
#pragma once

#include <QObject>
#include <QStringList>

class QMenuBar;
class QWidget;

namespace workbench {

/// While the keyboard is in a window within the menu bar's own, with menus of its own, those have
/// their letters, and the bar's menus take others of their titles: a letter that two menus have
/// opens neither.
class MenuLetters : public QObject {
    Q_OBJECT
public:
    /// The menus of `bar` are there, and stay.
    explicit MenuLetters(QMenuBar* bar);

private:
    void follow(QWidget* focus);
    const QMenuBar* barAround(const QWidget* focus) const;

    QMenuBar* m_bar;
    QStringList m_titles; ///< as they were
};

} // namespace workbench
