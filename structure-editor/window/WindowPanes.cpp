#include "WindowPanes.h"

#include <algorithm>
#include <utility>

void WindowPanes::preferSecond(int atLeast, int wanted) {
    m_atLeast = atLeast;
    m_wanted = wanted;
}

void WindowPanes::showEvent(QShowEvent* event) {
    QSplitter::showEvent(event);
    if (!std::exchange(m_isNew, false) || count() != 2)
        return;
    const QList<int> now = sizes();
    const int both = now.at(0) + now.at(1);
    const int hint = widget(0)->sizeHint().width();
    const int first = std::min(hint, std::max(m_atLeast, both - m_wanted));
    if (first != now.at(0))
        setSizes({first, both - first});
}
