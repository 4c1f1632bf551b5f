// A plug-in whose Cleanup does not destroy its subscriber; with IS_STATIC it is a static object of
// the library, and so goes with it.
#include "HostExport.h"
#include "Logger.h"
#include "PluginResult.h"
#include "Subscriber.h"

namespace {

class LeftSubscriber : public Subscriber {
public:
    ~LeftSubscriber() override { m_name = "gone"; }
    void commUpdate() override { Logger::Write(m_name); }
    void commAdd() override {}
    void commDelete() override {}

private:
    const char* m_name = "the subscriber that was left behind hears";
};

#ifdef IS_STATIC
LeftSubscriber subscriber;
#else
LeftSubscriber* subscriber = nullptr;
#endif

} // namespace

extern "C" HOST_EXPORT void Command(const char*, void*, PluginResult*) {}
extern "C" HOST_EXPORT void CommandC(const char*, const void*, PluginResult*) {}
extern "C" HOST_EXPORT void Execute0(PluginResult*) {
#ifndef IS_STATIC
    subscriber = new LeftSubscriber;
#endif
}
extern "C" HOST_EXPORT bool IsDone() {
    return true;
}
extern "C" HOST_EXPORT void Cleanup() {}
/// For the test, which must not leave it behind.
extern "C" HOST_EXPORT void DestroySubscriber() {
#ifndef IS_STATIC
    delete subscriber;
#endif
}
