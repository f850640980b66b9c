// Task data sets in DATADIR/taskdata built to hurt the reader: entity
// bombs, external entities, absurd nesting, huge values, lying encodings.
// Each is refused with the load error in bounded memory, and OUTPUT keeps
// the set it held.
#include "test_support/test_support.h"

#include <QFile>

#include <gtest/gtest.h>

using namespace test_support;

namespace {

QByteArray set(QByteArray const& elements) {
    return "<ISO11783_TaskData VersionMajor=\"4\">" + elements + "</ISO11783_TaskData>";
}

QByteArray const former = set("<CTR A=\"CTR1\" B=\"Former\"/>");

// Ten times more text at every level: a few hundred bytes that would
// expand to gigabytes.
QByteArray entity_bomb(QByteArray const& root, QByteArray const& body) {
    QByteArray text = "<?xml version=\"1.0\"?>\n<!DOCTYPE " + root + " [\n<!ENTITY l0 \"lol\">\n";
    for (int level = 1; level <= 9; ++level)
        text += "<!ENTITY l" + QByteArray::number(level) + " \"" +
                ("&l" + QByteArray::number(level - 1) + ";").repeated(10) + "\">\n";
    return text + "]>\n" + body;
}

// One field whose boundary holds the points given.
QByteArray with_points(QByteArray const& points) {
    return set("<PFD A=\"PFD1\" C=\"f\" D=\"1\"><PLN A=\"1\"><LSG A=\"1\">" + points +
               "</LSG></PLN></PFD>");
}

class HostileSet : public DisplayTree {
protected:
    HostileSet() {
        write("Products/Seed/Seed.ini", "[Default]\nType=0\n");
        write_file(scratch.file("out/TASKDATA.XML"), former);
    }

    // Runs the tool on the set and expects the load error with `reason`
    // before it. Address space is limited, so that a reader that grows
    // without bound fails instead of swapping (not under AddressSanitizer,
    // which reserves terabytes of it).
    void expect_refused(QByteArray const& taskdata, char const* reason,
                        QByteArray const& link_list = QByteArray()) {
        SCOPED_TRACE(reason);
        write("taskdata/TASKDATA.XML", taskdata);
        QFile::remove(data("taskdata/LINKLIST.XML"));
        if (!link_list.isEmpty())
            write("taskdata/LINKLIST.XML", link_list);
#if defined(__SANITIZE_ADDRESS__)
        QString const limit;
#else
        QString const limit = "ulimit -v 2000000";
#endif
        ToolRun const run = run_tool({"-O", "out", "data"}, scratch.path(), limit);
        EXPECT_EQ(run.exit_code, 1);
        EXPECT_TRUE(
            run.err.endsWith("E: could not load taskdata from data/taskdata/TASKDATA.XML\n"))
            << run.err.left(2000).constData();
        EXPECT_TRUE(run.err.contains(reason)) << run.err.left(2000).constData();
        EXPECT_EQ(read_file(scratch.file("out/TASKDATA.XML")), former);
    }
};

} // namespace

TEST_F(HostileSet, EntityBombsAndExternalEntitiesAreRefused) {
    expect_refused(entity_bomb("ISO11783_TaskData", set("<CTR A=\"CTR1\" B=\"&l9;\"/>")),
                   "TASKDATA.XML:13:2: document type declarations are refused");
    expect_refused(set(""), "LINKLIST.XML:13:2: document type declarations are refused",
                   entity_bomb("ISO11783LinkList",
                               "<ISO11783LinkList VersionMajor=\"4\"><LGP A=\"LGP1\" B=\"1\">"
                               "<LNK A=\"CTR1\" B=\"&l9;\"/></LGP></ISO11783LinkList>"));
    for (char const* reference :
         {"<CTR A=\"CTR1\" B=\"&x;\"/>", "<CTR A=\"CTR1\" B=\"x\">&x;</CTR>"})
        expect_refused("<!DOCTYPE ISO11783_TaskData [<!ENTITY x SYSTEM \"file:///etc/passwd\">]>" +
                           set(reference),
                       "document type declarations are refused");
}

TEST_F(HostileSet, DeepNestingAndHugeValuesAreRefusedWithTheirPlace) {
    expect_refused(
        set(QByteArray("<CTR>").repeated(100000) + QByteArray("</CTR>").repeated(100000)),
        "elements nested too deeply");
    // Longer than any value of the standard: named with its element and
    // place, the element's end (column 17 + 1048577 + 9), also as a point
    // among plain ones.
    expect_refused(
        set("\n<PFD A=\"PFD1\" C=\"" + QByteArray((1 << 20) + 1, 'x') + "\" D=\"1\"/>"),
        "TASKDATA.XML:2:1048603: attribute C of <PFD> is longer than 1048576 characters");
    expect_refused(with_points("\n<PNT A=\"2\" C=\"1\" D=\"1\"/>\n<PNT A=\"2\" C=\"" +
                               QByteArray((1 << 20) + 1, '1') + "\" D=\"1\"/>\n"),
                   "attribute C of <PNT>");
    // So long that the reader must not even hold it: 200 MB.
    expect_refused(set("\n<CTR A=\"CTR1\" B=\"" + QByteArray(200000000, 'x') + "\"/>"),
                   "tag or text longer than 64 MiB");
}

TEST_F(HostileSet, TextThatIsNotInItsDeclaredEncodingIsRefused) {
    QByteArray const body = set("<CTR A=\"CTR1\" B=\"M\xc3\xbcller\"/>");
    expect_refused("<?xml version=\"1.0\" encoding=\"UTF-16\"?>\n" + body, "TASKDATA.XML:1:");
    expect_refused("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n" +
                       set("<CTR A=\"CTR1\" B=\"M\xfcller\"/>"),
                   "Encountered incorrectly encoded content");
    // Invalid bytes inside a run of plain points, which the reader does not
    // tokenise itself.
    expect_refused(with_points("<PNT A=\"2\" B=\"\xc3\" C=\"1\" D=\"1\"/>"),
                   "Encountered incorrectly encoded content");
    expect_refused("<?xml version=\"1.0\" encoding=\"X-NO-SUCH\"?>\n" + body,
                   "Encoding X-NO-SUCH is unsupported");
}

// Found by fuzzing: the reader took NUL bytes between an attribute name and
// its '=' into the name, and the save wrote that attribute as a second "E"
// beside the default one, a set that no run could load again. Every
// character XML forbids is refused where it stands, in names too.
TEST_F(HostileSet, NulBytesInAnAttributeNameAreRefusedNotSavedAsADuplicate) {
    // The second line of TASKDATA.XML and the reason.
    std::pair<QByteArray, char const*> const cases[] = {
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
    for (auto const& [line, reason] : cases)
        expect_refused(set("\n" + line), reason);
}
