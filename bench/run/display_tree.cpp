#include "display_tree.h"

#include <QDir>
#include <QFile>
#include <QSettings>
#include <QStringList>
#include <QUuid>

#include <shapefil.h>

#include <cmath>
#include <random>
#include <stdexcept>
#include <vector>

namespace display_tree {
namespace {

// What one field holds, the same at every scale.
int const farms_per_client = 10;
int const fields_per_farm = 10;
int const boundary_ring_vertices = 2000; // two rings: the outline and one hole
int const bdy_vertices = 1000;
int const zone_vertices = 400;
int const flags_per_field = 20;
int const ab_lines_per_field = 5;
int const ab_lines_with_tramlines = 2;
int const curves_per_field = 2;
int const curve_points = 3000;
int const lines_per_shapefile = 3;
int const points_per_line = 500;

int const clients_at_scale_1 = 20;
int const products_at_scale_1 = 500;
int const mixtures_at_scale_1 = 100;
int const ingredients_per_mixture = 4;

double const pi = 3.14159265358979323846;
double const metres_per_degree = 111320.0;

// Names as a display's users type them: blanks, umlauts, and characters that
// XML has to escape.
QStringList const name_parts = {
    QStringLiteral("Müller & Söhne"),   QStringLiteral("Hof <Nord>"),
    QStringLiteral("\"Große\" Breite"), QStringLiteral("Zur Aue 'Süd'"),
    QStringLiteral("Žabokreky"),        QStringLiteral("Ørsted Mark"),
    QStringLiteral("Le Près-Château"),  QStringLiteral("Smith's Acre"),
};

struct Writer {
    std::mt19937 random;
    Counts counts;

    double uniform(double low, double high) {
        return std::uniform_real_distribution<double>(low, high)(random);
    }

    QString name(QString const& kind, int index) {
        QString const part = name_parts[static_cast<int>(random() % name_parts.size())];
        return QStringLiteral("%1 %2 %3").arg(kind).arg(index, 3, 10, QLatin1Char('0')).arg(part);
    }

    void make_dir(QString const& path) {
        if (!QDir().mkpath(path))
            throw std::runtime_error("cannot create " + path.toStdString());
    }

    void write_bytes(QString const& path, QByteArray const& bytes) {
        QFile file(path);
        if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
            throw std::runtime_error("cannot write " + path.toStdString());
        counts.bytes += bytes.size();
    }

    // Keys as "Group/Key" pairs, written through QSettings as the display does.
    void write_settings(QString const& path, QList<QPair<QString, QVariant>> const& values) {
        {
            QSettings settings(path, QSettings::IniFormat);
            for (auto const& value : values)
                settings.setValue(value.first, value.second);
            settings.sync();
            if (settings.status() != QSettings::NoError)
                throw std::runtime_error("cannot write " + path.toStdString());
        }
        counts.bytes += QFileInfo(path).size();
    }
};

struct Place {
    double latitude;
    double longitude;
};

// x metres east, y metres north of `centre`, in degrees.
Place offset(Place centre, double east, double north) {
    return {centre.latitude + north / metres_per_degree,
            centre.longitude + east / (metres_per_degree * std::cos(centre.latitude * pi / 180.0))};
}

// A ring of `count` vertices around `centre` with a wobbly radius, clockwise
// or counter-clockwise, as (east, north) metres.
std::vector<std::pair<double, double>> ring(Writer& w, int count, double radius, bool clockwise) {
    std::vector<std::pair<double, double>> points;
    points.reserve(count);
    double const wobble = w.uniform(0.02, 0.1);
    double const lobes = std::floor(w.uniform(2.0, 7.0));
    for (int i = 0; i < count; ++i) {
        double const angle = (clockwise ? -2.0 : 2.0) * pi * i / count;
        double const r = radius * (1.0 + wobble * std::sin(lobes * angle));
        points.emplace_back(r * std::cos(angle), r * std::sin(angle));
    }
    return points;
}

// Shapefiles in degrees, x longitude and y latitude, as the display keeps them.
struct ShapeParts {
    std::vector<int> starts;
    std::vector<double> x;
    std::vector<double> y;

    void add(Place centre, std::vector<std::pair<double, double>> const& metres) {
        starts.push_back(static_cast<int>(x.size()));
        for (auto const& point : metres) {
            Place const p = offset(centre, point.first, point.second);
            x.push_back(p.longitude);
            y.push_back(p.latitude);
        }
    }
};

QUuid random_uuid(Writer& w) {
    QByteArray bytes;
    for (int i = 0; i < 4; ++i) {
        std::uint32_t const word = w.random();
        bytes.append(reinterpret_cast<char const*>(&word), sizeof word);
    }
    return QUuid::fromRfc4122(bytes);
}

void write_shapefile(Writer& w, QString const& base, int shape_type,
                     std::vector<ShapeParts> const& records) {
    SHPHandle shp = SHPCreate(QFile::encodeName(base).constData(), shape_type);
    if (!shp)
        throw std::runtime_error("cannot create " + base.toStdString() + ".shp");
    for (ShapeParts const& parts : records) {
        SHPObject* object = SHPCreateObject(
            shape_type, -1, static_cast<int>(parts.starts.size()), parts.starts.data(), nullptr,
            static_cast<int>(parts.x.size()), parts.x.data(), parts.y.data(), nullptr, nullptr);
        SHPWriteObject(shp, -1, object);
        SHPDestroyObject(object);
        w.counts.source_points += static_cast<std::int64_t>(parts.x.size());
    }
    SHPClose(shp);
    w.counts.bytes += QFileInfo(base + QStringLiteral(".shp")).size() +
                      QFileInfo(base + QStringLiteral(".shx")).size();
}

// The boundary table of a shapefile of one record, with the columns the
// display writes.
void write_boundary_table(Writer& w, QString const& base, QString const& name,
                          QString const& category, int treatment) {
    DBFHandle dbf = DBFCreateEx(QFile::encodeName(base).constData(), "UTF-8");
    if (!dbf)
        throw std::runtime_error("cannot create " + base.toStdString() + ".dbf");
    int const name_column = DBFAddField(dbf, "Name", FTString, 64, 0);
    int const type_column = DBFAddField(dbf, "Type", FTString, 32, 0);
    int const headland_column = DBFAddField(dbf, "Headland", FTLogical, 1, 0);
    int const treatment_column = DBFAddField(dbf, "Treatment", FTInteger, 4, 0);
    int const uuid_column = DBFAddField(dbf, "UUID", FTString, 38, 0);
    DBFWriteStringAttribute(dbf, 0, name_column, name.toUtf8().constData());
    DBFWriteStringAttribute(dbf, 0, type_column, category.toUtf8().constData());
    DBFWriteLogicalAttribute(dbf, 0, headland_column, 'T');
    DBFWriteIntegerAttribute(dbf, 0, treatment_column, treatment);
    DBFWriteStringAttribute(dbf, 0, uuid_column, random_uuid(w).toString().toUtf8().constData());
    DBFClose(dbf);
    w.counts.bytes += QFileInfo(base + QStringLiteral(".dbf")).size();
}

void append_double(QByteArray& bytes, double value) {
    bytes.append(reinterpret_cast<char const*>(&value), sizeof value);
}

void append_float(QByteArray& bytes, float value) {
    bytes.append(reinterpret_cast<char const*>(&value), sizeof value);
}

// The head shared by .bdy and .crv files: centre, height, 40 reserved bytes.
QByteArray local_file_head(Place centre, double height) {
    QByteArray bytes;
    append_double(bytes, centre.latitude);
    append_double(bytes, centre.longitude);
    append_double(bytes, height);
    bytes.append(40, '\0');
    return bytes;
}

void write_boundaries(Writer& w, QString const& field_dir, QString const& field_name,
                      Place centre) {
    QString const shape_dir = field_dir + QStringLiteral("/Boundaries/ShapefilesForBoundary");
    w.make_dir(shape_dir);
    ShapeParts outline;
    outline.add(centre, ring(w, boundary_ring_vertices, 400.0, true));
    outline.add(offset(centre, 80.0, -60.0), ring(w, boundary_ring_vertices, 60.0, false));
    QString const base = shape_dir + QStringLiteral("/") + field_name;
    write_shapefile(w, base, SHPT_POLYGON, {outline});
    write_boundary_table(w, base, field_name, QStringLiteral("Boundary"), 3);

    // A .bdy boundary drawn on the display, in metres around its centre.
    Place const bdy_centre = offset(centre, -200.0, 150.0);
    QByteArray bdy = local_file_head(bdy_centre, w.uniform(40.0, 300.0));
    for (auto const& point : ring(w, bdy_vertices, 120.0, true)) {
        append_float(bdy, static_cast<float>(point.first));
        append_float(bdy, static_cast<float>(-point.second)); // y runs south
    }
    w.write_bytes(field_dir + QStringLiteral("/Boundaries/Wet corner.bdy"), bdy);
    w.counts.source_points += bdy_vertices;

    QString const zone_dir = field_dir + QStringLiteral("/Zones");
    w.make_dir(zone_dir);
    ShapeParts zone;
    zone.add(offset(centre, 150.0, 100.0), ring(w, zone_vertices, 40.0, true));
    QString const zone_base = zone_dir + QStringLiteral("/Rock <pile>");
    write_shapefile(w, zone_base, SHPT_POLYGON, {zone});
    write_boundary_table(w, zone_base, QStringLiteral("Rock & stone"), QStringLiteral("Obstacle"),
                         2);
}

void write_flags(Writer& w, QString const& field_dir, Place centre) {
    QString text = QStringLiteral("1\n%1\n").arg(flags_per_field);
    for (int flag = 0; flag < flags_per_field; ++flag) {
        Place const p = offset(centre, w.uniform(-300.0, 300.0), w.uniform(-300.0, 300.0));
        text += QStringLiteral("%1\n%2\n%3\n%4\n")
                    .arg(p.latitude, 0, 'f', 9)
                    .arg(p.longitude, 0, 'f', 9)
                    .arg(flag % 9)
                    .arg(w.name(QStringLiteral("Stone"), flag));
    }
    w.write_bytes(field_dir + QStringLiteral("/flagpoints.ini"), text.toUtf8());
    w.counts.source_points += flags_per_field;
}

// Base stations: a few fixed positions that lines of many fields share.
QString base_position(Writer& w) {
    static char const* const stations[] = {
        "{W84,N52D30M15.25S,E10D24M10.5S,84.5}",
        "{W84,N52D31M02.75S,E10D20M44.0S,91.2}",
        "{W84,N52D28M40.00S,E10D27M05.5S,77.0}",
    };
    return QString::fromLatin1(stations[w.random() % 3]);
}

void write_tramlines(Writer& w, QString const& line_dir) {
    w.make_dir(line_dir + QStringLiteral("/Tramline"));
    w.write_settings(line_dir + QStringLiteral("/Tramline/Tramline.ini"),
                     {{QStringLiteral("Tramline/MajorOffset"), 0.5},
                      {QStringLiteral("Tramline/MinorOffset"), 0.0},
                      {QStringLiteral("Tramline/ExtraOffset"), 1.25},
                      {QStringLiteral("Tramline/Smoothing"), 3},
                      {QStringLiteral("Tramline/Spacing"), 36.0},
                      {QStringLiteral("Tramline/TrackWidth"), 2.25},
                      {QStringLiteral("Curve/ImplicitOffset"), 0.0}});
}

void write_ab_lines(Writer& w, QString const& field_dir, Place centre) {
    for (int line = 0; line < ab_lines_per_field; ++line) {
        QString const name = w.name(QStringLiteral("AB"), line);
        QString const dir = QStringLiteral("%1/ABLines/%2").arg(field_dir, name);
        w.make_dir(dir);
        Place const a = offset(centre, w.uniform(-300.0, 0.0), w.uniform(-300.0, 300.0));
        Place const b = offset(centre, w.uniform(0.0, 300.0), w.uniform(-300.0, 300.0));
        w.write_settings(dir + QStringLiteral("/") + name + QStringLiteral(".ini"),
                         {{QStringLiteral("State"), 2},
                          {QStringLiteral("APoint/Latitude"), a.latitude},
                          {QStringLiteral("APoint/Longitude"), a.longitude},
                          {QStringLiteral("BPoint/Latitude"), b.latitude},
                          {QStringLiteral("BPoint/Longitude"), b.longitude},
                          {QStringLiteral("CorrectionSource"), 1 + line},
                          {QStringLiteral("BasePoint/Position"), base_position(w)}});
        if (line < ab_lines_with_tramlines)
            write_tramlines(w, dir);
        w.counts.source_points += 2;
    }
}

void write_curves(Writer& w, QString const& field_dir, Place centre) {
    for (int curve = 0; curve < curves_per_field; ++curve) {
        QString const name = w.name(QStringLiteral("Curve"), curve);
        QString const dir = QStringLiteral("%1/Curves/%2").arg(field_dir, name);
        w.make_dir(dir);
        w.write_settings(dir + QStringLiteral("/") + name + QStringLiteral(".ini"),
                         {{QStringLiteral("CorrectionSource"), 3},
                          {QStringLiteral("BasePoint/Position"), base_position(w)}});
        QByteArray crv = local_file_head(centre, w.uniform(40.0, 300.0));
        double const amplitude = w.uniform(10.0, 40.0);
        for (int i = 0; i < curve_points; ++i) {
            double const x = -300.0 + 600.0 * i / curve_points;
            append_float(crv, static_cast<float>(x));
            append_float(crv, static_cast<float>(amplitude * std::sin(x / 50.0) + 20.0 * curve));
        }
        w.write_bytes(dir + QStringLiteral("/") + name + QStringLiteral(".crv"), crv);
        w.counts.source_points += curve_points;
    }
}

void write_pivot(Writer& w, QString const& field_dir, Place centre) {
    QString const name = w.name(QStringLiteral("Pivot"), 0);
    QString const dir = QStringLiteral("%1/Pivots/%2").arg(field_dir, name);
    w.make_dir(dir);
    w.write_settings(dir + QStringLiteral("/") + name + QStringLiteral(".ini"),
                     {{QStringLiteral("Reference/Lat"), centre.latitude},
                      {QStringLiteral("Reference/Lon"), centre.longitude},
                      {QStringLiteral("Center/X"), w.uniform(-50.0, 50.0)},
                      {QStringLiteral("Center/Y"), w.uniform(-50.0, 50.0)},
                      {QStringLiteral("InnerRadius"), w.uniform(100.0, 400.0)},
                      {QStringLiteral("CorrectionSource"), 2},
                      {QStringLiteral("BasePoint/Position"), base_position(w)}});
    w.counts.source_points += 1;
}

// One line shapefile of three lines, in a directory named like the file.
void write_line_set(Writer& w, QString const& kind_dir, QString const& name, Place centre) {
    QString const dir = kind_dir + QStringLiteral("/") + name;
    w.make_dir(dir);
    std::vector<ShapeParts> lines(lines_per_shapefile);
    for (int line = 0; line < lines_per_shapefile; ++line) {
        std::vector<std::pair<double, double>> metres;
        for (int i = 0; i < points_per_line; ++i)
            metres.emplace_back(-300.0 + 600.0 * i / points_per_line,
                                -100.0 + 100.0 * line + 5.0 * std::sin(i / 30.0));
        lines[line].add(centre, metres);
    }
    write_shapefile(w, dir + QStringLiteral("/") + name, SHPT_ARC, lines);
}

void write_field(Writer& w, QString const& field_dir, QString const& field_name, Place centre) {
    w.make_dir(field_dir);
    write_boundaries(w, field_dir, field_name, centre);
    write_flags(w, field_dir, centre);
    write_ab_lines(w, field_dir, centre);
    write_curves(w, field_dir, centre);
    write_pivot(w, field_dir, centre);
    write_line_set(w, field_dir + QStringLiteral("/ProjectLines"), QStringLiteral("Drainage 2019"),
                   centre);
    write_line_set(w, field_dir + QStringLiteral("/OptimalLines"), QStringLiteral("Optimal & best"),
                   centre);
    ++w.counts.fields;
}

void write_products(Writer& w, QString const& root, int products, int mixtures) {
    QList<QUuid> identities;
    for (int product = 0; product < products; ++product) {
        QString const name = w.name(QStringLiteral("Product"), product);
        QString const dir = QStringLiteral("%1/Products/%2").arg(root, name);
        w.make_dir(dir);
        QUuid const id = random_uuid(w);
        identities << id;
        w.write_settings(dir + QStringLiteral("/") + name + QStringLiteral(".ini"),
                         {{QStringLiteral("Default/Type"), product % 2 == 0 ? 0 : 1},
                          {QStringLiteral("Default/Density"), w.uniform(0.6, 1.4)},
                          {QStringLiteral("Default/UID"), id.toString()},
                          {QStringLiteral("Default/RatePreset1"), 100 + product % 50},
                          {QStringLiteral("Default/RatePreset2"), 150 + product % 50},
                          {QStringLiteral("Default/RateInc"), 5}});
    }
    for (int mixture = 0; mixture < mixtures; ++mixture) {
        QString const name = w.name(QStringLiteral("Mix"), mixture);
        QString const dir = QStringLiteral("%1/ProductMixtures/%2").arg(root, name);
        w.make_dir(dir);
        QStringList rates;
        for (int i = 0; i < ingredients_per_mixture && !identities.isEmpty(); ++i)
            rates
                << QStringLiteral("%1:%2")
                       .arg(identities[static_cast<int>(w.random() % identities.size())].toString())
                       .arg(10 * (i + 1));
        w.write_settings(dir + QStringLiteral("/") + name + QStringLiteral(".ini"),
                         {{QStringLiteral("UID"), random_uuid(w).toString()},
                          {QStringLiteral("ProductRates"), rates},
                          {QStringLiteral("RatePreset1"), 200},
                          {QStringLiteral("RatePreset2"), 250},
                          {QStringLiteral("RateInc"), 10}});
    }
    w.counts.products = products;
    w.counts.mixtures = mixtures;
}

int scaled(int at_scale_1, double scale) {
    return std::max(1, static_cast<int>(std::lround(at_scale_1 * scale)));
}

} // namespace

Counts generate(QString const& root, std::uint32_t seed, double scale) {
    Writer w{std::mt19937(seed), Counts()};
    int const clients = scaled(clients_at_scale_1, scale);
    // Fields lie in a band across northern Germany, 1 km apart.
    Place const origin{52.0, 9.0};
    for (int client = 0; client < clients; ++client) {
        QString const client_dir =
            QStringLiteral("%1/Clients/%2").arg(root, w.name(QStringLiteral("Client"), client));
        for (int farm = 0; farm < farms_per_client; ++farm) {
            QString const farm_dir =
                client_dir + QStringLiteral("/") + w.name(QStringLiteral("Farm"), farm);
            for (int field = 0; field < fields_per_farm; ++field) {
                QString const field_name = w.name(QStringLiteral("Field"), field);
                int const index = (client * farms_per_client + farm) * fields_per_farm + field;
                Place const centre = offset(origin, 1000.0 * (index % 100), 1000.0 * (index / 100));
                write_field(w, farm_dir + QStringLiteral("/") + field_name, field_name, centre);
            }
        }
    }
    w.counts.clients = clients;
    write_products(w, root, scaled(products_at_scale_1, scale), scaled(mixtures_at_scale_1, scale));
    return w.counts;
}

} // namespace display_tree
