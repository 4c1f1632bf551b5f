// Saving entries of a PDB file as PDB: the text of the file with the changes.
#pragma once

#include "SaveReport.h"
#include "SavedTables.h"

#include <string>

namespace memory_host {

/// The text of the file of the content's only structure, which was a PDB file.
///
/// Dropped are rows of atoms that are gone; their ANISOU, SIGATM and SIGUIJ; models and ends of
/// chains (TER) that are left empty; their numbers in CONECT; and what names a residue or an atom
/// that is gone (LINK, SSBOND, CISPEP, SITE, MODRES, HET). HELIX, SHEET and TURN go on to the
/// nearest residues that are left. New atoms get rows behind those of their residue, made bonds
/// CONECT records. MASTER and NUMMDL count what is there. What tells of the whole crystal or of the
/// experiment, as SEQRES and REMARK, stays.
std::string editPdb(const SavedContent& content, SaveReport& report);

} // namespace memory_host
