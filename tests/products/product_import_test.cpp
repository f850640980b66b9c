// Products from the directories below Products, as the tool writes them: the
// type table, the two product groups, density and rates, identities, and
// files that are missing or useless.
#include "product_tree.h"

using namespace test_support;

namespace {

QUuid const fixed_identity("{903c0cf8-9478-4b5a-85b3-5438c71e7696}");
QUuid const liquid_identity("{50b3c385-bee4-4042-9206-330b02040194}");
QUuid const granular_identity("{c8a398d3-97e3-43c5-94e6-4e038e1ef21b}");

QUuid identity_of(int n) {
    return QUuid(QStringLiteral("{00000000-0000-0000-0000-%1}").arg(n, 12, 10, QLatin1Char('0')));
}

class ProductImport : public ProductTree {
protected:
    using ProductTree::add_product;
    void add_product(QString const& name, int type, int identity) const {
        add_product(name, QStringLiteral("[Default]\nType=%1\nUID=%2\n")
                              .arg(type)
                              .arg(identity_of(identity).toString())
                              .toUtf8());
    }
};

} // namespace

TEST_F(ProductImport, TypeDecidesDdiGroupAndIdentity) {
    struct Expected {
        char const* name;
        int type;
        char const* ddi; // empty: none written
        char const* group;
        QUuid identity;
    };
    QList<Expected> const products = {
        {"Mass", 0, "004B", "", identity_of(0)},
        {"Volume", 1, "0048", "", identity_of(1)},
        {"Carrier", 2, "0048", "", fixed_identity},
        {"Granular A", 3, "004B", "Granular Chemicals", identity_of(3)},
        {"Granular B", 3, "004B", "Granular Chemicals", identity_of(4)},
        {"Liquid", 4, "0048", "Liquid Chemicals", identity_of(5)},
        {"Seven", 7, "", "", identity_of(6)},
        {"Negative", -1, "", "", identity_of(7)},
    };
    for (int n = 0; n < products.size(); ++n)
        add_product(products[n].name, products[n].type, n);
    ToolRun const result = run();
    EXPECT_TRUE(result.err.isEmpty()) << result.err.constData();

    QHash<QString, QUuid> const ids = identities();
    QHash<QString, QString> group_names;
    for (XmlElement const& group : saved().all("PGP"))
        group_names.insert(group.attribute("A"), group.attribute("B"));
    EXPECT_EQ(group_names.size(), 2);
    for (Expected const& expected : products) {
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
    EXPECT_EQ(ids.value(product("Granular A").attribute("C")), granular_identity);
    EXPECT_EQ(ids.value(product("Liquid").attribute("C")), liquid_identity);
}

TEST_F(ProductImport, DensityIsKeptInMilligramsPerLitreAndRatesInSixDigits) {
    // kg per litre in the file, mg per litre in the set.
    QList<QPair<char const*, char const*>> const densities = {
        {"1.2", "1200000"}, {"0.0000001", "0"},     {"-3", "0"},
        {"nan", "0"},       {"5000", "4294967295"}, {"heavy", "0"}};
    for (auto const& density : densities)
        add_product(density.first, QByteArray("[Default]\nDensity=") + density.first + "\n");
    add_product("Rates", "[Default]\nRatePreset1=1234.5678\nRatePreset2=1000000\nRateInc=0.5\n");
    run();

    for (auto const& density : densities)
        EXPECT_EQ(product(density.first).attribute("H"), density.second) << density.first;
    XmlElement const rates = product("Rates");
    EXPECT_EQ(rates.attribute("P231_preset0"), "1234.57");
    EXPECT_EQ(rates.attribute("P231_preset1"), "1e+06");
    EXPECT_EQ(rates.attribute("P231_incDec"), "0.5");
}

TEST_F(ProductImport, UselessFilesGiveDefaultsAndAMissingOneASkip) {
    // Keys outside "Default" are not read; the others cannot be read at all.
    add_product("General section", "Type=3\nDensity=2\nRateInc=1\n");
    add_product("Empty", "");
    add_product("Garbage", QByteArray("\x00\xff\xfe[[==\n]Type=3\n", 16));
    make_dirs(data("Products/Directory/Directory.ini/"));
    write("Products/Seed/Other.ini", "[Default]\nType=1\n");
    write("Products/not a directory.ini", "[Default]\nType=1\n");
    ToolRun const result = run({"-p"});
    EXPECT_EQ(result.err, "W: skipping empty product directory \"Seed\"\n");
    EXPECT_TRUE(result.out.endsWith("P: 80%\n\n")); // five counted, four done
    EXPECT_TRUE(products_named("Seed").isEmpty());

    EXPECT_TRUE(identities().isEmpty());
    for (char const* name : {"General section", "Empty", "Garbage", "Directory"}) {
        XmlElement const written = product(name);
        QStringList actual;
        for (char const* attribute : {"E", "H", "C", "P231_preset0", "P231_preset1", "P231_incDec"})
            actual << written.attribute(attribute);
        EXPECT_EQ(actual, QStringList({"004B", "0", "", "0", "0", "0"})) << name;
    }
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
    ASSERT_EQ(groups.size(), 3);
    QStringList names;
    for (XmlElement const& group : groups)
        names << group.attribute("B");
    EXPECT_EQ(names, QStringList({"Liquid Chemicals", "Granular Chemicals", "Granular Chemicals"}));
    QHash<QString, QUuid> const ids = identities();
    EXPECT_EQ(ids.value("PGP1"), liquid_identity);
    EXPECT_EQ(ids.value(groups[2].attribute("A")), granular_identity);

    // -m does not reach the products: each run added its own.
    QList<XmlElement> const herbicides = products_named("Herbicide");
    QList<XmlElement> const pellets = products_named("Pellets");
    ASSERT_EQ(herbicides.size(), 2);
    ASSERT_EQ(pellets.size(), 2);
    for (int run = 0; run < 2; ++run) {
        EXPECT_EQ(herbicides[run].attribute("C"), "PGP1");
        EXPECT_EQ(ids.value(herbicides[run].attribute("A")), identity_of(1));
        EXPECT_EQ(pellets[run].attribute("C"), groups[2].attribute("A"));
    }
}
