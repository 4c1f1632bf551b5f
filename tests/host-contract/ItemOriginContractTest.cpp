// Which file an item was read from.
#include "ContractTools.h"
#include "DataPointBase.h"
#include "ItemOrigin.h"
#include "TestSupport.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

using namespace contract;
using namespace TAVIK;

class ItemOriginContractTest : public test_support::TestCase {
    Q_OBJECT

    QTemporaryDir m_folder;

    /// Writes a structure of one atom; its absolute path.
    QString write(const QString& name) const {
        QString path = m_folder.filePath(name);
        QFile file(path);
        if (!file.open(QIODevice::WriteOnly))
            qFatal("%s cannot be written", qPrintable(path));
        file.write("ATOM      1  CA  ALA A   1       1.000   2.000   3.000  1.00 10.00\n");
        return path;
    }
    static Compound* open(const QString& path) {
        const Items items = host_under_test::openFile(QFile::encodeName(path).toStdString());
        return items.size() == 1 ? items.front() : nullptr;
    }

private slots:
    void anEntryKnowsTheFileThatItWasReadFrom() {
        const QString first = write("first.pdb");
        const QString second = write(QString::fromUtf8("\u00e9t\u00e9 <b> & \u4e09.pdb"));
        const Compound* one = open(first);
        const Compound* two = open(second);
        QVERIFY(one && two);
        QCOMPARE(OriginOf(one), first);
        QCOMPARE(OriginOf(two), second);
        QVERIFY(QFile::remove(first)); // what it was called stays what it was called
        QCOMPARE(OriginOf(one), first);
    }

    void aRelativePathIsMadeAbsoluteWhenTheFileIsOpened() {
        const QString path = write("here.pdb");
        const QString before = QDir::currentPath();
        QVERIFY(QDir::setCurrent(m_folder.path()));
        const Compound* plain = open("here.pdb");
        const Compound* dotted = open("./here.pdb");
        QVERIFY(QDir::setCurrent(before));
        QVERIFY(plain && dotted);
        QCOMPARE(OriginOf(plain), QDir(m_folder.path()).canonicalPath() + "/here.pdb");
        QCOMPARE(OriginOf(dotted), OriginOf(plain));
    }

    void whatWasNotReadHasNoFile() {
        QCOMPARE(OriginOf(nullptr), QString());
        QCOMPARE(OriginOf(space()), QString());
        QCOMPARE(OriginOf(make(space(), "Molecule")), QString());
        Compound* entry = open(write("entry.pdb"));
        QVERIFY(entry && entry->HasChildren());
        for (const Compound* child : childrenOf(entry))
            QCOMPARE(OriginOf(child), QString());
        QCOMPARE(OriginOf(make(entry, "Composite")), QString());
    }

    void anItemThatComesAfterADestroyedOneHasNoFile() {
        for (int i = 0; i != 20; ++i) {
            Compound* entry = open(write("entry.pdb"));
            QVERIFY(entry);
            {
                const DataPointBase guard(nullptr, Publisher::Delete);
                DataMaker::Destroy(entry);
            }
            QCOMPARE(OriginOf(make(space(), "Composite")), QString());
        }
        QCOMPARE(faults(), QString());
    }
};

REGISTER_TEST(ItemOriginContractTest)
#include "ItemOriginContractTest.moc"
