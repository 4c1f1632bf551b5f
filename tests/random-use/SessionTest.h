// What the test classes of random sessions share.
#pragma once

#include "Apart.h"
#include "TestSupport.h"

#include <cstdio>

namespace random_use {

class SessionTest : public test_support::TestCase {
protected:
    /// Makes `count` rows, each a session of its own.
    static void sessions(unsigned int count, unsigned int first = 1) {
        QTest::addColumn<unsigned int>("seed");
        for (unsigned int seed = first; seed != first + count; ++seed)
            QTest::addRow("seed %u", seed) << seed;
    }
    /// Plays the session of the row: `steps` steps on structures that are built.
    static void playOne(Theme theme, std::size_t steps) {
        QFETCH(unsigned int, seed);
        playOne({Start::Generated, seed, seed % 2 == 0}, theme, steps);
    }
    static void playOne(const Start& start, Theme theme, std::size_t steps) {
        Session session{start, {}};
        const Outcome outcome = playApart(session, theme, start.seed, steps);
        static std::size_t done = 0;
        constexpr std::size_t sign = 10'000;
        if ((done + outcome.steps) / sign != done / sign)
            std::fprintf(stderr, "%zu steps\n", done + outcome.steps);
        done += outcome.steps;
        if (outcome.faults.isEmpty())
            return;
        std::fprintf(stderr, "%s", qPrintable(report(session, outcome)));
        QFAIL("the window did not do what the plain model did");
    }
};

} // namespace random_use

using namespace random_use;
