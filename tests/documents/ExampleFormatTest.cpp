// The file format that docs/architecture.md adds to the host as an example. It is compiled from the
// document into a host that takes the place of the usual one here.
#include "Compound.h"
#include "TestSupport.h"
#include "Traversal.h"
#include "files/Files.h"
#include "files/Formats.h"

#include <QFile>
#include <QTemporaryDir>

using memory_host::FileFormat;

class ExampleFormatTest : public test_support::TestCase {
    Q_OBJECT

    QTemporaryDir m_folder;

    std::string write(const QString& name, const QByteArray& content) const {
        const QString path = m_folder.filePath(name);
        QFile file(path);
        if (!file.open(QFile::WriteOnly) || file.write(content) != content.size())
            QTest::qFail("the file cannot be written", __FILE__, __LINE__);
        return path.toStdString();
    }
    QString refusal(const QString& name, const QByteArray& content) const {
        const std::string path = write(name, content);
        try {
            memory_host::openFile(path);
        } catch (const memory_host::FileError& error) {
            return QString::fromLatin1(error.what()).mid(static_cast<qsizetype>(path.size()));
        }
        return {};
    }

private slots:
    void itIsOpenedByItsContent() {
        for (const QString name : {"water.xyz", "water.txt", "water.pdb"}) {
            init();
            const auto opened = memory_host::openFile(
                write(name, "3\nWater\nO 0 0 0\nH 0.96 0 0\r\nH -0.24 0.93 0\n"));
            QCOMPARE(opened.items.size(), 1U);
            QCOMPARE(opened.items[0]->GetName(), name.endsWith(".txt") ? "water.txt" : "water");
            std::vector<std::string> atoms;
            TAVIK::ForAtoms(opened.items[0], true,
                            [&](TAVIK::Compound* atom) { atoms.push_back(atom->GetName()); });
            QCOMPARE(atoms, (std::vector<std::string>{"O", "H", "H"}));
        }
    }

    void itIsListedWithTheOthers() {
        QVERIFY(memory_host::formatNames(FileFormat::Holds::Structure).ends_with(" or XYZ"));
        const QString text = refusal("empty.pdb", "");
        QVERIFY2(text.contains(" and XYZ files (.xyz), and "), qPrintable(text));
    }

    void whatItDoesNotUnderstandIsRefusedWithTheLine() {
        const QString accepted =
            "; accepted are XYZ files with an element and three numbers a line";
        QCOMPARE(refusal("bad.xyz", "2\n\nO 0 0 0\nH 1 one 1\n"),
                 ":4: is no line of an atom" + accepted);
        QCOMPARE(refusal("cut.xyz", "2\n\nO 0 0 0\n"), ":4: is no line of an atom" + accepted);
    }
};

REGISTER_TEST(ExampleFormatTest)
#include "ExampleFormatTest.moc"
