// A plug-in of the frame for plug-ins without a window. Its command leaves a subscriber, which its
// clean-up takes away.
#include "CommandPlugin.h"

#include "Logger.h"
#include "Subscriber.h"

#include <memory>

namespace {

class LeftSubscriber : public Subscriber {
public:
    void commUpdate() override { Logger::Write("the subscriber hears"); }
    void commAdd() override {}
    void commDelete() override {}
};

std::unique_ptr<LeftSubscriber>& left() {
    // Never destroyed by itself: only the clean-up may do that.
    static auto* const subscriber = new std::unique_ptr<LeftSubscriber>;
    return *subscriber;
}

void subscribe(void*, PluginResult*) {
    left() = std::make_unique<LeftSubscriber>();
}

void cleanUp() {
    left().reset();
    Logger::Write("cleaned up");
}

} // namespace

COMMAND_PLUGIN_WITH_CLEANUP(&cleanUp, {"Subscribe", &subscribe})
