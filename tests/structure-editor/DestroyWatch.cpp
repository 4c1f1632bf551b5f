#include "DestroyWatch.h"

#include <utility>

namespace {

std::function<void(TAVIK::Compound*)> watcher;

} // namespace

void realDestroy(TAVIK::Compound* item) asm("__real__ZN5TAVIK9DataMaker7DestroyEPNS_8CompoundE");
void watchedDestroy(TAVIK::Compound* item) asm("__wrap__ZN5TAVIK9DataMaker7DestroyEPNS_8CompoundE");

void watchedDestroy(TAVIK::Compound* item) {
    if (watcher)
        watcher(item);
    realDestroy(item);
}

DestroyWatch::DestroyWatch(std::function<void(TAVIK::Compound*)> before) {
    watcher = std::move(before);
}

DestroyWatch::~DestroyWatch() {
    watcher = {};
}
