// The services that plug-ins call: settings, log, colours and colour maps, widgets, windows, help,
// and commands to other plug-ins.
#include "BaseWindow.h"
#include "Colormap.h"
#include "Config.h"
#include "HelpViewer.h"
#include "HostUnderTest.h"
#include "Logger.h"
#include "PluginManager.h"
#include "PluginResult.h"
#include "TestSupport.h"
#include "WidgetFactory.h"

#include <QApplication>
#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>
#include <QPointer>
#include <QPushButton>

#include <limits>
#include <memory>
#include <type_traits>

class ServicesContractTest : public test_support::TestCase {
    Q_OBJECT
private slots:
    // settings
    void aSettingIsReadBySectionAndKey();
    void aSettingThatIsNotThereIsEmpty();
    void nobodyNeedsToAskWhetherASettingIsThere();
    // log
    void aLineIsAppendedToTheLog();
    void aLineBreakDoesNotMakeTwoLines();
    // colours
    void aColourConvertsBothWays();
    void aPackedColourKeepsItsFourChannels();
    void anInvalidColourIsOpaqueBlack();
    // colour maps
    void aColourMapGoesFromTheLowEndToTheHighEnd();
    void valuesOutsideTheRangeTakeTheEndColours();
    void theRangeCanBeSetAgain();
    void aColourMapMayHaveOneEntry();
    void aColourMapHasAsManyColoursAsEntries();
    void aColourMapThatCannotBeReadIsLoggedAndWhite();
    void aColourMapWithoutEntriesIsRefused();
    // widgets
    void aLabelShowsItsText();
    void aLineEditIsEmpty();
    void aCheckBoxStartsAsAsked();
    void aButtonCallsItsSlot();
    void widgetsBelongToTheirParent();
    // windows
    void aWindowHasItsTitleSizeAndHelpPage();
    void aWindowMayHaveNoParentAndNoName();
    void closingAWindowHidesAndKeepsIt();
    void aClosedWindowCanBeShownAgain();
    void killingAWindowClosesIt();
    void theHelpKeyShowsTheWindowsPage();
    // help
    void aHelpPageThatIsNotThereIsSaid();
    // plug-ins
    void aPluginThatIsAbsentIsNotFound();
    void commandsToAnAbsentPluginAreLoggedAndLeaveTheDataAlone();
    void thereIsNoCallOutsideOfACall();
    void aResultKeepsCodeAndText();
    void theCodeOfAnUnknownCommandIsTen();
};

namespace {

class Window : public BaseWindow {
public:
    explicit Window(const char* name = nullptr, QWidget* parent = nullptr)
        : BaseWindow(QStringLiteral("Title"), QSize(400, 600), QStringLiteral("no-such-page"),
                     false, parent, name) {}
    WidgetFactory* factory() const { return m_Factory; }
};

QRgb at(const Colormap& map, float value) {
    return map.lookupValue(value).rgba();
}

// The windows of the help viewer, which belong to nobody here.
QWidgetList visibleWindows() {
    QWidgetList windows;
    for (QWidget* widget : QApplication::topLevelWidgets())
        if (widget->isVisible())
            windows << widget;
    return windows;
}

} // namespace

void ServicesContractTest::aSettingIsReadBySectionAndKey() {
    host_under_test::setOnlySetting("Vuxo", "Help", "structure-editor");
    bool ok = false;
    QCOMPARE(Config::GetSetting("Vuxo", "Help").ToString(&ok), std::string("structure-editor"));
    QVERIFY(ok);
    host_under_test::setOnlySetting("Vuxo", "Help", "another page");
    QCOMPARE(Config::GetSetting("Vuxo", "Help").ToString(nullptr), std::string("another page"));
}

void ServicesContractTest::aSettingThatIsNotThereIsEmpty() {
    host_under_test::setOnlySetting("Vuxo", "Help", "structure-editor");
    for (const Setting& setting :
         {Config::GetSetting("Vuxo", "Colour"), Config::GetSetting("Other", "Help"),
          Config::GetSetting("", "")}) {
        bool ok = true;
        QCOMPARE(setting.ToString(&ok), std::string());
        QVERIFY(!ok);
    }
}

void ServicesContractTest::nobodyNeedsToAskWhetherASettingIsThere() {
    QCOMPARE(Config::GetSetting("None", "None").ToString(nullptr), std::string());
    static_assert(std::is_destructible_v<Setting> && std::is_copy_constructible_v<Setting>);
}

void ServicesContractTest::aLineIsAppendedToTheLog() {
    Logger::Write("Define set 'site' with 3 members");
    Logger::Write("");
    Logger::Write("caf\xe9 %s %n");
    QCOMPARE(takeHostLog(), (QStringList{"Define set 'site' with 3 members", "",
                                         QString::fromLatin1("caf\xe9 %s %n")}));
}

void ServicesContractTest::aLineBreakDoesNotMakeTwoLines() {
    Logger::Write("one\ntwo");
    QCOMPARE(takeHostLog(), QStringList{"one two"});
}

void ServicesContractTest::aColourConvertsBothWays() {
    QCOMPARE(Color(QColor(1, 2, 3)).toQColor(), QColor(1, 2, 3));
    QCOMPARE(Color(QColor(Qt::white)).rgba(), 0xffffffffU);
    QVERIFY(Color(QColor(9, 8, 7)) == Color(0xff090807U));
}

void ServicesContractTest::aPackedColourKeepsItsFourChannels() {
    const QColor color = Color(0x80112233U).toQColor();
    QCOMPARE(color.alpha(), 0x80);
    QCOMPARE(color.red(), 0x11);
    QCOMPARE(color.green(), 0x22);
    QCOMPARE(color.blue(), 0x33);
    QCOMPARE(Color(color).rgba(), 0x80112233U);
}

void ServicesContractTest::anInvalidColourIsOpaqueBlack() {
    QCOMPARE(Color(QColor()).rgba(), 0xff000000U);
}

void ServicesContractTest::aColourMapGoesFromTheLowEndToTheHighEnd() {
    Colormap map("BlueRedTR.cm", 100, "No name");
    QVERIFY(map.isValid());
    map.setMinMax(0.0F, 60.0F);
    const QColor low = map.lookupValue(0.0F).toQColor();
    const QColor high = map.lookupValue(60.0F).toQColor();
    QVERIFY(low.blue() > low.red());
    QVERIFY(high.red() > high.blue());
    QVERIFY(at(map, 30.0F) != at(map, 0.0F));
    QVERIFY(at(map, 30.0F) != at(map, 60.0F));
}

void ServicesContractTest::valuesOutsideTheRangeTakeTheEndColours() {
    Colormap map("BlueRedTR.cm", 100, "No name");
    map.setMinMax(0.0F, 60.0F);
    constexpr float infinity = std::numeric_limits<float>::infinity();
    for (const float value : {-0.001F, -1.0F, -1e30F, -infinity})
        QCOMPARE(at(map, value), at(map, 0.0F));
    for (const float value : {60.001F, 61.0F, 1e30F, infinity})
        QCOMPARE(at(map, value), at(map, 60.0F));
    QCOMPARE(at(map, std::numeric_limits<float>::quiet_NaN()), at(map, 0.0F));
}

void ServicesContractTest::theRangeCanBeSetAgain() {
    Colormap map("BlueRedTR.cm", 100, "No name");
    // 0 to 1 until it is set.
    const QRgb low = at(map, 0.0F);
    const QRgb high = at(map, 1.0F);
    QVERIFY(low != high);
    map.setMinMax(-10.0F, 10.0F);
    QCOMPARE(at(map, -10.0F), low);
    QCOMPARE(at(map, 10.0F), high);
    QVERIFY(at(map, 0.0F) != low);
}

void ServicesContractTest::aColourMapMayHaveOneEntry() {
    Colormap map("BlueRedTR.cm", 1, "No name");
    QVERIFY(map.isValid());
    map.setMinMax(0.0F, 60.0F);
    QCOMPARE(at(map, 0.0F), at(map, 60.0F));
}

void ServicesContractTest::aColourMapHasAsManyColoursAsEntries() {
    for (const int entries : {2, 7, 100}) {
        Colormap map("BlueRedTR.cm", entries, "No name");
        map.setMinMax(0.0F, 60.0F);
        QSet<QRgb> colours;
        for (int i = 0; i <= 6000; ++i)
            colours.insert(at(map, 0.01F * static_cast<float>(i)));
        QCOMPARE(colours.size(), entries);
    }
}

void ServicesContractTest::aColourMapThatCannotBeReadIsLoggedAndWhite() {
    const Colormap map("NoSuchMap.cm", 100, "No name");
    QVERIFY(!map.isValid());
    QCOMPARE(at(map, 0.5F), 0xffffffffU);
    const QStringList log = takeHostLog();
    QCOMPARE(log.size(), 1);
    QVERIFY(log.first().contains("NoSuchMap.cm"));
}

void ServicesContractTest::aColourMapWithoutEntriesIsRefused() {
    for (const int entries : {0, -1, std::numeric_limits<int>::min()}) {
        const Colormap map("BlueRedTR.cm", entries, "No name");
        QVERIFY(!map.isValid());
        QCOMPARE(at(map, 0.5F), 0xffffffffU);
        QCOMPARE(takeHostLog().size(), 1);
    }
}

void ServicesContractTest::aLabelShowsItsText() {
    const Window window;
    QWidget parent;
    const QLabel* const label = window.factory()->CreateQLabel(&parent, QStringLiteral("Residue"));
    QCOMPARE(label->text(), QString("Residue"));
    QCOMPARE(label->parentWidget(), &parent);
}

void ServicesContractTest::aLineEditIsEmpty() {
    const Window window;
    QWidget parent;
    const QLineEdit* const edit = window.factory()->CreateQLineEdit(&parent);
    QCOMPARE(edit->text(), QString());
    QCOMPARE(edit->parentWidget(), &parent);
    QVERIFY(!edit->isReadOnly());
}

void ServicesContractTest::aCheckBoxStartsAsAsked() {
    const Window window;
    QWidget parent;
    for (const bool checked : {false, true}) {
        const QCheckBox* const box =
            window.factory()->CreateCheckBox(&parent, QStringLiteral("Visible"), checked);
        QCOMPARE(box->isChecked(), checked);
        QCOMPARE(box->text(), QString("Visible"));
        QCOMPARE(box->parentWidget(), &parent);
    }
}

void ServicesContractTest::aButtonCallsItsSlot() {
    const Window window;
    QWidget parent;
    QLineEdit receiver;
    receiver.setText(QStringLiteral("text"));
    QPushButton* const button = window.factory()->CreateQPushButton(
        &parent, QStringLiteral("Clear"), &receiver, SLOT(clear()));
    QCOMPARE(button->text(), QString("Clear"));
    QCOMPARE(button->parentWidget(), &parent);
    QTest::mouseClick(button, Qt::LeftButton);
    QCOMPARE(receiver.text(), QString());
}

void ServicesContractTest::widgetsBelongToTheirParent() {
    const Window window;
    auto parent = std::make_unique<QWidget>();
    WidgetFactory* const factory = window.factory();
    const QPointer<QWidget> label = factory->CreateQLabel(parent.get(), QString());
    const QPointer<QWidget> edit = factory->CreateQLineEdit(parent.get());
    const QPointer<QWidget> box = factory->CreateCheckBox(parent.get(), QString(), false);
    const QPointer<QWidget> button =
        factory->CreateQPushButton(parent.get(), QString(), parent.get(), SLOT(close()));
    QVERIFY(label && edit && box && button);
    parent.reset();
    QVERIFY(!label && !edit && !box && !button);
}

void ServicesContractTest::aWindowHasItsTitleSizeAndHelpPage() {
    const Window window("main");
    QCOMPARE(window.windowTitle(), QString("Title"));
    QCOMPARE(window.size(), QSize(400, 600));
    QCOMPARE(window.helpPage(), QString("no-such-page"));
    QCOMPARE(window.objectName(), QString("main"));
    QVERIFY(!window.isVisible());
    QVERIFY(window.factory() != nullptr);
}

void ServicesContractTest::aWindowMayHaveNoParentAndNoName() {
    const Window window;
    QVERIFY(!window.parent());
    QVERIFY(window.objectName().isEmpty());
    QWidget parent;
    const auto* const child = new Window("child", &parent);
    QCOMPARE(child->parent(), &parent);
    QVERIFY(child->isWindow());
    static_assert(std::has_virtual_destructor_v<BaseWindow>);
    static_assert(std::is_base_of_v<QMainWindow, BaseWindow>);
}

void ServicesContractTest::closingAWindowHidesAndKeepsIt() {
    auto* const window = new Window;
    const QPointer<QWidget> alive(window);
    window->setAttribute(Qt::WA_DeleteOnClose);
    window->show();
    QVERIFY(window->isVisible());
    window->close();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QVERIFY(alive);
    QVERIFY(!window->isVisible());
    delete window;
}

void ServicesContractTest::aClosedWindowCanBeShownAgain() {
    Window window;
    for (int i = 0; i != 3; ++i) {
        window.show();
        QVERIFY(window.isVisible());
        window.close();
        QVERIFY(!window.isVisible());
        QVERIFY(!window.isMinimized());
    }
    window.showMinimized();
    window.close();
    QVERIFY(!window.isMinimized());
}

void ServicesContractTest::killingAWindowClosesIt() {
    auto* const window = new Window;
    const QPointer<QWidget> alive(window);
    window->show();
    window->Kill(window);
    QVERIFY(alive);
    QVERIFY(!window->isVisible());
    window->Kill(nullptr);
    delete window;
}

void ServicesContractTest::theHelpKeyShowsTheWindowsPage() {
    Window window;
    window.show();
    QVERIFY(QTest::qWaitForWindowActive(&window));
    QTest::keyClick(&window, Qt::Key_F1);
    const QStringList log = takeHostLog();
    QCOMPARE(log.size(), 1);
    QVERIFY(log.first().contains("no-such-page"));
    window.close();
    for (QWidget* help : visibleWindows())
        help->close();
}

void ServicesContractTest::aHelpPageThatIsNotThereIsSaid() {
    QVERIFY(visibleWindows().isEmpty());
    for (const char* name : {"no-such-page", "", "../../etc/passwd"}) {
        HelpViewer::Show(QString::fromLatin1(name));
        QCOMPARE(visibleWindows().size(), 1);
        QCOMPARE(takeHostLog().size(), 1);
    }
    for (QWidget* help : visibleWindows())
        help->close();
    QVERIFY(visibleWindows().isEmpty());
}

void ServicesContractTest::aPluginThatIsAbsentIsNotFound() {
    QVERIFY(PluginManager::FindPlugin("Create", "SolidVolume") == nullptr);
    QVERIFY(PluginManager::FindPlugin("Calculate", "Electrostatics") == nullptr);
    QVERIFY(PluginManager::FindPlugin("Create", "Rotamer") == nullptr);
    QVERIFY(PluginManager::FindPlugin("", "") == nullptr);
}

void ServicesContractTest::commandsToAnAbsentPluginAreLoggedAndLeaveTheDataAlone() {
    double radius = 1.4;
    const double constant = 2.5;
    bool flag = true;
    PluginManager::Command("Create", "SolidVolume", "Structure Editor", "Surface", "",
                           static_cast<void*>(&radius));
    PluginManager::Command("Calculate", "Electrostatics", "Structure Editor", "Map", "x",
                           static_cast<const void*>(&constant));
    PluginManager::Execute("Create", "Rotamer", "StructureEditor", "Rotamer", &radius, &flag);
    PluginManager::Command("", "", "", "", "", static_cast<void*>(nullptr));
    QCOMPARE(radius, 1.4);
    QVERIFY(flag);
    const QStringList log = takeHostLog();
    QCOMPARE(log.size(), 4);
    QVERIFY(log[0].contains("SolidVolume"));
    QVERIFY(log[1].contains("Electrostatics"));
    QVERIFY(log[2].contains("Rotamer"));
}

void ServicesContractTest::thereIsNoCallOutsideOfACall() {
    QVERIFY(PluginManager::CurrentCall() == nullptr);
}

void ServicesContractTest::aResultKeepsCodeAndText() {
    PluginResult result;
    QCOMPARE(int(result.GetResultCode()), int(PluginResult::Success));
    QCOMPARE(result.GetResultText(), std::string());
    result.SetResultCode(PluginResult::Failure);
    result.SetResultText("no atom is selected");
    QCOMPARE(int(result.GetResultCode()), int(PluginResult::Failure));
    QCOMPARE(result.GetResultText(), std::string("no atom is selected"));
}

void ServicesContractTest::theCodeOfAnUnknownCommandIsTen() {
    QCOMPARE(int(PluginResult::NotRecognized), 10);
}

REGISTER_TEST(ServicesContractTest)
#include "ServicesContractTest.moc"
