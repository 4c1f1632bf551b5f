#include "Program.h"
#include "TestSupport.h"

#include <QDir>
#include <QFile>
#include <QImage>
#include <QTemporaryDir>

using namespace end_to_end;

/// Pictures from the command line, where there is no display.
class PictureTest : public test_support::TestCase {
    Q_OBJECT

    QTemporaryDir m_folder;

    /// Runs without a display and without a word of which platform to draw on.
    Ended picture(const QStringList& arguments) {
        Program program;
        for (const char* variable : {"QT_QPA_PLATFORM", "WAYLAND_DISPLAY", "DISPLAY"})
            program.set(variable, QString());
        program.setWorkingFolder(m_folder.path());
        return program.run(arguments + QStringList{structure("1ubq.pdb")});
    }
    QImage image(const QString& name) { return QImage(m_folder.filePath(name)); }

private slots:
    void aPictureHasItsSizeAndShowsTheFile() {
        const Ended ended = picture({"--picture", "a picture.png", "--size", "320x200"});
        QVERIFY(ended.normally);
        QCOMPARE(ended.errors, QStringList());
        QCOMPARE(ended.status, 0);
        const QImage made = image("a picture.png");
        QCOMPARE(made.size(), QSize(320, 200));
        // Something in the middle, and the background in the corners.
        QVERIFY(made.pixel(160, 100) != made.pixel(0, 0));
        QCOMPARE(made.pixel(319, 199), made.pixel(0, 0));
        QCOMPARE(made.pixel(319, 0), made.pixel(0, 0));
    }

    void aFileThatCannotBeWrittenIsOneLineAndStatus1() {
        for (const QString path : {"missing/picture.png", "."}) {
            const Ended ended = picture({"--picture=" + path});
            QVERIFY(ended.normally);
            QCOMPARE(ended.status, 1);
            QCOMPARE(ended.errors.size(), 1);
            QVERIFY2(ended.errors.constFirst().contains(path + ": the picture cannot be written: "),
                     qPrintable(ended.errors.constFirst()));
        }
    }

    void aSizeThatNoPictureHasIsOneLineAndStatus1() {
        for (const QString size : {"0x10", "100000x10", "30000x30000"}) {
            const Ended ended = picture({"--picture", "size.png", "--size", size});
            QCOMPARE(ended.status, 1);
            QCOMPARE(ended.errors.size(), 1);
            QVERIFY(ended.errors.constFirst().contains("is no file and size of a picture"));
            QVERIFY(!QFile::exists(m_folder.filePath("size.png")));
        }
    }

    void withoutAFileThatOpensNoPictureIsWritten() {
        Program program;
        const QString path = m_folder.filePath("none.png");
        const Ended ended = program.run({"--picture", path, m_folder.filePath("missing.pdb")});
        QCOMPARE(ended.status, 1);
        QCOMPARE(ended.errors.size(), 1);
        QVERIFY(!QFile::exists(path));
    }
};

REGISTER_TEST(PictureTest)
#include "PictureTest.moc"
