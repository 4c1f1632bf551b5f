// All that can be read of the data space, as text: two texts are equal when the data are the same,
// to the addresses of the items.
#pragma once

#include <QStringList>

namespace test_support {

/// A line an item, in the order of the tree; with the files of entries, which no change is about.
QStringList dataLines(bool withFiles = true);
/// The same without addresses and identifiers: items are named by their places in the tree, so that
/// the data of two runs can be compared.
QStringList comparableLines();
/// The first line that differs, in both texts; empty when none does.
QString firstDifference(const QStringList& now, const QStringList& before);

} // namespace test_support
