#include "Bits.h"
#include "TestSupport.h"

#include <set>

using workbench::Bits;

class BitsTest : public test_support::TestCase {
    Q_OBJECT

private slots:
    void aRangeIsEveryNumberInIt() {
        for (const std::size_t size : {1U, 63U, 64U, 65U, 200U})
            for (std::size_t begin = 0; begin <= size; begin += 7)
                for (std::size_t end = begin; end <= size; end += 5) {
                    Bits bits(size);
                    bits.add(begin, end);
                    for (std::size_t i = 0; i != size; ++i)
                        QCOMPARE(bits.has(i), i >= begin && i < end);
                    QCOMPARE(bits.count(), end - begin);
                }
    }

    void nextGoesFromOneToTheNext() {
        const std::set<std::size_t> numbers{0, 3, 63, 64, 127, 128, 300};
        Bits bits(301);
        for (const std::size_t number : numbers)
            bits.add(number);
        std::set<std::size_t> seen;
        for (std::size_t i = bits.next(0); i != bits.size(); i = bits.next(i + 1))
            seen.insert(i);
        QVERIFY(seen == numbers);
        QCOMPARE(bits.next(301), std::size_t{301});
        QCOMPARE(Bits(0).next(0), std::size_t{0});
    }

    void theOppositeOfNothingIsAll() {
        Bits bits(70);
        bits.invert();
        QCOMPARE(bits.count(), std::size_t{70});
        QVERIFY(bits == Bits(70, true));
        bits.invert();
        QVERIFY(bits == Bits(70));
    }
};

REGISTER_TEST(BitsTest)
#include "BitsTest.moc"
