// A line of plain text that takes the width it is given.
#pragma once

#include "HostExport.h"

#include <QLabel>
#include <QString>

namespace memory_host {

/// Shows plain text on one line, elided in the middle where it is too long; the tool tip is then
/// the whole text. It never makes its window wider.
class HOST_EXPORT ElidedLine : public QLabel {
    Q_OBJECT
public:
    explicit ElidedLine(QWidget* parent);

    void setLine(const QString& line);
    const QString& line() const { return m_line; }

protected:
    void resizeEvent(QResizeEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    void elide();

    QString m_line;
};

} // namespace memory_host
