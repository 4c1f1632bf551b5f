// Which entries are in which file, and which are unsaved, when files are saved, replaced and
// closed.
#include "DataMaker.h"
#include "DataPointBase.h"
#include "FileTestCase.h"
#include "History.h"
#include "Sample.h"
#include "TestFiles.h"
#include "files/Saving.h"

using namespace file_testing;
using memory_host::entriesOfFile;
using memory_host::isUnsaved;
using memory_host::SaveError;
using memory_host::SaveOptions;
using TAVIK::Compound;
using test_support::contentOf;

namespace {

void close(Compound* entry) {
    const DataPointBase guard(nullptr, Publisher::Delete, "Close");
    QVERIFY(guard.m_good);
    TAVIK::DataMaker::Destroy(entry);
}

QByteArray model(int number) {
    return "MODEL        " + QByteArray::number(number) + '\n' +
           atomAt(" CA ", static_cast<float>(number)) + atomAt(" N  ", 5) + "ENDMDL\n";
}

} // namespace

class SavedFilesTest : public FileTestCase {
    Q_OBJECT

    void save(Compound* entry, const QString& name, const SaveOptions& options = {}) const {
        memory_host::saveFile(std::vector<Compound*>{entry}, path(name).toStdString(), options);
    }
    Compound* open(const QString& name, const QByteArray& text = model(1) + "END\n") {
        return openText(text, {}, name).items.front();
    }

private slots:
    void theEntriesOfAFileAreItsModels() {
        memory_host::openFile(structure("1d3z.pdb").toStdString());
        open("test.pdb");
        QCOMPARE(entriesOfFile(item("/1d3z.4")).size(), std::size_t{10});
        QCOMPARE(entriesOfFile(item("/test")).size(), std::size_t{1});
        // Saved to another file, a model is in that.
        const std::vector<Compound*> one = {item("/1d3z.4")};
        save(one.front(), "one.pdb");
        QCOMPARE(entriesOfFile(item("/1d3z.4")), one);
        QCOMPARE(entriesOfFile(item("/1d3z.5")).size(), std::size_t{9});
        const QByteArray whole = contentOf(structure("1d3z.pdb"));
        const qsizetype first = whole.indexOf("MODEL        4");
        const QByteArray model = whole.mid(first, whole.indexOf("MODEL        5") - first);
        QVERIFY(contentOf(path("one.pdb")).contains(model));
        QVERIFY(!contentOf(path("one.pdb")).contains("MODEL        5"));
    }

    void aModelThatWasSavedElsewhereIsNotLostFromItsFirstFile() {
        openText(model(1) + model(2) + "END\n");
        save(item("/test.1"), "one.pdb");
        QVERIFY(!isUnsaved(item("/test.2")));
        save(item("/test.2"), "test.pdb");
        QCOMPARE(contentOf(path("test.pdb")).count("MODEL "), 1);
        QVERIFY(!isUnsaved(item("/test.1")) && !isUnsaved(item("/test.2")));
    }

    void aModelThatIsClosedWhenTheOtherIsSavedElsewhereComesBackToItsFile() {
        openText(model(1) + model(2) + "END\n");
        close(item("/test.2"));
        save(item("/test.1"), "one.pdb");
        QVERIFY(History::undo());
        QVERIFY(!isUnsaved(item("/test.2")));
        save(item("/test.2"), "test.pdb");
        QVERIFY(!isUnsaved(item("/test.2")));
    }

    void anEntryThatComesBackIsUnsavedWhereAnotherTookItsFile() {
        Compound* const one = open("one.pdb");
        Compound* const other = open("other.pdb");
        close(other);
        save(one, "other.pdb");
        QVERIFY(History::undo());
        QCOMPARE(item("/other"), other);
        QVERIFY(isUnsaved(other));
        QVERIFY(!isUnsaved(one));
        QVERIFY_THROWS_EXCEPTION(SaveError, save(other, "other.pdb"));
        save(other, "other.pdb", {.replaceChanged = true});
        QVERIFY(!isUnsaved(other));
        QVERIFY(isUnsaved(one));
    }

    void aFileThatIsReplacedByThePartOfAnEntryLeavesItUnsaved() {
        const QByteArray text = model(1) + "END\n";
        Compound* const entry = open("x.pdb", text);
        {
            const DataPointBase guard(nullptr, Publisher::Update, "Select");
            atoms(entry).front()->SetSelected(true);
        }
        save(entry, "part.pdb", {.onlySelected = true});
        QVERIFY(!isUnsaved(entry));
        save(entry, "x.pdb", {.onlySelected = true});
        QVERIFY(isUnsaved(entry));
        save(entry, "x.pdb");
        QVERIFY(!isUnsaved(entry));
        QCOMPARE(contentOf(path("x.pdb")), text);
    }

    void anEntryIsUnsavedWhereAnotherTookItsFile() {
        Compound* const one = open("one.pdb");
        Compound* const other = open("other.pdb");
        save(one, "other.pdb");
        QVERIFY(!isUnsaved(one));
        QVERIFY(isUnsaved(other));
        QVERIFY_THROWS_EXCEPTION(SaveError, save(other, "other.pdb"));
        save(other, "third.pdb");
        QVERIFY(!isUnsaved(one));
        QVERIFY(!isUnsaved(other));
    }
};

REGISTER_TEST(SavedFilesTest)
#include "SavedFilesTest.moc"
