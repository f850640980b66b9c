// The task data store: the element interface as the importers use it
// (creating, numbering, linking and finding elements, attribute views,
// line-string points), and sets on disk: what the store reads, what it writes
// back, the identities in LINKLIST.XML, sets split into external files, text
// that XML cannot hold, and saves that fail.
#include "taskdata/element_man.h"
#include "taskdata/proprietary.h"
#include "test_support/test_support.h"
#include "xml_summary.h"

#include <QDir>

#include <functional>
#include <tuple>

using namespace TC::Task_data;
using namespace TC::Task_data::Elements::Client;
using namespace test_support;

namespace {

using Files = QList<QPair<QString, QByteArray>>;

class SetFiles : public ::testing::Test {
protected:
    SetFiles() { man.create(); }

    // Loads or saves (into a directory made if need be) the set in `dir`:
    // empty when that went well, else the reason.
    QString load(QString const& dir) { return xml_io(dir, false); }
    QString save(QString const& dir) { return xml_io(dir, true); }
    QString xml_io(QString const& dir, bool saving) {
        make_dirs(dir);
        XML_interface xml(dir + "/TASKDATA.XML", true, false, false, false);
        return (saving ? man.save_xml(xml) : man.load_xml(xml)) ? QString()
                                                                : "failed: " + xml.error();
    }

    // Saves into a scratch directory and reads TASKDATA.XML back.
    XmlElement saved() {
        EXPECT_EQ(save(dir("saved")), "");
        return read_xml(dir("saved/TASKDATA.XML"));
    }

    Task_data root() const { return man.get_client_root(); }
    QString dir(QString const& name) const { return scratch.file(name); }
    // The first difference of an XML file of two sets, empty when none.
    static QString changes(QString const& from, QString const& to, QString const& name) {
        return difference(read_xml(from + '/' + name), read_xml(to + '/' + name));
    }

    ScratchDir scratch;
    Element_man man;
};

class Elements : public SetFiles {};

// A created element given its number.
template <class Element> Element numbered(Element element, int number) {
    element.id().set(number, true);
    return element;
}

QByteArray const minimal_root = "<ISO11783_TaskData VersionMajor='4' VersionMinor='3' "
                                "ManagementSoftwareManufacturer='m' "
                                "ManagementSoftwareVersion='1' DataTransferOrigin='1'";

// Long line strings are read past the XML reader where their points are
// plain; every other form around them, and text that nothing reads, must come
// back as it was, also where the file is read in several pieces.
QByteArray points_of_every_form() {
    QByteArray text = minimal_root + ">\n<PFD A=\"PFD1\" C=\"f\" D=\"1\">\n"
                                     "<PLN A=\"1\" B=\"a > b\"><LSG A=\"1\" B=\"x>y\">\n";
    for (int i = 0; i < 150000; ++i) {
        text += "\t<PNT A=\"2\" C=\"" + QByteArray::number(52.0 + i * 1e-6, 'f', 9) + "\" D='" +
                QByteArray::number(9.0 - i * 1e-6, 'f', 9) + "'/>\n";
        if (i % 40000 == 7)
            text += "<PNT A=\"2\" B=\"a&amp;b\" C=\"1\" D=\"2\"/>"
                    "<!-- <PNT A=\"9\" C=\"0\" D=\"0\"/> -->"
                    "<PNT A=\"6\" B=\"Süd\" C=\"1\" D=\"2\"/>"
                    "<PNT A=\"7\" C=\"1\" D=\"2\"><P9_Y/></PNT>"
                    "<![CDATA[<PNT A=\"9\"/>]]>"
                    "<P9_X q=\"PNT/> >\" r=\"&lt;PNT A=&quot;1&quot;/>\"/>"
                    "<PNT A=\"2\"\tC=\"3\"\nD=\"4\" G=\"PNT1\" />\n";
    }
    return text + "</LSG></PLN><LSG A=\"2\"/>\n<PNT A=\"1\" C=\"5\" D=\"6\"/>"
                  "<PNT A=\"1\" C=\"7\" D=\"8\"/>\n</PFD><PFD A='PFD-3' C='f' D='12' "
                  "Z='unknown'><PLN A='1'><LSG A='1'><PNT A='2' C='48.12345678901234' D='+15.10' "
                  "E='7' P9_ü='1'/><P9_X q='1'/><PNT A='2' C='1' D='2'><P9_Y/></PNT></LSG></PLN>"
                  "<P9_Z>text</P9_Z></PFD></ISO11783_TaskData>\n";
}

} // namespace

TEST_F(SetFiles, SamplesOfOtherSoftwareComeBackUnchanged) {
    REQUIRE_SHARED_DIR();
    QDir const samples(shared_dir() + "/isoxml/samples");
    for (QString const& name : samples.entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
        SCOPED_TRACE(name.toStdString());
        QString const input = samples.filePath(name);
        QString const output = dir(name);
        ASSERT_EQ(load(input), "");
        EXPECT_EQ(save(output), "");
        for (char const* xml : {"TASKDATA.XML", "LINKLIST.XML"})
            EXPECT_EQ(file_exists(input + '/' + xml) ? changes(input, output, xml) : "", "") << xml;
        // Attached and binary files travel with the set.
        for (QString const& file : QDir(input).entryList(QDir::Files))
            EXPECT_TRUE(file.endsWith(".XML") ||
                        read_file(output + '/' + file) == read_file(input + '/' + file))
                << file.toStdString();
    }
}

// Sets that load, and what must hold of them and of the set saved again.
TEST_F(SetFiles, LoadedSetsAreWrittenBackAsTheyWere) {
    QString const in = dir("in"), out = dir("out");
    // What, the files of the set, what must hold of it and of the set saved.
    std::tuple<char const*, Files, std::function<void()>> const cases[] = {
        {"points of every form across long files",
         {{"TASKDATA.XML", points_of_every_form()}},
         [&] {
             EXPECT_EQ(changes(in, out, "TASKDATA.XML"), "");
             // Flag points after a line string stay points of the field.
             EXPECT_EQ(root().partfields()[0].num_point(), 2u);
             EXPECT_EQ(man.get_free_uid("PNT", false), 2);
         }},
        {"external files read in place and written as one file",
         {{"TASKDATA.XML", minimal_root + "><CTR A='CTR1' B='first'/><XFR A='PFD00000' "
                                          "B='1'/><XFR A='CTR00001' B='1'/>"
                                          "</ISO11783_TaskData>"},
          {"PFD00000.XML", "<XFC><PFD A='PFD1' C='field' D='1' E='CTR2'/></XFC>"},
          {"CTR00001.xml", "<XFC><CTR A='CTR2' B='second'/></XFC>"}},
         [&] {
             EXPECT_EQ(root().customers().count(), 2);
             EXPECT_TRUE(root().partfields()[0].get_customer() == root().customers()[1]);
             EXPECT_EQ(man.get_free_uid("CTR", false), 3);
             EXPECT_EQ(summary(read_xml(out + "/TASKDATA.XML").children, {"<"}),
                       QStringList({"CTR", "PFD", "CTR"}));
             EXPECT_EQ(QDir(out).entryList(QDir::Files),
                       QStringList({"GUIDLIST.XML", "LINKLIST.XML", "TASKDATA.XML"}));
         }},
        // An attribute of the root that nothing reads stays; no attached file
        // is named.
        {"empty link and GUID lists",
         {{"TASKDATA.XML", minimal_root + " P123_x='a&amp;b'/>"},
          {"LINKLIST.XML", "\n"},
          {"GUIDLIST.XML", ""}},
         [&] {
             EXPECT_EQ(read_file(out + "/LINKLIST.XML") + read_file(out + "/GUIDLIST.XML"), "");
             EXPECT_EQ(changes(in, out, "TASKDATA.XML"), "");
         }},
        {"GUID list content",
         {{"GUIDLIST.XML", "<GUIDLIST>opaque</GUIDLIST>\n"}},
         [&] { EXPECT_EQ(read_file(out + "/GUIDLIST.XML"), "<GUIDLIST>opaque</GUIDLIST>\n"); }},
        {"links that name nothing known",
         {{"TASKDATA.XML", minimal_root + "><CTR A='CTR1' B='c'/></ISO11783_TaskData>"},
          {"LINKLIST.XML", "<ISO11783LinkList VersionMajor='4' VersionMinor='3' "
                           "ManagementSoftwareManufacturer='m' ManagementSoftwareVersion='1' "
                           "DataTransferOrigin='1'><LGP A='LGP1' B='1'><LNK A='CTR1' "
                           "B='{a1a2a3a4-b1b2-c1c2-d1d2-d3d4d5d6d7d8}' C='named'/><LNK A='TSK9' "
                           "B='{11111111-2222-3333-4444-555555555555}'/></LGP><LGP A='LGP2' B='2' "
                           "D='ns'><LNK A='CTR1' B='customer-42'/></LGP></ISO11783LinkList>"}},
         [&] {
             EXPECT_EQ(changes(in, out, "LINKLIST.XML"), "");
             EXPECT_EQ(root().customers()[0].get_guid(),
                       QUuid("{a1a2a3a4-b1b2-c1c2-d1d2-d3d4d5d6d7d8}"));
         }},
    };
    for (auto const& [what, files, check] : cases) {
        SCOPED_TRACE(what);
        for (auto const& [name, content] : files)
            write_file(in + '/' + name, content);
        ASSERT_EQ(load(in), "");
        EXPECT_EQ(save(out), "");
        check();
    }
}

TEST_F(SetFiles, BrokenSetsAreRefusedWithAReasonAndLeaveAnEmptyTree) {
    QByteArray behind_points =
        minimal_root + ">\n<PFD A='PFD1' C='f' D='1'><PLN A='1'><LSG A='1'>\n";
    for (int i = 0; i < 1000; ++i)
        behind_points += "<PNT A='2' C='1' D='2'/>\n";
    behind_points += "</LSG></PLN>\n<PFD></ISO11783_TaskData>\n"; // line 1004
    QByteArray const external = "<ISO11783_TaskData><XFR A='CTR00001' B='1'/>"
                                "</ISO11783_TaskData>";
    // What, TASKDATA.XML, the reason given, and a file beside it if any.
    std::tuple<char const*, QByteArray, char const*, QString, QByteArray> const cases[] = {
        {"unclosed element", "<ISO11783_TaskData><CTR A='CTR1'>", "TASKDATA.XML:1:", "", ""},
        {"foreign root", "<TaskData/>", "not an ISO 11783", "", ""},
        {"no root", "<?xml version='1.0'?>", "TASKDATA.XML", "", ""},
        // The reader names the true line of an error behind a long run of points.
        {"error behind points", behind_points, "TASKDATA.XML:1004:", "", ""},
        {"missing external", "<ISO11783_TaskData><XFR A='CTR00002' B='1'/>", "CTR00002", "", ""},
        {"path as external file",
         "<ISO11783_TaskData><XFR A='/etc/passwd' B='1'/></ISO11783_TaskData>",
         "invalid external file name", "", ""},
        {"external file with a wrong root", external, "not an ISO 11783 XFC", "CTR00001.XML",
         "<ISO11783_TaskData/>"},
        // Found by fuzzing: it was kept, and the saved set named a file that
        // the save had not written.
        {"external file naming another", external,
         "CTR00001.XML:1:30: an external file holds an XFR", "CTR00001.XML",
         "<XFC><XFR A='CTR00001' B='1'/></XFC>"},
        // The GUID list is kept as it is, so it must be well-formed to be kept.
        {"malformed GUID list", minimal_root + "/>",
         "GUIDLIST.XML:2:11: attribute name \"a\x7f\" of <G> is not an XML name", "GUIDLIST.XML",
         "<GUIDLIST>\n<G a\x7f='1'/>"},
    };
    for (auto const& [what, taskdata, reason, other, other_content] : cases) {
        SCOPED_TRACE(what);
        write_file(dir(what) + "/TASKDATA.XML", taskdata);
        if (!other.isEmpty())
            write_file(dir(what) + '/' + other, other_content);
        QString const error = load(dir(what));
        EXPECT_TRUE(error.startsWith("failed") && error.contains(reason)) << error.toStdString();
        EXPECT_EQ(root().customers().count(), 0);
    }
}

TEST_F(SetFiles, AFailedSaveLeavesTheFormerFilesInPlace) {
    Customer customer = numbered(root().create_customers(true), 1);
    QString const output = dir("out");
    write_file(output + "/TASKDATA.XML", "former");
    // A name that XML cannot hold is not written.
    set_proprietary(customer, "a b", QVariant(1));
    QString error = save(output);
    EXPECT_TRUE(error.endsWith("attribute name \"P231_a b\" of <CTR> is not an XML name"))
        << error.toStdString();
    EXPECT_EQ(read_file(output + "/TASKDATA.XML"), "former");
    customer.attribute("P231_a b").set_flag_included(false);

    // LINKLIST.XML cannot be replaced: a directory stands in its place.
    make_dirs(output + "/LINKLIST.XML");
    error = save(output);
    EXPECT_TRUE(error.startsWith("failed") && error.contains("LINKLIST.XML"))
        << error.toStdString();
    EXPECT_EQ(read_file(output + "/TASKDATA.XML"), "former");
    EXPECT_EQ(QDir(output).entryList(QDir::Files | QDir::Hidden), QStringList({"TASKDATA.XML"}));

    // The output directory taken away between load and save.
    QDir(output).removeRecursively();
    write_file(output, "now a file");
    XML_interface xml(output + "/TASKDATA.XML", true, false, false, false);
    EXPECT_FALSE(man.save_xml(xml));
    EXPECT_EQ(read_file(output), "now a file");
}

TEST_F(Elements, LoadedElementsAreListedAndNumberedAroundNewOnes) {
    write_file(dir("in/TASKDATA.XML"),
               "<ISO11783_TaskData VersionMajor='4'><CTR A='CTR1' B='a'/><CTR A='CTR-1' B='b'/>"
               "<CTR A='CTR3' B='c'/><PFD A='PFD1' C='f' D='0'>"
               "<PLN A='300' C='x'/></PFD></ISO11783_TaskData>");
    ASSERT_EQ(load(dir("in")), "");
    for (int i = 0; i < 2; ++i) // free numbers: 2, then 4
        root().create_customers(true).id().set(man.get_free_uid("CTR", false), true);
    EXPECT_EQ(man.get_free_uid("FRM", false), 1); // other tags count on their own
    // Text that is no number of the range is not read.
    unsigned char type = 0;
    unsigned int area = 0;
    EXPECT_FALSE(root().partfields()[0].get_polygon(0).type().get(type));
    EXPECT_FALSE(root().partfields()[0].get_polygon(0).area().get(area));
    EXPECT_EQ(summary(saved().all("CTR"), {"A"}),
              QStringList({"CTR1", "CTR-1", "CTR3", "CTR2", "CTR4"}));
}

TEST_F(Elements, BuiltElementsReachTheWrittenSet) {
    Partfield field = numbered(root().create_partfields(true), 1);
    field.add("unset", "P231_");
    // An excluded attribute, a set one, and one set and then excluded.
    Point low = field.create_point(true);
    low.icon_id().set_flag_included(false);
    low.type().set(1, true);
    field.create_point(true).icon_id().set(5, true);
    Point hidden = field.create_point(true);
    hidden.icon_id().set(4, true);
    hidden.icon_id().set_flag_included(false);

    Base_station station = numbered(root().create_base_stations(true), 1);
    GuidanceGroup group = numbered(field.create_guidance_paths(true), 1);
    Guidance_pattern linked = numbered(group.create_patterns(true), 1);
    linked.create_linestring(true).create_new_point();
    linked.base_station().set(station);
    set_proprietary(linked, "Spur_ä", QVariant(1));
    set_proprietary(linked, "Spur_ä", QVariant(2)); // found again, not added twice
    // A link to an invalid element drops the reference.
    Guidance_pattern unlinked = group.create_patterns(true);
    unlinked.base_station().set(station);
    unlinked.base_station().set(Base_station());

    field.create_polygon(true).create_linestring(true); // stands empty
    Linestring line = field.create_polygon(true).create_linestring(true);
    EXPECT_EQ(line.create_new_point(), 0u);
    EXPECT_EQ(line.create_new_point(), 1u);
    line.set_type(0, 6);
    line.set_north(0, 52.1234567891234);
    line.set_east(0, -7.5);
    line.set_designator(0, "A");
    line.set_type(1, 7);
    line.set_north(1, -0.0000000001);
    line.set_east(1, 179.999999999);
    line.set_north(0, 52.5); // a second value replaces the first
    line.set_east(5, 1.0);   // no such point: nothing happens
    // Text that XML cannot hold is replaced, markup escaped, also among
    // plain points.
    QString const hostile = QString("<Field & \"Co\"> '1'\t") + QChar(0x01) + QChar(0x1F) +
                            QChar(0xD800) + "end" + QChar(0xFFFF);
    for (QString const& designator : {hostile, QString("Süd"), QString("B")})
        line.set_designator(line.create_new_point(), designator);
    numbered(root().create_customers(true), 1).designator().set(hostile, true);

    // A polyline becomes a closed ring of absolute points.
    Polyline ring(QPointF(7.0, 52.0));
    for (QPointF const& corner : {QPointF(0, 0), QPointF(0.001, 0), QPointF(0.001, 0.002)})
        ring.append(corner);
    ring.close();
    ring.close(); // closing twice adds nothing more
    field.create_polygon(true).create_linestring(true).add_points(ring, false, false);

    // Presets, increments, spacing and correction reach the set through the
    // product and guidance imports, whose suites check them.
    Product product = numbered(root().create_products(true), 1);
    set_product_preset(product, 2, 5.0); // only presets 0 and 1 exist
    set_product_rate_type(product, 3);   // only 1 is kept
    EXPECT_EQ(get_product_rate_type(product), 0);
    set_product_rate_type(product, 1);
    set_product_profile(product, "Spring <wheat>");
    EXPECT_EQ(get_product_profile(product) + char('0' + get_product_rate_type(product)),
              "Spring <wheat>1");

    // Required attributes that nothing set get neutral values; excluded and
    // unset ones are not written.
    QByteArray const escaped =
        "&lt;Field &amp; \"Co\"> &apos;1&apos;&#9;\uFFFD\uFFFD\uFFFDend\uFFFD";
    write_file(dir("expected.xml"),
               "<ISO11783_TaskData VersionMajor='4' VersionMinor='3' "
               "ManagementSoftwareManufacturer='taskdata-migrate' "
               "ManagementSoftwareVersion='1.0' DataTransferOrigin='1'>"
               "<PFD A='PFD1' C='' D='0'><PNT A='1' C='0' D='0'/>"
               "<PNT A='2' C='0' D='0' P231_iconId='5'/><PNT A='2' C='0' D='0'/>"
               "<GGP A='GGP1'><GPN A='GPN1' C='1' L='BSN1' P231_Spur_ä='2'><LSG A='5'>"
               "<PNT A='2' C='0' D='0'/></LSG></GPN><GPN C='1'/></GGP>"
               "<PLN A='8'><LSG A='1'/></PLN><PLN A='8'><LSG A='1'>"
               "<PNT A='6' B='A' C='52.5' D='-7.5'/><PNT A='7' C='0' D='179.999999999'/>"
               "<PNT A='2' B='" +
                   escaped +
                   "' C='0' D='0'/><PNT A='2' B='Süd' C='0' D='0'/>"
                   "<PNT A='2' B='B' C='0' D='0'/>"
                   "</LSG></PLN><PLN A='8'><LSG A='1'><PNT A='2' C='52' D='7'/>"
                   "<PNT A='2' C='52' D='7.001'/><PNT A='2' C='52.002' D='7.001'/>"
                   "<PNT A='2' C='52' D='7'/></LSG></PLN></PFD>"
                   "<BSN A='BSN1' B='' C='0' D='0' E='0'/><CTR A='CTR1' B='" +
                   escaped +
                   "'/><PDT A='PDT1' B='' P231_rateType='1' "
                   "P231_profile='Spring &lt;wheat>'/></ISO11783_TaskData>");
    EXPECT_EQ(difference(read_xml(dir("expected.xml")), saved()), "");
    // Every point on a line of its own, indented by its depth in tabs.
    QString indents;
    for (QString const& text : QString::fromUtf8(read_file(dir("saved/TASKDATA.XML"))).split('\n'))
        if (text.contains("<PNT"))
            indents += QString::number(text.indexOf("<PNT"));
    EXPECT_EQ(indents, "2225444444444");
}
