#include "RunPaths.h"
#include "TestSupport.h"

using namespace end_to_end;

/// A library of the right name in the working directory must never be loaded.
class RunPathTest : public test_support::TestCase {
    Q_OBJECT
private slots:
    void everyBuiltProgramAndLibraryLooksForOthersFromItsOwnPlaceOnly() {
        const QStringList binaries = binariesBelow(BUILD_DIR);
        for (const QString name :
             {"/bin/workbench", "/structure-editor/libMemoryHost.so", "/test-end-to-end"})
            QCOMPARE(binaries.filter(name).size(), 1);
        QVERIFY(!binaries.filter("/libVuxo.so").isEmpty());
        const QStringList wrong = wrongRunPaths(binaries);
        QVERIFY2(wrong.isEmpty(), qPrintable(wrong.join('\n')));
    }
};

REGISTER_TEST(RunPathTest)
#include "RunPathTest.moc"
