// Elements by their symbols, and their radii.
#include "VanDerWaals.h"
#include "TestSupport.h"

class VanDerWaalsTest : public test_support::TestCase {
    Q_OBJECT
private slots:
    void aSymbolIsFoundInAnyCase() {
        QCOMPARE(int(atomicNumber("C")), 6);
        QCOMPARE(int(atomicNumber("Cu")), 29);
        QCOMPARE(int(atomicNumber("CU")), 29);
        QCOMPARE(int(atomicNumber("cu")), 29);
        QCOMPARE(int(atomicNumber("Og")), 118);
        QCOMPARE(int(atomicNumber("D")), 1);
    }

    void whatIsNoSymbolHasTheNumberZero() {
        for (const char* text : {"", "X", "Xx", "C1", "1", "Car", " C", "\xe9"})
            QCOMPARE(int(atomicNumber(text)), 0);
    }

    // Bondi 1964 and Mantina et al. 2009.
    void theRadiiAreThePublishedOnes() {
        const std::pair<const char*, float> published[] = {
            {"H", 1.10F},  {"C", 1.70F},  {"N", 1.55F},  {"O", 1.52F},  {"S", 1.80F},
            {"P", 1.80F},  {"Se", 1.90F}, {"Na", 2.27F}, {"Mg", 1.73F}, {"Ca", 2.31F},
            {"Cl", 1.75F}, {"Zn", 1.39F}, {"Pt", 1.72F}, {"I", 1.98F},  {"Ra", 2.83F}};
        for (const auto& [symbol, radius] : published)
            QCOMPARE(vanDerWaalsRadius(atomicNumber(symbol)), radius);
    }

    void anElementWithoutAPublishedRadiusHasTwoAngstroms() {
        for (const char* symbol : {"Fe", "Mn", "La", "Og", "X"})
            QCOMPARE(vanDerWaalsRadius(atomicNumber(symbol)), 2.0F);
        QCOMPARE(vanDerWaalsRadius(255), 2.0F);
    }
};

REGISTER_TEST(VanDerWaalsTest)
#include "VanDerWaalsTest.moc"
