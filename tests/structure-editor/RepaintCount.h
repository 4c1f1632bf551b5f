// How often the tree of a window was told to repaint, and how often it was painted. The window
// makes its tree itself, so that the calls are counted where they arrive: the program is linked
// with another function there.
#pragma once

#include <QObject>

class RepaintCount {
public:
    /// Counts from now on.
    RepaintCount();
    int calls() const;

private:
    int m_before;
};

/// Counts the paint events of a widget from now on, what was asked for before left out.
class PaintCount : public QObject {
public:
    explicit PaintCount(QWidget* widget);
    /// Those that have come once nothing is left to be done.
    int events();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    int m_events = 0;
};
