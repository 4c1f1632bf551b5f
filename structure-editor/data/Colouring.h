// What the colouring commands do to the data. Knows no widget.
#pragma once

#include "Compound.h"
#include "Space.h"

/// Gives items one colour.
class ColorAtm {
public:
    explicit ColorAtm(const Color& color) : m_color(color) {}
    void operator()(TAVIK::Compound* item) const { item->SetColor(m_color); }

private:
    Color m_color;
};

/// Gives all atoms of a residue, selected or not, the residue's own colour.
void ColorGrp2Atom(TAVIK::Compound* residue);

/// RAII: while one exists the host does not highlight selected items, so that colours are seen.
class ShowSelectionOff {
public:
    ShowSelectionOff() { TAVIK::Space::SetShowSelection(false); }
    ~ShowSelectionOff() { TAVIK::Space::SetShowSelection(m_before); }
    ShowSelectionOff(const ShowSelectionOff&) = delete;
    ShowSelectionOff& operator=(const ShowSelectionOff&) = delete;

private:
    bool m_before = TAVIK::Space::GetShowSelection();
};
