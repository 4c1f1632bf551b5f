#include "Edit.h"

namespace plain {

namespace {

constexpr const char* madeTypes[] = {"C", "N", "O", "H", "Cu", "X"};
constexpr const char* madeNames[] = {"CA", "N", "O1", "H/1", "CU", "CB'", "C\xE9"};
constexpr Kind leafKinds[] = {Kind::Surface, Kind::Grid, Kind::PolyLine, Kind::Grid};
constexpr Kind boxKinds[] = {Kind::Composite, Kind::Molecule, Kind::Residue, Kind::Group};

} // namespace

bool addsToSpace(const Edit& edit) {
    switch (edit.kind) {
    case EditKind::AddAmong:
        return edit.value % 4 != 0;
    case EditKind::AddBond:
        return edit.value % 4 == 0;
    case EditKind::AddSet:
        return edit.value % 3 == 0;
    default:
        return edit.kind == EditKind::AddTop;
    }
}

Kind addedKind(const Edit& edit) {
    switch (edit.kind) {
    case EditKind::AddBond:
        return Kind::Bond;
    case EditKind::AddSet:
        return Kind::Set;
    case EditKind::AddBox:
        return choose(boxKinds, edit.value);
    case EditKind::AddLeaf:
        return choose(leafKinds, leafValue(edit));
    case EditKind::AddTop:
        return edit.value % 2 ? choose(boxKinds, edit.value / 2)
                              : choose(leafKinds, leafValue(edit));
    default:
        return Kind::Atom;
    }
}

unsigned int leafValue(const Edit& edit) {
    return edit.kind == EditKind::AddTop ? edit.value / 2 : edit.value;
}

bool turnsOn(const Edit& edit) {
    return edit.value % 2;
}

std::uint32_t paintedColor(const Edit& edit) {
    return 0xff000000U | edit.value;
}

Host::Switch modelSwitch(const Edit& edit) {
    return static_cast<Host::Switch>(edit.value % 3);
}

bool isTravel(const Edit& edit) {
    return edit.kind == EditKind::Undo || edit.kind == EditKind::Redo ||
           edit.kind == EditKind::UndoData;
}

std::size_t changesOf(const Edit& edit, std::size_t count) {
    return edit.value % 16 == changesOfAll ? count : 1 + edit.value % 16 / 3;
}

AtomValues madeAtom(unsigned int value) {
    return {choose(madeTypes, value),
            {static_cast<float>(value % 13) * 1.5F, static_cast<float>(value % 7),
             static_cast<float>(value % 5)},
            value % 11 != 0,
            static_cast<float>(value % 90) - 5.0F,
            value % 5 == 0 ? 1 + value % 3 : 0};
}

const char* madeName(unsigned int value) {
    return choose(madeNames, value);
}

} // namespace plain
