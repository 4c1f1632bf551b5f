// Which residue names are those of water.
#include "Waters.h"
#include "TestSupport.h"

#include <string>

using TAVIK::isWater;

class WatersTest : public test_support::TestCase {
    Q_OBJECT

private slots:
    void everyListedNameIsOne() {
        for (const std::string_view name : TAVIK::waterNames)
            QVERIFY2(isWater(name), std::string(name).c_str());
    }

    void namesFromFilesAndFromSimulationsAreListed() {
        for (const char* const name : {"HOH", "DOD", "WAT", "H2O", "OH2", "SOL", "SPC", "TIP3"})
            QVERIFY2(isWater(name), name);
    }

    void whatIsAlikeIsNone() {
        for (const char* const name : {"", "O", "HO", "HOH ", " HOH", "HOHH", "hoh", "HOH 1", "TI",
                                       "TIP3PP", "MET", "a longer name", "12345HOH", "123456HOH"})
            QVERIFY2(!isWater(name), name);
        QVERIFY(!isWater(std::string_view("\0HOH", 4)));
    }
};

REGISTER_TEST(WatersTest)
#include "WatersTest.moc"
