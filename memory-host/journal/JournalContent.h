// A journal that was read, as plain tables. All numbers of texts, files and kinds are valid;
// whether identifiers name anything is for others to see.
#pragma once

#include "AtomDetails.h"
#include "Geometry.h"
#include "JournalSections.h"
#include "PartialCharge.h"
#include "items/HostItem.h"
#include "items/MapCrystal.h"

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace memory_host {

struct JournalContent {
    struct File {
        FileStamp stamp;
        std::vector<std::uint32_t> entries; ///< that are in it, also closed ones
    };
    struct Reading {
        std::string_view path;
        FileStamp stamp;
        std::uint32_t firstItem = 0;
        std::uint32_t itemCount = 0;
        bool hasText = false;
    };
    struct Entry {
        std::uint32_t id = 0;
        std::uint32_t name = 0;
        std::string_view path;
        std::uint32_t file = 0; ///< from 1; 0: in none
        bool isUnsaved = false;
    };
    struct Made {
        std::uint32_t id = 0;
        std::uint32_t parent = 0;
        std::uint32_t name = 0;
        Kind kind{};
        /// By kind: the label ids of a residue, the atoms of a bond, the version of a mesh, whether
        /// a grid has values, and their version; of an atom and a line, the place in their tables.
        std::array<std::uint32_t, 2> values{};
    };
    struct AtomValues {
        std::array<float, 3> position{};
        bool hasPosition = false;
        float temperature = 0.0F;
        std::uint32_t type = 0;
        std::uint16_t model = 0;
        TAVIK::AtomDetails details;
        TAVIK::PartialCharge partial;
    };
    struct Set {
        std::uint32_t id = 0;
        std::vector<std::uint32_t> members;
    };
    struct Run {
        std::uint32_t first = 0;
        std::uint32_t length = 0;
        std::uint32_t color = 0;
        std::uint8_t look = 0;
    };
    struct ChangedAtom {
        std::uint32_t id = 0;
        AtomValues values;
    };
    struct ChangedGrid {
        std::uint32_t id = 0;
        std::uint32_t version = 0; ///< of its values
    };
    struct Model {
        std::uint32_t id = 0;
        std::uint16_t model = 0;
    };
    struct Bounds {
        std::uint32_t id = 0;
        std::array<int, 6> bounds{};
    };

    std::string bytes; ///< in which the texts stand
    std::vector<std::string_view> texts;
    std::vector<File> files;
    std::vector<Reading> readings; ///< ascending by identifiers, which do not overlap
    std::vector<Entry> entries;    ///< in order
    std::vector<Made> made;        ///< ascending by identifiers
    std::vector<AtomValues> madeAtoms;
    std::vector<std::vector<TAVIK::Vertex>> madeLines;
    std::vector<Set> sets;  ///< ascending by identifiers
    std::vector<Run> looks; ///< no item is in two
    std::vector<ChangedAtom> changedAtoms;
    std::vector<ChangedGrid> changedGrids;
    std::vector<Model> models; ///< ascending by identifiers
    std::vector<Bounds> bounds;

    std::string_view text(std::uint32_t number) const { return texts[number]; }
};

/// Reads the unpacked bytes of a journal. Throws JournalDamage.
JournalContent readJournal(std::string bytes);
/// Reads the unpacked bytes of files beside it, likewise. Identifiers are those of the journal.
TAVIK::SurfaceMesh readMesh(std::string_view bytes);
TAVIK::GridValues readGrid(std::string_view bytes, MapCrystal& crystal);

} // namespace memory_host
