// Guidance lines end to end: the tool run on a generated display tree of
// 2,000 fields, each with 10 AB lines (every fifth with tramlines), 3 curves
// of 5,000 points and 2 pivots (one reference in degrees, one in the UTM
// grid), the lines of a farm sharing one base station. The tool runs twice as
// a child process: onto an empty set, then with -m onto the set the first run
// saved, where every pattern is found again. Prints lines and curve points
// per second of each run and the run's peak RSS.
//
// Usage: guidance_bench [FIELDS]   (default 2000)

#include "bench_support/machine.h"
#include "bench_support/tool_runs.h"

#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QtEndian>

#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;

constexpr int default_fields = 2000;
constexpr int fields_per_farm = 10;
constexpr int farms_per_client = 10;
constexpr int ab_lines_per_field = 10;
constexpr int curves_per_field = 3;
constexpr int points_per_curve = 5000;
constexpr int pivots_per_field = 2;
constexpr int lines_per_field = ab_lines_per_field + curves_per_field + pivots_per_field;

[[noreturn]] void fail(char const* what, QString const& path) {
    std::fprintf(stderr, "%s %s\n", what, qPrintable(path));
    std::exit(1);
}

void write_file(QString const& path, QByteArray const& content) {
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
        fail("cannot write", path);
}

void make_dir(QString const& path) {
    if (!QDir().mkpath(path))
        fail("cannot create", path);
}

QByteArray number(double value) {
    return QByteArray::number(value, 'f', 7);
}

// A curve of 5,000 points 2 m apart, bending gently, around its reference.
QByteArray curve_file(double latitude, double longitude, int seed) {
    QByteArray bytes(64 + points_per_curve * 8, '\0');
    char* data = bytes.data();
    qToLittleEndian(latitude, data);
    qToLittleEndian(longitude, data + 8);
    qToLittleEndian(95.0, data + 16);
    for (int i = 0; i < points_per_curve; ++i) {
        float const x = 2.0f * static_cast<float>(i) - 5000.0f;
        float const y = 30.0f * std::sin(static_cast<float>(i + seed) / 400.0f) + 10.0f * seed;
        qToLittleEndian(x, data + 64 + 8 * i);
        qToLittleEndian(y, data + 64 + 8 * i + 4);
    }
    return bytes;
}

void write_field(QString const& field, int field_index, QByteArray const& station) {
    double const latitude = 51.0 + 0.001 * (field_index % 1000);
    double const longitude = 12.0 + 0.001 * (field_index / 1000);
    QByteArray const correction = "CorrectionSource=5\n[BasePoint]\nPosition=\"" + station + "\"\n";
    for (int i = 0; i < ab_lines_per_field; ++i) {
        QString const dir = QStringLiteral("%1/ABLines/AB %2").arg(field).arg(i);
        make_dir(dir);
        write_file(QStringLiteral("%1/AB %2.ini").arg(dir).arg(i),
                   "State=2\n" + correction + "[APoint]\nLatitude=" + number(latitude) +
                       "\nLongitude=" + number(longitude + 0.0001 * i) +
                       "\n[BPoint]\nLatitude=" + number(latitude + 0.004) +
                       "\nLongitude=" + number(longitude + 0.0001 * i) + "\n");
        if (i % 5 == 0) {
            make_dir(dir + QStringLiteral("/Tramline"));
            write_file(dir + QStringLiteral("/Tramline/Tramline.ini"),
                       "[Tramline]\nSpacing=24\nTrackWidth=2.25\nMinorOffset=1.5\n");
        }
    }
    for (int i = 0; i < curves_per_field; ++i) {
        QString const dir = QStringLiteral("%1/Curves/Curve %2").arg(field).arg(i);
        make_dir(dir);
        write_file(QStringLiteral("%1/Curve %2.ini").arg(dir).arg(i), correction);
        write_file(QStringLiteral("%1/Curve %2.crv").arg(dir).arg(i),
                   curve_file(latitude, longitude, i));
    }
    QByteArray const pivots[pivots_per_field] = {
        "[Reference]\nLat=" + number(latitude) + "\nLon=" + number(longitude) + "\n",
        "[Reference]\nEast=672509.385\nNorth=" + number(15872043.896 + field_index) +
            "\nZone=30\n"};
    for (int i = 0; i < pivots_per_field; ++i) {
        QString const dir = QStringLiteral("%1/Pivots/Pivot %2").arg(field).arg(i);
        make_dir(dir);
        write_file(QStringLiteral("%1/Pivot %2.ini").arg(dir).arg(i),
                   "InnerRadius=395.5\n" + correction + "[Center]\nX=12.5\nY=-8\n" + pivots[i]);
    }
}

void generate_tree(QString const& data, int fields) {
    for (int field = 0; field < fields; ++field) {
        int const farm = field / fields_per_farm;
        int const client = farm / farms_per_client;
        QByteArray const station = "{W84,N51D" + QByteArray::number(farm % 60) +
                                   "M10.5S,E12D18M30.25S," + QByteArray::number(100 + farm) + "}";
        QString const dir = QStringLiteral("%1/Clients/Client %2/Farm %3/Field %4")
                                .arg(data)
                                .arg(client, 3, 10, QLatin1Char('0'))
                                .arg(farm, 4, 10, QLatin1Char('0'))
                                .arg(field, 5, 10, QLatin1Char('0'));
        write_field(dir, field, station);
    }
}

using bench_support::ToolRun;

ToolRun run_tool(QStringList const& arguments) {
    ToolRun const run = bench_support::run_tool(QStringLiteral(TDM_TOOL), arguments);
    if (!run.succeeded)
        fail("the run failed:", QStringLiteral(TDM_TOOL));
    return run;
}

void report(char const* what, ToolRun const& run, int fields, qint64 set_bytes) {
    double const lines = static_cast<double>(fields) * lines_per_field;
    double const points = static_cast<double>(fields) * curves_per_field * points_per_curve;
    std::printf("%-32s %7.2f s %10.0f lines/s %8.2f million curve points/s   peak RSS %5.0f MB"
                "   set %5.0f MB\n",
                what, run.seconds, lines / run.seconds, points / run.seconds / 1e6,
                run.peak_rss_kib / 1024.0, set_bytes / 1e6);
    std::fflush(stdout);
}

} // namespace

int main(int argc, char** argv) {
    int const fields = argc > 1 ? std::atoi(argv[1]) : default_fields;
    if (fields <= 0) {
        std::fprintf(stderr, "usage: %s [FIELDS]\n", argv[0]);
        return 1;
    }
    std::printf("%s; one thread\n", bench_support::machine_line().c_str());
    QTemporaryDir scratch;
    if (!scratch.isValid())
        fail("cannot create", QStringLiteral("a temporary directory"));
    QString const data = scratch.filePath(QStringLiteral("data"));
    QString const first = scratch.filePath(QStringLiteral("first"));
    QString const second = scratch.filePath(QStringLiteral("second"));

    auto const start = Clock::now();
    generate_tree(data, fields);
    std::printf("%d fields x (%d AB lines, %d curves of %d points, %d pivots), generated in "
                "%.1f s\n",
                fields, ab_lines_per_field, curves_per_field, points_per_curve, pivots_per_field,
                std::chrono::duration<double>(Clock::now() - start).count());
    std::fflush(stdout);

    ToolRun const fresh = run_tool({QStringLiteral("-O"), first, data});
    qint64 const first_size = QFile(first + QStringLiteral("/TASKDATA.XML")).size();
    report("onto an empty set", fresh, fields, first_size);

    // The first run's set becomes the one the second run loads.
    if (!QDir().rename(first, data + QStringLiteral("/taskdata")))
        fail("cannot move", first);
    ToolRun const merged = run_tool({QStringLiteral("-m"), QStringLiteral("-O"), second, data});
    QString const second_set = second + QStringLiteral("/TASKDATA.XML");
    report("with -m onto the saved set", merged, fields, QFile(second_set).size());

    long long const patterns = bench_support::count_in_file(second_set, "<GPN ");
    long long const expected = static_cast<long long>(fields) * lines_per_field;
    std::printf("second run / first run: %.2f; patterns after the second run: %lld of %lld%s\n",
                merged.seconds / fresh.seconds, patterns, expected,
                patterns == expected ? "" : "  (NOT all found again)");
    return patterns == expected ? 0 : 1;
}
