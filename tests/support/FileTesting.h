// What the tests of the file readers share: files with given content, looking at what was opened,
// and a second opinion on real files.
#pragma once

#include "Kinds.h"
#include "files/Files.h"

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

#include <set>
#include <string>
#include <utility>
#include <vector>

namespace file_testing {

/// A folder that goes away with its files.
class Folder {
public:
    /// Writes a file, and returns its path.
    std::string write(const QString& name, const QByteArray& content) const;
    QString path() const { return m_folder.path(); }

private:
    QTemporaryDir m_folder;
};

QByteArray gzipped(const QByteArray& content);
/// The bytes of a file, gzipped or not; fails the test where it cannot be read.
QByteArray unpacked(const QString& path);

/// What an ATOM record holds.
struct PdbAtom {
    QByteArray name = " CA "; ///< four columns
    char alternative = ' ';
    QByteArray residue = "ALA";
    QByteArray chain = "A";
    QByteArray number = "1"; ///< right-justified in four columns
    char insertion = ' ';
    float x = 0.0F;
    float y = 0.0F;
    float z = 0.0F;
    QByteArray position; ///< 24 columns instead of the coordinates
    QByteArray temperature = "10.00";
    QByteArray element; ///< right-justified in two columns
    QByteArray record = "ATOM";
    QByteArray segment;
};
/// The record's line, with its line end.
QByteArray line(const PdbAtom& atom);
/// The line of an atom of ALA 1 in chain A, with its name in four columns.
QByteArray atomAt(const QByteArray& name, float x, float y = 0.0F, float z = 0.0F);
/// An mmCIF file of one block with an _atom_site loop of the usual columns; each row gives, in this
/// order: name, symbol, alternative, residue, chain, number, insertion, x, y, z, model.
QByteArray mmcif(const QStringList& rows, const QByteArray& block = "test");

/// Opens a file, and compares its remarks; fails the test when it is refused.
memory_host::OpenedFile opened(const std::string& path, const QStringList& remarks = {});
/// The line with which a file is refused; empty, and the test failed, when it is opened.
QString refusal(const std::string& path);

/// The item of a qualified name, the first one if there are several; null when there is none.
TAVIK::Compound* item(const QString& qualifiedName);
/// Names of the children, in order; none of null, so that a test says what is not there.
QStringList childNames(TAVIK::Compound* parent);
std::vector<TAVIK::Atom*> atoms(TAVIK::Compound* root);
/// The names of the bonds below an item, sorted.
QStringList bondNames(TAVIK::Compound* root);
/// Qualified names of the atoms with the group in them, as
/// "/1ubq/A/Groups/MET 1/Backbone/CA".
QStringList atomPaths(TAVIK::Compound* root);

/// An atom in one line: where it stands, its element, position and temperature factor.
struct AtomText {
    std::string chain;
    std::string residueNumber; ///< with insertion code
    std::string name;
    std::string element;
    float x = 0.0F;
    float y = 0.0F;
    float z = 0.0F;
    float temperature = 0.0F;

    std::string text() const;
};
AtomText textOf(TAVIK::Atom& atom);
/// The atoms of each opened item as sorted lines.
std::vector<std::vector<std::string>> sortedAtoms(const std::vector<TAVIK::Compound*>& items);
/// The atoms of each model as gemmi's own readers see them, as sorted lines.
std::vector<std::vector<std::string>> gemmiAtoms(const std::string& path);

/// What a file says of an atom beside AtomText.
struct DetailsText {
    int serial = 0;
    std::string name;
    float occupancy = 0.0F;
    int formalCharge = 0;
    char alternative = '\0';
    bool isHetero = false;
    std::string labelChain;
    std::string labelNumber;

    std::string text() const;
};
DetailsText detailsOf(const TAVIK::Atom& atom);
/// The details of the atoms of the first model by gemmi's own readers, as sorted lines; those of
/// PDB files without label ids.
std::vector<std::string> gemmiDetails(const std::string& path);

/// The value of a tag in the first block of a CIF by gemmi's own reader, without quotes.
std::string gemmiValue(const std::string& text, const std::string& tag);

/// Two bonded atoms, each as a line; the lower line first.
using BondText = std::pair<std::string, std::string>;
/// The bonds of the first model by gemmi's readers and neighbour search: those that the file lists,
/// and those by their plain definition that it does not list.
struct GemmiBonds {
    std::set<BondText> listed;
    std::set<BondText> found;
};
GemmiBonds gemmiBonds(const std::string& path);

} // namespace file_testing
