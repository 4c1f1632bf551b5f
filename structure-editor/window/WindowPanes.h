// The two panes of the window, list and tree, side by side.
#pragma once

#include <QSplitter>

/// A splitter that, when it is first shown, narrows its first pane in favour of the second: long
/// names are elided in the first, while columns that do not fit are out of sight in the second.
class WindowPanes : public QSplitter {
    Q_OBJECT
public:
    using QSplitter::QSplitter;

    /// Narrows the first pane down to `atLeast` pixels while the second has less than `wanted`.
    void preferSecond(int atLeast, int wanted);

protected:
    void showEvent(QShowEvent* event) override;

private:
    int m_atLeast = 0;
    int m_wanted = 0;
    bool m_isNew = true;
};
