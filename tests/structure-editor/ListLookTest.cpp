// How the list looks: marks in columns, long names, colours, tool tips.
#include "ItemOrigin.h"
#include "Palettes.h"
#include "Space.h"
#include "WindowTestCase.h"
#include "files/Files.h"
#include "window/ListBox.h"
#include "window/ListEntry.h"

#include <QApplication>
#include <QHelpEvent>
#include <QImage>
#include <QPainter>
#include <QScrollBar>
#include <QTextDocument>
#include <QToolTip>

using namespace window_tools;

namespace {

QFont sharpFont() {
    QFont font;
    font.setPixelSize(20);
    font.setStyleStrategy(QFont::NoAntialias);
    return font;
}

std::unique_ptr<ListBox> makeList(const QStringList& texts, int width = 300) {
    auto list = std::make_unique<ListBox>();
    list->setFont(sharpFont());
    list->setEntries(texts);
    list->resize(width, 300);
    list->show();
    return list;
}

QImage picture(ListBox& list, int index) {
    const QRect rect = list.visualItemRect(list.item(index)) & list.viewport()->rect();
    return list.viewport()->grab(rect).toImage().convertToFormat(QImage::Format_RGB32);
}

// Where the letters stand: first and last column of pixels of each run of columns with ink.
std::vector<std::pair<int, int>> runsOf(const QImage& image) {
    std::vector<std::pair<int, int>> runs;
    const QRgb background = image.pixel(1, 1);
    bool inRun = false;
    for (int x = 0; x < image.width(); ++x) {
        bool ink = false;
        for (int y = 0; y < image.height() && !ink; ++y)
            ink = image.pixel(x, y) != background;
        if (ink && !inRun)
            runs.emplace_back(x, x);
        if (ink)
            runs.back().second = x;
        inRun = ink;
    }
    return runs;
}

int centreOf(const std::pair<int, int>& run) {
    return (run.first + run.second) / 2;
}

// What a tool tip shows at a place, as text.
QString toolTipAt(QWidget* viewport, const QPoint& at) {
    QToolTip::hideText(); // which takes its time
    if (!QTest::qWaitFor([] { return !QToolTip::isVisible(); }))
        return QStringLiteral("the one before");
    QHelpEvent event(QEvent::ToolTip, at, viewport->mapToGlobal(at));
    QApplication::sendEvent(viewport, &event);
    QTextDocument shown;
    shown.setHtml(QToolTip::text());
    return QToolTip::isVisible() ? shown.toPlainText() : QString();
}

QString toolTipOf(const Vuxo& window, int index) {
    ListBox* list = listOf(window);
    return toolTipAt(list->viewport(), list->visualItemRect(list->item(index)).center());
}

} // namespace

class ListLookTest : public WindowTestCase {
    Q_OBJECT

    QPalette m_palette;

private slots:
    void init() override {
        WindowTestCase::init();
        m_palette = QApplication::palette();
    }
    void cleanup() override {
        QToolTip::hideText();
        QApplication::setPalette(m_palette);
        WindowTestCase::cleanup();
    }

    void marksStandInColumnsOfOneWidthAndNamesBelowEachOther() {
        const auto list =
            makeList({"XXXH", "OX H", " X H", "O/ H", " / H", "O_ H", " _ H", "O  H", "   H"});
        const auto whole = runsOf(picture(*list, 0));
        QCOMPARE(whole.size(), 4U);
        const int width = whole[1].first - whole[0].first;
        QCOMPARE(whole[2].first - whole[1].first, width);
        QVERIFY(width >= list->fontMetrics().horizontalAdvance(u'O'));
        for (int index = 1; index != list->count(); ++index) {
            const QString text = list->item(index)->text();
            const auto runs = runsOf(picture(*list, index));
            QCOMPARE(runs.size(), static_cast<std::size_t>(text.count(QRegularExpression("\\S"))));
            QCOMPARE(runs.back(), whole.back()); // the name
            std::size_t run = 0;
            for (const int column : {0, 1}) {
                if (text.at(column) == u' ')
                    continue;
                const int shift = qAbs(centreOf(runs[run]) - centreOf(whole[0]) - column * width);
                QVERIFY2(shift <= 1, qPrintable(text));
                ++run;
            }
        }
    }

    // The entry that is shown is the one whose marks matter most.
    void everyMarkIsSeenApartFromTheFocusFrame_data() {
        QTest::addColumn<int>("pixels");
        for (const int pixels : {9, 11, 12, 13, 15, 18, 24})
            QTest::addRow("%d pixels", pixels) << pixels;
    }
    void everyMarkIsSeenApartFromTheFocusFrame() {
        QFETCH(int, pixels);
        QFont font;
        font.setPixelSize(pixels);
        const auto list = makeList({"   H", " _ H", " X H", " / H", "O  H"});
        list->setFont(font);
        const auto insideFrame = [&](int index) {
            const QModelIndex entry = list->model()->index(index, 0);
            QStyleOptionViewItem option;
            option.widget = list.get();
            option.font = font;
            option.fontMetrics = QFontMetrics(font);
            option.palette = list->palette();
            option.state = QStyle::State_Enabled | QStyle::State_Active | QStyle::State_Selected |
                           QStyle::State_HasFocus;
            option.rect = {0, 0, 100, list->itemDelegate()->sizeHint(option, entry).height()};
            QImage image(option.rect.size(), QImage::Format_RGB32);
            image.fill(Qt::white);
            QPainter painter(&image);
            list->itemDelegate()->paint(&painter, option, entry);
            painter.end();
            return image.copy(option.rect.adjusted(2, 2, -2, -2));
        };
        for (int index = 1; index != list->count(); ++index)
            QVERIFY2(insideFrame(index) != insideFrame(0), qPrintable(list->item(index)->text()));
    }

    void aLongNameIsElidedInTheMiddle() {
        const QString name = "begin" + QString(200, u'm') + "end";
        const auto list = makeList({" _ " + name, " _ beginend", " _ begin" + QString(200, u'm')});
        QCOMPARE(list->horizontalScrollBar()->maximum(), 0);
        QVERIFY(!list->horizontalScrollBar()->isVisible());
        QVERIFY(list->visualItemRect(list->item(0)).right() < list->viewport()->width());
        QVERIFY(!makeList({" _ " + name}, 40)->horizontalScrollBar()->isVisible());
        QCOMPARE(list->item(0)->text(), " _ " + name);
        // It begins and ends as the name does.
        const QImage elided = picture(*list, 0);
        const QImage whole = picture(*list, 1);
        const QImage other = picture(*list, 2);
        const auto part = [](const QImage& image, int from, int width) {
            return image.copy(from, 0, width, image.height());
        };
        const QFontMetrics metrics = list->fontMetrics();
        const int begin = runsOf(whole).at(1).first;
        QCOMPARE(part(elided, begin, metrics.horizontalAdvance("beg")),
                 part(whole, begin, metrics.horizontalAdvance("beg")));
        const int end = metrics.horizontalAdvance("nd");
        const int elidedEnd = runsOf(elided).back().second;
        const int wholeEnd = runsOf(whole).back().second;
        QVERIFY(elidedEnd < elided.width());
        QCOMPARE(part(elided, elidedEnd - end + 2, end), part(whole, wholeEnd - end + 2, end));
        const int otherEnd = runsOf(other).back().second;
        QVERIFY(part(other, otherEnd - end + 2, end) != part(whole, wholeEnd - end + 2, end));
    }

    void theSizeHintShowsWholeEntries() {
        auto list = makeList({" _ a name of some length"});
        list->setFont(QFont());
        list->resize(list->sizeHint());
        const auto tight = picture(*list, 0);
        list->resize(list->sizeHint() + QSize(100, 0));
        const auto wide = picture(*list, 0);
        QCOMPARE(wide.copy(0, 0, tight.width() - 4, tight.height()),
                 tight.copy(0, 0, tight.width() - 4, tight.height()));
    }

    void entriesCanBeReadInEveryPalette_data() {
        QTest::addColumn<QPalette>("palette");
        QTest::addColumn<QPalette::ColorGroup>("group");
        for (const auto& [name, palette] : palettes::all()) {
            QTest::newRow(qPrintable(name + ", active")) << palette << QPalette::Active;
            QTest::newRow(qPrintable(name + ", inactive")) << palette << QPalette::Inactive;
            QTest::newRow(qPrintable(name + ", disabled")) << palette << QPalette::Disabled;
        }
    }
    void entriesCanBeReadInEveryPalette() {
        QFETCH(QPalette, palette);
        QFETCH(QPalette::ColorGroup, group);
        QApplication::setPalette(palette);
        const auto list = makeList({" _ one", "OX two"});
        list->setSelected(1, true);
        QWidget other;
        if (group == QPalette::Inactive)
            other.show();
        QWidget* const active = group == QPalette::Inactive ? &other : list.get();
        active->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(active));
        list->setEnabled(group != QPalette::Disabled);
        const auto fault = [&](int index, QPalette::ColorRole behind) {
            const QImage image = picture(*list, index);
            return palettes::faultOf(image, image.rect().adjusted(2, 2, -2, -2),
                                     palette.color(group, behind));
        };
        QCOMPARE(fault(0, QPalette::Base), QString());
        QCOMPARE(fault(1, QPalette::Highlight), QString());
    }

    // Tool tips.

    void aToolTipSaysNameAndFile() {
        memory_host::openFile(structure("1ubq.pdb").toStdString());
        memory_host::openFile(structure("1ubq.pdb").toStdString());
        openWindow();
        QCOMPARE(toolTipOf(*m_window, 0), "1ubq\n" + structure("1ubq.pdb"));
        QCOMPARE(toolTipOf(*m_window, 1), "1ubq-2\n" + structure("1ubq.pdb"));
        clickEntry(*m_window, 1, Qt::RightButton); // its marks are no part of the name
        QCOMPARE(toolTipOf(*m_window, 1), "1ubq-2\n" + structure("1ubq.pdb"));
    }

    void aToolTipWithoutAFileSaysTheName() {
        addEmpty(std::string(60, 'm') + "end");
        openWindow();
        QCOMPARE(toolTipOf(*m_window, 0), QString(60, u'm') + "end");
    }

    void nothingInANameIsMarkup() {
        addEmpty("<b>bold &amp; <img src=x>");
        openWindow();
        QCOMPARE(toolTipOf(*m_window, 0), "<b>bold &amp; <img src=x>");
    }

    void thereIsNoToolTipBelowTheEntries() {
        addEmpty("one");
        openWindow();
        ListBox* list = listOf(*m_window);
        QCOMPARE(toolTipAt(list->viewport(), {20, list->viewport()->height() - 5}), QString());
    }
};

REGISTER_TEST(ListLookTest)
#include "ListLookTest.moc"
