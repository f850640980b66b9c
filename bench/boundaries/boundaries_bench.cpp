// Boundaries and project lines of one large field: 200,000 vertices in .bdy
// files, 200,000 in the rings of a boundary shapefile and 100,000 points of
// project lines. Prints vertices per second through reading, the area,
// writing into the task data, the whole import, and the save of the set,
// with the peak RSS of the import.
//
// Usage: boundaries_bench
//        boundaries_bench --measure FIELD_DIR OUTPUT_DIR
//
// The second form is what the first runs as a child process for each
// measured import, so that the peak RSS is that of the import alone, not of
// the generator or of earlier runs.

#include "boundaries/boundary_files.h"
#include "boundaries/boundary_polygons.h"
#include "boundaries/shape_lines.h"
#include "taskdata/store.h"

#include "bench_support/machine.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QtEndian>

#include <shapefil.h>
#include <sys/resource.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;

int const bdy_files = 20;
int const shapefile_rings = 20;
int const vertices_per_ring = 10000;
int const project_lines = 100;
int const points_per_line = 1000;
int const runs = 3;
long const boundary_vertices = (bdy_files + shapefile_rings) * vertices_per_ring;
long const line_points = project_lines * points_per_line;
double const pi = 3.14159265358979323846;

double seconds_since(Clock::time_point start) {
    return std::chrono::duration<double>(Clock::now() - start).count();
}

[[noreturn]] void fail(QString const& message) {
    std::fprintf(stderr, "%s\n", qPrintable(message));
    std::exit(1);
}

void make_dir(QString const& path) {
    if (!QDir().mkpath(path))
        fail(QStringLiteral("cannot create %1").arg(path));
}

// A field-sized ring with a ragged edge, so that no two vertices are alike:
// radius about 400 m, metres east and north of its centre.
std::vector<std::pair<double, double>> ring_metres(int ring) {
    std::vector<std::pair<double, double>> vertices;
    for (int i = 0; i < vertices_per_ring; ++i) {
        double const angle = 2.0 * pi * i / vertices_per_ring;
        double const radius = 400.0 + 30.0 * std::sin(17.0 * angle + ring) + (i % 7) * 0.1;
        vertices.push_back({radius * std::cos(angle), radius * std::sin(angle)});
    }
    return vertices;
}

void write_bdy(QString const& path, int ring) {
    QByteArray bytes(64, '\0');
    qToLittleEndian(52.0 + 0.01 * ring, bytes.data());
    qToLittleEndian(9.0, bytes.data() + 8);
    qToLittleEndian(120.0, bytes.data() + 16);
    for (auto const& [east, north] : ring_metres(ring)) {
        char vertex[8];
        qToLittleEndian(static_cast<float>(east), vertex);
        qToLittleEndian(static_cast<float>(-north), vertex + 4);
        bytes.append(vertex, sizeof vertex);
    }
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
        fail(QStringLiteral("cannot write %1").arg(path));
}

// One record per part list, all of `type`, in degrees around 52 N, 9 E.
void write_shapefile(QString const& base, int type,
                     std::vector<std::vector<std::pair<double, double>>> const& shapes) {
    SHPHandle file = SHPCreate(QFile::encodeName(base + QStringLiteral(".shp")).constData(), type);
    if (!file)
        fail(QStringLiteral("cannot write %1.shp").arg(base));
    for (auto const& shape : shapes) {
        std::vector<double> x;
        std::vector<double> y;
        for (auto const& [lon, lat] : shape) {
            x.push_back(lon);
            y.push_back(lat);
        }
        SHPObject* object =
            SHPCreateSimpleObject(type, static_cast<int>(x.size()), x.data(), y.data(), nullptr);
        SHPWriteObject(file, -1, object);
        SHPDestroyObject(object);
    }
    SHPClose(file);
}

void generate_field(QString const& field) {
    make_dir(field + QStringLiteral("/Boundaries/bdy"));
    for (int ring = 0; ring < bdy_files; ++ring)
        write_bdy(QStringLiteral("%1/Boundaries/bdy/%2.bdy")
                      .arg(field)
                      .arg(ring, 2, 10, QLatin1Char('0')),
                  ring);

    double const metres_per_degree = 111320.0;
    std::vector<std::vector<std::pair<double, double>>> rings;
    for (int ring = 0; ring < shapefile_rings; ++ring) {
        std::vector<std::pair<double, double>> degrees;
        double const latitude = 52.0 + 0.01 * ring;
        for (auto const& [east, north] : ring_metres(ring))
            degrees.push_back({9.0 + east / (metres_per_degree * std::cos(latitude * pi / 180.0)),
                               latitude + north / metres_per_degree});
        degrees.push_back(degrees.front());
        rings.push_back(degrees);
    }
    write_shapefile(field + QStringLiteral("/Boundaries/field"), SHPT_POLYGON, rings);

    std::vector<std::vector<std::pair<double, double>>> lines;
    for (int line = 0; line < project_lines; ++line) {
        std::vector<std::pair<double, double>> points;
        for (int i = 0; i < points_per_line; ++i)
            points.push_back(
                {9.0 + 0.00001 * i + 0.0001 * std::sin(i * 0.01), 52.0 + 0.0003 * line});
        lines.push_back(points);
    }
    make_dir(field + QStringLiteral("/ProjectLines/Lines"));
    write_shapefile(field + QStringLiteral("/ProjectLines/Lines/Lines"), SHPT_ARC, lines);
}

// Seconds of each phase of one import, and its peak RSS.
struct Import {
    double read = 0.0;    // read_boundaries
    double area = 0.0;    // boundary_area of every ring, on its own
    double write = 0.0;   // write_boundaries, the area included
    double lines = 0.0;   // read_project_lines: reading and writing
    double save = 0.0;    // save_task_data
    long peak_rss_kb = 0; // of the import and the save

    double import() const { return read + write + lines; }
};

// The child: imports the field into a fresh set and saves it to `output`.
int measure(QString const& field_dir, QString const& output) {
    make_dir(output);
    QString const error = load_task_data(QString(), output);
    if (!error.isEmpty())
        fail(error);
    using namespace TC::Task_data::Elements::Client;
    Partfield field = task_data.create_partfields(true);
    field.id().set(field.get_element_man().get_free_uid(QStringLiteral("PFD"), false), true);
    field.designator().set(QStringLiteral("Field"), true);

    Import result;
    auto start = Clock::now();
    BoundaryList const records = read_boundaries(field_dir);
    result.read = seconds_since(start);

    start = Clock::now();
    double total_area = 0.0;
    size_t vertices = 0;
    for (BoundaryRecord const& record : records) {
        total_area += boundary_area(record);
        vertices += record.points.size();
    }
    result.area = seconds_since(start);
    if (vertices != static_cast<size_t>(boundary_vertices) + shapefile_rings)
        fail(QStringLiteral("read %1 vertices").arg(vertices));

    start = Clock::now();
    write_boundaries(field, records);
    result.write = seconds_since(start);

    start = Clock::now();
    read_project_lines(QDir(field_dir), field);
    result.lines = seconds_since(start);

    start = Clock::now();
    QString const save_error = save_task_data();
    result.save = seconds_since(start);
    if (!save_error.isEmpty())
        fail(save_error);

    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    result.peak_rss_kb = usage.ru_maxrss;
    std::printf("%.6f %.6f %.6f %.6f %.6f %ld %.0f\n", result.read, result.area, result.write,
                result.lines, result.save, result.peak_rss_kb, total_area);
    return 0;
}

Import run_child(QString const& program, QString const& field, QString const& output) {
    QProcess child;
    child.start(program, {QStringLiteral("--measure"), field, output});
    if (!child.waitForFinished(-1) || child.exitCode() != 0)
        fail(QStringLiteral("the measuring run failed: %1")
                 .arg(QString::fromLocal8Bit(child.readAllStandardError())));
    QStringList const figures = QString::fromUtf8(child.readAllStandardOutput()).split(' ');
    if (figures.size() < 6)
        fail(QStringLiteral("unexpected output of the measuring run"));
    Import result;
    result.read = figures[0].toDouble();
    result.area = figures[1].toDouble();
    result.write = figures[2].toDouble();
    result.lines = figures[3].toDouble();
    result.save = figures[4].toDouble();
    result.peak_rss_kb = figures[5].toLong();
    return result;
}

} // namespace

int main(int argc, char** argv) {
    if (argc == 4 && qstrcmp(argv[1], "--measure") == 0)
        return measure(QString::fromLocal8Bit(argv[2]), QString::fromLocal8Bit(argv[3]));

    QCoreApplication application(argc, argv);
    std::printf("%s; one thread\n", bench_support::machine_line().c_str());
    QTemporaryDir scratch;
    if (!scratch.isValid())
        fail(QStringLiteral("cannot create a temporary directory"));
    QString const field = scratch.filePath(QStringLiteral("Field"));
    generate_field(field);
    std::printf("field: %d .bdy files and %d shapefile rings of %d vertices (%ld in all), "
                "%d project lines of %d points (%ld); best of %d runs, each in a child process\n",
                bdy_files, shapefile_rings, vertices_per_ring, boundary_vertices, project_lines,
                points_per_line, line_points, runs);

    std::vector<Import> imports;
    for (int run = 0; run < runs; ++run)
        imports.push_back(run_child(QCoreApplication::applicationFilePath(), field,
                                    scratch.filePath(QStringLiteral("out%1").arg(run))));
    Import const best =
        *std::min_element(imports.begin(), imports.end(),
                          [](Import const& a, Import const& b) { return a.import() < b.import(); });
    long peak_kb = 0;
    for (Import const& import : imports)
        peak_kb = std::max(peak_kb, import.peak_rss_kb);

    auto rate = [](long count, double seconds) { return count / seconds / 1e6; };
    long const all = boundary_vertices + line_points;
    std::printf("  boundaries, read            %7.2f million vertices/s  (%.3f s)\n",
                rate(boundary_vertices, best.read), best.read);
    std::printf("  boundaries, area            %7.2f million vertices/s  (%.3f s)\n",
                rate(boundary_vertices, best.area), best.area);
    std::printf("  boundaries, write with area %7.2f million vertices/s  (%.3f s)\n",
                rate(boundary_vertices, best.write), best.write);
    std::printf("  project lines, read + write %7.2f million points/s    (%.3f s)\n",
                rate(line_points, best.lines), best.lines);
    std::printf("  whole import, end to end    %7.2f million vertices/s  (%.3f s for %ld)\n",
                rate(all, best.import()), best.import(), all);
    std::printf("  save of the set             %7.2f million vertices/s  (%.3f s)\n",
                rate(all, best.save), best.save);
    std::printf("  peak RSS of import and save %7.1f MB, %.0f bytes per vertex\n", peak_kb / 1024.0,
                peak_kb * 1024.0 / all);
    return 0;
}
