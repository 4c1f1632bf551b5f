// Asks for the size of a picture and for its file.
#pragma once

#include "PictureFile.h"

#include <QDialog>

class QLineEdit;
class QSpinBox;

namespace view {

/// Width and height begin as those of the window. OK is there once a file is named.
class PictureDialog : public QDialog {
    Q_OBJECT
public:
    PictureDialog(QWidget* parent, const QSize& size);

    PictureRequest request() const;

    /// Asks before another file is replaced.
    void accept() override;

private:
    void browse();
    void check();

    QSpinBox* m_width;
    QSpinBox* m_height;
    QLineEdit* m_path;
    QString m_replaced; ///< the file that may be replaced: the user was asked
    QWidget* m_ok = nullptr;
};

} // namespace view
