// Mixtures from the directories below ProductMixtures, as the tool writes
// them: ingredients found by identity among the products and earlier
// mixtures, the rate conversion, and each kind of bad entry with its warning.
#include "product_tree.h"

using namespace test_support;

namespace {

QString const alpha = QStringLiteral("{aaaaaaaa-0000-0000-0000-000000000001}");
QString const beta = QStringLiteral("{bbbbbbbb-0000-0000-0000-000000000002}");
QString const fixed = QStringLiteral("{903c0cf8-9478-4b5a-85b3-5438c71e7696}");
QString const unknown = QStringLiteral("{dddddddd-0000-0000-0000-000000000004}");

class MixtureImport : public ProductTree {
protected:
    MixtureImport() {
        add_product("Alpha", "[Default]\nType=0\nUID=" + alpha);
        add_product("Beta", "[Default]\nType=4\nUID=" + beta);
        // Both carriers get the fixed identity; the file's is dropped.
        add_product("Carrier 1", "[Default]\nType=2\nUID=" + unknown);
        add_product("Carrier 2", "[Default]\nType=2\n");
    }

    void add_product(QString const& name, QString const& ini) const {
        ProductTree::add_product(name, ini.toUtf8());
    }
    void add_mixture(QString const& name, QString const& ini) const {
        ProductTree::add_mixture(name, ini.toUtf8());
    }

    // The ingredients of a saved mixture as "<designator> <quantity>".
    QStringList ingredients(QString const& mixture) const {
        QHash<QString, QString> names;
        for (XmlElement const& product : saved().all("PDT"))
            names.insert(product.attribute("A"), product.attribute("B"));
        QStringList found;
        for (XmlElement const& relation : product(mixture).all(QStringLiteral("PRN")))
            found << names.value(relation.attribute("A")) + " " + relation.attribute("B");
        return found;
    }
};

} // namespace

TEST_F(MixtureImport, GoodEntriesBecomeRelationsAndBadOnesWarn) {
    add_mixture("Tank Mix", "UID={eeeeeeee-0000-0000-0000-000000000005}\nProductRates=" + alpha +
                                ":2.5, " + beta + ":0.0005, a:b:c, " + fixed +
                                ":abc, a, :5, nonsense:1, " + unknown + ":1, " + beta + ":-1, " +
                                alpha +
                                ":3000000\nRatePreset1=200\nRatePreset2=250\nRateInc=12.5\n");
    ToolRun const result = run();
    QByteArray const path = "\"data/ProductMixtures/Tank Mix/Tank Mix.ini\"\n";
    EXPECT_EQ(result.err, "W: bad product/rate pair in " + path + "W: bad product/rate pair in " +
                              path + "W: bad product uuid in " + path + "W: bad product uuid in " +
                              path + "W: could not find referenced product \"" + unknown.toUtf8() +
                              "\" in mixture \"Tank Mix\"\n");

    // A malformed or negative rate is 0; thousandths beyond the signed range
    // keep their bits.
    EXPECT_EQ(ingredients("Tank Mix"),
              QStringList({"Alpha 2500", "Beta 0", "Carrier 1 0", "Beta 0", "Alpha -1294967296"}));
    XmlElement const mixture = product("Tank Mix");
    QStringList attributes;
    for (char const* name :
         {"F", "G", "C", "E", "H", "P231_preset0", "P231_preset1", "P231_incDec"})
        attributes << (mixture.has_attribute(name) ? mixture.attribute(name) : "-");
    EXPECT_EQ(attributes, QStringList({"2", "0", "-", "-", "-", "200", "250", "12.5"}));
    EXPECT_EQ(identities().value(mixture.attribute("A")),
              QUuid("{eeeeeeee-0000-0000-0000-000000000005}"));
}

TEST_F(MixtureImport, EarlierMixturesAreIngredientsButLaterOnesAndItselfAreNot) {
    QString const early = QStringLiteral("{11111111-0000-0000-0000-000000000001}");
    QString const late = QStringLiteral("{22222222-0000-0000-0000-000000000002}");
    add_mixture("Early", "UID=" + early + "\nProductRates=" + alpha + ":1, " + late + ":2\n");
    add_mixture("Late", "UID=" + late + "\nProductRates=" + early + ":3, " + late + ":4\n");
    ToolRun const result = run();
    EXPECT_EQ(QString::fromUtf8(result.err),
              "W: could not find referenced product \"" + late + "\" in mixture \"Early\"\n" +
                  "W: could not find referenced product \"" + late + "\" in mixture \"Late\"\n");
    EXPECT_EQ(ingredients("Early"), QStringList({"Alpha 1000"}));
    EXPECT_EQ(ingredients("Late"), QStringList({"Early 3000"}));
}

TEST_F(MixtureImport, KeysAreReadOutsideAnySectionAndTheIniIsRequired) {
    add_mixture("Single", "ProductRates=" + fixed + ":7\n");
    add_mixture("Sectioned", "[Default]\nUID=" + unknown + "\nProductRates=" + alpha + ":1\n");
    make_dirs(data("ProductMixtures/Forgotten"));
    ToolRun const result = run({"-p"});
    EXPECT_EQ(result.err, "W: skipping empty product mixture directory \"Forgotten\"\n");
    // Four products and three mixtures counted, one mixture never done.
    EXPECT_TRUE(result.out.endsWith("P: 85%\n\n")) << result.out.constData();

    EXPECT_TRUE(products_named("Forgotten").isEmpty());
    EXPECT_EQ(ingredients("Single"), QStringList({"Carrier 1 7000"})); // the first carrier
    EXPECT_TRUE(ingredients("Sectioned").isEmpty());
    EXPECT_FALSE(identities().contains(product("Sectioned").attribute("A")));
}
