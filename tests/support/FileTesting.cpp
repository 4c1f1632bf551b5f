#include "FileTesting.h"
#include "Ancestry.h"

#include "Space.h"
#include "Traversal.h"
#include "items/Building.h"
#include "items/Invariants.h"

#include <QFile>
#include <QTest>

#include <algorithm>
#include <sstream>

#include <zlib.h>

namespace file_testing {

using TAVIK::Compound;

std::string Folder::write(const QString& name, const QByteArray& content) const {
    QFile file(m_folder.filePath(name));
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
        qFatal("%s cannot be written", qPrintable(file.fileName()));
    return file.fileName().toStdString();
}

QByteArray unpacked(const QString& path) {
    const gzFile file = gzopen(path.toLocal8Bit().constData(), "rb");
    if (!file)
        qFatal("%s cannot be read", qPrintable(path));
    QByteArray content;
    QByteArray piece(1 << 20, '\0');
    for (int size = 0;
         (size = gzread(file, piece.data(), static_cast<unsigned>(piece.size()))) > 0;)
        content.append(piece.constData(), size);
    gzclose(file);
    return content;
}

QByteArray gzipped(const QByteArray& content) {
    z_stream stream{};
    if (deflateInit2(&stream, Z_DEFAULT_COMPRESSION, Z_DEFLATED, 15 + 16, 8, Z_DEFAULT_STRATEGY) !=
        Z_OK)
        qFatal("no gzip");
    QByteArray packed(
        static_cast<qsizetype>(deflateBound(&stream, static_cast<uLong>(content.size()))), '\0');
    QByteArray source = content;
    stream.next_in = reinterpret_cast<Bytef*>(source.data());
    stream.avail_in = static_cast<uInt>(source.size());
    stream.next_out = reinterpret_cast<Bytef*>(packed.data());
    stream.avail_out = static_cast<uInt>(packed.size());
    if (deflate(&stream, Z_FINISH) != Z_STREAM_END)
        qFatal("gzip failed");
    packed.resize(static_cast<qsizetype>(stream.total_out));
    deflateEnd(&stream);
    return packed;
}

QByteArray line(const PdbAtom& atom) {
    QByteArray text = atom.record.leftJustified(6) + QByteArray("1").rightJustified(5) + ' ' +
                      atom.name.leftJustified(4) + atom.alternative +
                      atom.residue.rightJustified(3) + atom.chain.rightJustified(2) +
                      atom.number.rightJustified(4) + atom.insertion + "   ";
    if (atom.position.isEmpty())
        for (const float value : {atom.x, atom.y, atom.z})
            text += QByteArray::number(value, 'f', 3).rightJustified(8);
    else
        text += atom.position.leftJustified(24);
    text += QByteArray("1.00").rightJustified(6) + atom.temperature.rightJustified(6) + "      " +
            atom.segment.leftJustified(4) + atom.element.rightJustified(2);
    return text + '\n';
}

QByteArray atomAt(const QByteArray& name, float x, float y, float z) {
    PdbAtom atom;
    atom.name = name;
    atom.x = x;
    atom.y = y;
    atom.z = z;
    return line(atom);
}

QByteArray mmcif(const QStringList& rows, const QByteArray& block) {
    QByteArray text = "data_" + block + "\n#\nloop_\n";
    for (const char* tag : {"auth_atom_id", "type_symbol", "label_alt_id", "auth_comp_id",
                            "auth_asym_id", "auth_seq_id", "pdbx_PDB_ins_code", "Cartn_x",
                            "Cartn_y", "Cartn_z", "pdbx_PDB_model_num"})
        text += QByteArray("_atom_site.") + tag + '\n';
    for (const QString& row : rows)
        text += row.toUtf8() + '\n';
    return text + "#\n";
}

memory_host::OpenedFile opened(const std::string& path, const QStringList& remarks) {
    memory_host::OpenedFile file;
    try {
        file = memory_host::openFile(path);
    } catch (const memory_host::FileError& error) {
        QTest::qFail(error.what(), __FILE__, __LINE__);
        return file;
    }
    QStringList found;
    for (const std::string& remark : file.remarks)
        found << QString::fromLatin1(remark);
    if (found != remarks)
        QTest::qFail(("other remarks: " + found.join(u'\n').toStdString()).c_str(), __FILE__,
                     __LINE__);
    for (const std::string& broken : memory_host::checkInvariants())
        QTest::qFail(broken.c_str(), __FILE__, __LINE__);
    return file;
}

QString refusal(const std::string& path) {
    const auto childCount = [] {
        TAVIK::Space* space = TAVIK::Space::instance();
        return space->ChildEnd() - space->ChildBegin();
    };
    const auto before = childCount();
    QString text;
    try {
        memory_host::openFile(path);
        QTest::qFail("the file was opened", __FILE__, __LINE__);
    } catch (const memory_host::FileError& error) {
        text = QString::fromLatin1(error.what());
    }
    if (childCount() != before)
        QTest::qFail("a refused file left something", __FILE__, __LINE__);
    if (text.contains(u'\n') || text.contains(u'\r'))
        QTest::qFail("the refusal is not one line", __FILE__, __LINE__);
    if (!text.contains(u"accepted "))
        QTest::qFail(("what is accepted: " + text.toStdString()).c_str(), __FILE__, __LINE__);
    return text;
}

namespace {

Compound* itemBelow(Compound* root, const std::string& qualifiedName) {
    for (Compound** child = root->ChildBegin(); child != root->ChildEnd(); ++child) {
        const std::string name = (*child)->GetFQName();
        if (name == qualifiedName)
            return *child;
        // The name of a group is no part of the names of its atoms.
        if (!qualifiedName.starts_with(name + '/') && !dynamic_cast<TAVIK::Group*>(*child))
            continue;
        if (Compound* found = itemBelow(*child, qualifiedName))
            return found;
    }
    return nullptr;
}

} // namespace

Compound* item(const QString& qualifiedName) {
    return itemBelow(TAVIK::Space::instance(), qualifiedName.toLatin1().toStdString());
}

QStringList childNames(Compound* parent) {
    QStringList names;
    if (!parent)
        return names;
    for (Compound** child = parent->ChildBegin(); child != parent->ChildEnd(); ++child)
        names << QString::fromLatin1((*child)->GetName().c_str());
    return names;
}

std::vector<TAVIK::Atom*> atoms(Compound* root) {
    std::vector<Compound*> found;
    TAVIK::GetAtoms(root, found, true);
    std::vector<TAVIK::Atom*> all;
    for (Compound* atom : found)
        all.push_back(dynamic_cast<TAVIK::Atom*>(atom));
    return all;
}

QStringList bondNames(Compound* root) {
    std::vector<Compound*> bonds;
    TAVIK::GetItems<TAVIK::Bond>(root, bonds, true, static_cast<TAVIK::Bond*>(nullptr), false);
    QStringList names;
    for (const Compound* bond : bonds)
        names << QString::fromLatin1(bond->GetName().c_str());
    names.sort();
    return names;
}

QStringList atomPaths(Compound* root) {
    QStringList paths;
    for (TAVIK::Atom* atom : atoms(root)) {
        QString path = QString::fromLatin1(atom->GetName().c_str());
        for (Compound* at = TAVIK::GetParent(atom); at != TAVIK::Space::instance();
             at = TAVIK::GetParent(at))
            path.prepend(QString::fromLatin1(at->GetName().c_str()) + u'/');
        paths << u'/' + path;
    }
    return paths;
}

std::string AtomText::text() const {
    return chain + '|' + residueNumber + '|' + name + '|' + element + '|' + std::to_string(x) +
           '|' + std::to_string(y) + '|' + std::to_string(z) + '|' + std::to_string(temperature);
}

AtomText textOf(TAVIK::Atom& atom) {
    Compound* residue = TAVIK::GetParent(&atom);
    while (!dynamic_cast<TAVIK::Residue*>(residue))
        residue = TAVIK::GetParent(residue);
    const std::string label = residue->GetName();
    const Compound* chain = TAVIK::GetParent(TAVIK::GetParent(residue));
    const TAVIK::Vertex position = atom.GetPosition();
    return {chain->GetName(), label.substr(label.find(' ') + 1),
            atom.GetName(),   atom.GetType(),
            position[0],      position[1],
            position[2],      atom.GetTemperature()};
}

std::string DetailsText::text() const {
    std::ostringstream line;
    line << serial << ' ' << name << ' ' << occupancy << ' ' << formalCharge << ' '
         << (alternative ? alternative : '-') << (isHetero ? " HETATM " : " ATOM ") << labelChain
         << '/' << labelNumber;
    return line.str();
}

DetailsText detailsOf(const TAVIK::Atom& atom) {
    const TAVIK::AtomDetails details = TAVIK::GetAtomDetails(&atom);
    const TAVIK::LabelIds label = TAVIK::GetLabelIds(&atom);
    return {details.serial,           atom.GetName(),           details.occupancy,
            details.formalCharge,     details.alternative,      details.isHetero,
            std::string(label.chain), std::string(label.number)};
}

std::vector<std::vector<std::string>> sortedAtoms(const std::vector<Compound*>& items) {
    std::vector<std::vector<std::string>> models;
    for (Compound* entry : items) {
        std::vector<std::string>& texts = models.emplace_back();
        for (TAVIK::Atom* atom : atoms(entry))
            texts.push_back(textOf(*atom).text());
        std::sort(texts.begin(), texts.end());
    }
    return models;
}

} // namespace file_testing
