// What files say that were saved, as the plain model has it: by the items that the host makes of
// them, and by gemmi's readers.
#pragma once

#include "plain/PlainFiles.h"

#include <QStringList>

#include <string>
#include <vector>

namespace TAVIK {
class Compound;
}

namespace random_use {

using Lines = std::vector<std::vector<std::string>>;

/// The lines of opened entries, in the order of their file.
Lines rowsOf(const std::vector<TAVIK::Compound*>& entries);
/// What differs from what was to be expected; empty when nothing does.
QStringList differenceFrom(const plain::FileContent& expected, Lines read);
/// The same by gemmi, for files of one structure; the order is not compared.
QStringList differenceByGemmi(const plain::FileContent& expected, const std::string& path);

} // namespace random_use
