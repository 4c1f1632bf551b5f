#include "AtomColors.h"

#include "ChangeData.h"
#include "DataPoint.h"
#include "Geometry.h"
#include "ManyAtoms.h"
#include "Messages.h"
#include "NewSurfaces.h"
#include "Space.h"
#include "Traversal.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <new>
#include <span>
#include <utility>
#include <vector>

namespace solid {

namespace {

using TAVIK::Compound;
using TAVIK::Surface;
using TAVIK::SurfaceMesh;

constexpr std::uint32_t white = 0xffffffffU;

// What all atoms look like now, by their identifiers.
class ColorTable {
public:
    ColorTable() {
        std::vector<Compound*> atoms;
        TAVIK::GetAtoms(TAVIK::Space::instance(), atoms, true);
        m_colors.reserve(atoms.size());
        std::array<TAVIK::ItemLook, 1024> looks;
        for (std::size_t first = 0; first < atoms.size(); first += looks.size()) {
            const std::size_t count = std::min(looks.size(), atoms.size() - first);
            TAVIK::GetLooks(std::span(atoms).subspan(first, count), std::span(looks).first(count));
            for (std::size_t i = 0; i != count; ++i)
                m_colors.push_back({atoms[first + i]->GetId(), looks[i].rgba});
        }
        // Within an entry they are in order already.
        if (!std::ranges::is_sorted(m_colors, {}, &Colored::atom))
            std::ranges::sort(m_colors, {}, &Colored::atom);
    }

    /// The colour of an atom; null where it is gone.
    const std::uint32_t* find(unsigned int atom) const {
        const auto found = std::ranges::lower_bound(m_colors, atom, {}, &Colored::atom);
        return found != m_colors.end() && found->atom == atom ? &found->rgba : nullptr;
    }

private:
    struct Colored {
        unsigned int atom;
        std::uint32_t rgba;
    };
    std::vector<Colored> m_colors;
};

std::vector<std::uint32_t> colorsOf(const SurfaceMesh& mesh, const ColorTable& table) {
    const bool keeps = !mesh.colors.empty() && !mesh.scale;
    std::vector<std::uint32_t> colors;
    colors.reserve(mesh.atoms.size());
    const std::uint32_t* color = nullptr;
    for (std::size_t i = 0; i != mesh.atoms.size(); ++i) {
        // Neighbours in the list are most often on the same atom.
        if (i == 0 || mesh.atoms[i] != mesh.atoms[i - 1])
            color = table.find(mesh.atoms[i]);
        colors.push_back(color ? *color : keeps ? mesh.colors[i] : white);
    }
    return colors;
}

// The selected surfaces, else those that are shown; of these the ones that know their atoms.
std::vector<Surface*> surfacesToColor() {
    std::vector<Compound*> items;
    const Surface* const tag = nullptr;
    TAVIK::GetItems<Surface>(TAVIK::Space::instance(), items, true, tag, true);
    const bool isSelective = std::ranges::any_of(items, &Compound::IsSelected);
    std::vector<Surface*> surfaces;
    for (Compound* const item : items) {
        auto* const surface = dynamic_cast<Surface*>(item);
        const SurfaceMesh* const mesh = TAVIK::GetSurfaceMesh(surface);
        const bool isMeant = isSelective ? item->IsSelected() : item->IsVisible();
        if (isMeant && mesh && !mesh->atoms.empty())
            surfaces.push_back(surface);
    }
    return surfaces;
}

// What the user is told.
QString colorAll(const std::vector<Surface*>& surfaces) {
    std::vector<std::vector<std::uint32_t>> colors;
    colors.reserve(surfaces.size());
    const ColorTable table;
    for (const Surface* const surface : surfaces)
        colors.push_back(colorsOf(*TAVIK::GetSurfaceMesh(surface), table));
    const QString done =
        surfaces.size() == 1
            ? tr("One surface has the colours of its atoms")
            : tr("%1 surfaces have the colours of their atoms").arg(surfaces.size());
    QString answer = tr("Surfaces keep their colours: another change of the data is under way");
    changeData(
        DataPoint<TAVIK::Space>(nullptr, TAVIK::Space::instance(), "Color surfaces by atoms"),
        [&](DataPointBase&) {
            // All of them change, or none: what fails is taken back.
            for (std::size_t i = 0; i != surfaces.size(); ++i) {
                TAVIK::SetSurfaceColors(surfaces[i], std::move(colors[i]));
                surfaces[i]->RestoreColor();
            }
            answer = done;
        },
        Refusal::Silent);
    return answer;
}

} // namespace

void colorSurfacesByAtoms() {
    QString answer;
    try {
        const std::vector<Surface*> surfaces = surfacesToColor();
        answer =
            surfaces.empty() ? tr("No surface of atoms is selected or shown") : colorAll(surfaces);
    } catch (const std::bad_alloc&) {
        answer = tr("Surfaces keep their colours: there is not enough memory");
    }
    Messages::Show(answer);
}

} // namespace solid
