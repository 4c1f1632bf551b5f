// A plug-in whose Cleanup does not destroy its subscriber; with IS_STATIC it is a static object of
// the library, and so goes with it. With IS_OBSERVER it hears of destructions instead of changes,
// with IS_FOLLOWER of moves of the focus, with IS_READER of messages; with LACKS_CLEANUP it is made
// when the library is loaded, which cannot be used.
#include "DestroyObserver.h"
#include "Focus.h"
#include "HostExport.h"
#include "Logger.h"
#include "Messages.h"
#include "PluginResult.h"
#include "Subscriber.h"

namespace {

#ifdef IS_OBSERVER
class LeftSubscriber : public TAVIK::DestroyObserver {
public:
    void aboutToDestroy(TAVIK::Compound*) override { Logger::Write(m_name); }
#elif defined IS_FOLLOWER
class LeftSubscriber : public TAVIK::FocusObserver {
public:
    void focusMoved(TAVIK::Compound*, bool) override { Logger::Write(m_name); }
#elif defined IS_READER
class LeftSubscriber : public MessageObserver {
public:
    void messageShown(const QString&) override { Logger::Write(m_name); }
#else
class LeftSubscriber : public Subscriber {
public:
    void commUpdate() override { Logger::Write(m_name); }
    void commAdd() override {}
    void commDelete() override {}
#endif
    ~LeftSubscriber() override {
        m_name = "gone";
    }

private:
    const char* m_name = "the subscriber that was left behind hears";
};

#ifdef IS_STATIC
LeftSubscriber subscriber;
#elif defined LACKS_CLEANUP
LeftSubscriber* subscriber = new LeftSubscriber;
#else
LeftSubscriber* subscriber = nullptr;
#endif

} // namespace

extern "C" HOST_EXPORT void Command(const char*, void*, PluginResult*) {}
extern "C" HOST_EXPORT void CommandC(const char*, const void*, PluginResult*) {}
extern "C" HOST_EXPORT void Execute0(PluginResult*) {
#if !defined IS_STATIC && !defined LACKS_CLEANUP
    subscriber = new LeftSubscriber;
#endif
}
extern "C" HOST_EXPORT bool IsDone() {
    return true;
}
#ifndef LACKS_CLEANUP
extern "C" HOST_EXPORT void Cleanup() {}
#endif
/// For the test, which must not leave it behind.
extern "C" HOST_EXPORT void DestroySubscriber() {
#ifndef IS_STATIC
    delete subscriber;
#endif
}
