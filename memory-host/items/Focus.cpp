#include "Focus.h"

#include "FocusedItem.h"
#include "Logger.h"

#include <string>

namespace TAVIK {

using namespace memory_host;

FocusObserver::FocusObserver() {
    focusState().observers.add(this);
}

FocusObserver::~FocusObserver() {
    focusState().observers.remove(this);
}

Compound* Focus::item() {
    return focusState().item;
}

void Focus::set(Compound* item, FocusObserver* by, bool center) {
    if (item && focusState().going && focusState().going->covers(*item))
        return;
    if (item == focusState().item && !center)
        return;
    if (focusState().observers.depth() >= deepestTelling) {
        Logger::Write("a move of the focus is refused: it answers a move that answers another, " +
                      std::to_string(deepestTelling) + " times over");
        return;
    }
    moveFocus(item, by, center);
}

} // namespace TAVIK
