// What --help says of the files that can be opened.
#include "CommandLine.h"
#include "TestSupport.h"
#include "files/Formats.h"

using memory_host::FileFormat;

class HelpTextTest : public test_support::TestCase {
    Q_OBJECT

    const QString m_text = QString::fromStdString(workbench::helpText());

    static QString names(FileFormat::Holds holds) {
        QStringList names;
        for (const FileFormat* format : memory_host::fileFormats())
            if (format->holds == holds)
                names << QString::fromLatin1(format->name.data(),
                                             static_cast<qsizetype>(format->name.size()));
        const QString last = names.takeLast();
        return names.isEmpty() ? last : names.join(", ") + " or " + last;
    }

private slots:
    void itNamesEveryFormat() {
        const QString sentence = "\nFILE is a structure as " + names(FileFormat::Holds::Structure) +
                                 ", or a map as " + names(FileFormat::Holds::Map) +
                                 ", each also gzipped. It may come through a pipe, as /dev/stdin. ";
        QVERIFY2(m_text.simplified().contains(sentence.simplified()), qPrintable(m_text));
    }

    void itsLinesKeepToOneWidth() {
        for (const QString& line : m_text.split('\n'))
            QVERIFY2(line.size() <= 84, qPrintable(line));
    }
};

REGISTER_TEST(HelpTextTest)
#include "HelpTextTest.moc"
