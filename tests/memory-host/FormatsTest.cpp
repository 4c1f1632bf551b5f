// The table of file formats, and what says the same: the opening, the messages, the README.
#include "files/Formats.h"
#include "FileTestCase.h"

#include <QFile>
#include <QtEndian>

using namespace file_testing;
using memory_host::FileFormat;
using memory_host::fileFormats;

namespace {

QString text(std::string_view view) {
    return QString::fromLatin1(view.data(), static_cast<qsizetype>(view.size()));
}

// A map of one point.
QByteArray map() {
    QByteArray bytes(1028, '\0');
    const auto set = [&bytes](int word, qint32 value) {
        qToLittleEndian(value, bytes.data() + 4 * (word - 1));
    };
    for (const int axis : {0, 1, 2}) {
        set(1 + axis, 1);
        set(8 + axis, 1);
        set(11 + axis, 0x3f800000); // 1.0
        set(17 + axis, 1 + axis);
    }
    set(4, 2);
    return bytes.replace(208, 4, "MAP ");
}

struct Example {
    QString format;
    QByteArray content;
    QString made; ///< an item that only the right reader makes, below the entry
};

// A small file of each format.
const std::vector<Example> examples = {
    {"PDB", atomAt(" CB ", 1.0F), "/A/Groups/ALA 1/CB"},
    {"PQR", "ATOM  1 CG ALA A 1 1.0 2.0 3.0 -0.5 1.7\n", "/A/Groups/ALA 1/CG"},
    {"mmCIF", mmcif({"CD C . ALA A 1 ? 0 0 0 1"}), "/A/Groups/ALA 1/CD"},
    {"CCP4/MRC", map(), ""},
    {"OpenDX",
     "object 1 class gridpositions counts 1 1 1\norigin 0 0 0\ndelta 1 0 0\ndelta 0 1 0\n"
     "delta 0 0 1\nobject 3 class array type double rank 0 items 1 data follows\n0.5\n",
     ""},
};

// "A", "A and B", "A, B and C".
QString enumeration(QStringList words) {
    const QString last = words.takeLast();
    return words.isEmpty() ? last : words.join(", ") + " and " + last;
}

// A format with its endings, as "`.pdb`, `.ent`" in `ticks`.
QStringList endings(const FileFormat& format, const QString& ticks) {
    QStringList list;
    for (const std::string_view ending : format.endings)
        list << ticks + text(ending) + ticks;
    return list;
}

// "PDB (`.pdb`, `.ent`), PQR (`.pqr`) and mmCIF (`.cif`, `.mmcif`)"
QString listed(FileFormat::Holds holds) {
    QStringList formats;
    for (const FileFormat* format : fileFormats())
        if (format->holds == holds)
            formats << text(format->name) + " (" + endings(*format, "`").join(", ") + ')';
    return enumeration(formats);
}

} // namespace

class FormatsTest : public FileTestCase {
    Q_OBJECT
private slots:
    void everyEndingIsThatOfOneFormat() {
        QStringList all;
        for (const FileFormat* format : fileFormats())
            all += endings(*format, {});
        QVERIFY(!all.isEmpty());
        for (const QString& ending : all) {
            QCOMPARE(all.count(ending), 1);
            QVERIFY2(ending.startsWith('.') && ending == ending.toLower() && ending != ".gz",
                     qPrintable(ending));
        }
    }

    // By the content: a file of each format under each ending that any of them has, also gzipped.
    void whatIsOpenedIsReadAsWhatItIsWhateverItsName() {
        for (const FileFormat* format : fileFormats()) {
            const auto example = std::ranges::find(examples, text(format->name), &Example::format);
            QVERIFY2(example != examples.end(), qPrintable("no example: " + text(format->name)));
            QStringList names{"test"};
            for (const FileFormat* other : fileFormats())
                for (const QString& ending : endings(*other, {}))
                    names << "test" + ending << "test" + ending.toUpper();
            for (const QString& name : names) {
                init();
                openText(example->content, {}, name);
                QVERIFY2(item("/test" + example->made), qPrintable(example->format + ": " + name));
                init();
                openText(gzipped(example->content), {}, name + ".gz");
                QVERIFY2(item("/test" + example->made), qPrintable(example->format + ": " + name));
            }
        }
    }

    void aRefusalListsThemAll() {
        const QString line = refusal(path("none").toStdString());
        const QString list = line.mid(line.indexOf("; accepted are "));
        qsizetype at = 0;
        for (const FileFormat* format : fileFormats()) {
            at = list.indexOf(text(format->name), at);
            QVERIFY2(at > 0, qPrintable(text(format->name) + ": " + list));
            at = list.indexOf('(' + endings(*format, {}).join(", ") + ')', at);
            QVERIFY2(at > 0, qPrintable(text(format->name) + ": " + list));
        }
    }

    // The beginning of a long file is asked of every format, not of PDB alone.
    void aLongPqrFileMayHaveTabulatorsForBlanks() {
        QByteArray rows;
        for (int i = 0; rows.size() < 1'100'000; ++i)
            rows += "ATOM\t1\tCA\tALA\t" + QByteArray::number(i) + "\t" +
                    QByteArray::number(3 * i) + ".0\t0.0\t0.0\t-0.5\t1.7\n";
        openText(rows, {}, "long.dat");
        QVERIFY(item("/long.dat"));
    }

    void theReadmeListsThemAll() {
        QFile readme(SOURCE_DIR "/README.md");
        QVERIFY(readme.open(QFile::ReadOnly));
        const QString sentence = "It opens structures as " + listed(FileFormat::Holds::Structure) +
                                 ", and maps as " + listed(FileFormat::Holds::Map) +
                                 ", each also gzipped (`.gz`).";
        QVERIFY2(QString::fromUtf8(readme.readAll()).simplified().contains(sentence),
                 qPrintable("README.md does not say: " + sentence));
    }
};

REGISTER_TEST(FormatsTest)
#include "FormatsTest.moc"
