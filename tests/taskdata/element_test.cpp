// The element interface as the importers use it: creating, numbering,
// linking and finding elements, attribute views, line-string points, and how
// all of it reaches the written TASKDATA.XML.
#include "taskdata/element_man.h"
#include "taskdata/proprietary.h"
#include "test_support/test_support.h"

#include <gtest/gtest.h>

using namespace TC::Task_data;
using namespace TC::Task_data::Elements::Client;
using namespace test_support;
using Pairs = QList<QPair<QString, QString>>;

namespace {

class Elements : public ::testing::Test {
protected:
    Elements() { man.create(); }
    Task_data root() const { return man.get_client_root(); }

    // Saves into a scratch directory and reads TASKDATA.XML back.
    XmlElement saved() {
        XML_interface xml(scratch.file("TASKDATA.XML"), true, false, false, false);
        EXPECT_TRUE(man.save_xml(xml)) << xml.error().toStdString();
        return read_xml(scratch.file("TASKDATA.XML"));
    }

    ScratchDir scratch;
    Element_man man;
};

template <class Handle> int number(Handle const& element) {
    int value = -999;
    element.id().get(value);
    return value;
}

} // namespace

TEST_F(Elements, LoadedElementsAreListedAndNumberedAroundNewOnes) {
    write_file(scratch.file("in/TASKDATA.XML"),
               "<ISO11783_TaskData VersionMajor=\"4\"><CTR A=\"CTR1\" B=\"a\"/><CTR A=\"CTR-1\" "
               "B=\"b\"/><CTR A=\"CTR3\" B=\"c\"/><PGP A=\"PGP1\" B=\"loaded\"/><PFD A=\"PFD1\" "
               "C=\"f\" D=\"0\"><PLN A=\"300\" C=\"x\"/></PFD></ISO11783_TaskData>");
    XML_interface xml(scratch.file("in/TASKDATA.XML"), true, false, false, false);
    ASSERT_TRUE(man.load_xml(xml)) << xml.error().toStdString();
    for (int expected : {2, 4}) {
        Customer customer = root().create_customers(true);
        customer.id().set(man.get_free_uid("CTR", false), true);
        EXPECT_EQ(number(customer), expected);
    }
    EXPECT_EQ(man.get_free_uid("FRM", false), 1); // other tags count on their own

    // A list holds the loaded elements, then the created ones, also those
    // created after the list was taken.
    auto groups = root().product_groups();
    EXPECT_EQ(groups.count(), 1);
    Product_group made = root().create_product_groups(true);
    made.id().set(2, true);
    made.designator().set("made", true);
    EXPECT_TRUE(groups[1] == made);
    EXPECT_FALSE(groups[2].valid());
    QStringList names;
    for (Product_group group : groups) {
        QString name;
        group.designator().get(name);
        names << name;
    }
    EXPECT_EQ(names, QStringList({"loaded", "made"}));
    EXPECT_EQ(root().products().count(), 0);

    // Text that is no number of the range is not read.
    Polygon const polygon = root().partfields()[0].get_polygon(0);
    unsigned char type = 0;
    unsigned int area = 0;
    EXPECT_FALSE(polygon.type().get(type));
    EXPECT_FALSE(polygon.area().get(area));

    QStringList ids;
    for (XmlElement const& customer : saved().all("CTR"))
        ids << customer.attribute("A");
    EXPECT_EQ(ids, QStringList({"CTR1", "CTR-1", "CTR3", "CTR2", "CTR4"}));
}

TEST_F(Elements, BuiltElementsReachTheWrittenSet) {
    Partfield field = root().create_partfields(true);
    field.id().set(1, true);
    field.add("unset", "P231_");
    // An excluded attribute, a set one, and one set and then excluded.
    Point low = field.create_point(true);
    low.icon_id().set_flag_included(false);
    low.type().set(1, true);
    field.create_point(true).icon_id().set(5, true);
    Point hidden = field.create_point(true);
    hidden.icon_id().set(4, true);
    hidden.icon_id().set_flag_included(false);

    Base_station station = root().create_base_stations(true);
    station.id().set(1, true);
    GuidanceGroup group = field.create_guidance_paths(true);
    group.id().set(1, true);
    Guidance_pattern linked = group.create_patterns(true);
    linked.id().set(1, true);
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
    EXPECT_EQ(line.get_num_points(), 2u);

    // A polyline becomes a closed ring of absolute points.
    Polyline ring(QPointF(7.0, 52.0));
    ring.append(QPointF(0, 0));
    ring.append(QPointF(0.001, 0));
    ring.append(QPointF(0.001, 0.002));
    ring.close();
    ring.close(); // closing twice adds nothing more
    ASSERT_EQ(ring.size(), 4);
    field.create_polygon(true).create_linestring(true).add_points(ring, false, false);

    // Presets, increments, spacing and correction reach the set through the
    // product and guidance imports, whose suites check them.
    Product product = root().create_products(true);
    product.id().set(1, true);
    set_product_preset(product, 2, 5.0); // only presets 0 and 1 exist
    set_product_rate_type(product, 3);
    EXPECT_EQ(get_product_rate_type(product), 0);
    set_product_rate_type(product, 1);
    EXPECT_EQ(get_product_rate_type(product), 1);
    EXPECT_EQ(get_product_profile(product), QString());
    set_product_profile(product, "Spring <wheat>");
    EXPECT_EQ(get_product_profile(product), "Spring <wheat>");

    XmlElement const written = saved();
    // Required attributes that nothing set get neutral values.
    EXPECT_EQ(written.attribute("VersionMajor"), "4");
    EXPECT_EQ(written.attribute("VersionMinor"), "3");
    EXPECT_TRUE(written.has_attribute("ManagementSoftwareManufacturer"));
    EXPECT_EQ(written.attribute("DataTransferOrigin"), "1");
    XmlElement const pfd = written.all("PFD")[0];
    EXPECT_EQ(pfd.attribute("D"), "0");
    EXPECT_TRUE(pfd.has_attribute("C"));
    EXPECT_FALSE(pfd.has_attribute("P231_unset"));
    XmlElement const bsn = written.all("BSN")[0];
    EXPECT_TRUE(bsn.has_attribute("B"));
    EXPECT_EQ(bsn.attribute("E"), "0");
    QStringList icons;
    for (XmlElement const& child : pfd.children)
        if (child.tag == "PNT")
            icons << child.attribute("P231_iconId");
    EXPECT_EQ(icons, QStringList({"", "5", ""}));

    QList<XmlElement> const patterns = written.all("GPN");
    ASSERT_EQ(patterns.size(), 2);
    EXPECT_EQ(patterns[0].attribute("L"), "BSN1");
    EXPECT_EQ(patterns[0].attribute("P231_Spur_ä"), "2");
    EXPECT_FALSE(patterns[1].has_attribute("L"));
    QList<XmlElement> const lines = written.all("LSG");
    ASSERT_EQ(lines.size(), 4);
    EXPECT_EQ(lines[0].attribute("A"), "5");
    EXPECT_EQ(lines[0].children.value(0).attribute("C"), "0");
    EXPECT_EQ(lines[1].attribute("A"), "1");
    EXPECT_TRUE(lines[1].children.isEmpty());
    QList<XmlElement> points = lines[2].all("PNT");
    ASSERT_EQ(points.size(), 2);
    EXPECT_EQ(points[0].attributes, (Pairs{{"A", "6"}, {"B", "A"}, {"C", "52.5"}, {"D", "-7.5"}}));
    EXPECT_EQ(points[1].attribute("C"), "0");
    EXPECT_EQ(points[1].attribute("D"), "179.999999999");
    points = lines[3].all("PNT");
    ASSERT_EQ(points.size(), 4);
    EXPECT_EQ(points[2].attribute("C"), "52.002");
    EXPECT_EQ(points[2].attribute("D"), "7.001");
    EXPECT_EQ(points[3].attributes, points[0].attributes);
    EXPECT_EQ(points[0].attribute("A"), "2");
    EXPECT_EQ(
        written.all("PDT")[0].attributes,
        (Pairs{
            {"A", "PDT1"}, {"B", ""}, {"P231_rateType", "1"}, {"P231_profile", "Spring <wheat>"}}));
}
