// The hint in the empty find box, with the palettes that themes may have.
#include "LegibleHints.h"
#include "FindBox.h"
#include "Legible.h"
#include "MainWindowCase.h"

#include <QApplication>
#include <QLineEdit>
#include <QPalette>

class LegibleHintsTest : public test_support::MainWindowCase {
    Q_OBJECT

    QPalette m_before;

    /// A palette of these colours, with hints in a colour of its own.
    static QPalette paletteOf(const QColor& base, const QColor& text, const QColor& hint) {
        QPalette palette;
        for (const auto role : {QPalette::Base, QPalette::Window, QPalette::Button})
            palette.setColor(role, base);
        for (const auto role : {QPalette::Text, QPalette::WindowText, QPalette::ButtonText})
            palette.setColor(role, text);
        palette.setColor(QPalette::PlaceholderText, hint);
        return palette;
    }
    static QColor halfOf(QColor color) {
        color.setAlphaF(0.5F);
        return color;
    }
    /// The greatest contrast to `base` of anything in the empty find box: that of the middle of the
    /// letters, as their edges are smooth.
    double contrastOfHint(const QColor& base) {
        QLineEdit* const field = m_window->find().field();
        field->clear();
        field->clearFocus();
        QCoreApplication::processEvents();
        const QImage image = field->grab().toImage();
        // Without the frame and the cursor.
        const QRect letters = image.rect().adjusted(6, 4, -6, -4);
        double greatest = 0;
        for (int y = letters.top(); y <= letters.bottom(); ++y)
            for (int x = letters.left(); x <= letters.right(); ++x)
                greatest = std::max(greatest, legible::contrast(image.pixelColor(x, y), base));
        return greatest;
    }

private slots:
    void init() override {
        MainWindowCase::init();
        m_before = QApplication::palette();
    }
    void cleanup() override {
        MainWindowCase::cleanup();
        QApplication::setPalette(m_before);
    }

    void theHintCanBeReadInAnyPalette_data() {
        QTest::addColumn<QColor>("base");
        QTest::addColumn<QColor>("text");
        QTest::addColumn<QColor>("hint");
        const QColor dark(35, 35, 35);
        QTest::newRow("light") << QColor(Qt::white) << QColor(Qt::black)
                               << halfOf(QColor(Qt::black));
        QTest::newRow("dark") << dark << QColor(Qt::white) << halfOf(QColor(Qt::white));
        QTest::newRow("dark, with the hint of a light one")
            << dark << QColor(Qt::white) << halfOf(QColor(Qt::black));
        QTest::newRow("light, with the hint of a dark one")
            << QColor(Qt::white) << QColor(Qt::black) << halfOf(QColor(Qt::white));
        QTest::newRow("black, with a hint like the base")
            << QColor(Qt::black) << QColor(Qt::yellow) << QColor(Qt::black);
        QTest::newRow("of little contrast itself")
            << QColor(128, 128, 128) << QColor(160, 160, 160) << halfOf(QColor(Qt::black));
    }
    void theHintCanBeReadInAnyPalette() {
        QFETCH(QColor, base);
        QFETCH(QColor, text);
        QFETCH(QColor, hint);
        open();
        // While the program runs, as when the theme changes in the evening.
        QApplication::setPalette(paletteOf(base, text, hint));
        QTRY_VERIFY2(contrastOfHint(base) >= 2.9,
                     qPrintable(QString::number(contrastOfHint(base))));
        const double contrast = contrastOfHint(base);
        // It is no text that was typed, where the palette has room for a difference.
        if (legible::contrast(text, base) > 10)
            QVERIFY2(contrast < 0.75 * legible::contrast(text, base),
                     qPrintable(QString::number(contrast)));
        // The other colours are left alone.
        QCOMPARE(QApplication::palette().color(QPalette::Base), base);
        QCOMPARE(QApplication::palette().color(QPalette::Text), text);
    }

    void aHintThatCanBeReadStaysAsTheThemeHasIt() {
        const QColor hint(90, 90, 200);
        QApplication::setPalette(paletteOf(Qt::white, Qt::black, hint));
        workbench::makeHintsLegible();
        QCOMPARE(QApplication::palette().color(QPalette::PlaceholderText), hint);
    }
};

REGISTER_TEST(LegibleHintsTest)
#include "LegibleHintsTest.moc"
