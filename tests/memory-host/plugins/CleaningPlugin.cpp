// A plug-in of the frame for plug-ins without a window. Its command leaves a subscriber, which its
// clean-up takes away.
#include "CommandPlugin.h"

#include "Logger.h"
#include "Subscriber.h"

namespace {

class LeftSubscriber : public Subscriber {
public:
    void commUpdate() override { Logger::Write("the subscriber hears"); }
    void commAdd() override {}
    void commDelete() override {}
};

// Never destroyed by itself: only the clean-up may do that.
LeftSubscriber* left = nullptr;

void subscribe(void*, PluginResult*) {
    delete left;
    left = new LeftSubscriber;
}

void cleanUp() {
    delete left;
    left = nullptr;
    Logger::Write("cleaned up");
}

} // namespace

COMMAND_PLUGIN_WITH_CLEANUP(&cleanUp, {"Subscribe", &subscribe})
