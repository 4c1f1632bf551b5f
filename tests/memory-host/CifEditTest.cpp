// Changes to the text of a CIF: what is not changed stays byte for byte as it was.
#include "files/CifEdit.h"
#include "FileTesting.h"
#include "TestSupport.h"

#include <algorithm>
#include <functional>

using namespace memory_host::cif;

namespace {

using Rewrite = std::function<void(Edit&, const Category&, Rows&)>;

// The text after a change to the category of a name.
QByteArray edited(const QByteArray& text, const std::string& name, const Rewrite& rewrite) {
    const std::string_view source(text.data(), static_cast<std::size_t>(text.size()));
    const Contents contents = contentsOf(source);
    const auto category = std::ranges::find(contents.categories, name, &Category::name);
    if (category == contents.categories.end())
        qFatal("no category %s", name.c_str());
    Edit edit(source);
    Rows rows(source, *category);
    rewrite(edit, *category, rows);
    return QByteArray::fromStdString(edit.take());
}

// Drops the rows whose numbers are given, from 0.
QByteArray without(const QByteArray& text, const QList<int>& numbers) {
    return edited(text, "_a", [&numbers](Edit& edit, const Category&, Rows& rows) {
        for (int row = 0; rows.next(); ++row)
            if (numbers.contains(row))
                edit.dropRow(rows.places());
    });
}

// Sets a value in row 1.
QByteArray withValue(const QByteArray& text, std::size_t column, const std::string& value) {
    return edited(text, "_a", [&](Edit& edit, const Category&, Rows& rows) {
        rows.next();
        rows.next();
        edit.setValues(rows.places(), std::vector<Change>{{column, value}});
    });
}

// Adds a copy of row 0 with another first value behind a row.
QByteArray withRowBehind(const QByteArray& text, int behind) {
    return edited(text, "_a", [behind](Edit& edit, const Category&, Rows& rows) {
        rows.next();
        const std::vector<Place> pattern = rows.places();
        for (int row = 0; row != behind; ++row)
            rows.next();
        edit.addRow(rows.places(), pattern, std::vector<Change>{{0, "new"}});
    });
}

QByteArray withoutCategory(const QByteArray& text) {
    return edited(text, "_a", [](Edit& edit, const Category& category, Rows&) {
        if (category.isLoop())
            edit.dropLoop(category);
        for (const Category::Pair& pair : category.pairs)
            edit.dropPair(pair);
        edit.dropSeparator(category);
    });
}

const QByteArray head = "data_x\n# \nloop_\n_a.x\n_a.y\n";

} // namespace

class CifEditTest : public test_support::TestCase {
    Q_OBJECT

private slots:
    void categoriesAreFoundWithTheirRows() {
        const std::string_view text =
            "# data_no\ndata_one _B.x 1 _b.Y ';' loop_ _C.a _C.b 1 'a b' ;\n2 3\n;_C.c\n; "
            "save_f _b.no 1 loop_ _e.f 1 2 save_\n"
            "Data_two\r\nLOOP_\r\n_B.x\r\n\"it\"s\"#c\r\nx#y\r\nstop_\r\n_d.x ?";
        const Contents contents = contentsOf(text);
        QCOMPARE(contents.blocks.size(), 2U);
        QCOMPARE(contents.categories.size(), 4U);
        QStringList found;
        for (const Category& category : contents.categories) {
            QString line = QString::number(category.block) + u' ' +
                           QString::fromStdString(category.name) + u':';
            Rows rows(text, category);
            while (rows.next())
                for (std::size_t i = 0; i != category.columns.size(); ++i)
                    line +=
                        u' ' +
                        QString::fromLatin1(category.columns[i].data(),
                                            static_cast<qsizetype>(category.columns[i].size())) +
                        u'=' + QString::fromStdString(std::string(rows[i]));
            found << line;
        }
        QCOMPARE(found, QStringList({"0 _b: x=1 Y=';'", "0 _c: a=1 b='a b' a=; b=2 a=3 b=;_C.c\n;",
                                     "1 _b: x=\"it\"s\" x=x#y", "1 _d: x=?"}));
    }

    void aRowGoesWithItsLine_data() {
        QTest::addColumn<QByteArray>("rows");
        QTest::addColumn<QByteArray>("expected");
        QTest::newRow("line") << QByteArray("1 2\n3 4 \n5 6\n") << QByteArray("1 2\n5 6\n");
        QTest::newRow("CR LF") << QByteArray("1 2\r\n3 4\r\n5 6\r\n")
                               << QByteArray("1 2\r\n5 6\r\n");
        QTest::newRow("CR") << QByteArray("1 2\r3 4\r5 6\r") << QByteArray("1 2\r5 6\r");
        QTest::newRow("last") << QByteArray("1 2\n3 4") << QByteArray("1 2\n");
        QTest::newRow("indented") << QByteArray("1 2\n  3 4\n5 6\n") << QByteArray("1 2\n5 6\n");
        QTest::newRow("comments") << QByteArray("1 2\n# one\n3 4 # two\n# three\n5 6\n")
                                  << QByteArray("1 2\n# one\n # two\n# three\n5 6\n");
        QTest::newRow("begins line") << QByteArray("1 2\n3 4 5 6\n") << QByteArray("1 2\n 5 6\n");
        QTest::newRow("ends line") << QByteArray("1 2   3 4  \n5 6\n") << QByteArray("1 2\n5 6\n");
        QTest::newRow("in line") << QByteArray("1 2 3 4 5 6\n") << QByteArray("1 2 5 6\n");
        QTest::newRow("semicolon") << QByteArray("1 2\n3 4 ;5 6\n") << QByteArray("1 2\n ;5 6\n");
        QTest::newRow("text") << QByteArray("1 2\n3\n;4\n# 4\n;\n5 6\n")
                              << QByteArray("1 2\n5 6\n");
        QTest::newRow("two lines") << QByteArray("1 2\n3\n4\n5 6\n") << QByteArray("1 2\n5 6\n");
    }
    void aRowGoesWithItsLine() {
        QFETCH(QByteArray, rows);
        QFETCH(QByteArray, expected);
        QCOMPARE(without(head + rows, {1}), head + expected);
    }

    void severalRowsOfALineGo() {
        QCOMPARE(without(head + "1 2\n3 4 5 6\n7 8\n", {1, 2}), head + "1 2\n\n7 8\n");
        QCOMPARE(without(head + "1 2 3 4 5 6 7 8\n", {0, 2}), head + " 3 4 7 8\n");
    }

    void aValueKeepsThePlacesOfThoseBehindIt_data() {
        QTest::addColumn<QByteArray>("row");
        QTest::addColumn<QByteArray>("value");
        QTest::addColumn<QByteArray>("expected");
        const auto add = [](const char* row, const char* value, const char* expected) {
            QTest::addRow("%s to %s", row, value)
                << QByteArray(row) << QByteArray(value) << QByteArray(expected);
        };
        add("12.5 x\n", "13.5", "13.5 x\n");
        add("12.5 x\n", "1.5", "1.5  x\n");
        add("12.5   x\n", "-12.5", "-12.5  x\n");
        add("12.5   x\n", "-12.555", "-12.555 x\n");
        add("12.5 x\n", "-12.5", "-12.5 x\n");
        add("12.5\nx\n", "1", "1\nx\n");
        add("'a b' x\n", "c", "c     x\n");
        add(";a\nb\n; x\n", "c", "c x\n");
    }
    void aValueKeepsThePlacesOfThoseBehindIt() {
        QFETCH(QByteArray, row);
        QFETCH(QByteArray, value);
        QFETCH(QByteArray, expected);
        QCOMPARE(withValue(head + "1 2\n" + row + "# end\n", 0, value.toStdString()),
                 head + "1 2\n" + expected + "# end\n");
    }

    void aNewRowFollowsInALineOfItsOwn_data() {
        QTest::addColumn<QByteArray>("rows");
        QTest::addColumn<int>("behind");
        QTest::addColumn<QByteArray>("expected");
        QTest::newRow("first") << QByteArray("1     'a b' \n3 4\n") << 0
                               << QByteArray("1     'a b' \nnew   'a b' \n3 4\n");
        QTest::newRow("other") << QByteArray("1     2\n3 4\n5 6\n") << 1
                               << QByteArray("1     2\n3 4\nnew   2\n5 6\n");
        QTest::newRow("CR LF") << QByteArray("1 2\r\n3 4\r\n") << 0
                               << QByteArray("1 2\r\nnew 2\r\n3 4\r\n");
        QTest::newRow("end") << QByteArray("1 2\n3 4") << 1 << QByteArray("1 2\n3 4\nnew 2");
        QTest::newRow("in line") << QByteArray("1 2 3 4\n") << 0
                                 << QByteArray("1 2\nnew 2\n 3 4\n");
        QTest::newRow("comment") << QByteArray("1 2 # c\n3 4\n") << 1
                                 << QByteArray("1 2 # c\n3 4\nnew 2\n");
        QTest::newRow("text") << QByteArray("1\n;a\nb\n;\n3 4\n") << 1
                              << QByteArray("1\n;a\nb\n;\n3 4\nnew \n;a\nb\n;\n");
    }
    void aNewRowFollowsInALineOfItsOwn() {
        QFETCH(QByteArray, rows);
        QFETCH(int, behind);
        QFETCH(QByteArray, expected);
        QCOMPARE(withRowBehind(head + rows, behind), head + expected);
    }

    void aCategoryGoesAsAWhole() {
        const QByteArray before = "data_x\n_b.c 1\n# \n";
        const QByteArray after = "loop_\n_d.e\n1\n#\n";
        QCOMPARE(withoutCategory(before + "loop_\n_a.x\n_a.y\n1 2\n3 4\n# \n" + after),
                 before + after);
        QCOMPARE(withoutCategory(before + "_a.x  1\n_a.y\n;2\n;\n# \n" + after), before + after);
        QCOMPARE(withoutCategory(before + "loop_ _a.x 1 2 stop_\n# kept\n" + after),
                 before + "# kept\n" + after);
        QCOMPARE(withoutCategory("data_x _b.c 1 _a.x 1 _b.d 2\n"), "data_x _b.c 1 _b.d 2\n");
        QCOMPARE(withoutCategory("data_x _a.x 1"), "data_x");
    }

    void tagsWithValuesBecomeALoop() {
        const QByteArray text = "data_x\n_a.x 'a b'\n_b.c 1\n_a.y\n;2\n;\n_d.e 1\n";
        const QByteArray loop = edited(text, "_a", [](Edit& edit, const Category& category, Rows&) {
            edit.makeLoop(category, std::vector<std::vector<Change>>{{}, {{0, "?"}, {1, "."}}});
            edit.dropPair(category.pairs[1]);
        });
        QCOMPARE(loop, "data_x\nloop_\n_a.x\n_a.y\n'a b' 2\n? .\n_b.c 1\n_d.e 1\n");
    }

    void everyTextIsReadAsItWasWritten() {
        for (const char* text :
             {"a",        "?",        ".",    ".5",     "-1",     "O5'",   "C\"A'",
              "a b",      "'",        "\"",   "a' b",   "a\" b'", "_x",    "#x",
              "$x",       ";x",       "[x]",  "data_x", "LOOP_",  "stop_", "save_",
              "global_x", "a' b\" c", "a\nb", "?x",     "x;y",    "a'#\"#"}) {
            const std::string file = "data_x _a.b " + written(text) + " _a.c 1";
            QCOMPARE(file_testing::gemmiValue(file, "_a.b"), text);
            QCOMPARE(file_testing::gemmiValue(file, "_a.c"), "1");
        }
        QCOMPARE(written(""), "?");
    }
};

REGISTER_TEST(CifEditTest)
#include "CifEditTest.moc"
