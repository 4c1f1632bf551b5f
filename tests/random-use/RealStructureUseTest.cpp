#include "SessionTest.h"

class RealStructureUseTest : public SessionTest {
    Q_OBJECT
private slots:
    void sessionsGoAsThePlainModelSays_data() {
        QTest::addColumn<int>("structure");
        QTest::addColumn<unsigned int>("seed");
        QTest::newRow("sample") << int(Start::Sample) << 1U;
        for (unsigned int seed = 2; seed != 4; ++seed) {
            QTest::addRow("ubiquitin %u", seed) << int(Start::Ubiquitin) << seed;
            QTest::addRow("crambin %u", seed) << int(Start::Crambin) << seed;
            QTest::addRow("crabp %u", seed) << int(Start::Crabp) << seed;
        }
    }
    void sessionsGoAsThePlainModelSays() {
        QFETCH(int, structure);
        QFETCH(unsigned int, seed);
        playOne({Start::Kind(structure), seed, seed % 2 == 0}, Theme::Everything, 100);
    }
};

REGISTER_TEST(RealStructureUseTest)
#include "RealStructureUseTest.moc"
