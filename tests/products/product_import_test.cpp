// Products and mixtures from the directories below Products and
// ProductMixtures, as the tool writes them: the type table, the two product
// groups, density and rates, identities, ingredients found by identity among
// the products and earlier mixtures, and each kind of bad entry with its
// warning.
#include "test_support/test_support.h"

using namespace test_support;

namespace {

QUuid const fixed("{903c0cf8-9478-4b5a-85b3-5438c71e7696}");
QUuid const liquid("{50b3c385-bee4-4042-9206-330b02040194}");
QUuid const granular("{c8a398d3-97e3-43c5-94e6-4e038e1ef21b}");
QString const alpha = "{aaaaaaaa-0000-0000-0000-000000000001}";
QString const beta = "{bbbbbbbb-0000-0000-0000-000000000002}";
QString const unknown = "{dddddddd-0000-0000-0000-000000000004}";
QString const early = "{11111111-0000-0000-0000-000000000001}";
QString const late = "{22222222-0000-0000-0000-000000000002}";

QUuid identity_of(int n) {
    return QUuid(QString("{00000000-0000-0000-0000-%1}").arg(n, 12, 10, QLatin1Char('0')));
}

class ProductImport : public DisplayTree {
protected:
    void add_product(QString const& name, QString const& ini) const {
        write(QString("Products/%1/%1.ini").arg(name), ini.toUtf8());
    }
    void add_product(QString const& name, int type, int identity) const {
        add_product(name, QString("[Default]\nType=%1\nUID=%2\n")
                              .arg(type)
                              .arg(identity_of(identity).toString()));
    }
    void add_mixture(QString const& name, QString const& ini) const {
        write(QString("ProductMixtures/%1/%1.ini").arg(name), ini.toUtf8());
    }

    // The one saved product of that name (a failure if there is not one).
    XmlElement product(QString const& name) const {
        QList<XmlElement> const found = saved("PDT", "B", name);
        EXPECT_EQ(found.size(), 1) << "products named " << name.toStdString();
        return found.value(0);
    }

    // The ingredients of a saved mixture as "<designator> <quantity>".
    QStringList ingredients(QString const& mixture) const {
        QHash<QString, QString> names;
        for (XmlElement const& product : saved().all("PDT"))
            names.insert(product.attribute("A"), product.attribute("B"));
        QStringList found;
        for (XmlElement const& relation : product(mixture).all("PRN"))
            found << names.value(relation.attribute("A")) + " " + relation.attribute("B");
        return found;
    }
};

} // namespace

TEST_F(ProductImport, ProductsAndMixturesOfOneTree) {
    // The type decides DDI, group and identity.
    struct Expected {
        char const* name;
        int type;
        char const* ddi; // empty: none written
        char const* group;
        QUuid identity;
    };
    QList<Expected> const types = {
        {"Mass", 0, "004B", "", identity_of(0)},
        {"Volume", 1, "0048", "", identity_of(1)},
        {"Carrier", 2, "0048", "", fixed},
        {"Granular A", 3, "004B", "Granular Chemicals", identity_of(3)},
        {"Granular B", 3, "004B", "Granular Chemicals", identity_of(4)},
        {"Liquid", 4, "0048", "Liquid Chemicals", identity_of(5)},
        {"Seven", 7, "", "", identity_of(6)},
        {"Negative", -1, "", "", identity_of(7)},
    };
    for (int n = 0; n < types.size(); ++n)
        add_product(types[n].name, types[n].type, n);
    // Density in kg per litre in the file, mg per litre in the set.
    QList<QPair<char const*, char const*>> const densities = {
        {"1.2", "1200000"}, {"0.0000001", "0"},     {"-3", "0"},
        {"nan", "0"},       {"5000", "4294967295"}, {"heavy", "0"}};
    for (auto const& density : densities)
        add_product(density.first, QString("[Default]\nDensity=") + density.first + "\n");
    add_product("Rates", "[Default]\nRatePreset1=1234.5678\nRatePreset2=1000000\nRateInc=0.5\n");
    // Keys outside "Default" are not read; the others cannot be read at all.
    add_product("General section", "Type=3\nDensity=2\nRateInc=1\n");
    add_product("Empty", "");
    add_product("Garbage", QString::fromLatin1("\x00\xff\xfe[[==\n]Type=3\n", 16));
    make_dirs(data("Products/Directory/Directory.ini/"));
    write("Products/Seed/Other.ini", "[Default]\nType=1\n");
    write("Products/not a directory.ini", "[Default]\nType=1\n");

    // Ingredients of mixtures; both carriers get the fixed identity, the
    // file's is dropped.
    add_product("Alpha", "[Default]\nType=0\nUID=" + alpha);
    add_product("Beta", "[Default]\nType=4\nUID=" + beta);
    add_product("Carrier 1", "[Default]\nType=2\nUID=" + unknown);
    add_product("Carrier 2", "[Default]\nType=2\n");
    add_mixture("Tank Mix", "UID={eeeeeeee-0000-0000-0000-000000000005}\nProductRates=" + alpha +
                                ":2.5, " + beta + ":0.0005, a:b:c, " + fixed.toString() +
                                ":abc, a, :5, nonsense:1, " + unknown + ":1, " + beta + ":-1, " +
                                alpha +
                                ":3000000\nRatePreset1=200\nRatePreset2=250\nRateInc=12.5\n");
    // Earlier mixtures are ingredients, later ones and itself are not.
    add_mixture("Early", "UID=" + early + "\nProductRates=" + alpha + ":1, " + late + ":2\n");
    add_mixture("Late", "UID=" + late + "\nProductRates=" + early + ":3, " + late + ":4\n");
    // Keys are read outside any section, and the file is required.
    add_mixture("Single", "ProductRates=" + fixed.toString() + ":7\n");
    add_mixture("Sectioned", "[Default]\nUID=" + unknown + "\nProductRates=" + alpha + ":1\n");
    make_dirs(data("ProductMixtures/Forgotten"));
    ToolRun const result = run({"-p"});

    QString const tank = "\"data/ProductMixtures/Tank Mix/Tank Mix.ini\"\n";
    auto missing = [](QString const& uuid, QString const& mixture) {
        return "W: could not find referenced product \"" + uuid + "\" in mixture \"" + mixture +
               "\"\n";
    };
    EXPECT_EQ(QString::fromUtf8(result.err),
              "W: skipping empty product directory \"Seed\"\n" + missing(late, "Early") +
                  "W: skipping empty product mixture directory \"Forgotten\"\n" +
                  missing(late, "Late") + "W: bad product/rate pair in " + tank +
                  "W: bad product/rate pair in " + tank + "W: bad product uuid in " + tank +
                  "W: bad product uuid in " + tank + missing(unknown, "Tank Mix"));
    // 30 products and mixtures counted, two never done.
    EXPECT_TRUE(result.out.endsWith("P: 93%\n\n")) << result.out.constData();

    QHash<QString, QUuid> const ids = identities();
    QHash<QString, QString> group_names;
    for (XmlElement const& group : saved().all("PGP"))
        group_names.insert(group.attribute("A"), group.attribute("B"));
    EXPECT_EQ(group_names.size(), 2);
    for (Expected const& expected : types) {
        SCOPED_TRACE(expected.name);
        XmlElement const written = product(expected.name);
        EXPECT_EQ(written.attribute("E"), expected.ddi);
        EXPECT_EQ(written.has_attribute("E"), *expected.ddi != '\0');
        EXPECT_EQ(group_names.value(written.attribute("C")), expected.group);
        EXPECT_EQ(ids.value(written.attribute("A")), expected.identity);
        EXPECT_FALSE(written.has_attribute("F")); // the display's type is not the ISO one
    }
    // One group per chemical type, with its fixed identity.
    EXPECT_EQ(product("Granular A").attribute("C"), product("Granular B").attribute("C"));
    EXPECT_EQ(ids.value(product("Granular A").attribute("C")), granular);
    EXPECT_EQ(ids.value(product("Liquid").attribute("C")), liquid);

    for (auto const& density : densities)
        EXPECT_EQ(product(density.first).attribute("H"), density.second) << density.first;
    QStringList rates;
    for (char const* name : {"P231_preset0", "P231_preset1", "P231_incDec"})
        rates << product("Rates").attribute(name);
    EXPECT_EQ(rates, QStringList({"1234.57", "1e+06", "0.5"}));
    EXPECT_TRUE(saved("PDT", "B", "Seed").isEmpty());
    for (char const* name : {"General section", "Empty", "Garbage", "Directory"}) {
        XmlElement const written = product(name);
        QStringList actual;
        for (char const* attribute : {"E", "H", "C", "P231_preset0", "P231_preset1", "P231_incDec"})
            actual << written.attribute(attribute);
        EXPECT_EQ(actual, QStringList({"004B", "0", "", "0", "0", "0"})) << name;
        EXPECT_FALSE(ids.contains(written.attribute("A"))) << name;
    }

    // A malformed or negative rate is 0; thousandths beyond the signed range
    // keep their bits.
    EXPECT_EQ(ingredients("Tank Mix"),
              QStringList({"Alpha 2500", "Beta 0", "Carrier 0", "Beta 0", "Alpha -1294967296"}));
    XmlElement const mixture = product("Tank Mix");
    QStringList attributes;
    for (char const* name :
         {"F", "G", "C", "E", "H", "P231_preset0", "P231_preset1", "P231_incDec"})
        attributes << (mixture.has_attribute(name) ? mixture.attribute(name) : "-");
    EXPECT_EQ(attributes, QStringList({"2", "0", "-", "-", "-", "200", "250", "12.5"}));
    EXPECT_EQ(ids.value(mixture.attribute("A")), QUuid("{eeeeeeee-0000-0000-0000-000000000005}"));
    EXPECT_EQ(ingredients("Early"), QStringList({"Alpha 1000"}));
    EXPECT_EQ(ingredients("Late"), QStringList({"Early 3000"}));
    EXPECT_TRUE(saved("PDT", "B", "Forgotten").isEmpty());
    EXPECT_EQ(ingredients("Single"), QStringList({"Carrier 7000"})); // the first carrier
    EXPECT_TRUE(ingredients("Sectioned").isEmpty());
    EXPECT_FALSE(ids.contains(product("Sectioned").attribute("A")));
}

TEST_F(ProductImport, ProductsAreAlwaysNewButGroupsAreFoundAgainByIdentity) {
    // A loaded group of the liquid identity under another name, and a namesake
    // of the granular group with another identity.
    load("<PGP A=\"PGP1\" B=\"Sprays\"/><PGP A=\"PGP2\" B=\"Granular Chemicals\"/>");
    write("taskdata/LINKLIST.XML",
          "<ISO11783LinkList VersionMajor=\"4\" VersionMinor=\"3\"><LGP A=\"LGP1\" B=\"1\">"
          "<LNK A=\"PGP1\" B=\"50b3c385-bee4-4042-9206-330b02040194\"/>"
          "<LNK A=\"PGP2\" B=\"11111111-2222-3333-4444-555555555555\"/>"
          "</LGP></ISO11783LinkList>");
    add_product("Herbicide", 4, 1);
    add_product("Pellets", 3, 2);

    // The first run writes over the loaded set, the second reads it back.
    ASSERT_EQ(run_tool({"-O", "data/taskdata", "data"}, scratch.path()).exit_code, 0);
    run({"-m"});

    QList<XmlElement> const groups = saved().all("PGP");
    QStringList names;
    for (XmlElement const& group : groups)
        names << group.attribute("B");
    ASSERT_EQ(names, QStringList({"Liquid Chemicals", "Granular Chemicals", "Granular Chemicals"}));
    QHash<QString, QUuid> const ids = identities();
    EXPECT_EQ(ids.value("PGP1"), liquid);
    EXPECT_EQ(ids.value(groups[2].attribute("A")), granular);

    // -m does not reach the products: each run added its own.
    QList<XmlElement> const herbicides = saved("PDT", "B", "Herbicide");
    QList<XmlElement> const pellets = saved("PDT", "B", "Pellets");
    ASSERT_EQ(herbicides.size(), 2);
    ASSERT_EQ(pellets.size(), 2);
    for (int run = 0; run < 2; ++run) {
        EXPECT_EQ(herbicides[run].attribute("C"), "PGP1");
        EXPECT_EQ(ids.value(herbicides[run].attribute("A")), identity_of(1));
        EXPECT_EQ(pellets[run].attribute("C"), groups[2].attribute("A"));
    }
}
