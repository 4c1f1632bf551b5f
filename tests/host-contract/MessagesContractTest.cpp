// Messages: one line to the user, shown by whoever listens, and in the log.
#include "ContractTools.h"
#include "Messages.h"
#include "TestSupport.h"

#include <memory>
#include <stdexcept>

namespace {

/// Writes messages down, and then does what `m_answer` says.
class Reader : public MessageObserver {
public:
    explicit Reader(QStringList& read) : m_read(read) {}
    void messageShown(const QString& text) override {
        m_read << text;
        if (m_answer)
            m_answer();
    }

    std::function<void()> m_answer;

private:
    QStringList& m_read;
};

} // namespace

class MessagesContractTest : public test_support::TestCase {
    Q_OBJECT
private slots:
    void aMessageGoesToAllWhoListenAndToTheLog() {
        QStringList read;
        const Reader first(read);
        const Reader second(read);
        const QString text = QString::fromUtf8("Surface of 1,213 atoms: 4,870 \u00c5\u00b2");
        Messages::Show(text);
        QCOMPARE(read, QStringList(2, text));
        const QStringList log = takeHostLog(); // each byte as a character
        QCOMPARE(log.size(), 1);
        QCOMPARE(QString::fromUtf8(log[0].toLatin1()), text);
    }

    void whereNobodyListensTheLogHasIt() {
        Messages::Show("done");
        QCOMPARE(takeHostLog(), QStringList("done"));
    }

    void aMessageIsOneLine() {
        QStringList read;
        const Reader reader(read);
        Messages::Show(" two\nlines,\r\n\ta tab ");
        QCOMPARE(read, QStringList("two lines, a tab"));
        QCOMPARE(takeHostLog(), read);
        Messages::Show("");
        Messages::Show(" \n ");
        QCOMPARE(read.size(), 1);
        QCOMPARE(takeHostLog(), QStringList());
    }

    void markupIsPlainText() {
        QStringList read;
        const Reader reader(read);
        Messages::Show("<b>2</b> & %1 %s");
        QCOMPARE(read, QStringList("<b>2</b> & %1 %s"));
        QCOMPARE(takeHostLog(), read);
    }

    void anExceptionIsLoggedAndGoesNoFurther() {
        QStringList read;
        Reader first(read);
        const Reader second(read);
        first.m_answer = [] { throw std::runtime_error("the status bar is gone"); };
        Messages::Show("done");
        QCOMPARE(read, QStringList(2, "done"));
        const QStringList log = takeHostLog();
        QCOMPARE(log.size(), 2);
        QVERIFY(log[1].contains("the status bar is gone"));
    }

    void observersMayComeAndGoInside() {
        QStringList read;
        Reader first(read);
        auto second = std::make_unique<Reader>(read);
        std::unique_ptr<Reader> third;
        first.m_answer = [&] {
            second.reset();
            if (!third)
                third = std::make_unique<Reader>(read);
        };
        Messages::Show("one");
        QCOMPARE(read, QStringList("one"));
        Messages::Show("two");
        QCOMPARE(read, (QStringList{"one", "two", "two"}));
        takeHostLog();
    }

    void messagesThatAnswerMessagesComeToAnEnd() {
        QStringList read;
        Reader reader(read);
        reader.m_answer = [] { Messages::Show("and so on"); };
        Messages::Show("first");
        QCOMPARE(read.first(), "first");
        QVERIFY(read.size() > 1 && read.size() < 20);
        // None of them is lost.
        const QStringList log = takeHostLog();
        QCOMPARE(log.mid(0, read.size()), read);
        reader.m_answer = {};
        Messages::Show("next");
        QCOMPARE(read.last(), "next");
        QCOMPARE(takeHostLog(), QStringList("next"));
    }
};

REGISTER_TEST(MessagesContractTest)
#include "MessagesContractTest.moc"
