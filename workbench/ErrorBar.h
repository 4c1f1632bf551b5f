// Errors and remarks in the main window, which stay until the user has seen them. Nothing waits for
// that.
#pragma once

#include <QFrame>
#include <QString>
#include <QStringList>

class QLabel;
class QPlainTextEdit;
class QToolButton;

namespace workbench {

/// Hidden while there is nothing to say. The lines can be selected and copied.
class ErrorBar : public QFrame {
    Q_OBJECT
public:
    static constexpr int mostLines = 200; ///< older ones are dropped; the log has them all

    explicit ErrorBar(QWidget* parent = nullptr);

    void add(const QString& line);
    QStringList lines() const;

public slots:
    /// Takes all lines away.
    void dismiss();

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    void fit();
    /// The last line is in sight, also where the user has scrolled to an older one.
    void showNewest();

    QPlainTextEdit* m_text;
    QToolButton* m_close;
};

} // namespace workbench
