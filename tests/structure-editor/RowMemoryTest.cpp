// The memory that rows stand in: given back with the command that freed it, without waiting for the
// event loop.
#include "CommandTools.h"
#include "DataAdder.h"
#include "DataMaker.h"
#include "Space.h"
#include "WindowTestCase.h"
#include "items/Building.h"

#include <malloc.h>

using namespace command_tools;
using namespace window_tools;
using TAVIK::Compound;
using TAVIK::DataMaker;
using TAVIK::Space;

namespace {

constexpr int leaves = 50'000;
// A row and its place in the list take more than this, and what is kept for other reasons less.
constexpr std::size_t rowsWeigh = std::size_t(leaves) * 40;

std::size_t heap() {
    const struct mallinfo2 info = mallinfo2();
    return info.uordblks + info.hblkhd;
}

} // namespace

class RowMemoryTest : public WindowTestCase {
    Q_OBJECT

    Compound* m_large = nullptr;
    std::size_t m_empty = 0;
    std::size_t m_filled = 0;

    bool isGivenBack() const { return heap() < m_filled - rowsWeigh; }

private slots:
    void initTestCase() {
#ifdef __SANITIZE_ADDRESS__
        QSKIP("the heap is the sanitizer's own");
#endif
    }

    void init() override {
        TestCase::init();
        m_large = memory_host::makeDetached("large", "Composite");
        for (int i = 0; i != leaves; ++i)
            DataMaker::makeCore(m_large, "leaf", "Surface");
        {
            const DataAdder<Space> guard(nullptr, Space::instance());
            memory_host::attach(m_large, Space::instance());
        }
        addStructure("small");
        showWindow(1);
        QApplication::processEvents();
        m_empty = heap();
        clickEntry(*m_window, 0);
        m_filled = heap();
        QVERIFY(m_filled - m_empty > rowsWeigh);
    }

    void whenAnotherEntryIsShown() {
        clickEntry(*m_window, 1);
        QVERIFY(isGivenBack());
        QVERIFY(rows(*m_window).size() > 5);
    }

    void whenTheSameEntryIsShownAgainItTakesNoMore() {
        m_window->Populate(0);
        QVERIFY(heap() < m_filled + rowsWeigh / 10);
    }

    void whenOthersDelete() {
        const std::size_t before = heap();
        destroyElsewhere(itemAt(Space::instance(), {"small"}));
        QVERIFY(heap() < before - rowsWeigh);
        QCOMPARE(takeMessages(), QStringList{deleted});
    }

    void whenTheShownItemIsDeleted() {
        m_large->SetSelected(true);
        m_window->commUpdate();
        trigger(*m_window, "Delete", "Tree");
        QVERIFY(isGivenBack());
    }

    void whenAllIsDeleted() {
        trigger(*m_window, "Delete", "All");
        QVERIFY(isGivenBack());
    }

    void whenAnEntryIsDeleted() {
        QVERIFY(withQuestion([this] { clickEntry(*m_window, 1, Qt::MiddleButton); }, pressOk));
        QVERIFY(isGivenBack());
    }

    void whenAllRowsBelowAreDeleted() {
        m_large->SetSelected(true);
        m_window->commUpdate();
        trigger(*m_window, "Delete", "Surface");
        QCOMPARE(rows(*m_window), QStringList{"large"});
        const std::size_t left = heap();
        QApplication::processEvents();
        QVERIFY(heap() + rowsWeigh / 10 > left); // nothing was left to be done
    }

    void whenTheWindowEnds() {
        m_window.reset();
        QVERIFY(isGivenBack());
    }
};

REGISTER_TEST(RowMemoryTest)
#include "RowMemoryTest.moc"
