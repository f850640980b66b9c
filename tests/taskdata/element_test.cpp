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

namespace {

class Elements : public ::testing::Test {
protected:
    Elements() { man.create(); }

    Task_data root() const { return man.get_client_root(); }

    // Saves into a scratch directory and reads TASKDATA.XML back.
    XmlElement saved() {
        XML_interface xml(scratch.file(QStringLiteral("TASKDATA.XML")), true, false, false, false);
        EXPECT_TRUE(man.save_xml(xml)) << xml.error().toStdString();
        return read_xml(scratch.file(QStringLiteral("TASKDATA.XML")));
    }

    // Loads a TASKDATA.XML given as text.
    void load(QByteArray const& text) {
        write_file(scratch.file(QStringLiteral("in/TASKDATA.XML")), text);
        XML_interface xml(scratch.file(QStringLiteral("in/TASKDATA.XML")), true, false, false,
                          false);
        ASSERT_TRUE(man.load_xml(xml)) << xml.error().toStdString();
    }

    template <class Handle> static int number(Handle const& element) {
        int value = -999;
        element.id().get(value);
        return value;
    }

    ScratchDir scratch;
    Element_man man;
};

Customer new_customer(Task_data root, QString const& name) {
    Customer customer = root.create_customers(true);
    customer.id().set(customer.get_element_man().get_free_uid(QStringLiteral("CTR"), false), true);
    customer.designator().set(name, true);
    return customer;
}

} // namespace

TEST_F(Elements, NewElementsGetFreeNumbersAndTheirTagInTheWrittenId) {
    load("<ISO11783_TaskData VersionMajor=\"4\"><CTR A=\"CTR1\" B=\"a\"/><CTR A=\"CTR-1\" "
         "B=\"b\"/><CTR A=\"CTR3\" B=\"c\"/></ISO11783_TaskData>");
    Customer const second = new_customer(root(), QStringLiteral("d"));
    Customer const fourth = new_customer(root(), QStringLiteral("e"));
    EXPECT_EQ(number(second), 2);
    EXPECT_EQ(number(fourth), 4);
    // Other tags count on their own.
    EXPECT_EQ(man.get_free_uid(QStringLiteral("FRM"), false), 1);

    QList<XmlElement> const customers = saved().all(QStringLiteral("CTR"));
    QStringList ids;
    for (XmlElement const& customer : customers)
        ids << customer.attribute(QStringLiteral("A"));
    EXPECT_EQ(ids, QStringList({"CTR1", "CTR-1", "CTR3", "CTR2", "CTR4"}));
}

TEST_F(Elements, ListsHoldLoadedThenCreatedElementsAndSeeLaterOnes) {
    load("<ISO11783_TaskData VersionMajor=\"4\"><PGP A=\"PGP1\" B=\"loaded\"/><CTR A=\"CTR1\" "
         "B=\"x\"/></ISO11783_TaskData>");
    auto groups = root().product_groups();
    EXPECT_EQ(groups.count(), 1);
    Product_group const made = root().create_product_groups(true);
    made.designator().set(QStringLiteral("made"), true);
    EXPECT_EQ(groups.count(), 2);
    EXPECT_TRUE(groups[1] == made);

    QStringList names;
    for (Product_group group : groups) {
        QString name;
        group.designator().get(name);
        names << name;
    }
    EXPECT_EQ(names, QStringList({"loaded", "made"}));
    EXPECT_EQ(root().customers().count(), 1);
    EXPECT_EQ(root().products().count(), 0);
    EXPECT_FALSE(groups[2].valid());
}

TEST_F(Elements, TextThatIsNoNumberOfTheRangeIsNotRead) {
    load("<ISO11783_TaskData VersionMajor=\"4\"><PFD A=\"PFD1\" C=\"f\" D=\"0\"><PLN A=\"300\" "
         "C=\"x\"/></PFD></ISO11783_TaskData>");
    Polygon const polygon = root().partfields()[0].get_polygon(0);
    ASSERT_TRUE(polygon.valid());
    unsigned char type = 0;
    EXPECT_FALSE(polygon.type().get(type));
    unsigned int area = 0;
    EXPECT_FALSE(polygon.area().get(area));
}

TEST_F(Elements, ExcludedAndUnsetAttributesAreNotWritten) {
    Partfield field = root().create_partfields(true);
    field.id().set(man.get_free_uid(QStringLiteral("PFD"), false), true);
    Point low = field.create_point(true);
    low.icon_id().set_flag_included(false);
    low.type().set(1, true);
    Point high = field.create_point(true);
    high.icon_id().set(5, true);
    Point hidden = field.create_point(true);
    hidden.icon_id().set(4, true);
    hidden.icon_id().set_flag_included(false);
    field.add(QStringLiteral("unset"), QStringLiteral("P231_"));

    XmlElement const written = saved();
    QList<XmlElement> const points = written.all(QStringLiteral("PNT"));
    ASSERT_EQ(points.size(), 3);
    EXPECT_FALSE(points[0].has_attribute(QStringLiteral("P231_iconId")));
    EXPECT_EQ(points[1].attribute(QStringLiteral("P231_iconId")), QStringLiteral("5"));
    EXPECT_FALSE(points[2].has_attribute(QStringLiteral("P231_iconId")));
    EXPECT_FALSE(written.all(QStringLiteral("PFD"))[0].has_attribute(QStringLiteral("P231_unset")));
}

TEST_F(Elements, ALinkToAnInvalidElementDropsTheReference) {
    Base_station station = root().create_base_stations(true);
    station.id().set(1, true);
    Guidance_pattern pattern =
        root().create_partfields(true).create_guidance_paths(true).create_patterns(true);
    pattern.base_station().set(station);
    EXPECT_EQ(saved().all(QStringLiteral("GPN"))[0].attribute(QStringLiteral("L")),
              QStringLiteral("BSN1"));
    pattern.base_station().set(Base_station());
    EXPECT_FALSE(saved().all(QStringLiteral("GPN"))[0].has_attribute(QStringLiteral("L")));
}

TEST_F(Elements, RequiredAttributesThatNothingSetGetNeutralValues) {
    Partfield field = root().create_partfields(true);
    field.id().set(1, true);
    Base_station station = root().create_base_stations(true);
    station.id().set(1, true);
    GuidanceGroup group = field.create_guidance_paths(true);
    group.id().set(1, true);
    Guidance_pattern pattern = group.create_patterns(true);
    pattern.id().set(1, true);
    pattern.create_linestring(true).create_new_point();
    field.create_polygon(true).create_linestring(true);

    XmlElement const written = saved();
    EXPECT_EQ(written.attribute(QStringLiteral("VersionMajor")), QStringLiteral("4"));
    EXPECT_EQ(written.attribute(QStringLiteral("VersionMinor")), QStringLiteral("3"));
    EXPECT_TRUE(written.has_attribute(QStringLiteral("ManagementSoftwareManufacturer")));
    EXPECT_EQ(written.attribute(QStringLiteral("DataTransferOrigin")), QStringLiteral("1"));
    XmlElement const pfd = written.all(QStringLiteral("PFD"))[0];
    EXPECT_EQ(pfd.attribute(QStringLiteral("D")), QStringLiteral("0"));
    EXPECT_TRUE(pfd.has_attribute(QStringLiteral("C")));
    XmlElement const bsn = written.all(QStringLiteral("BSN"))[0];
    EXPECT_TRUE(bsn.has_attribute(QStringLiteral("B")));
    EXPECT_EQ(bsn.attribute(QStringLiteral("E")), QStringLiteral("0"));
    QList<XmlElement> const lines = written.all(QStringLiteral("LSG"));
    ASSERT_EQ(lines.size(), 2);
    EXPECT_EQ(lines[0].attribute(QStringLiteral("A")), QStringLiteral("5"));
    EXPECT_EQ(lines[1].attribute(QStringLiteral("A")), QStringLiteral("1"));
    // The line string without points stands empty.
    EXPECT_TRUE(lines[1].children.isEmpty());
    XmlElement const point = lines[0].children.value(0);
    EXPECT_EQ(point.attribute(QStringLiteral("C")), QStringLiteral("0"));
}

TEST_F(Elements, LineStringPointsAreAddressedByIndex) {
    Partfield field = root().create_partfields(true);
    field.id().set(1, true);
    Linestring line = field.create_polygon(true).create_linestring(true);
    EXPECT_EQ(line.create_new_point(), 0u);
    EXPECT_EQ(line.create_new_point(), 1u);
    line.set_type(0, 6);
    line.set_north(0, 52.1234567891234);
    line.set_east(0, -7.5);
    line.set_designator(0, QStringLiteral("A"));
    line.set_type(1, 7);
    line.set_north(1, -0.0000000001);
    line.set_east(1, 179.999999999);
    line.set_north(0, 52.5); // a second value replaces the first
    line.set_east(5, 1.0);   // no such point: nothing happens
    EXPECT_EQ(line.get_num_points(), 2u);

    QList<XmlElement> const points = saved().all(QStringLiteral("PNT"));
    ASSERT_EQ(points.size(), 2);
    EXPECT_EQ(points[0].attributes, (QList<QPair<QString, QString>>{
                                        {"A", "6"}, {"B", "A"}, {"C", "52.5"}, {"D", "-7.5"}}));
    EXPECT_EQ(points[1].attribute(QStringLiteral("C")), QStringLiteral("0"));
    EXPECT_EQ(points[1].attribute(QStringLiteral("D")), QStringLiteral("179.999999999"));
}

TEST_F(Elements, PolylinesBecomeClosedRingsOfAbsolutePoints) {
    Polyline ring(QPointF(7.0, 52.0));
    ring.append(QPointF(0, 0));
    ring.append(QPointF(0.001, 0));
    ring.append(QPointF(0.001, 0.002));
    ring.close();
    ring.close(); // closing twice adds nothing more
    ASSERT_EQ(ring.size(), 4);

    Partfield field = root().create_partfields(true);
    field.id().set(1, true);
    Linestring line = field.create_polygon(true).create_linestring(true);
    line.add_points(ring, false, false);
    QList<XmlElement> const points = saved().all(QStringLiteral("PNT"));
    ASSERT_EQ(points.size(), 4);
    EXPECT_EQ(points[2].attribute(QStringLiteral("C")), QStringLiteral("52.002"));
    EXPECT_EQ(points[2].attribute(QStringLiteral("D")), QStringLiteral("7.001"));
    EXPECT_EQ(points[3].attributes, points[0].attributes);
    EXPECT_EQ(points[0].attribute(QStringLiteral("A")), QStringLiteral("2"));
}

// Presets, increments, spacing and correction reach the set through the
// product and guidance imports, whose suites check them.
TEST_F(Elements, ProprietaryAttributesAreFoundOrAddedOnce) {
    Product product = root().create_products(true);
    product.id().set(1, true);
    set_product_preset(product, 2, 5.0); // only presets 0 and 1 exist
    EXPECT_EQ(get_product_rate_type(product), 0);
    set_product_rate_type(product, 3);
    EXPECT_EQ(get_product_rate_type(product), 0);
    set_product_rate_type(product, 1);
    EXPECT_EQ(get_product_rate_type(product), 1);
    EXPECT_EQ(get_product_profile(product), QString());
    set_product_profile(product, QStringLiteral("Spring <wheat>"));
    EXPECT_EQ(get_product_profile(product), QStringLiteral("Spring <wheat>"));
    Guidance_pattern pattern =
        root().create_partfields(true).create_guidance_paths(true).create_patterns(true);
    set_proprietary(pattern, QStringLiteral("Spur_ä"), QVariant(1));
    set_proprietary(pattern, QStringLiteral("Spur_ä"), QVariant(2));

    XmlElement const written = saved();
    EXPECT_EQ(
        written.all(QStringLiteral("PDT"))[0].attributes,
        (QList<QPair<QString, QString>>{
            {"A", "PDT1"}, {"B", ""}, {"P231_rateType", "1"}, {"P231_profile", "Spring <wheat>"}}));
    EXPECT_EQ(written.all(QStringLiteral("GPN"))[0].attribute(QStringLiteral("P231_Spur_ä")),
              QStringLiteral("2"));
}
