// A plug-in whose window opens the help, throws out of an event handler twice, and then closes
// itself while the help is still open.
#include "GUIPlugin.h"

#include "BaseWindow.h"
#include "HelpViewer.h"

#include <QTimerEvent>

#include <stdexcept>

namespace {

class FaultyWindow : public BaseWindow {
public:
    FaultyWindow()
        : BaseWindow(QStringLiteral("Faulty"), QSize(200, 100), QString(), false, nullptr,
                     nullptr) {
        startTimer(1);
    }

protected:
    void timerEvent(QTimerEvent*) override {
        switch (++m_events) {
        case 1:
            HelpViewer::Show(QStringLiteral("structure-editor"));
            throw std::runtime_error("the first fault");
        case 2:
            throw 2;
        default:
            close();
        }
    }

private:
    int m_events = 0;
};

} // namespace

GUI_PLUGIN(FaultyWindow)
