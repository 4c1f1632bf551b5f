// Makes the small widgets that plug-ins share, in the host's style.
#pragma once

#include "HostExport.h"

#include <QString>

class QCheckBox;
class QLabel;
class QLineEdit;
class QObject;
class QPushButton;
class QWidget;

/// Every widget is a child of its parent, which owns it; adding it to a layout is the caller's.
class HOST_EXPORT WidgetFactory {
public:
    QLabel* CreateQLabel(QWidget* parent, const QString& text);
    /// An empty line edit.
    QLineEdit* CreateQLineEdit(QWidget* parent);
    QCheckBox* CreateCheckBox(QWidget* parent, const QString& text, bool checked);
    /// A button whose click calls `slot` (as SLOT() writes it) of `receiver`. An ampersand
    /// between blanks is one to be read; before a letter it announces a key.
    QPushButton* CreateQPushButton(QWidget* parent, const QString& text, const QObject* receiver,
                                   const char* slot);
};
