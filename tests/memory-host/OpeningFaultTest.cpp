// Opening files while memory runs out: each allocation is refused once, alone and together with all
// that follow. The file is then refused with one line and everything is as it was, or it is open.
#include "DataPointBase.h"
#include "FailingMemory.h"
#include "FileTestCase.h"
#include "Sample.h"
#include "Space.h"
#include "Subscriber.h"

#include <cstring>
#include <limits>

using namespace file_testing;
using memory_host::FileError;

namespace {

class Counter : public Subscriber {
public:
    int adds = 0;
    int others = 0;

private:
    void commUpdate() override { ++others; }
    void commAdd() override { ++adds; }
    void commDelete() override { ++others; }
};

// Two models with alternative locations, a bond, and something to remark on.
QByteArray pdbText() {
    QByteArray text = "HEADER    A NAME\n";
    for (const char* model : {"MODEL        1\n", "MODEL        2\n"}) {
        text += model + atomAt(" N  ", 0) + atomAt(" CA ", 1.4F) + atomAt(" C  ", 2.8F);
        PdbAtom atom;
        atom.name = " CB ";
        atom.x = 2.0F;
        for (const char alternative : {'A', 'B'}) {
            atom.alternative = alternative;
            text += line(atom);
        }
        atom.name = " O\xe9 ";
        atom.residue = "HOH";
        atom.position = " ";
        text += line(atom);
        text += "ENDMDL\n";
    }
    return text;
}

QByteArray mmcifText() {
    return mmcif({"N N . ALA A 1 ? 0 0 0 1", "CA C . ALA A 1 ? 1.4 0 0 1",
                  "CB C A ALA A 1 ? 2.0 1.4 0 1", "CB C B ALA A 1 ? 2.1 1.4 0 1",
                  "O O . HOH B 2 ? x 0 0 1"});
}

// A map of 2 x 2 x 2 points.
QByteArray mapText() {
    QByteArray text(1024 + 8 * 4, '\0');
    const auto set = [&text](int number, auto value) {
        static_assert(sizeof(value) == 4);
        std::memcpy(text.data() + 4 * (number - 1), &value, 4);
    };
    for (const int axis : {0, 1, 2}) {
        set(1 + axis, 2);
        set(8 + axis, 2);
        set(11 + axis, 4.0F);
        set(14 + axis, 90.0F);
        set(17 + axis, 1 + axis);
    }
    set(4, 2);
    set(23, 1);
    text.replace(208, 4, "MAP ");
    text.replace(212, 2, "DD");
    return text;
}

} // namespace

class OpeningFaultTest : public FileTestCase {
    Q_OBJECT

    // What became of opening the file: nothing, an exception's type and what it says.
    static QString open(const std::string& path, int granted, int refuse, int& refused) {
        QString thrown;
        std::vector<TAVIK::Compound*> items;
        {
            const FailingMemory memory(granted, refuse, 0);
            try {
                items = memory_host::openFile(path).items;
            } catch (const FileError& error) {
                thrown = QString::fromLatin1(error.what());
            } catch (const std::bad_alloc&) {
                thrown = QStringLiteral("std::bad_alloc");
            }
            refused = FailingMemory::refusals();
        }
        if (thrown.isEmpty() && items.empty())
            return QStringLiteral("nothing was opened");
        return thrown;
    }

private slots:
    void aFileIsOpenedAsAWholeOrNotAtAll_data() {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<int>("refuse");
        const auto add = [](const char* name, const QByteArray& content) {
            QTest::addRow("%s, one", name) << name << content << 1;
            QTest::addRow("%s, all that follow", name)
                << name << content << std::numeric_limits<int>::max();
        };
        add("a.pdb", pdbText());
        add("a.pdb.gz", gzipped(pdbText()));
        add("a.cif", mmcifText());
        add("a.cif.gz", gzipped(mmcifText()));
        add("a.ccp4", mapText());
    }

    void aFileIsOpenedAsAWholeOrNotAtAll() {
        QFETCH(QString, name);
        QFETCH(QByteArray, content);
        QFETCH(int, refuse);
        openText(atomAt(" N  ", 1), {}, "first.pdb");
        const QStringList before = childNames(TAVIK::Space::instance());
        const std::string path = m_folder.write(name, content);
        const QString noMemory =
            QString::fromStdString(path) + ": there is not enough memory to open it; accepted are ";
        int failures = 0;
        for (int granted = 0;; ++granted) {
            const Counter counter;
            int refused = 0;
            const QString thrown = open(path, granted, refuse, refused);
            // A guard that unwinds is told of, too.
            QVERIFY(counter.adds == 1 || (counter.adds == 0 && !thrown.isEmpty()));
            QCOMPARE(counter.others, 0);
            QCOMPARE(faults(), QString());
            {
                const DataPointBase guard(nullptr, Publisher::Update);
                QVERIFY(guard.m_good);
            }
            while (childNames(TAVIK::Space::instance()) != before && thrown.isEmpty())
                TAVIK::DataMaker::Destroy(TAVIK::Space::instance()->ChildEnd()[-1]);
            QCOMPARE(childNames(TAVIK::Space::instance()), before);
            if (refused == 0) {
                QCOMPARE(thrown, QString());
                break;
            }
            // At the very beginning there is not even memory for the line.
            if (!thrown.isEmpty() && (granted > 20 || thrown != QLatin1String("std::bad_alloc")))
                QVERIFY2(thrown.startsWith(noMemory), qPrintable(thrown));
            failures += thrown.isEmpty() ? 0 : 1;
        }
        QVERIFY2(failures > 20, qPrintable(QString::number(failures)));
    }
};

REGISTER_TEST(OpeningFaultTest)
#include "OpeningFaultTest.moc"
