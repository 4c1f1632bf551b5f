// How often the tree of a window was told to repaint. The window makes its tree itself, so that
// the calls are counted where they arrive: the program is linked with another function there.
#pragma once

class RepaintCount {
public:
    /// Counts from now on.
    RepaintCount();
    int calls() const;

private:
    int m_before;
};
