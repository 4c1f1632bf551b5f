// A plug-in whose Cleanup does not delete its window: with DELETES_LATER it is deleted by the event
// loop, else never.
#include "BaseWindow.h"
#include "HostExport.h"
#include "PluginResult.h"

namespace {

class LeftWindow : public BaseWindow {
public:
    LeftWindow()
        : BaseWindow(QStringLiteral("Left behind"), QSize(200, 100), QString(), false, nullptr,
                     nullptr) {}
    ~LeftWindow() override { setProperty("left", false); }

protected:
    // Code of this library that every event of the window runs.
    bool event(QEvent* event) override { return BaseWindow::event(event); }
};

LeftWindow* window = nullptr;

} // namespace

extern "C" HOST_EXPORT void Command(const char*, void*, PluginResult*) {}
extern "C" HOST_EXPORT void CommandC(const char*, const void*, PluginResult*) {}
extern "C" HOST_EXPORT void Execute0(PluginResult*) {
    if (!window)
        window = new LeftWindow;
    window->show();
}
extern "C" HOST_EXPORT bool IsDone() {
    return !window || window->isHidden();
}
extern "C" HOST_EXPORT void Cleanup() {
#ifdef DELETES_LATER
    window->deleteLater();
    window = nullptr;
#endif
}
