// The questions that saving asks. Each is answered when its function returns; the data may have
// changed meanwhile.
#pragma once

#include <QString>
#include <QStringList>

#include <optional>

class QWidget;

namespace workbench {

/// A file to be written, as the user chose it.
struct SaveTarget {
    QString file;
    bool asShown = false; ///< only the active ones of alternative models
};

enum class Kept { Structure, Map };

/// Whether a file of this name can be saved.
bool isSavable(const QString& file, Kept kept);
/// `proposed` is a path or a name; its ending is replaced where it cannot be saved. Nothing where
/// the user cancels.
std::optional<SaveTarget> askForTarget(QWidget* window, const QString& title,
                                       const QString& proposed, Kept kept);

enum class Losing { ChangesByOthers, ClosedEntries };
enum class Replacing { Replace, SaveAs, Cancel };
/// Asks what to do with a file that loses something when it is replaced.
Replacing askToReplace(QWidget* window, const QString& file, Losing losing);

enum class Unsaved { Save, Discard, Cancel };
/// Asks what to do with the changes to these files, of which there is at least one.
Unsaved askForUnsaved(QWidget* window, const QStringList& files);

} // namespace workbench
