// The help page: its steps done as it says, and its numbers.
#include "Residues.h"
#include "TestSupport.h"
#include "files/Files.h"
#include "sidechain/Clashes.h"

#include <QFile>
#include <QRegularExpression>

using namespace rotamer_testing;

class RotamerHelpTest : public test_support::TestCase {
    Q_OBJECT

    static QString page() {
        QFile file(SOURCE_DIR "/data/help/rotamers.md");
        return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
    }

private slots:
    void theStepsGiveWhatThePageSays() {
        static const QRegularExpression quote("`([^`]+)`");
        QStringList quoted;
        const QString text = page();
        for (auto it = quote.globalMatch(text); it.hasNext();)
            quoted << it.next().captured(1);
        QCOMPARE(quoted.size(), 3);
        memory_host::openFile(SOURCE_DIR "/data/sample.pdb");
        Compound* const phe = residue(quoted[0].toStdString());
        QVERIFY(phe);
        QString details;
        QCOMPARE(addRotamers(phe, &details), quoted[1]);
        QCOMPARE(quoted[2], QString("%1; number 2 is shown").arg(modelsOf(phe).size()));
        QVERIFY(details.contains("model 5, m-30 (9 %), with a clash of 0.75 "));
        QVERIFY(details.contains("/TYR 20/"));
    }

    void itsNumbersAreThoseOfThePlugin() {
        const QString text = page().simplified();
        const auto says = [&text](const QString& part) { return text.contains(part); };
        QVERIFY(says(QString("%1 rotamers of 18 residues").arg(rotamer::allRotamers().size())));
        QVERIFY(says(QString("overlap by %1 Å or more").arg(rotamer::clashOverlap)));
        QVERIFY(says(QString("%1 Å between a hydrogen")
                         .arg(rotamer::clashOverlap + rotamer::hydrogenAllowance, 0, 'f', 1)));
        QVERIFY(says(QString("%1 Å between two of these")
                         .arg(rotamer::clashOverlap + rotamer::heavyAllowance, 0, 'f', 1)));
    }

    // From the contents to the sections, and from the page of the menus to this one.
    void itsLinksLeadSomewhere() {
        static const QRegularExpression link(R"(\]\(#([^)]+)\))");
        const QString text = page();
        int links = 0;
        for (auto it = link.globalMatch(text); it.hasNext(); ++links) {
            const QString heading = it.next().captured(1);
            QVERIFY2(text.contains(QRegularExpression("\n## " + QString(heading).replace('-', ' '),
                                                      QRegularExpression::CaseInsensitiveOption)),
                     qPrintable(heading));
        }
        QCOMPARE(links, 5);
        QFile menus(SOURCE_DIR "/data/help/structure-editor.md");
        QVERIFY(menus.open(QIODevice::ReadOnly));
        QVERIFY(menus.readAll().contains("](rotamers)"));
    }
};

REGISTER_TEST(RotamerHelpTest)
#include "RotamerHelpTest.moc"
