// The two panes of the window, list and tree, side by side.
#pragma once

#include <QSplitter>

/// A splitter that, when it is first shown, narrows its first pane for the sake of the second one:
/// names that are too long are elided in the first, and columns that do not fit are out of sight in
/// the second.
class WindowPanes : public QSplitter {
    Q_OBJECT
public:
    using QSplitter::QSplitter;

    /// Down to `atLeast` pixels for the first pane, while the second has less than `wanted`.
    void preferSecond(int atLeast, int wanted);

protected:
    void showEvent(QShowEvent* event) override;

private:
    int m_atLeast = 0;
    int m_wanted = 0;
    bool m_isNew = true;
};
