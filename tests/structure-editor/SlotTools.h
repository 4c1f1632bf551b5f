// For tests that call slots of the window by name, and look afterwards at the data and whether the
// window is in step with them.
#pragma once

#include "plain/PlainCommands.h"

#include <QByteArray>
#include <QStringList>

class Vuxo;

namespace slot_tools {

/// The signatures of all slots of the window, in order.
QStringList allSlots();
/// A way to call a slot, and what is known of it then.
struct Call : plain::Command {
    int button = 0; ///< of ListEvent
    bool is(const char* signature) const;
};
/// All slots in order; ListEvent once for each button.
std::vector<Call> allCalls();
/// A menu entry that changes data, with what is known of its slot.
struct Entry : plain::Command {
    const char* label;
    bool isLocal() const { return needs == plain::Needs::ShownItem; }
};
/// Those of a menu, in order.
std::vector<Entry> changingEntries(const char* menu);
/// The name of a call, for people.
QByteArray nameOf(const Call& call);
/// Calls a slot by its signature, with arguments where it takes some; `button` is that of
/// ListEvent, on the first entry. Returns whether there is such a slot.
bool invoke(Vuxo& window, const QByteArray& signature, int button = 0);
/// All that a command can change, a line an item, without ids: a space that is filled anew reads
/// the same.
QStringList dataLines();
/// Whether the host grants a change now: none is open.
bool changesAreGranted();
/// Lines for what list and tree show other than the host holds.
QStringList windowFaults(const Vuxo& window);

} // namespace slot_tools
