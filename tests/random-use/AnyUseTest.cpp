#include "SessionTest.h"

namespace {

constexpr unsigned int stepsOfSession = 150;

unsigned int setting(const char* name, unsigned int otherwise) {
    bool isNumber = false;
    const unsigned int value = qEnvironmentVariable(name).toUInt(&isNumber);
    return isNumber ? value : otherwise;
}

// Every sixteenth session opens a real structure, and another one begins with nothing.
Start startOf(unsigned int seed) {
    static constexpr Start::Kind real[] = {Start::Ubiquitin, Start::Crambin, Start::Crabp};
    Start start{Start::Generated, seed, seed % 2 == 0};
    if (seed % 16 == 5)
        start.kind = choose(real, seed / 16);
    else if (seed % 16 == 9)
        start.kind = Start::Empty;
    return start;
}

} // namespace

/// Sessions of all themes; scripts/random-use says how many, and from which seed on.
class AnyUseTest : public SessionTest {
    Q_OBJECT
private slots:
    void sessionsGoAsThePlainModelSays_data() {
        const unsigned int steps = setting("RANDOM_USE_STEPS", 40 * stepsOfSession);
        sessions((steps + stepsOfSession - 1) / stepsOfSession, setting("RANDOM_USE_SEED", 1));
    }
    void sessionsGoAsThePlainModelSays() {
        static constexpr Theme themes[] = {Theme::Everything, Theme::Commands, Theme::Gestures,
                                           Theme::Interference};
        QFETCH(unsigned int, seed);
        playOne(startOf(seed), choose(themes, seed), stepsOfSession);
    }
};

REGISTER_TEST(AnyUseTest)
#include "AnyUseTest.moc"
