// Files that are too large for what is free, and files that look small and are not.
#include "files/FileLimits.h"
#include "FailingMemory.h"
#include "FileTestCase.h"
#include "Space.h"

#include <QDir>
#include <QFileInfo>
#include <QRegularExpression>

#include <malloc.h>
#include <unistd.h>

using namespace file_testing;
using memory_host::fileLimits;

// The address sanitizer keeps books of its own.
#ifdef __SANITIZE_ADDRESS__
#define SKIP_WHEN_SANITIZED QSKIP("the heap is the sanitizer's")
#else
#define SKIP_WHEN_SANITIZED
#endif

namespace {

std::size_t heapInUse() {
    const struct mallinfo2 info = mallinfo2();
    return info.uordblks + info.hblkhd;
}

// Atoms far from each other, each in a residue of its own.
QByteArray waters(int count) {
    QByteArray text;
    for (int i = 0; i < count; ++i) {
        PdbAtom atom;
        atom.name = " O  ";
        atom.residue = "HOH";
        atom.number = QByteArray::number(i % 10000);
        atom.x = static_cast<float>(i % 100 * 5);
        atom.y = static_cast<float>(i / 100 % 100 * 5);
        atom.z = static_cast<float>(i / 10000 * 5);
        text += line(atom);
    }
    return text;
}

const QString notFree = QStringLiteral(" are free; accepted are files that fit into the memory "
                                       "that is free");

} // namespace

class FileLimitsTest : public FileTestCase {
    Q_OBJECT

    memory_host::FileLimits m_usual = fileLimits();
    int m_asked = 0;

    // Says that so much memory is free, and counts how often it is asked.
    void setFree(std::size_t bytes) {
        m_asked = 0;
        fileLimits().freeMemory = [this, bytes] {
            ++m_asked;
            return bytes;
        };
    }
    QString refused(const QByteArray& content, const QString& name = QStringLiteral("large.pdb")) {
        const std::string file = m_folder.write(name, content);
        return refusal(file).mid(static_cast<qsizetype>(file.size()));
    }

private slots:
    void cleanup() override {
        fileLimits() = m_usual;
        FileTestCase::cleanup();
    }

    void usuallyAHundredMillionAtomsAndFourGigabytesAreTaken() {
        QCOMPARE(fileLimits().atoms, std::size_t(100'000'000));
        QCOMPARE(fileLimits().bytes, std::size_t(4) << 30);
    }

    void whatIsFreeIsPartOfWhatIsThere() {
        const auto pages = static_cast<std::size_t>(::sysconf(_SC_PHYS_PAGES));
        const std::size_t free = memory_host::freeMemory();
        QVERIFY(free > 1'000'000);
        QVERIFY(free <= pages * static_cast<std::size_t>(::sysconf(_SC_PAGESIZE)));
    }

    void whatIsFreeIsTheLeastThatSystemAndControlGroupsLeave_data() {
        QTest::addColumn<QStringList>("files"); ///< paths and contents below a folder
        QTest::addColumn<qulonglong>("free");
        const QStringList system{"proc/meminfo", "MemTotal: 9000 kB\nMemAvailable: 5000 kB\n"};
        QTest::newRow("the system") << system << 5'120'000ULL;
        const QStringList group = system + QStringList{"proc/self/cgroup",
                                                       "0::/outer/inner\n",
                                                       "sys/fs/cgroup/outer/memory.max",
                                                       "3000000\n",
                                                       "sys/fs/cgroup/outer/memory.current",
                                                       "1000000\n"};
        QTest::newRow("a group around") << group << 2'000'000ULL;
        QTest::newRow("a group without a limit")
            << group + QStringList{"sys/fs/cgroup/outer/inner/memory.max", "max\n",
                                   "sys/fs/cgroup/outer/inner/memory.current", "1000\n"}
            << 2'000'000ULL;
        QTest::newRow("the group itself")
            << group + QStringList{"sys/fs/cgroup/outer/inner/memory.max", "1000000\n",
                                   "sys/fs/cgroup/outer/inner/memory.current", "400000\n"}
            << 600'000ULL;
        QTest::newRow("files that nobody uses are no memory that is taken")
            << group + QStringList{"sys/fs/cgroup/outer/memory.stat",
                                   "file 900000\ninactive_file 300000\n"}
            << 2'300'000ULL;
        QTest::newRow("a full group")
            << group.mid(0, 6) + QStringList{"sys/fs/cgroup/outer/memory.current", "4000000\n"}
            << 0ULL;
        QTest::newRow("a group of the first version")
            << system + QStringList{"proc/self/cgroup",
                                    "7:cpu:/\n5:blkio,memory:/box\n",
                                    "sys/fs/cgroup/memory/box/memory.limit_in_bytes",
                                    "900000\n",
                                    "sys/fs/cgroup/memory/box/memory.usage_in_bytes",
                                    "500000\n",
                                    "sys/fs/cgroup/memory/box/memory.stat",
                                    "total_inactive_file 100000\n"}
            << 500'000ULL;
    }
    void whatIsFreeIsTheLeastThatSystemAndControlGroupsLeave() {
        QFETCH(QStringList, files);
        QFETCH(qulonglong, free);
        const Folder root;
        for (qsizetype i = 0; i != files.size(); i += 2) {
            QVERIFY(QDir(root.path()).mkpath(QFileInfo(files[i]).path()));
            root.write(files[i], files[i + 1].toLatin1());
        }
        QCOMPARE(memory_host::freeMemory(root.path().toStdString()), free);
    }

    void aFileOfTooManyAtomsIsRefused() {
        fileLimits().atoms = 100;
        const QString tooMany = ": has more than 100 atoms; accepted are files of up to as many";
        QCOMPARE(refused(waters(101)), tooMany);
        openText(waters(100));
        QStringList rows;
        for (int i = 0; i < 60; ++i)
            rows << QString("C C . ALA A %1 ? %1 0 0 1").arg(i);
        QCOMPARE(refused(mmcif(rows, "a") + mmcif(rows, "b"), "large.cif"), tooMany);
    }

    void aFileThatIsLargerThanTheFreeMemoryIsRefusedUnread() {
        setFree(1'500'000);
        QCOMPARE(refused(waters(40000)),
                 ": needs about 2 MB of memory to go on, and 1 MB" + notFree);
        QCOMPARE(m_asked, 1);
    }

    void unpackingEndsWhereTheFreeMemoryDoes() {
        setFree(1'500'000);
        QCOMPARE(refused(gzipped(waters(100000)), "large.pdb.gz"),
                 ": needs about 6 MB of memory to go on, and 1 MB" + notFree);
        QCOMPARE(m_asked, 1);
    }

    void theMemoryIsLookedAtBeforeBuilding() {
        setFree(12'000'000);
        const QString text = refused(waters(40000));
        QVERIFY2(QRegularExpression("^: needs about [0-9]+ MB of memory to go on, and 12 MB")
                     .match(text)
                     .hasMatch(),
                 qPrintable(text));
        fileLimits() = m_usual;
        openText(waters(40000));
    }

    // Each of them asks first where what comes before it takes less.
    void theMemoryIsLookedAtBeforeEachStepThatTakesIt_data() {
        QTest::addColumn<QString>("file");
        QTest::addColumn<QString>("what");
        QStringList rows;
        for (int i = 0; i < 70000; ++i)
            rows << QString("C C . A A %1 ? %1 0 0 1").arg(i);
        QTest::newRow("rows that come")
            << QString::fromStdString(m_folder.write("rows.cif", mmcif(rows))) << "6 MB";
        QTest::newRow("the search for bonds")
            << QString::fromStdString(m_folder.write("bonds.pdb", waters(40000))) << "5 MB";
        QTest::newRow("the values of a map") << structure("1jzv.ccp4") << "4 MB";
    }
    void theMemoryIsLookedAtBeforeEachStepThatTakesIt() {
        QFETCH(QString, file);
        QFETCH(QString, what);
        setFree(3'500'000);
        QCOMPARE(refusal(file.toStdString()),
                 file + ": needs about " + what + " of memory to go on, and 3 MB" + notFree);
    }

    void theEstimateIsNearWhatIsTaken_data() {
        QTest::addColumn<QString>("file");
        for (const char* name : {"1ejg.pdb", "1tii.pdb", "3o21.pdb", "6zu5.cif"})
            QTest::newRow(name) << structure(name);
        QTest::newRow("waters") << QString::fromStdString(m_folder.write("w.pdb", waters(50000)));
    }
    void theEstimateIsNearWhatIsTaken() {
        SKIP_WHEN_SANITIZED;
        QFETCH(QString, file);
        auto parsed = memory_host::parseFile(file.toStdString());
        setFree(0);
        QString text;
        try {
            memory_host::openParsed(*parsed, {});
        } catch (const memory_host::FileError& error) {
            text = error.what();
        }
        if (text.isEmpty())
            return; // Less than a megabyte.
        const double estimate =
            QRegularExpression("about ([0-9]+) MB").match(text).captured(1).toDouble() * 1.0e6;
        fileLimits() = m_usual;
        parsed.reset();
        const std::size_t before = heapInUse();
        memory_host::openFile(file.toStdString());
        double taken = 0;
        const auto isNear = [&] {
            taken = static_cast<double>(heapInUse() - before);
            return taken <= 1.1 * estimate + 1.0e6 && estimate <= 1.6 * taken + 1.0e6;
        };
        // The text of the file is packed meanwhile.
        QTRY_VERIFY2(isNear(), qPrintable(QString("%1 of %2").arg(taken).arg(estimate)));
    }

    void aBombIsRefusedAfterItsFirstMegabyte_data() {
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<QString>("what");
        constexpr qsizetype size = 200'000'000;
        QTest::newRow("zeros") << gzipped(QByteArray(size, '\0'))
                               << ": holds binary data of an unknown kind; accepted are ";
        QTest::newRow("letters") << gzipped(QByteArray(size, 'x'))
                                 << ": is no structure: its first megabyte has no record of a PDB "
                                    "file; accepted are ";
        QTest::newRow("lines") << gzipped(QByteArray("Dear diary\n").repeated(size / 11))
                               << ": is no structure: its first megabyte has no record of a PDB "
                                  "file; accepted are ";
        QTest::newRow("not packed") << QByteArray(5'000'000, 'x')
                                    << ": is no structure: its first megabyte has no record of a "
                                       "PDB file; accepted are ";
    }
    void aBombIsRefusedAfterItsFirstMegabyte() {
        QFETCH(QByteArray, content);
        QFETCH(QString, what);
        setFree(1'000'000'000);
        const QString text = refused(content, "bomb.gz");
        QVERIFY2(text.startsWith(what), qPrintable(text));
        QCOMPARE(m_asked, 0); // Not even room for the rest was made.
    }

    void whatIsUnpackedHasALimit() {
        fileLimits().bytes = 5'000'000;
        QCOMPARE(refused(gzipped(waters(100000)), "large.pdb.gz"),
                 ": is too large when it is unpacked; accepted are files of up to 4 GiB, also when "
                 "they are unpacked");
        openText(gzipped(waters(50000)), {}, "test.pdb.gz");
    }

    void aLongHeaderIsNoReasonToRefuse() {
        openText(QByteArray("REMARK 465 NOTHING\n").repeated(100000) + waters(3));
        QCOMPARE(atoms(item("/test")).size(), 3U);
        openText("#" + QByteArray(2'000'000, '#') + "\n" + mmcif({"C C . ALA A 1 ? 0 0 0 1"}), {},
                 "other.cif");
    }

    void thousandsOfNamesAtOnePositionTakeLinearMemory() {
        SKIP_WHEN_SANITIZED;
        QStringList rows;
        for (int i = 0; i < 20000; ++i)
            rows << QString("C%1 C A R%1 A 1 ? %1 0 0 1").arg(i);
        const QByteArray text = mmcif(rows);
        const std::string file = m_folder.write("names.cif", text);
        const std::size_t before = heapInUse();
        const auto parsed = memory_host::parseFile(file);
        const std::size_t taken = heapInUse() - before;
        QVERIFY2(taken < 40 * static_cast<std::size_t>(text.size()),
                 qPrintable(QString::number(taken)));
        const auto opened = memory_host::openParsed(*parsed, {});
        QCOMPARE(opened.remarks.size(), std::size_t(2));
        QCOMPARE(QString::fromStdString(opened.remarks[0]),
                 QString::fromStdString(file) +
                     ": residue R0,R1,R2,R3,R4,R5,R6,R7,... 1 of chain A has more than 8 names");
        QCOMPARE(childNames(item("/test/A/Groups")), QStringList("R0,R1,R2,R3,R4,R5,R6,R7,... 1"));
    }

    void thousandsOfDataBlocksTakeLinearMemory() {
        SKIP_WHEN_SANITIZED;
        QByteArray text;
        for (int i = 0; i < 3000; ++i)
            text += mmcif({"C C . ALA A 1 ? 0 0 0 1"}, "b" + QByteArray::number(i));
        const std::string file = m_folder.write("blocks.cif", text);
        const std::size_t before = heapInUse();
        const auto parsed = memory_host::parseFile(file);
        const std::size_t taken = heapInUse() - before;
        QVERIFY2(taken < std::size_t(3000) * 8000, qPrintable(QString::number(taken)));
        QCOMPARE(memory_host::openParsed(*parsed, {}).items.size(), std::size_t(3000));
    }

    void conformersInHeapsAreTold() {
        QStringList rows;
        for (int i = 0; i < 60000; ++i)
            rows << QString("C C %1 ALA A 1 ? %2 0 0 1").arg(i % 30000).arg(i % 20 * 5);
        openText(mmcif(rows),
                 {path() + ": residue ALA 1 of chain A has 60000 atoms",
                  path() + ": 60000 atoms stand closer together than matter does, and have no "
                           "bonds; accepted are coordinates in Angstrom"});
    }

    // Many models do not each look through the names and alternative locations of all.
    void whatIsKnownOfNamesIsKeptFromModelToModel() {
        constexpr int names = 5000;
        constexpr int models = 300;
        QStringList rows;
        for (int i = 0; i < names; ++i)
            rows << QString("N%1 C %1 ALA A %1 ? %2 0 0 1").arg(i).arg(3 * i);
        for (int i = 0; i < models; ++i)
            rows << QString("C C . ALA A 1 ? 0 0 0 %1").arg(i + 2);
        const auto parsed = memory_host::parseFile(m_folder.write("models.cif", mmcif(rows)));
        std::size_t items = 0;
        std::string refusal;
        try {
            const FailingMemory onlySoManyLargeBlocks(models, models);
            items = memory_host::openParsed(*parsed, {}).items.size();
        } catch (const memory_host::FileError& error) {
            refusal = error.what();
        }
        QCOMPARE(refusal, std::string());
        QCOMPARE(items, std::size_t(1 + models));
    }
};

REGISTER_TEST(FileLimitsTest)
#include "FileLimitsTest.moc"
