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

private:
    void browse();
    void check();

    QSpinBox* m_width;
    QSpinBox* m_height;
    QLineEdit* m_path;
    QWidget* m_ok = nullptr;
};

} // namespace view
