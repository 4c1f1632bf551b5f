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

/// Every widget is a child of its parent, which owns it. The caller adds it to a layout.
class HOST_EXPORT WidgetFactory {
public:
    QLabel* CreateQLabel(QWidget* parent, const QString& text);
    /// An empty line edit.
    QLineEdit* CreateQLineEdit(QWidget* parent);
    QCheckBox* CreateCheckBox(QWidget* parent, const QString& text, bool checked);
    /// A button whose click calls `slot` (as SLOT() writes it) of `receiver`. An ampersand between
    /// blanks is shown; before a letter it makes a mnemonic.
    QPushButton* CreateQPushButton(QWidget* parent, const QString& text, const QObject* receiver,
                                   const char* slot);
};
