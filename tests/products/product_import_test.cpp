// Products and mixtures from the directories below Products and
// ProductMixtures, as the tool writes them: the type table, the two product
// groups, density and rates, identities, ingredients found by identity among
// the products and earlier mixtures, and each kind of bad entry with its
// warning.
#include "../taskdata/xml_summary.h"
#include "test_support/test_support.h"

using namespace test_support;

namespace {

QUuid const fixed("{903c0cf8-9478-4b5a-85b3-5438c71e7696}");
QUuid const liquid("{50b3c385-bee4-4042-9206-330b02040194}");
QUuid const granular("{c8a398d3-97e3-43c5-94e6-4e038e1ef21b}");

QString uid(int n) {
    return QString("{00000000-0000-0000-0000-%1}").arg(n, 12, 10, QLatin1Char('0'));
}

QString const alpha = uid(101), beta = uid(102), unknown = uid(104), early = uid(201),
              late = uid(202), tank = uid(205);

QString typed(int type, int identity) {
    return QString("[Default]\nType=%1\nUID=%2\n").arg(type).arg(uid(identity));
}

class ProductImport : public DisplayTree {
protected:
    // A saved product or mixture as "type quantity | DDI group density |
    // presets and increment", "-" for what is not written.
    QString written(XmlElement product) const {
        for (auto& attribute : product.attributes)
            if (attribute.first == "C") // the group by its name
                attribute.second = saved("PGP", "A", attribute.second).value(0).attribute("B");
        return summary({product}, {"F", "G"})[0] + " | " + summary({product}, {"E", "C", "H"})[0] +
               " | " + summary({product}, {"P231_preset0", "P231_preset1", "P231_incDec"})[0];
    }

    // The ingredients of a saved mixture as "<designator> <quantity>, ...".
    QString ingredients(XmlElement const& mixture) const {
        QStringList found;
        for (XmlElement const& relation : mixture.all("PRN"))
            found << saved("PDT", "A", relation.attribute("A")).value(0).attribute("B") + " " +
                         relation.attribute("B");
        return found.join(", ");
    }
};

} // namespace

TEST_F(ProductImport, ProductsAndMixturesOfOneTree) {
    struct Row {
        QString name;
        QString ini;
        QString written;
        QUuid identity = {};
        char const* ingredients = "";
    };
    QString const plain = "- - | 004B - 0 | 0 0 0"; // what a file without keys gives
    QList<Row> const products = {
        // The type decides DDI, group and identity.
        {"Mass", typed(0, 0), plain, uid(0)},
        {"Volume", typed(1, 1), "- - | 0048 - 0 | 0 0 0", uid(1)},
        {"Carrier", typed(2, 2), "- - | 0048 - 0 | 0 0 0", fixed},
        {"Granular A", typed(3, 3), "- - | 004B Granular Chemicals 0 | 0 0 0", uid(3)},
        {"Granular B", typed(3, 4), "- - | 004B Granular Chemicals 0 | 0 0 0", uid(4)},
        {"Liquid", typed(4, 5), "- - | 0048 Liquid Chemicals 0 | 0 0 0", uid(5)},
        {"Seven", typed(7, 6), "- - | - - 0 | 0 0 0", uid(6)},
        {"Negative", typed(-1, 7), "- - | - - 0 | 0 0 0", uid(7)},
        // Density in kg per litre in the file, mg per litre in the set.
        {"1.2", "[Default]\nDensity=1.2\n", "- - | 004B - 1200000 | 0 0 0"},
        {"0.0000001", "[Default]\nDensity=0.0000001\n", plain},
        {"-3", "[Default]\nDensity=-3\n", plain},
        {"nan", "[Default]\nDensity=nan\n", plain},
        {"5000", "[Default]\nDensity=5000\n", "- - | 004B - 4294967295 | 0 0 0"},
        {"heavy", "[Default]\nDensity=heavy\n", plain},
        {"Rates", "[Default]\nRatePreset1=1234.5678\nRatePreset2=1000000\nRateInc=0.5\n",
         "- - | 004B - 0 | 1234.57 1e+06 0.5"},
        // Keys outside "Default" are not read; the others cannot be read at all.
        {"General section", "Type=3\nDensity=2\nRateInc=1\n", plain},
        {"Empty", "", plain},
        {"Garbage", QString::fromLatin1("\x00\xff\xfe[[==\n]Type=3\n", 16), plain},
        {"Directory", QString(), plain}, // a directory where the .ini belongs
        // Ingredients; both carriers get the fixed identity, the file's is dropped.
        {"Alpha", "[Default]\nType=0\nUID=" + alpha, plain, alpha},
        {"Beta", "[Default]\nType=4\nUID=" + beta, "- - | 0048 Liquid Chemicals 0 | 0 0 0", beta},
        {"Carrier 1", "[Default]\nType=2\nUID=" + unknown, "- - | 0048 - 0 | 0 0 0", fixed},
        {"Carrier 2", "[Default]\nType=2\n", "- - | 0048 - 0 | 0 0 0", fixed},
    };
    QList<Row> const mixtures = {
        // A malformed or negative rate is 0; thousandths beyond the signed
        // range keep their bits.
        {"Tank Mix",
         "UID=" + tank + "\nProductRates=" + alpha + ":2.5, " + beta + ":0.0005, a:b:c, " +
             fixed.toString() + ":abc, a, :5, nonsense:1, " + unknown + ":1, " + beta + ":-1, " +
             alpha + ":3000000\nRatePreset1=200\nRatePreset2=250\nRateInc=12.5\n",
         "2 0 | - - - | 200 250 12.5", tank,
         "Alpha 2500, Beta 0, Carrier 0, Beta 0, Alpha -1294967296"},
        // Earlier mixtures are ingredients, later ones and itself are not.
        {"Early", "UID=" + early + "\nProductRates=" + alpha + ":1, " + late + ":2\n",
         "2 0 | - - - | 0 0 0", early, "Alpha 1000"},
        {"Late", "UID=" + late + "\nProductRates=" + early + ":3, " + late + ":4\n",
         "2 0 | - - - | 0 0 0", late, "Early 3000"},
        // Keys are read outside any section; the fixed identity finds the
        // first carrier.
        {"Single", "ProductRates=" + fixed.toString() + ":7\n", "2 0 | - - - | 0 0 0", QUuid(),
         "Carrier 7000"},
        {"Sectioned", "[Default]\nUID=" + unknown + "\nProductRates=" + alpha + ":1\n",
         "2 0 | - - - | 0 0 0"},
    };
    for (Row const& row : products)
        if (!row.ini.isNull())
            write(QString("Products/%1/%1.ini").arg(row.name), row.ini.toUtf8());
    for (Row const& row : mixtures)
        write(QString("ProductMixtures/%1/%1.ini").arg(row.name), row.ini.toUtf8());
    write("Products/Seed/Other.ini", "[Default]\nType=1\n");
    write("Products/not a directory.ini", "[Default]\nType=1\n");
    make_dirs(data("ProductMixtures/Forgotten"));
    make_dirs(data("Products/Directory/Directory.ini"));
    // A loaded group of the liquid identity under another name, a namesake of
    // the granular group with another identity, and a product that -m does
    // not reach: products are always new.
    load("<PGP A='PGP1' B='Sprays'/><PGP A='PGP2' B='Granular Chemicals'/>"
         "<PDT A='PDT1' B='Herbicide' C='PGP1'/>");
    QString const other = "{11111111-2222-3333-4444-555555555555}";
    write("taskdata/LINKLIST.XML", "<ISO11783LinkList VersionMajor='4' VersionMinor='3'>"
                                   "<LGP A='LGP1' B='1'><LNK A='PGP1' B='" +
                                       liquid.toString().toUtf8() + "'/><LNK A='PGP2' B='" +
                                       other.toUtf8() + "'/><LNK A='PDT1' B='" + uid(1).toUtf8() +
                                       "'/></LGP></ISO11783LinkList>");
    write("Products/Herbicide/Herbicide.ini", typed(4, 1).toUtf8());
    ToolRun const result = run({"-m", "-p"});

    EXPECT_EQ(QString::fromUtf8(result.err),
              QString("W: skipping empty product directory \"Seed\"\n"
                      "W: could not find referenced product \"%1\" in mixture \"Early\"\n"
                      "W: skipping empty product mixture directory \"Forgotten\"\n"
                      "W: could not find referenced product \"%1\" in mixture \"Late\"\n"
                      "W: bad product/rate pair in %2W: bad product/rate pair in %2"
                      "W: bad product uuid in %2W: bad product uuid in %2"
                      "W: could not find referenced product \"%3\" in mixture \"Tank Mix\"\n")
                  .arg(late, "\"data/ProductMixtures/Tank Mix/Tank Mix.ini\"\n", unknown));
    // 31 products and mixtures counted, two never done.
    EXPECT_TRUE(result.out.endsWith("P: 93%\n\n")) << result.out.constData();

    QHash<QString, QUuid> const ids = identities();
    // Elements as "<attribute> <identity>".
    auto with_ids = [&ids](QList<XmlElement> const& elements, QString const& name) {
        QStringList lines;
        for (XmlElement const& element : elements)
            lines << element.attribute(name) + ' ' + ids.value(element.attribute("A")).toString();
        return lines;
    };
    for (Row const& row : products + mixtures) {
        SCOPED_TRACE(row.name.toStdString());
        QList<XmlElement> const found = saved("PDT", "B", row.name);
        ASSERT_EQ(found.size(), 1);
        EXPECT_EQ(written(found[0]), row.written);
        EXPECT_EQ(ids.value(found[0].attribute("A")), row.identity);
        EXPECT_EQ(ingredients(found[0]), row.ingredients);
    }
    EXPECT_EQ(saved().all("PDT").size(), products.size() + mixtures.size() + 2);
    EXPECT_EQ(with_ids(saved("PDT", "B", "Herbicide"), "C"),
              QStringList({"PGP1 " + uid(1), "PGP1 " + uid(1)}));

    // Groups are found again by identity, one per chemical type, and only
    // those are linked.
    EXPECT_EQ(with_ids(saved().all("PGP"), "B"),
              QStringList({"Liquid Chemicals " + liquid.toString(), "Granular Chemicals " + other,
                           "Granular Chemicals " + granular.toString()}));
    EXPECT_FALSE(summary(saved().all("PDT"), {"C"}).contains("PGP2"));
    // All identities in one link group, named by the set; no null one.
    EXPECT_FALSE(ids.values().contains(QUuid()));
    EXPECT_EQ(summary(read_xml(scratch.file("out/LINKLIST.XML")).all("LGP"), {"B"}),
              QStringList({"1"}));
    EXPECT_EQ(summary(saved().all("AFE"), {"A", "D"}), QStringList({"LINKLIST.XML 1"}));
}
