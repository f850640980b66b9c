// Task data sets on disk: what the store reads, what it writes back, the
// identities in LINKLIST.XML, sets split into external files, text that XML
// cannot hold, and saves that fail.
#include "taskdata/element_man.h"
#include "taskdata/proprietary.h"
#include "test_support/test_support.h"

#include <QDir>

#include <gtest/gtest.h>

#include <functional>

using namespace TC::Task_data;
using namespace TC::Task_data::Elements::Client;
using namespace test_support;

namespace {

using Files = QList<QPair<QString, QByteArray>>;

class SetFiles : public ::testing::Test {
protected:
    SetFiles() { man.create(); }

    bool load(QString const& dir, QString* error = nullptr) {
        XML_interface xml(dir + "/TASKDATA.XML", true, false, false, false);
        bool const ok = man.load_xml(xml);
        if (error)
            *error = xml.error();
        return ok;
    }

    // Saves into `dir`, created if need be; without `error`, a failed save
    // fails the test.
    bool save(QString const& dir, QString* error = nullptr) {
        make_dirs(dir);
        XML_interface xml(dir + "/TASKDATA.XML", true, false, false, false);
        bool const ok = man.save_xml(xml);
        if (error)
            *error = xml.error();
        else
            EXPECT_TRUE(ok) << xml.error().toStdString();
        return ok;
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

QByteArray const minimal_root = "<ISO11783_TaskData VersionMajor=\"4\" VersionMinor=\"3\" "
                                "ManagementSoftwareManufacturer=\"m\" "
                                "ManagementSoftwareVersion=\"1\" DataTransferOrigin=\"1\"";

// Long line strings are read past the XML reader where their points are
// plain; every other form around them must come back as it was, also where
// the file is read in several pieces.
QByteArray points_of_every_form() {
    QByteArray text = minimal_root + ">\n<PFD A=\"PFD1\" C=\"f\" D=\"1\">\n"
                                     "<PLN A=\"1\" B=\"a > b\"><LSG A=\"1\" B=\"x>y\">\n";
    for (int i = 0; i < 150000; ++i) {
        text += "\t<PNT A=\"2\" C=\"" + QByteArray::number(52.0 + i * 1e-6, 'f', 9) + "\" D='" +
                QByteArray::number(9.0 - i * 1e-6, 'f', 9) + "'/>\n";
        if (i % 40000 == 7) {
            text += "<PNT A=\"2\" B=\"a&amp;b\" C=\"1\" D=\"2\"/>"
                    "<!-- <PNT A=\"9\" C=\"0\" D=\"0\"/> -->"
                    "<PNT A=\"6\" B=\"Süd\" C=\"1\" D=\"2\"/>"
                    "<PNT A=\"7\" C=\"1\" D=\"2\"><P9_Y/></PNT>"
                    "<![CDATA[<PNT A=\"9\"/>]]>"
                    "<P9_X q=\"PNT/> >\" r=\"&lt;PNT A=&quot;1&quot;/>\"/>"
                    "<PNT A=\"2\"\tC=\"3\"\nD=\"4\" G=\"PNT1\" />\n";
        }
    }
    return text + "</LSG></PLN><LSG A=\"2\"/>\n<PNT A=\"1\" C=\"5\" D=\"6\"/>"
                  "<PNT A=\"1\" C=\"7\" D=\"8\"/>\n</PFD></ISO11783_TaskData>\n";
}

} // namespace

TEST_F(SetFiles, SamplesOfOtherSoftwareComeBackUnchanged) {
    REQUIRE_SHARED_DIR();
    QDir const samples(shared_dir() + "/isoxml/samples");
    for (QString const& name : samples.entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
        SCOPED_TRACE(name.toStdString());
        QString const input = samples.filePath(name);
        QString const output = dir(name);
        ASSERT_TRUE(load(input));
        save(output);
        EXPECT_EQ(changes(input, output, "TASKDATA.XML"), QString());
        if (file_exists(input + "/LINKLIST.XML")) {
            EXPECT_EQ(changes(input, output, "LINKLIST.XML"), QString());
        }
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
    struct Case {
        char const* what;
        Files files;
        QStringList unchanged; // XML files the save writes back as they were
        std::function<void()> check;
    };
    Case const cases[] = {
        {"untouched text",
         {{"TASKDATA.XML",
           minimal_root + " P123_x=\"a&amp;b\">\n<PFD A=\"PFD-3\" C=\"f\" D=\"12\" "
                          "Z=\"unknown\"><PLN A=\"1\"><LSG A=\"1\"><PNT A=\"2\" "
                          "C=\"48.12345678901234\" D=\"+15.10\" E=\"7\" P9_ü=\"1\"/><P9_X q=\"1\"/>"
                          "<PNT A=\"2\" C=\"1\" D=\"2\"><P9_Y/></PNT></LSG></PLN>"
                          "<P9_Z>text</P9_Z></PFD></ISO11783_TaskData>"}},
         {"TASKDATA.XML"},
         [] {}},
        {"points of every form across long files",
         {{"TASKDATA.XML", points_of_every_form()}},
         {"TASKDATA.XML"},
         [this] {
             // Flag points after a line string stay points of the field.
             EXPECT_EQ(root().partfields()[0].num_point(), 2u);
             EXPECT_EQ(man.get_free_uid("PNT", false), 2);
         }},
        {"external files read in place and written as one file",
         {{"TASKDATA.XML", minimal_root + "><CTR A=\"CTR1\" B=\"first\"/><XFR A=\"PFD00000\" "
                                          "B=\"1\"/><XFR A=\"CTR00001\" B=\"1\"/>"
                                          "</ISO11783_TaskData>"},
          {"PFD00000.XML", "<XFC><PFD A=\"PFD1\" C=\"field\" D=\"1\" E=\"CTR2\"/></XFC>"},
          {"CTR00001.xml", "<XFC><CTR A=\"CTR2\" B=\"second\"/></XFC>"}},
         {},
         [&] {
             EXPECT_EQ(root().customers().count(), 2);
             EXPECT_TRUE(root().partfields()[0].get_customer() == root().customers()[1]);
             EXPECT_EQ(man.get_free_uid("CTR", false), 3);
             QStringList tags;
             for (XmlElement const& child : read_xml(out + "/TASKDATA.XML").children)
                 tags << child.tag;
             EXPECT_EQ(tags, QStringList({"CTR", "PFD", "CTR"}));
             EXPECT_EQ(QDir(out).entryList(QDir::Files),
                       QStringList({"GUIDLIST.XML", "LINKLIST.XML", "TASKDATA.XML"}));
         }},
        {"empty link and GUID lists",
         {{"TASKDATA.XML", minimal_root + "/>"}, {"LINKLIST.XML", "\n"}, {"GUIDLIST.XML", ""}},
         {},
         [&] {
             EXPECT_TRUE(read_file(out + "/LINKLIST.XML").isEmpty());
             EXPECT_TRUE(read_file(out + "/GUIDLIST.XML").isEmpty());
             EXPECT_TRUE(read_xml(out + "/TASKDATA.XML").all("AFE").isEmpty());
         }},
        {"GUID list content",
         {{"GUIDLIST.XML", "<GUIDLIST>opaque</GUIDLIST>\n"}},
         {},
         [&] { EXPECT_EQ(read_file(out + "/GUIDLIST.XML"), "<GUIDLIST>opaque</GUIDLIST>\n"); }},
        {"links that name nothing known",
         {{"TASKDATA.XML", minimal_root + "><CTR A=\"CTR1\" B=\"c\"/></ISO11783_TaskData>"},
          {"LINKLIST.XML",
           "<ISO11783LinkList VersionMajor=\"4\" VersionMinor=\"3\" "
           "ManagementSoftwareManufacturer=\"m\" ManagementSoftwareVersion=\"1\" "
           "DataTransferOrigin=\"1\"><LGP A=\"LGP1\" B=\"1\"><LNK A=\"CTR1\" "
           "B=\"{a1a2a3a4-b1b2-c1c2-d1d2-d3d4d5d6d7d8}\" C=\"named\"/><LNK A=\"TSK9\" "
           "B=\"{11111111-2222-3333-4444-555555555555}\"/></LGP><LGP A=\"LGP2\" B=\"2\" "
           "D=\"ns\"><LNK A=\"CTR1\" B=\"customer-42\"/></LGP></ISO11783LinkList>"}},
         {"LINKLIST.XML"},
         [this] {
             EXPECT_EQ(root().customers()[0].get_guid(),
                       QUuid("{a1a2a3a4-b1b2-c1c2-d1d2-d3d4d5d6d7d8}"));
         }},
    };
    for (Case const& c : cases) {
        SCOPED_TRACE(c.what);
        for (auto const& [name, content] : c.files)
            write_file(in + '/' + name, content);
        QString error;
        ASSERT_TRUE(load(in, &error)) << error.toStdString();
        save(out);
        for (QString const& name : c.unchanged)
            EXPECT_EQ(changes(in, out, name), QString()) << name.toStdString();
        c.check();
    }
}

TEST_F(SetFiles, BrokenSetsAreRefusedWithAReasonAndLeaveAnEmptyTree) {
    QByteArray behind_points =
        minimal_root + ">\n<PFD A=\"PFD1\" C=\"f\" D=\"1\"><PLN A=\"1\"><LSG A=\"1\">\n";
    for (int i = 0; i < 1000; ++i)
        behind_points += "<PNT A=\"2\" C=\"1\" D=\"2\"/>\n";
    behind_points += "</LSG></PLN>\n<PFD></ISO11783_TaskData>\n"; // line 1004
    QByteArray const external = "<ISO11783_TaskData><XFR A=\"CTR00001\" B=\"1\"/>"
                                "</ISO11783_TaskData>";
    struct Case {
        char const* what;
        QByteArray taskdata;
        Files others;
        char const* reason;
    };
    QList<Case> const cases = {
        {"unclosed element", "<ISO11783_TaskData><CTR A=\"CTR1\">", {}, "TASKDATA.XML:1:"},
        {"foreign root", "<TaskData/>", {}, "not an ISO 11783"},
        {"no root", "<?xml version=\"1.0\"?>", {}, "TASKDATA.XML"},
        // The reader names the true line of an error behind a long run of points.
        {"error behind points", behind_points, {}, "TASKDATA.XML:1004:"},
        {"missing external file",
         "<ISO11783_TaskData><XFR A=\"CTR00002\" B=\"1\"/>",
         {},
         "CTR00002"},
        {"path as external file",
         "<ISO11783_TaskData><XFR A=\"/etc/passwd\" B=\"1\"/></ISO11783_TaskData>",
         {},
         "invalid external file name"},
        {"external file with a wrong root",
         external,
         {{"CTR00001.XML", "<ISO11783_TaskData/>"}},
         "not an ISO 11783 XFC"},
        // Found by fuzzing: it was kept, and the saved set named a file that
        // the save had not written.
        {"external file naming another",
         external,
         {{"CTR00001.XML", "<XFC><XFR A=\"CTR00001\" B=\"1\"/></XFC>"}},
         "CTR00001.XML:1:30: an external file holds an XFR"},
        {"deep nesting",
         "<ISO11783_TaskData>" + QByteArray("<X>").repeated(200) +
             QByteArray("</X>").repeated(200) + "</ISO11783_TaskData>",
         {},
         "nested too deeply"},
        // The GUID list is kept as it is, so it must be well-formed to be kept.
        {"malformed GUID list",
         minimal_root + "/>",
         {{"GUIDLIST.XML", "<GUIDLIST>\n<G a\x7f=\"1\"/>"}},
         "GUIDLIST.XML:2:11: attribute name \"a\x7f\" of <G> is not an XML name"},
    };
    for (Case const& bad : cases) {
        SCOPED_TRACE(bad.what);
        QString const input = dir(bad.what);
        write_file(input + "/TASKDATA.XML", bad.taskdata);
        for (auto const& [name, content] : bad.others)
            write_file(input + '/' + name, content);
        QString error;
        EXPECT_FALSE(load(input, &error));
        EXPECT_TRUE(error.contains(bad.reason)) << error.toStdString();
        EXPECT_EQ(root().customers().count(), 0);
    }
}

TEST_F(SetFiles, IdentitiesTravelThroughTheLinkList) {
    QUuid const group_uuid("{50b3c385-bee4-4042-9206-330b02040194}");
    QUuid const line_uuid = QUuid::createUuid();
    Product_group group = root().create_product_groups(true);
    group.id().set(man.get_free_uid("PGP", false), true);
    group.designator().set("Liquid Chemicals", true);
    group.set_guid(group_uuid);
    Product nameless = root().create_products(true);
    nameless.id().set(man.get_free_uid("PDT", false), true);
    nameless.set_guid(QUuid()); // a null identity is no identity
    Partfield field = root().create_partfields(true);
    field.id().set(1, true);
    Linestring line = field.create_polygon(true).create_linestring(true);
    line.set_uuid(line_uuid);
    line.create_new_point();
    field.create_polygon(true).create_linestring(true);

    QString const first = dir("first");
    save(first);
    XmlElement const links = read_xml(first + "/LINKLIST.XML");
    ASSERT_EQ(links.all("LGP").size(), 1);
    EXPECT_EQ(links.all("LGP")[0].attribute("B"), "1");
    QList<XmlElement> const written_links = links.all("LNK");
    ASSERT_EQ(written_links.size(), 2);
    EXPECT_EQ(written_links[0].attribute("A"), "PGP1");
    EXPECT_EQ(QUuid(written_links[0].attribute("B")), group_uuid);
    EXPECT_EQ(written_links[1].attribute("A"), "LSG1");
    XmlElement const taskdata = read_xml(first + "/TASKDATA.XML");
    EXPECT_EQ(taskdata.all("LSG")[0].attribute("F"), "LSG1");
    EXPECT_FALSE(taskdata.all("LSG")[1].has_attribute("F"));
    ASSERT_EQ(taskdata.all("AFE").size(), 1);
    EXPECT_EQ(taskdata.all("AFE")[0].attribute("A"), "LINKLIST.XML");
    EXPECT_EQ(taskdata.all("AFE")[0].attribute("D"), "1");

    // Loaded again, the identities are back; a changed or removed one shows.
    ASSERT_TRUE(load(first));
    EXPECT_EQ(root().product_groups()[0].get_guid(), group_uuid);
    Partfield const loaded_field = root().partfields()[0];
    EXPECT_EQ(loaded_field.get_polygon(0).get_linestring(0).get_uuid(), line_uuid);
    EXPECT_TRUE(loaded_field.get_polygon(1).get_linestring(0).get_uuid().isNull());
    QUuid const replacement = QUuid::createUuid();
    root().product_groups()[0].set_guid(replacement);
    Polygon first_polygon = loaded_field.get_polygon(0);
    first_polygon.remove_linestring(first_polygon.get_linestring(0));
    save(first);
    QList<XmlElement> const relinked = read_xml(first + "/LINKLIST.XML").all("LNK");
    ASSERT_EQ(relinked.size(), 1);
    EXPECT_EQ(QUuid(relinked[0].attribute("B")), replacement);
    EXPECT_EQ(read_xml(first + "/TASKDATA.XML").all("AFE").size(), 1);
}

TEST_F(SetFiles, TextThatXmlCannotHoldIsReplacedAndMarkupEscaped) {
    QString const hostile = QString("<Field & \"Co\"> '1'\t") + QChar(0x01) + QChar(0x1F) +
                            QChar(0xD800) + "end" + QChar(0xFFFF);
    QString const replaced = QString("<Field & \"Co\"> '1'\t") +
                             QString(3, QChar::ReplacementCharacter) + "end" +
                             QChar(QChar::ReplacementCharacter);
    Customer customer = root().create_customers(true);
    customer.id().set(1, true);
    customer.designator().set(hostile, true);
    Partfield field = root().create_partfields(true);
    field.id().set(1, true);
    // Plain points around ones whose text needs escaping or is not ASCII.
    Linestring line = field.create_polygon(true).create_linestring(true);
    for (QString const& designator : {QString("A"), hostile, QString("Süd"), QString("B")}) {
        unsigned int const index = line.create_new_point();
        line.set_designator(index, designator);
        line.set_north(index, 52.5 + index);
    }
    save(dir("out"));

    XmlElement const written = read_xml(dir("out/TASKDATA.XML"));
    EXPECT_EQ(written.all("CTR")[0].attribute("B"), replaced);
    QStringList points;
    for (XmlElement const& point : written.all("PNT"))
        points << point.attribute("A") + ' ' + point.attribute("B") + ' ' + point.attribute("C");
    EXPECT_EQ(points,
              QStringList({"2 A 52.5", "2 " + replaced + " 53.5", "2 Süd 54.5", "2 B 55.5"}));
    // Every point on a line of its own, indented alike.
    QStringList indents;
    for (QString const& text : QString::fromUtf8(read_file(dir("out/TASKDATA.XML"))).split('\n'))
        if (text.contains("<PNT"))
            indents << text.left(text.indexOf("<PNT"));
    EXPECT_EQ(indents, QVector<QString>(4, QString(4, '\t')).toList());
}

TEST_F(SetFiles, AFailedSaveLeavesTheFormerFilesInPlace) {
    Customer customer = root().create_customers(true);
    customer.id().set(1, true);
    QString const output = dir("out");
    write_file(output + "/TASKDATA.XML", "former");
    // A name that XML cannot hold is not written.
    set_proprietary(customer, "a b", QVariant(1));
    QString error;
    EXPECT_FALSE(save(output, &error));
    EXPECT_TRUE(error.endsWith("attribute name \"P231_a b\" of <CTR> is not an XML name"))
        << error.toStdString();
    EXPECT_EQ(read_file(output + "/TASKDATA.XML"), "former");
    customer.attribute("P231_a b").set_flag_included(false);

    // LINKLIST.XML cannot be replaced: a directory stands in its place.
    make_dirs(output + "/LINKLIST.XML");
    EXPECT_FALSE(save(output, &error));
    EXPECT_TRUE(error.contains("LINKLIST.XML")) << error.toStdString();
    EXPECT_EQ(read_file(output + "/TASKDATA.XML"), "former");
    EXPECT_EQ(QDir(output).entryList(QDir::Files | QDir::Hidden), QStringList({"TASKDATA.XML"}));

    // The output directory taken away between load and save.
    QDir(output).removeRecursively();
    write_file(output, "now a file");
    XML_interface xml(output + "/TASKDATA.XML", true, false, false, false);
    EXPECT_FALSE(man.save_xml(xml));
    EXPECT_EQ(read_file(output), "now a file");
}
