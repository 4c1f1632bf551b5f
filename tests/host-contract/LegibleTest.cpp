// Colours that can be read: luminance and contrast against known values, and the colours chosen.
#include "Legible.h"
#include "TestSupport.h"

class LegibleTest : public test_support::TestCase {
    Q_OBJECT

private slots:
    void luminanceIsThatOfTheGuidelines() {
        QCOMPARE(legible::luminance(Qt::black), 0.0);
        QCOMPARE(legible::luminance(Qt::white), 1.0);
        // The weights of the three channels.
        QCOMPARE(legible::luminance(QColor(255, 0, 0)), 0.2126);
        QCOMPARE(legible::luminance(QColor(0, 255, 0)), 0.7152);
        QCOMPARE(legible::luminance(QColor(0, 0, 255)), 0.0722);
        // Linear below 0.03928: 10 / 255 / 12.92.
        QCOMPARE(legible::luminance(QColor(10, 10, 10)), 10.0 / 255.0 / 12.92);
        QVERIFY(qAbs(legible::luminance(QColor(128, 128, 128)) - 0.2158605) < 1e-6);
    }

    void contrastIsThatOfTheGuidelines_data() {
        QTest::addColumn<QColor>("one");
        QTest::addColumn<QColor>("other");
        QTest::addColumn<double>("expected");
        const auto row = [](const char* name, const QColor& one, const QColor& other,
                            double expected) { QTest::newRow(name) << one << other << expected; };
        row("black and white", Qt::black, Qt::white, 21.0);
        row("a colour and itself", Qt::magenta, Qt::magenta, 1.0);
        row("#777777 on white", QColor(0x77, 0x77, 0x77), Qt::white, 4.48);
        row("#767676 on white", QColor(0x76, 0x76, 0x76), Qt::white, 4.54);
        row("red on white", Qt::red, Qt::white, 4.00);
        row("magenta on white", Qt::magenta, Qt::white, 3.14);
        row("blue on white", Qt::blue, Qt::white, 8.59);
        row("yellow on black", Qt::yellow, Qt::black, 19.56);
        row("dark green on white", Qt::darkGreen, Qt::white, 5.14);
    }
    void contrastIsThatOfTheGuidelines() {
        QFETCH(QColor, one);
        QFETCH(QColor, other);
        QFETCH(double, expected);
        QVERIFY2(qAbs(legible::contrast(one, other) - expected) < 0.005,
                 qPrintable(QString::number(legible::contrast(one, other))));
        QCOMPARE(legible::contrast(other, one), legible::contrast(one, other));
    }

    void blackOrWhiteCanAlwaysBeRead() {
        for (int red = 0; red <= 255; red += 5)
            for (int green = 0; green <= 255; green += 5)
                for (int blue = 0; blue <= 255; blue += 5) {
                    const QColor background(red, green, blue);
                    QVERIFY(legible::contrast(legible::blackOrWhite(background), background) >=
                            legible::least);
                }
        QCOMPARE(legible::blackOrWhite(Qt::yellow), QColor(Qt::black));
        QCOMPARE(legible::blackOrWhite(Qt::darkBlue), QColor(Qt::white));
    }

    void aColourThatCanBeReadStays() {
        for (const QColor& color : {QColor(Qt::darkMagenta), QColor(Qt::darkGreen),
                                    QColor(Qt::darkBlue), QColor(Qt::black)})
            QCOMPARE(legible::text(color, Qt::white), color);
        for (const QColor& color : {QColor(Qt::yellow), QColor(Qt::white)})
            QCOMPARE(legible::text(color, Qt::black), color);
    }

    void anyOtherColourIsTheNearestOfItsHueThatCanBeRead() {
        int changed = 0;
        for (int hue = 0; hue < 360; hue += 15)
            for (const int saturation : {0, 60, 255})
                for (int lightness = 0; lightness <= 255; lightness += 15)
                    for (int grey = 0; grey <= 255; grey += 17) {
                        const QColor background(grey, grey, grey);
                        const QColor wanted(QColor::fromHsl(hue, saturation, lightness).rgb());
                        const QColor chosen = legible::text(wanted, background);
                        QVERIFY(legible::contrast(chosen, background) >= legible::least);
                        if (chosen == wanted)
                            continue;
                        ++changed;
                        QVERIFY(legible::contrast(wanted, background) < legible::least);
                        const bool darker = legible::luminance(chosen) < legible::luminance(wanted);
                        // One of 255 steps nearer it could not be read.
                        const float to = darker ? 0.0F : 1.0F;
                        const float at = chosen.lightnessF();
                        const float nearer = at + (wanted.lightnessF() - at) * 0.1F +
                                             (darker ? 3.0F : -3.0F) / 255.0F;
                        if (nearer > 0 && nearer < 1 && qAbs(at - to) > 0.02F)
                            QVERIFY(legible::contrast(
                                        QColor(QColor::fromHslF(wanted.hslHueF(),
                                                                wanted.hslSaturationF(), nearer)
                                                   .rgb()),
                                        background) < legible::least);
                        if (wanted.hslSaturation() > 50 && chosen.lightness() > 20 &&
                            chosen.lightness() < 235) {
                            const int apart = qAbs(wanted.hslHue() - chosen.hslHue());
                            QVERIFY2(qMin(apart, 360 - apart) <= 8,
                                     qPrintable(wanted.name() + u' ' + chosen.name()));
                        }
                    }
        QVERIFY(changed > 1000);
    }

    void whatIsHalfTransparentIsTakenAsItIsSeen() {
        const QColor faint(0, 0, 0, 60);
        const QColor chosen = legible::text(faint, Qt::white);
        QCOMPARE(chosen.alpha(), 255);
        QVERIFY(legible::contrast(chosen, Qt::white) >= legible::least);
        QVERIFY(chosen != QColor(Qt::black));
        QCOMPARE(legible::text(QColor(0, 0, 0, 250), Qt::white), QColor(5, 5, 5));
    }
};

REGISTER_TEST(LegibleTest)
#include "LegibleTest.moc"
