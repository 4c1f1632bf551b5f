// A plug-in with a window, made with the shared frame: all that such a plug-in needs.
#include "GUIPlugin.h"

#include "BaseWindow.h"

namespace {

class PluginWindow : public BaseWindow {
    Q_OBJECT
public:
    PluginWindow()
        : BaseWindow(QStringLiteral("A plug-in's window"), QSize(200, 100), QString(), false,
                     nullptr, nullptr) {}
};

} // namespace

GUI_PLUGIN(PluginWindow)

#include "WindowPlugin.moc"
