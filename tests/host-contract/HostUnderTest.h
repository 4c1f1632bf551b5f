// What the tests need of a host beyond its interface: files opened, a locked space, the log,
// settings. Whoever brings another host writes these functions for it, in the place of
// tests/support/MemoryHostUnderTest.cpp; all tests in this folder then run on that host.
#pragma once

#include "Kinds.h"

#include <QString>

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace host_under_test {

/// Called once, before all tests, when the application object is there. Colour maps stand in
/// `dataFolder`. The host's log goes nowhere but to hearLog().
void start(const QString& dataFolder);

/// From now on `hear` gets each line of the host's log; an empty one ends that.
void hearLog(std::function<void(const std::string& line)> hear);

/// Replaces all settings of the host by the one given.
void setOnlySetting(const std::string& section, const std::string& key, const std::string& value);

/// Opens a structure file in PDB format; the new top-level items.
std::vector<TAVIK::Compound*> openFile(const std::string& path);

/// While one lives, the host refuses every change.
class LockedSpace {
public:
    LockedSpace();
    ~LockedSpace();
    LockedSpace(const LockedSpace&) = delete;
    LockedSpace& operator=(const LockedSpace&) = delete;

private:
    std::shared_ptr<void> m_lock;
};

/// What the host finds wrong with its own data, a line each. A host that has no such check says
/// nothing.
std::vector<std::string> faults();

} // namespace host_under_test
