// A line of text that is shortened in its middle where there is no room for all of it.
#pragma once

#include <QWidget>

namespace view {

/// Lies over its parent's lower edge, as wide as the text or the parent; hidden without a text.
class ElidedLabel : public QWidget {
    Q_OBJECT
public:
    explicit ElidedLabel(QWidget* parent);

    void setText(const QString& text);
    const QString& text() const { return m_text; }
    /// What fits.
    QString shownText() const;

    bool eventFilter(QObject* watched, QEvent* event) override;

protected:
    void paintEvent(QPaintEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    void place();

    QString m_text;
};

} // namespace view
