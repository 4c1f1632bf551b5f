#include "Backbones.h"

#include "GemmiReading.h"

#include <gemmi/resinfo.hpp>

#include <cmath>
#include <numbers>

namespace view_testing {

namespace {

using view::BackboneResidue;
using view::Point;

Point pointOf(const gemmi::Vec3& at) {
    return {static_cast<float>(at.x), static_cast<float>(at.y), static_cast<float>(at.z)};
}

// The place `bond` Å from c, with the angle to b and the torsion about b-c to a in degrees.
gemmi::Vec3 placed(const gemmi::Vec3& a, const gemmi::Vec3& b, const gemmi::Vec3& c, double bond,
                   double angle, double torsion) {
    const double toRadians = std::numbers::pi / 180;
    const gemmi::Vec3 along = (c - b).normalized();
    const gemmi::Vec3 normal = (b - a).cross(along).normalized();
    const gemmi::Vec3 across = normal.cross(along);
    const double theta = angle * toRadians;
    const double chi = torsion * toRadians;
    return c + (along * -std::cos(theta) + across * (std::sin(theta) * std::cos(chi)) +
                normal * (std::sin(theta) * std::sin(chi))) *
                   bond;
}

float distance(const Point& a, const Point& b) {
    return std::hypot(a[0] - b[0], a[1] - b[1], a[2] - b[2]);
}

Point position(const gemmi::Residue& residue, const char* name) {
    for (const gemmi::Atom& atom : residue.atoms)
        if (atom.name == name)
            return pointOf(atom.pos);
    return view::missingAtom;
}

using gemmi::AtomAddress;

bool isWithin(const gemmi::Chain& chain, const gemmi::Residue& residue, const AtomAddress& from,
              const AtomAddress& to) {
    return chain.name == from.chain_name && !(residue.seqid < from.res_id.seqid) &&
           !(to.res_id.seqid < residue.seqid);
}

char recordedLetter(const gemmi::Structure& structure, const gemmi::Chain& chain,
                    const gemmi::Residue& residue) {
    for (const gemmi::Helix& helix : structure.helices)
        if (isWithin(chain, residue, helix.start, helix.end))
            return 'H';
    for (const gemmi::Sheet& sheet : structure.sheets)
        for (const gemmi::Sheet::Strand& strand : sheet.strands)
            if (isWithin(chain, residue, strand.start, strand.end))
                return 'E';
    return '-';
}

} // namespace

Residues helix(std::size_t count, double phi, double psi) {
    Residues residues;
    gemmi::Vec3 c(-1.33, 0, 0);
    gemmi::Vec3 n(0, 0, 0);
    gemmi::Vec3 alpha(0.7, 1.28, 0);
    for (std::size_t i = 0; i < count; ++i) {
        const gemmi::Vec3 nextC = placed(c, n, alpha, 1.52, 111, phi);
        const gemmi::Vec3 nextN = placed(n, alpha, nextC, 1.33, 117, psi);
        BackboneResidue residue;
        residue.n = pointOf(n);
        residue.ca = pointOf(alpha);
        residue.c = pointOf(nextC);
        residue.o = pointOf(placed(n, alpha, nextC, 1.23, 120, psi + 180));
        residue.isLinkedToPrevious = i != 0;
        residues.push_back(residue);
        const gemmi::Vec3 nextAlpha = placed(alpha, nextC, nextN, 1.46, 122, 180);
        c = nextC;
        n = nextN;
        alpha = nextAlpha;
    }
    return residues;
}

Residues strand(std::size_t count) {
    Residues residues;
    for (std::size_t i = 0; i < count; ++i) {
        const float x = 3.4F * static_cast<float>(i);
        const float side = i % 2 == 0 ? 1.23F : -1.23F;
        BackboneResidue residue;
        residue.n = {x, 0, 0};
        residue.ca = {x + 1.2F, 0, 0};
        residue.c = {x + 2.3F, 0, 0};
        residue.o = {x + 2.3F, side, 0};
        residue.isLinkedToPrevious = i != 0;
        residues.push_back(residue);
    }
    return residues;
}

void shift(Residues& residues, std::size_t from, float longer) {
    for (std::size_t i = from; i < residues.size(); ++i)
        for (Point* at : {&residues[i].n, &residues[i].ca, &residues[i].c, &residues[i].o})
            (*at)[0] += longer;
}

Residues together(const std::vector<Residues>& chains) {
    Residues all;
    for (const Residues& chain : chains)
        all.insert(all.end(), chain.begin(), chain.end());
    return all;
}

QByteArray letters(const Residues& residues) {
    QByteArray text;
    for (const view::SecondaryStructure structure : view::secondaryStructure(residues))
        text += structure == view::SecondaryStructure::Coil ? '-' : static_cast<char>(structure);
    return text;
}

Proteins proteins(const std::string& path) {
    const gemmi::Structure read = gemmi_reading::readStructure(path);
    Proteins found;
    for (const gemmi::Chain& chain : read.models.at(0).chains) {
        const gemmi::SeqId* before = nullptr;
        bool isFirst = true;
        for (const gemmi::Residue& residue : chain.residues) {
            const bool isOtherConformer = before && *before == residue.seqid;
            before = &residue.seqid;
            if (isOtherConformer || !gemmi::find_tabulated_residue(residue.name).is_amino_acid())
                continue;
            BackboneResidue backbone;
            backbone.n = position(residue, "N");
            backbone.ca = position(residue, "CA");
            backbone.c = position(residue, "C");
            backbone.o = position(residue, "O");
            backbone.isProline = residue.name == "PRO";
            backbone.isLinkedToPrevious =
                !isFirst && distance(found.residues.back().c, backbone.n) <= 2.5F;
            isFirst = false;
            found.residues.push_back(backbone);
            found.names.push_back(chain.name + " " + residue.seqid.str());
            found.recorded += recordedLetter(read, chain, residue);
        }
    }
    return found;
}

} // namespace view_testing
