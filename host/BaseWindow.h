// The base of every plug-in's main window.
#pragma once

#include "HostExport.h"

#include <QMainWindow>

#include <memory>

class WidgetFactory;

/// A main window with a title, an initial size and a help page. Closing only hides it, without
/// notice to the plug-in, whose pointer stays valid.
class HOST_EXPORT BaseWindow : public QMainWindow {
    Q_OBJECT
public:
    /// `helpPage` is what F1 shows. `flag` true keeps the window above its parent. `name`, which
    /// may be null, becomes the object name.
    BaseWindow(const QString& title, const QSize& size, const QString& helpPage, bool flag,
               QWidget* parent, const char* name);
    ~BaseWindow() override;

    /// Ends `window`, for example when its plug-in is sent "Kill"; the base class closes it.
    virtual void Kill(BaseWindow* window);

    QString helpPage() const;

    /// Where the program gives windows a place in its own, a window that is shown goes there first.
    void setVisible(bool visible) override;

protected:
    void closeEvent(QCloseEvent* event) override;
    void showEvent(QShowEvent* event) override;

    /// Makes widgets in the host's style; never null.
    WidgetFactory* m_Factory;

private:
    struct Private;
    std::unique_ptr<Private> m_private; ///< the host's own
};
