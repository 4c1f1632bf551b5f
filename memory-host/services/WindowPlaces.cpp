#include "WindowPlaces.h"

namespace memory_host {

namespace {
WindowPlaces* current = nullptr;
}

WindowPlaces::~WindowPlaces() = default;

void setWindowPlaces(WindowPlaces* places) {
    current = places;
}

WindowPlaces* windowPlaces() {
    return current;
}

} // namespace memory_host
