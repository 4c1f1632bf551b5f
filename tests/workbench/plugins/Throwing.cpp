// A plug-in that subscribes when it is started, and throws at every change.
#include "HostExport.h"
#include "PluginResult.h"
#include "Subscriber.h"

#include <memory>
#include <stdexcept>

namespace {

class Throwing : public Subscriber {
public:
    void commUpdate() override { fail(); }
    void commAdd() override { fail(); }
    void commDelete() override { fail(); }

private:
    [[noreturn]] static void fail() { throw std::runtime_error("not today"); }
};

std::unique_ptr<Throwing> subscriber;

} // namespace

extern "C" HOST_EXPORT void Command(const char*, void*, PluginResult*) {}
extern "C" HOST_EXPORT void CommandC(const char*, const void*, PluginResult*) {}
extern "C" HOST_EXPORT void Execute0(PluginResult*) {
    subscriber = std::make_unique<Throwing>();
}
extern "C" HOST_EXPORT bool IsDone() {
    return true;
}
extern "C" HOST_EXPORT void Cleanup() {
    subscriber.reset();
}
