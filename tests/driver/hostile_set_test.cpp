// Task data sets in DATADIR/taskdata built to hurt the reader: entity
// bombs, external entities, absurd nesting, huge values, lying encodings.
// Each is refused with the load error in bounded memory, and OUTPUT keeps
// the set it held.
#include "test_support/test_support.h"

#include <QFile>

#include <gtest/gtest.h>

using namespace test_support;

namespace {

QByteArray const root_start = "<ISO11783_TaskData VersionMajor=\"4\">";
QByteArray const root_end = "</ISO11783_TaskData>";
QByteArray const load_error = "E: could not load taskdata from data/taskdata/TASKDATA.XML\n";

// Ten times more text at every level: a few hundred bytes that would
// expand to gigabytes.
QByteArray entity_bomb(QByteArray const& root, QByteArray const& body) {
    QByteArray text = "<?xml version=\"1.0\"?>\n<!DOCTYPE " + root + " [\n<!ENTITY l0 \"lol\">\n";
    for (int level = 1; level <= 9; ++level) {
        text += "<!ENTITY l" + QByteArray::number(level) + " \"";
        for (int i = 0; i < 10; ++i)
            text += "&l" + QByteArray::number(level - 1) + ";";
        text += "\">\n";
    }
    return text + "]>\n" + body;
}

class HostileSet : public ::testing::Test {
protected:
    ScratchDir scratch;
    QString data() const { return scratch.file(QStringLiteral("data")); }
    QString out() const { return scratch.file(QStringLiteral("out")); }

    HostileSet() {
        write_file(data() + QStringLiteral("/Products/Seed/Seed.ini"), "[Default]\nType=0\n");
        write_file(out() + QStringLiteral("/TASKDATA.XML"), former);
    }

    // Runs the tool on the set and expects the load error; gives standard
    // error. Address space is limited, so that a reader that grows without
    // bound fails instead of swapping (not under AddressSanitizer, which
    // reserves terabytes of it).
    QByteArray refused(QByteArray const& taskdata, QByteArray const& link_list = QByteArray()) {
        write_file(data() + QStringLiteral("/taskdata/TASKDATA.XML"), taskdata);
        if (!link_list.isEmpty())
            write_file(data() + QStringLiteral("/taskdata/LINKLIST.XML"), link_list);
#if defined(__SANITIZE_ADDRESS__)
        QString const limit;
#else
        QString const limit = QStringLiteral("ulimit -v 2000000");
#endif
        ToolRun const run = run_tool({"-O", "out", "data"}, scratch.path(), limit);
        EXPECT_EQ(run.exit_code, 1);
        EXPECT_TRUE(run.err.endsWith(load_error)) << run.err.left(2000).constData();
        EXPECT_EQ(read_file(out() + QStringLiteral("/TASKDATA.XML")), former);
        return run.err;
    }

    QByteArray const former = root_start + "<CTR A=\"CTR1\" B=\"Former\"/>" + root_end;
};

} // namespace

TEST_F(HostileSet, EntityBombsAndExternalEntitiesAreRefused) {
    QByteArray const expanded = root_start + "<CTR A=\"CTR1\" B=\"&l9;\"/>" + root_end;
    EXPECT_TRUE(refused(entity_bomb("ISO11783_TaskData", expanded))
                    .contains("TASKDATA.XML:13:2: document type declarations are refused"));

    QByteArray const links = "<ISO11783LinkList VersionMajor=\"4\"><LGP A=\"LGP1\" B=\"1\">"
                             "<LNK A=\"CTR1\" B=\"&l9;\"/></LGP></ISO11783LinkList>";
    EXPECT_TRUE(refused(root_start + root_end, entity_bomb("ISO11783LinkList", links))
                    .contains("LINKLIST.XML:13:2: document type declarations are refused"));
    QFile::remove(data() + QStringLiteral("/taskdata/LINKLIST.XML"));

    for (QByteArray const& reference : {QByteArray("<CTR A=\"CTR1\" B=\"&x;\"/>"),
                                        QByteArray("<CTR A=\"CTR1\" B=\"x\">&x;</CTR>")}) {
        SCOPED_TRACE(reference.constData());
        QByteArray const text = "<!DOCTYPE ISO11783_TaskData [<!ENTITY x SYSTEM "
                                "\"file:///etc/passwd\">]>" +
                                root_start + reference + root_end;
        EXPECT_TRUE(refused(text).contains("document type declarations are refused"));
    }
}

TEST_F(HostileSet, DeepNestingIsRefused) {
    int const levels = 100000;
    QByteArray const text = root_start + QByteArray("<CTR>").repeated(levels) +
                            QByteArray("</CTR>").repeated(levels) + root_end;
    EXPECT_TRUE(refused(text).contains("elements nested too deeply"));
}

TEST_F(HostileSet, HugeValuesAreRefusedWithTheirPlace) {
    // Longer than any value of the standard: named with its element and line.
    QByteArray const long_value = root_start + "\n<PFD A=\"PFD1\" C=\"" +
                                  QByteArray((1 << 20) + 1, 'x') + "\" D=\"1\"/>" + root_end;
    QByteArray const err = refused(long_value);
    EXPECT_TRUE(err.contains("TASKDATA.XML:2:")) << err.left(300).constData();
    EXPECT_TRUE(err.contains("attribute C of <PFD> is longer than 1048576 characters"));

    // The same as a point among plain ones.
    QByteArray const long_point =
        root_start +
        "<PFD A=\"PFD1\" C=\"f\" D=\"1\"><PLN A=\"1\">"
        "<LSG A=\"1\">\n<PNT A=\"2\" C=\"1\" D=\"1\"/>\n<PNT A=\"2\" C=\"" +
        QByteArray((1 << 20) + 1, '1') + "\" D=\"1\"/>\n</LSG></PLN></PFD>" + root_end;
    EXPECT_TRUE(refused(long_point).contains("attribute C of <PNT>"));

    // So long that the reader must not even hold it: 200 MB.
    QByteArray const huge =
        root_start + "\n<CTR A=\"CTR1\" B=\"" + QByteArray(200000000, 'x') + "\"/>" + root_end;
    EXPECT_TRUE(refused(huge).contains("tag or text longer than 64 MiB"));
}

TEST_F(HostileSet, TextThatIsNotInItsDeclaredEncodingIsRefused) {
    QByteArray const body = root_start + "<CTR A=\"CTR1\" B=\"M\xc3\xbcller\"/>" + root_end;
    EXPECT_TRUE(refused("<?xml version=\"1.0\" encoding=\"UTF-16\"?>\n" + body)
                    .contains("TASKDATA.XML:1:"));
    EXPECT_TRUE(refused("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n" + root_start +
                        "<CTR A=\"CTR1\" B=\"M\xfcller\"/>" + root_end)
                    .contains("Encountered incorrectly encoded content"));
    // Invalid bytes inside a run of plain points, which the reader does not
    // tokenise itself.
    EXPECT_TRUE(refused(root_start + "<PFD A=\"PFD1\" C=\"f\" D=\"1\"><PLN A=\"1\"><LSG A=\"1\">" +
                        "<PNT A=\"2\" B=\"\xc3\" C=\"1\" D=\"1\"/></LSG></PLN></PFD>" + root_end)
                    .contains("Encountered incorrectly encoded content"));
    EXPECT_TRUE(refused("<?xml version=\"1.0\" encoding=\"X-NO-SUCH\"?>\n" + body)
                    .contains("Encoding X-NO-SUCH is unsupported"));
}

// Found by fuzzing: the reader took NUL bytes between an attribute name and
// its '=' into the name, and the save wrote that attribute as a second "E"
// beside the default one, a set that no run could load again. Every
// character XML forbids is refused where it stands, in names too.
TEST_F(HostileSet, NulBytesInAnAttributeNameAreRefusedNotSavedAsADuplicate) {
    struct Case {
        QByteArray line; // the second line of TASKDATA.XML
        char const* error;
    };
    QList<Case> const cases = {
        {QByteArray("<BSN A=\"BSN1\" E\0\0\0\0\0=\"118400\"/>", 31),
         "TASKDATA.XML:2:31: attribute name \\\"E\\u0000\\u0000\\u0000\\u0000\\u0000\\\" of <BSN>"},
        {"<CTR A=\"CTR1\" B\x7f=\"x\"/>", "TASKDATA.XML:2:22: attribute name \\\"B\\u007F\\\""},
        {QByteArray("<CTR A=\"CTR1\" B=\"x\0\"/>", 22), "TASKDATA.XML:2:19: "},
        {"<CTR A=\"CTR1\">\x01</CTR>", "TASKDATA.XML:2:15: "},
        // A point that the reader of plain points passes to the XML reader.
        {QByteArray("<PFD A=\"PFD1\" C=\"f\" D=\"1\"><PLN A=\"1\"><LSG A=\"1\">"
                    "<PNT A\0=\"2\" C=\"1\" D=\"2\"/></LSG></PLN></PFD>",
                    91),
         "TASKDATA.XML:2:73: attribute name \\\"A\\u0000\\\" of <PNT>"},
        // One it leaves to the XML reader for its colons, which the save would
        // refuse to write.
        {"<PFD A=\"PFD1\" C=\"f\" D=\"1\"><PLN A=\"1\"><LSG A=\"1\"><PNT a:b:c=\"2\"/></LSG>"
         "</PLN></PFD>",
         "TASKDATA.XML:2:57: Expected '=', but got ':'."},
    };
    for (Case const& bad : cases) {
        SCOPED_TRACE(bad.error);
        QByteArray const err = refused(root_start + "\n" + bad.line + root_end);
        EXPECT_TRUE(err.contains(bad.error)) << err.constData();
    }
}
