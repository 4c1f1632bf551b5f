// Long work: on another thread, below a lock of the space, with a window to cancel it.
#include "ContractTools.h"
#include "DataPointBase.h"
#include "Progress.h"
#include "TestSupport.h"

#include <QApplication>
#include <QDialog>
#include <QLabel>
#include <QPushButton>
#include <QThread>
#include <QTimer>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <stdexcept>
#include <thread>

using namespace std::chrono_literals;

class ProgressContractTest : public test_support::TestCase {
    Q_OBJECT

    static QDialog* window(const QString& title) {
        for (QWidget* widget : QApplication::topLevelWidgets())
            if (widget->isVisible() && widget->windowTitle() == title)
                return qobject_cast<QDialog*>(widget);
        return nullptr;
    }
    /// Calls `act(window)` when the window is there.
    template <class Act> static void whenShown(QObject& timers, const QString& title, Act act) {
        auto* const timer = new QTimer(&timers);
        connect(timer, &QTimer::timeout, timer, [timer, title, act] {
            if (QDialog* const shown = window(title)) {
                timer->stop();
                act(shown);
            }
        });
        timer->start(5);
    }
    static QStringList textsIn(const QWidget* window) {
        QStringList texts;
        for (const QLabel* label : window->findChildren<QLabel*>())
            texts << label->text();
        return texts;
    }
    static void waitForStop(const std::stop_token& stop) {
        std::mutex mutex;
        std::condition_variable_any wake;
        std::unique_lock lock(mutex);
        wake.wait(lock, stop, [] { return false; });
    }

private slots:
    void workRunsOnAnotherThreadAndIsDoneWhenTheCallReturns() {
        const QThread* const here = QThread::currentThread();
        bool isElsewhere = false;
        int result = 0;
        QVERIFY(Progress::Run("Counting", [&](ProgressReporter& reporter, std::stop_token stop) {
            isElsewhere = QThread::currentThread() != here;
            for (int i = 0; i != 1000 && !stop.stop_requested(); ++i) {
                reporter.report("adding", i / 1000.0);
                result += i;
            }
        }));
        QVERIFY(isElsewhere);
        QCOMPARE(result, 499500);
        // It took no time, and so was not shown.
        QVERIFY(!window("Counting"));
    }

    void noGuardIsGoodMeanwhile() {
        using contract::space;
        std::atomic<bool> hasTried = false;
        bool wasGood = true;
        QTimer::singleShot(0, this, [&] {
            wasGood = DataPointBase(nullptr, Publisher::Update).m_good;
            hasTried = true;
        });
        QVERIFY(Progress::Run("Waiting", [&](ProgressReporter&, std::stop_token) {
            while (!hasTried)
                std::this_thread::sleep_for(1ms);
        }));
        QVERIFY(!wasGood);
        QVERIFY(DataPointBase(nullptr, Publisher::Update).m_good);
    }

    void exceptionsComeBackToTheCaller() {
        const auto run = [](const Progress::Work& work) { Progress::Run("Failing", work); };
        QVERIFY_EXCEPTION_THROWN(run([](ProgressReporter&, std::stop_token) {
                                     throw std::out_of_range("no such atom");
                                 }),
                                 std::out_of_range);
        QVERIFY(DataPointBase(nullptr, Publisher::Update).m_good);
        QVERIFY(Progress::Run("Next", [](ProgressReporter&, std::stop_token) {}));
    }

    void theWindowSaysWhatIsDoneAndHowFarItIs() {
        std::atomic<bool> hasSeen = false;
        QObject timers;
        QStringList texts;
        whenShown(timers, "Computing a surface", [&](QDialog* shown) {
            auto* const timer = new QTimer(&timers);
            connect(timer, &QTimer::timeout, shown, [&, shown] {
                texts = textsIn(shown);
                if (texts.contains("splatting 5 of 10"))
                    hasSeen = true;
            });
            timer->start(5);
        });
        QVERIFY(
            Progress::Run("Computing a surface", [&](ProgressReporter& reporter, std::stop_token) {
                while (!hasSeen) {
                    reporter.report("splatting 5 of 10", 0.5);
                    std::this_thread::sleep_for(1ms);
                }
            }));
        QVERIFY(texts.contains("Computing a surface"));
        QVERIFY(!window("Computing a surface"));
    }

    void whoCancelsStopsTheWork_data() {
        QTest::addColumn<bool>("byButton");
        QTest::newRow("button") << true;
        QTest::newRow("closing the window") << false;
    }
    void whoCancelsStopsTheWork() {
        QFETCH(bool, byButton);
        QObject timers;
        bool wasStopped = false;
        whenShown(timers, "Endless", [byButton](QDialog* shown) {
            if (byButton)
                QTest::mouseClick(shown->findChild<QPushButton*>(), Qt::LeftButton);
            else
                shown->close();
        });
        QVERIFY(!Progress::Run("Endless", [&](ProgressReporter&, std::stop_token stop) {
            waitForStop(stop);
            wasStopped = true;
        }));
        QVERIFY(wasStopped);
        QVERIFY(!window("Endless"));
    }

    void whatIsThrownByCancelledWorkStaysThere() {
        QObject timers;
        whenShown(timers, "Endless", [](QDialog* shown) { shown->reject(); });
        QVERIFY(!Progress::Run("Endless", [](ProgressReporter&, std::stop_token stop) {
            waitForStop(stop);
            throw std::runtime_error("stopped");
        }));
        QVERIFY(Progress::Run("Next", [](ProgressReporter&, std::stop_token) {}));
    }

    void theWindowStaysUntilCancelledWorkHasEnded() {
        QObject timers;
        std::atomic<bool> hasLooked = false;
        bool wasThere = false;
        bool wasGood = true;
        whenShown(timers, "Slow to stop", [&](QDialog* shown) {
            shown->reject();
            QTimer::singleShot(100, &timers, [&] {
                wasThere = window("Slow to stop");
                wasGood = DataPointBase(nullptr, Publisher::Update).m_good;
                hasLooked = true;
            });
        });
        QVERIFY(!Progress::Run("Slow to stop", [&](ProgressReporter& reporter, std::stop_token) {
            while (!hasLooked) {
                reporter.report("going on", 0.1);
                std::this_thread::sleep_for(1ms);
            }
        }));
        QVERIFY(wasThere);
        QVERIFY(!wasGood);
    }

    void oneWorkAtATime() {
        bool inner = true;
        std::atomic<bool> hasTried = false;
        QTimer::singleShot(0, this, [&] {
            inner = Progress::Run("Inner", [](ProgressReporter&, std::stop_token) {});
            hasTried = true;
        });
        QVERIFY(Progress::Run("Outer", [&](ProgressReporter&, std::stop_token) {
            while (!hasTried)
                std::this_thread::sleep_for(1ms);
        }));
        QVERIFY(!inner);
        const QStringList log = takeHostLog();
        QCOMPARE(log.size(), 1);
        QVERIFY(log[0].contains("Inner"));
    }
};

REGISTER_TEST(ProgressContractTest)
#include "ProgressContractTest.moc"
