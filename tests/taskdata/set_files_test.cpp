// Task data sets on disk: what the store reads, what it writes back, the
// identities in LINKLIST.XML, sets split into external files, text that XML
// cannot hold, and saves that fail.
#include "taskdata/element_man.h"
#include "taskdata/proprietary.h"
#include "test_support/test_support.h"

#include <QDir>
#include <QFileInfo>

#include <gtest/gtest.h>

using namespace TC::Task_data;
using namespace TC::Task_data::Elements::Client;
using namespace test_support;

namespace {

class SetFiles : public ::testing::Test {
protected:
    SetFiles() { man.create(); }

    bool load(QString const& dir, QString* error = nullptr) {
        XML_interface xml(dir + QStringLiteral("/TASKDATA.XML"), true, false, false, false);
        bool const ok = man.load_xml(xml);
        if (error)
            *error = xml.error();
        return ok;
    }

    bool save(QString const& dir, QString* error = nullptr) {
        XML_interface xml(dir + QStringLiteral("/TASKDATA.XML"), true, false, false, false);
        bool const ok = man.save_xml(xml);
        if (error)
            *error = xml.error();
        else
            EXPECT_TRUE(ok) << xml.error().toStdString();
        return ok;
    }

    Task_data root() const { return man.get_client_root(); }
    QString dir(QString const& name) const { return scratch.file(name); }

    ScratchDir scratch;
    Element_man man;
};

QByteArray const minimal_root = "<ISO11783_TaskData VersionMajor=\"4\" VersionMinor=\"3\" "
                                "ManagementSoftwareManufacturer=\"m\" "
                                "ManagementSoftwareVersion=\"1\" DataTransferOrigin=\"1\"";

} // namespace

TEST_F(SetFiles, SamplesOfOtherSoftwareComeBackUnchanged) {
    REQUIRE_SHARED_DIR();
    QDir const samples(shared_dir() + QStringLiteral("/isoxml/samples"));
    for (QString const& name : samples.entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
        SCOPED_TRACE(name.toStdString());
        QString const input = samples.filePath(name);
        QString const output = dir(name);
        make_dirs(output);
        ASSERT_TRUE(load(input));
        save(output);
        EXPECT_EQ(difference(read_xml(input + QStringLiteral("/TASKDATA.XML")),
                             read_xml(output + QStringLiteral("/TASKDATA.XML"))),
                  QString());
        if (file_exists(input + QStringLiteral("/LINKLIST.XML"))) {
            EXPECT_EQ(difference(read_xml(input + QStringLiteral("/LINKLIST.XML")),
                                 read_xml(output + QStringLiteral("/LINKLIST.XML"))),
                      QString());
        }
        // Attached and binary files travel with the set.
        for (QString const& file : QDir(input).entryList(QDir::Files)) {
            if (file.endsWith(QLatin1String(".XML")))
                continue;
            EXPECT_EQ(read_file(output + QLatin1Char('/') + file),
                      read_file(input + QLatin1Char('/') + file))
                << file.toStdString();
        }
    }
}

TEST_F(SetFiles, UntouchedTextIsWrittenBackExactly) {
    write_file(dir(QStringLiteral("in/TASKDATA.XML")),
               minimal_root + " P123_x=\"a&amp;b\">\n<PFD A=\"PFD-3\" C=\"f\" D=\"12\" "
                              "Z=\"unknown\"><PLN A=\"1\"><LSG A=\"1\"><PNT A=\"2\" "
                              "C=\"48.12345678901234\" D=\"+15.10\" E=\"7\" P9_ü=\"1\"/>"
                              "<P9_X q=\"1\"/>"
                              "<PNT A=\"2\" C=\"1\" D=\"2\"><P9_Y/></PNT></LSG></PLN>"
                              "<P9_Z>text</P9_Z></PFD></ISO11783_TaskData>");
    ASSERT_TRUE(load(dir(QStringLiteral("in"))));
    make_dirs(dir(QStringLiteral("out")));
    save(dir(QStringLiteral("out")));
    XmlElement const written = read_xml(dir(QStringLiteral("out/TASKDATA.XML")));
    EXPECT_EQ(difference(read_xml(dir(QStringLiteral("in/TASKDATA.XML"))), written), QString());
    XmlElement const point = written.all(QStringLiteral("PNT"))[0];
    EXPECT_EQ(point.attribute(QStringLiteral("C")), QStringLiteral("48.12345678901234"));
    EXPECT_EQ(point.attribute(QStringLiteral("D")), QStringLiteral("+15.10"));
}

// Long line strings are read past the XML reader where their points are
// plain; every other form around them must come back as it was, also where
// the file is read in several pieces.
TEST_F(SetFiles, PointsOfEveryFormComeBackInOrderAcrossLongFiles) {
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
    text += "</LSG></PLN><LSG A=\"2\"/>\n<PNT A=\"1\" C=\"5\" D=\"6\"/>"
            "<PNT A=\"1\" C=\"7\" D=\"8\"/>\n</PFD></ISO11783_TaskData>\n";
    write_file(dir(QStringLiteral("in/TASKDATA.XML")), text);
    QString error;
    ASSERT_TRUE(load(dir(QStringLiteral("in")), &error)) << error.toStdString();
    // Flag points after a line string stay points of the field.
    EXPECT_EQ(root().partfields()[0].num_point(), 2u);
    EXPECT_EQ(man.get_free_uid(QStringLiteral("PNT"), false), 2);

    make_dirs(dir(QStringLiteral("out")));
    save(dir(QStringLiteral("out")));
    EXPECT_EQ(difference(read_xml(dir(QStringLiteral("in/TASKDATA.XML"))),
                         read_xml(dir(QStringLiteral("out/TASKDATA.XML")))),
              QString());
}

// The reader names the true line of an error behind a long run of points.
TEST_F(SetFiles, ErrorsBehindPointsNameTheirLine) {
    QByteArray text =
        minimal_root + ">\n<PFD A=\"PFD1\" C=\"f\" D=\"1\"><PLN A=\"1\"><LSG A=\"1\">\n";
    for (int i = 0; i < 1000; ++i)
        text += "<PNT A=\"2\" C=\"1\" D=\"2\"/>\n";
    text += "</LSG></PLN>\n<PFD></ISO11783_TaskData>\n"; // line 1004
    write_file(dir(QStringLiteral("in/TASKDATA.XML")), text);
    QString error;
    EXPECT_FALSE(load(dir(QStringLiteral("in")), &error));
    EXPECT_TRUE(error.contains(QLatin1String("TASKDATA.XML:1004:"))) << error.toStdString();
}

TEST_F(SetFiles, ExternalFilesAreReadInPlaceAndWrittenAsOneFile) {
    QString const input = dir(QStringLiteral("in"));
    write_file(input + QStringLiteral("/TASKDATA.XML"),
               minimal_root + "><CTR A=\"CTR1\" B=\"first\"/><XFR A=\"PFD00000\" B=\"1\"/>"
                              "<XFR A=\"CTR00001\" B=\"1\"/></ISO11783_TaskData>");
    write_file(input + QStringLiteral("/PFD00000.XML"),
               "<XFC><PFD A=\"PFD1\" C=\"field\" D=\"1\" E=\"CTR2\"/></XFC>");
    write_file(input + QStringLiteral("/CTR00001.xml"),
               "<XFC><CTR A=\"CTR2\" B=\"second\"/></XFC>");
    ASSERT_TRUE(load(input));
    EXPECT_EQ(root().customers().count(), 2);
    EXPECT_TRUE(root().partfields()[0].get_customer() == root().customers()[1]);
    EXPECT_EQ(man.get_free_uid(QStringLiteral("CTR"), false), 3);

    QString const output = dir(QStringLiteral("out"));
    make_dirs(output);
    save(output);
    XmlElement const written = read_xml(output + QStringLiteral("/TASKDATA.XML"));
    QStringList tags;
    for (XmlElement const& child : written.children)
        tags << child.tag;
    EXPECT_EQ(tags, QStringList({"CTR", "PFD", "CTR"}));
    EXPECT_EQ(QDir(output).entryList(QDir::Files),
              QStringList({"GUIDLIST.XML", "LINKLIST.XML", "TASKDATA.XML"}));
}

TEST_F(SetFiles, BrokenSetsAreRefusedWithAReasonAndLeaveAnEmptyTree) {
    struct Case {
        char const* what;
        QByteArray taskdata;
        QByteArray external; // written as CTR00001.XML when not empty
        char const* reason;
    };
    QList<Case> const cases = {
        {"unclosed element", "<ISO11783_TaskData><CTR A=\"CTR1\">", "", "TASKDATA.XML:1:"},
        {"foreign root", "<TaskData/>", "", "not an ISO 11783"},
        {"no root", "<?xml version=\"1.0\"?>", "", "TASKDATA.XML"},
        {"missing external file", "<ISO11783_TaskData><XFR A=\"CTR00002\" B=\"1\"/>", "",
         "CTR00002"},
        {"path as external file",
         "<ISO11783_TaskData><XFR A=\"/etc/passwd\" B=\"1\"/>"
         "</ISO11783_TaskData>",
         "", "invalid external file name"},
        {"external file with a wrong root",
         "<ISO11783_TaskData><XFR A=\"CTR00001\" B=\"1\"/></ISO11783_TaskData>",
         "<ISO11783_TaskData/>", "not an ISO 11783 XFC"},
        // Found by fuzzing: it was kept, and the saved set named a file that
        // the save had not written.
        {"external file naming another",
         "<ISO11783_TaskData><XFR A=\"CTR00001\" B=\"1\"/></ISO11783_TaskData>",
         "<XFC><XFR A=\"CTR00001\" B=\"1\"/></XFC>",
         "CTR00001.XML:1:30: an external file holds an XFR"},
        {"deep nesting",
         "<ISO11783_TaskData>" + QByteArray("<X>").repeated(200) +
             QByteArray("</X>").repeated(200) + "</ISO11783_TaskData>",
         "", "nested too deeply"},
    };
    for (Case const& bad : cases) {
        SCOPED_TRACE(bad.what);
        QString const input = dir(QString::fromLatin1(bad.what));
        write_file(input + QStringLiteral("/TASKDATA.XML"), bad.taskdata);
        if (!bad.external.isEmpty())
            write_file(input + QStringLiteral("/CTR00001.XML"), bad.external);
        QString error;
        EXPECT_FALSE(load(input, &error));
        EXPECT_TRUE(error.contains(QLatin1String(bad.reason))) << error.toStdString();
        EXPECT_EQ(root().customers().count(), 0);
    }
}

TEST_F(SetFiles, EmptyLinkAndGuidListsAreAcceptedAndGuidListContentIsKept) {
    QString const input = dir(QStringLiteral("in"));
    write_file(input + QStringLiteral("/TASKDATA.XML"), minimal_root + "/>");
    write_file(input + QStringLiteral("/LINKLIST.XML"), "\n");
    write_file(input + QStringLiteral("/GUIDLIST.XML"), "");
    ASSERT_TRUE(load(input));
    QString const output = dir(QStringLiteral("out"));
    make_dirs(output);
    save(output);
    EXPECT_TRUE(read_file(output + QStringLiteral("/LINKLIST.XML")).isEmpty());
    EXPECT_TRUE(read_file(output + QStringLiteral("/GUIDLIST.XML")).isEmpty());
    EXPECT_TRUE(read_xml(output + QStringLiteral("/TASKDATA.XML")).all("AFE").isEmpty());

    write_file(input + QStringLiteral("/GUIDLIST.XML"), "<GUIDLIST>opaque</GUIDLIST>\n");
    ASSERT_TRUE(load(input));
    save(output);
    EXPECT_EQ(read_file(output + QStringLiteral("/GUIDLIST.XML")), "<GUIDLIST>opaque</GUIDLIST>\n");

    // Kept as it is, so it must be well-formed to be kept at all.
    write_file(input + QStringLiteral("/GUIDLIST.XML"), "<GUIDLIST>\n<G a\x7f=\"1\"/>");
    QString error;
    EXPECT_FALSE(load(input, &error));
    EXPECT_TRUE(error.endsWith(QLatin1String("GUIDLIST.XML:2:11: attribute name \"a\x7f\" of <G> "
                                             "is not an XML name")))
        << error.toStdString();
}

TEST_F(SetFiles, IdentitiesTravelThroughTheLinkList) {
    QUuid const group_uuid(QStringLiteral("{50b3c385-bee4-4042-9206-330b02040194}"));
    QUuid const line_uuid = QUuid::createUuid();
    Product_group group = root().create_product_groups(true);
    group.id().set(man.get_free_uid(QStringLiteral("PGP"), false), true);
    group.designator().set(QStringLiteral("Liquid Chemicals"), true);
    group.set_guid(group_uuid);
    Product nameless = root().create_products(true);
    nameless.id().set(man.get_free_uid(QStringLiteral("PDT"), false), true);
    nameless.set_guid(QUuid()); // a null identity is no identity
    Partfield field = root().create_partfields(true);
    field.id().set(1, true);
    Linestring line = field.create_polygon(true).create_linestring(true);
    line.set_uuid(line_uuid);
    line.create_new_point();
    Linestring const plain = field.create_polygon(true).create_linestring(true);

    QString const first = dir(QStringLiteral("first"));
    make_dirs(first);
    save(first);
    XmlElement const links = read_xml(first + QStringLiteral("/LINKLIST.XML"));
    ASSERT_EQ(links.all(QStringLiteral("LGP")).size(), 1);
    EXPECT_EQ(links.all(QStringLiteral("LGP"))[0].attribute(QStringLiteral("B")),
              QStringLiteral("1"));
    QList<XmlElement> const written_links = links.all(QStringLiteral("LNK"));
    ASSERT_EQ(written_links.size(), 2);
    EXPECT_EQ(written_links[0].attribute(QStringLiteral("A")), QStringLiteral("PGP1"));
    EXPECT_EQ(QUuid(written_links[0].attribute(QStringLiteral("B"))), group_uuid);
    EXPECT_EQ(written_links[1].attribute(QStringLiteral("A")), QStringLiteral("LSG1"));
    XmlElement const taskdata = read_xml(first + QStringLiteral("/TASKDATA.XML"));
    EXPECT_EQ(taskdata.all(QStringLiteral("LSG"))[0].attribute(QStringLiteral("F")),
              QStringLiteral("LSG1"));
    EXPECT_FALSE(taskdata.all(QStringLiteral("LSG"))[1].has_attribute(QStringLiteral("F")));
    ASSERT_EQ(taskdata.all(QStringLiteral("AFE")).size(), 1);
    EXPECT_EQ(taskdata.all(QStringLiteral("AFE"))[0].attribute(QStringLiteral("A")),
              QStringLiteral("LINKLIST.XML"));
    EXPECT_EQ(taskdata.all(QStringLiteral("AFE"))[0].attribute(QStringLiteral("D")),
              QStringLiteral("1"));

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
    QList<XmlElement> const relinked = read_xml(first + QStringLiteral("/LINKLIST.XML")).all("LNK");
    ASSERT_EQ(relinked.size(), 1);
    EXPECT_EQ(QUuid(relinked[0].attribute(QStringLiteral("B"))), replacement);
    EXPECT_EQ(read_xml(first + QStringLiteral("/TASKDATA.XML")).all("AFE").size(), 1);
}

TEST_F(SetFiles, LinksThatNameNothingKnownAreKept) {
    QString const input = dir(QStringLiteral("in"));
    write_file(input + QStringLiteral("/TASKDATA.XML"),
               minimal_root + "><CTR A=\"CTR1\" B=\"c\"/></ISO11783_TaskData>");
    write_file(input + QStringLiteral("/LINKLIST.XML"),
               "<ISO11783LinkList VersionMajor=\"4\" VersionMinor=\"3\" "
               "ManagementSoftwareManufacturer=\"m\" ManagementSoftwareVersion=\"1\" "
               "DataTransferOrigin=\"1\"><LGP A=\"LGP1\" B=\"1\"><LNK A=\"CTR1\" "
               "B=\"{a1a2a3a4-b1b2-c1c2-d1d2-d3d4d5d6d7d8}\" C=\"named\"/><LNK A=\"TSK9\" "
               "B=\"{11111111-2222-3333-4444-555555555555}\"/></LGP><LGP A=\"LGP2\" B=\"2\" "
               "D=\"ns\"><LNK A=\"CTR1\" B=\"customer-42\"/></LGP></ISO11783LinkList>");
    ASSERT_TRUE(load(input));
    EXPECT_EQ(root().customers()[0].get_guid(),
              QUuid(QStringLiteral("{a1a2a3a4-b1b2-c1c2-d1d2-d3d4d5d6d7d8}")));
    QString const output = dir(QStringLiteral("out"));
    make_dirs(output);
    save(output);
    EXPECT_EQ(difference(read_xml(input + QStringLiteral("/LINKLIST.XML")),
                         read_xml(output + QStringLiteral("/LINKLIST.XML"))),
              QString());
}

TEST_F(SetFiles, TextThatXmlCannotHoldIsReplacedAndMarkupEscaped) {
    QString const hostile = QStringLiteral("<Field & \"Co\"> '1'\t") + QChar(0x01) + QChar(0x1F) +
                            QChar(0xD800) + QStringLiteral("end") + QChar(0xFFFF);
    Customer customer = root().create_customers(true);
    customer.id().set(1, true);
    customer.designator().set(hostile, true);
    Partfield field = root().create_partfields(true);
    field.id().set(1, true);
    // Plain points around ones whose text needs escaping or is not ASCII.
    Linestring line = field.create_polygon(true).create_linestring(true);
    QStringList const designators = {QStringLiteral("A"), hostile, QStringLiteral("Süd"),
                                     QStringLiteral("B")};
    for (QString const& designator : designators) {
        unsigned int const index = line.create_new_point();
        line.set_designator(index, designator);
        line.set_north(index, 52.5 + index);
    }

    QString const output = dir(QStringLiteral("out"));
    make_dirs(output);
    save(output);
    QString const expected = QStringLiteral("<Field & \"Co\"> '1'\t") +
                             QString(3, QChar(QChar::ReplacementCharacter)) +
                             QStringLiteral("end") + QChar(QChar::ReplacementCharacter);
    XmlElement const written = read_xml(output + QStringLiteral("/TASKDATA.XML"));
    EXPECT_EQ(written.all(QStringLiteral("CTR"))[0].attribute(QStringLiteral("B")), expected);
    QList<XmlElement> const points = written.all(QStringLiteral("PNT"));
    ASSERT_EQ(points.size(), 4);
    QStringList const expected_designators = {QStringLiteral("A"), expected, QStringLiteral("Süd"),
                                              QStringLiteral("B")};
    for (int i = 0; i < points.size(); ++i) {
        EXPECT_EQ(points[i].attribute(QStringLiteral("B")), expected_designators[i]);
        EXPECT_EQ(points[i].attribute(QStringLiteral("C")), QString::number(52.5 + i));
        EXPECT_EQ(points[i].attribute(QStringLiteral("A")), QStringLiteral("2"));
    }
    // Every point on a line of its own, indented alike.
    QStringList indents;
    for (QString const& text_line :
         QString::fromUtf8(read_file(output + "/TASKDATA.XML")).split('\n'))
        if (text_line.contains(QLatin1String("<PNT")))
            indents << text_line.left(text_line.indexOf(QLatin1String("<PNT")));
    QString const depth_four(4, QLatin1Char('\t'));
    EXPECT_EQ(indents, QStringList({depth_four, depth_four, depth_four, depth_four}));
}

TEST_F(SetFiles, AFailedSaveLeavesTheFormerFilesInPlace) {
    Customer customer = root().create_customers(true);
    customer.id().set(1, true);
    QString const output = dir(QStringLiteral("out"));
    make_dirs(output);
    write_file(output + QStringLiteral("/TASKDATA.XML"), "former");
    // A name that XML cannot hold is not written.
    set_proprietary(customer, QStringLiteral("a b"), QVariant(1));
    QString error;
    EXPECT_FALSE(save(output, &error));
    EXPECT_TRUE(
        error.endsWith(QLatin1String("attribute name \"P231_a b\" of <CTR> is not an XML name")))
        << error.toStdString();
    EXPECT_EQ(read_file(output + QStringLiteral("/TASKDATA.XML")), "former");
    customer.attribute("P231_a b").set_flag_included(false);

    // LINKLIST.XML cannot be replaced: a directory stands in its place.
    make_dirs(output + QStringLiteral("/LINKLIST.XML"));
    EXPECT_FALSE(save(output, &error));
    EXPECT_TRUE(error.contains(QLatin1String("LINKLIST.XML"))) << error.toStdString();
    EXPECT_EQ(read_file(output + QStringLiteral("/TASKDATA.XML")), "former");
    EXPECT_EQ(QDir(output).entryList(QDir::Files | QDir::Hidden), QStringList({"TASKDATA.XML"}));

    // OUTPUT taken away between load and save.
    QDir(output).removeRecursively();
    write_file(output, "now a file");
    EXPECT_FALSE(save(output, &error));
    EXPECT_EQ(read_file(output), "now a file");
}
