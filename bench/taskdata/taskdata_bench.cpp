// Benchmark of the task data store on a large set. Generates a TASKDATA.XML
// of about the size asked for (most of it line string points), loads and
// saves it with the store, and does the same with the isoxml npm package for
// comparison. Prints times, throughput and peak memory.
//
// Usage: taskdata_bench [SIZE_MB]             (default 100)
//        taskdata_bench --load-save TASKDATA.XML OUTDIR
//
// The second form is what the first runs as a child process for each
// measured load and save, so that the child's peak RSS is that of the load
// and save alone, not of the generator or of earlier runs.

#include "taskdata/element_man.h"

#include "bench_support/machine.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QXmlStreamWriter>

#include <sys/resource.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <optional>
#include <random>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;

constexpr double bytes_per_mb = 1e6;
constexpr double default_size_mb = 100;
constexpr int store_runs = 3;
constexpr double pi = 3.14159265358979323846;

double seconds_since(Clock::time_point start) {
    return std::chrono::duration<double>(Clock::now() - start).count();
}

long peak_rss_kb() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss;
}

// ---- The generated set ----------------------------------------------------

// A fixed seed, so that every run on one build writes the same file.
constexpr std::mt19937_64::result_type seed = 20240611;

constexpr int product_group_count = 6;
constexpr int product_count = 60;
constexpr int worker_count = 12;
constexpr int base_station_count = 3;
constexpr int customer_count = 40;
constexpr int farms_per_customer = 3;

constexpr double metres_per_degree = 111320.0;

struct Place {
    double north; // degrees
    double east;  // degrees
};

struct Counts {
    int partfields = 0;
    int line_strings = 0;
    qint64 points = 0;
};

QString id(char const* tag, int number) {
    return QStringLiteral("%1%2").arg(QLatin1String(tag)).arg(number);
}

// Coordinates as a display writes them: nine fraction digits.
QString degrees_text(double degrees) {
    return QString::number(degrees, 'f', 9);
}

Place moved(Place from, double metres_north, double metres_east) {
    double const east_scale = metres_per_degree * std::cos(from.north * pi / 180);
    return {from.north + metres_north / metres_per_degree, from.east + metres_east / east_scale};
}

// Writes a set shaped like a display's export: the reference elements, then
// partfields with boundaries, obstacles, flags and guidance lines until the
// file has reached the target size.
class Generator {
public:
    explicit Generator(QIODevice* device) : xml_(device) { xml_.setAutoFormatting(true); }

    Counts write(qint64 target_bytes);

private:
    int pick(int low, int high) { return std::uniform_int_distribution<int>(low, high)(random_); }
    double uniform(double low, double high) {
        return std::uniform_real_distribution<double>(low, high)(random_);
    }
    void attribute(char const* name, QString const& value) {
        xml_.writeAttribute(QLatin1String(name), value);
    }

    void write_root_attributes();
    void write_reference_elements();
    void write_customers_and_farms();
    void write_partfield(int number);
    void write_boundary(Place centre, double radius_north, double radius_east);
    void write_obstacle(Place centre, double radius_north, double radius_east);
    void write_flags(Place centre, double radius);
    void write_guidance(int number, Place centre, double radius);
    void write_ring(char const* line_type, Place centre, double radius_north, double radius_east,
                    int count);
    void write_curve(Place start, int count);
    void write_point(char const* type, Place place);

    QXmlStreamWriter xml_;
    std::mt19937_64 random_{seed};
    Counts counts_;
    int next_pattern_ = 1;
};

Counts Generator::write(qint64 target_bytes) {
    xml_.writeStartDocument();
    xml_.writeStartElement(QStringLiteral("ISO11783_TaskData"));
    write_root_attributes();
    write_reference_elements();
    write_customers_and_farms();
    while (xml_.device()->pos() < target_bytes)
        write_partfield(++counts_.partfields);
    xml_.writeEndElement();
    xml_.writeEndDocument();
    return counts_;
}

void Generator::write_root_attributes() {
    attribute("VersionMajor", QStringLiteral("4"));
    attribute("VersionMinor", QStringLiteral("3"));
    attribute("ManagementSoftwareManufacturer", QStringLiteral("taskdata-bench"));
    attribute("ManagementSoftwareVersion", QStringLiteral("1.0"));
    attribute("DataTransferOrigin", QStringLiteral("2"));
}

void Generator::write_reference_elements() {
    for (int i = 1; i <= product_group_count; ++i) {
        xml_.writeEmptyElement(QStringLiteral("PGP"));
        attribute("A", id("PGP", i));
        attribute("B", QStringLiteral("Group %1").arg(i));
    }
    for (int i = 1; i <= product_count; ++i) {
        xml_.writeEmptyElement(QStringLiteral("PDT"));
        attribute("A", id("PDT", i));
        attribute("B", QStringLiteral("Product %1 (%2 g/l)").arg(i).arg(pick(50, 900)));
        attribute("C", id("PGP", pick(1, product_group_count)));
        attribute("F", QStringLiteral("1"));
    }
    for (int i = 1; i <= worker_count; ++i) {
        xml_.writeEmptyElement(QStringLiteral("WKR"));
        attribute("A", id("WKR", i));
        attribute("B", QStringLiteral("Größer-%1").arg(i));
        attribute("C", QStringLiteral("Jörg"));
    }
    for (int i = 1; i <= base_station_count; ++i) {
        xml_.writeEmptyElement(QStringLiteral("BSN"));
        attribute("A", id("BSN", i));
        attribute("B", QStringLiteral("RTK mast %1").arg(i));
        attribute("C", degrees_text(uniform(48.0, 54.0)));
        attribute("D", degrees_text(uniform(6.5, 14.0)));
        attribute("E", QString::number(pick(20, 400)));
    }
}

// Names with umlauts and markup characters, so that escaping is exercised.
void Generator::write_customers_and_farms() {
    for (int i = 1; i <= customer_count; ++i) {
        xml_.writeEmptyElement(QStringLiteral("CTR"));
        attribute("A", id("CTR", i));
        attribute("B", QStringLiteral("Müller & Söhne <%1>").arg(i));
        attribute("C", QStringLiteral("Anna \"Hof\" %1").arg(i));
        attribute("D", QStringLiteral("Dorfstraße %1").arg(pick(1, 120)));
        attribute("F", QString::number(pick(10000, 99999)));
        attribute("G", QStringLiteral("Oberhausen"));
    }
    for (int i = 1; i <= customer_count * farms_per_customer; ++i) {
        xml_.writeEmptyElement(QStringLiteral("FRM"));
        attribute("A", id("FRM", i));
        attribute("B", QStringLiteral("Hof %1").arg(i));
        attribute("F", QStringLiteral("Feldkirchen"));
        attribute("I", id("CTR", (i - 1) / farms_per_customer + 1));
    }
}

void Generator::write_partfield(int number) {
    Place const centre{uniform(47.5, 54.5), uniform(6.0, 14.5)};
    double const radius_north = uniform(150, 700);
    double const radius_east = uniform(150, 700);
    int const farm = pick(1, customer_count * farms_per_customer);
    xml_.writeStartElement(QStringLiteral("PFD"));
    attribute("A", id("PFD", number));
    attribute("C", QStringLiteral("Schlag %1").arg(number));
    attribute("D", QString::number(std::lround(pi * radius_north * radius_east)));
    attribute("E", id("CTR", (farm - 1) / farms_per_customer + 1));
    attribute("F", id("FRM", farm));
    write_boundary(centre, radius_north, radius_east);
    if (pick(0, 2) == 0)
        write_obstacle(centre, radius_north, radius_east);
    write_flags(centre, std::min(radius_north, radius_east));
    write_guidance(number, centre, std::min(radius_north, radius_east));
    xml_.writeEndElement();
}

// A field boundary polygon: its exterior ring and a few islands.
void Generator::write_boundary(Place centre, double radius_north, double radius_east) {
    xml_.writeStartElement(QStringLiteral("PLN"));
    attribute("A", QStringLiteral("1"));
    attribute("B", QStringLiteral("Feldgrenze"));
    attribute("C", QString::number(std::lround(pi * radius_north * radius_east)));
    write_ring("1", centre, radius_north, radius_east, pick(1500, 6000));
    int const islands = pick(0, 3);
    for (int i = 0; i < islands; ++i) {
        Place const island =
            moved(centre, uniform(-0.5, 0.5) * radius_north, uniform(-0.5, 0.5) * radius_east);
        double const radius = uniform(10, 40);
        write_ring("2", island, radius, radius, pick(100, 600));
    }
    xml_.writeEndElement();
}

void Generator::write_obstacle(Place centre, double radius_north, double radius_east) {
    Place const place =
        moved(centre, uniform(-0.6, 0.6) * radius_north, uniform(-0.6, 0.6) * radius_east);
    double const radius = uniform(3, 15);
    xml_.writeStartElement(QStringLiteral("PLN"));
    attribute("A", QStringLiteral("6"));
    attribute("B", QStringLiteral("Mast"));
    write_ring("9", place, radius, radius, pick(30, 80));
    xml_.writeEndElement();
}

void Generator::write_flags(Place centre, double radius) {
    int const flags = pick(0, 4);
    for (int i = 1; i <= flags; ++i) {
        Place const place = moved(centre, uniform(-0.7, 0.7) * radius, uniform(-0.7, 0.7) * radius);
        xml_.writeEmptyElement(QStringLiteral("PNT"));
        attribute("A", QStringLiteral("1"));
        attribute("B", QStringLiteral("Stein %1").arg(i));
        attribute("C", degrees_text(place.north));
        attribute("D", degrees_text(place.east));
    }
}

// A guidance group of curved tracks, each a long recorded line.
void Generator::write_guidance(int number, Place centre, double radius) {
    xml_.writeStartElement(QStringLiteral("GGP"));
    attribute("A", id("GGP", number));
    attribute("B", QStringLiteral("Spuren %1").arg(number));
    int const patterns = pick(1, 3);
    for (int i = 0; i < patterns; ++i) {
        int const pattern = next_pattern_++;
        xml_.writeStartElement(QStringLiteral("GPN"));
        attribute("A", id("GPN", pattern));
        attribute("B", QStringLiteral("Kurve %1").arg(pattern));
        attribute("C", QStringLiteral("3"));
        attribute("E", QStringLiteral("1"));
        attribute("F", QStringLiteral("1"));
        attribute("I", QStringLiteral("4"));
        attribute("L", id("BSN", pick(1, base_station_count)));
        write_curve(moved(centre, uniform(-1, 1) * radius, -radius), pick(800, 6000));
        xml_.writeEndElement();
    }
    xml_.writeEndElement();
}

// A closed ring: a wobbly ellipse, as driving round a field records it.
void Generator::write_ring(char const* line_type, Place centre, double radius_north,
                           double radius_east, int count) {
    xml_.writeStartElement(QStringLiteral("LSG"));
    attribute("A", QLatin1String(line_type));
    ++counts_.line_strings;
    double const phase = uniform(0, 2 * pi);
    Place first{};
    for (int i = 0; i < count; ++i) {
        double const angle = 2 * pi * i / count;
        double const wobble = 1 + 0.08 * std::sin(3 * angle + phase) + uniform(-0.004, 0.004);
        Place const place = moved(centre, radius_north * wobble * std::sin(angle),
                                  radius_east * wobble * std::cos(angle));
        if (i == 0)
            first = place;
        write_point("2", place);
    }
    write_point("2", first);
    xml_.writeEndElement();
}

// A guidance line recorded every metre: reference A, guidance points,
// reference B.
void Generator::write_curve(Place start, int count) {
    xml_.writeStartElement(QStringLiteral("LSG"));
    attribute("A", QStringLiteral("5"));
    ++counts_.line_strings;
    double heading = uniform(0, 2 * pi);
    Place place = start;
    for (int i = 0; i < count; ++i) {
        char const* type = i == 0 ? "6" : i == count - 1 ? "7" : "9";
        write_point(type, place);
        heading += uniform(-0.01, 0.01);
        place = moved(place, std::cos(heading), std::sin(heading));
    }
    xml_.writeEndElement();
}

void Generator::write_point(char const* type, Place place) {
    xml_.writeEmptyElement(QStringLiteral("PNT"));
    attribute("A", QLatin1String(type));
    attribute("C", degrees_text(place.north));
    attribute("D", degrees_text(place.east));
    ++counts_.points;
}

// ---- The measured load and save -------------------------------------------

// The child side: one load and one save with the store, figures on stdout.
int load_and_save(QString const& input, QString const& output_dir) {
    using TC::Task_data::XML_interface;
    TC::Task_data::Elements::Client::Element_man man;
    man.create();
    XML_interface xml(input, true, false, false, false);

    auto const load_start = Clock::now();
    if (!man.load_xml(xml)) {
        std::fprintf(stderr, "load failed: %s\n", qPrintable(xml.error()));
        return 1;
    }
    double const load_seconds = seconds_since(load_start);

    xml.set(output_dir + QStringLiteral("/TASKDATA.XML"), true, false, false, false);
    auto const save_start = Clock::now();
    if (!man.save_xml(xml)) {
        std::fprintf(stderr, "save failed: %s\n", qPrintable(xml.error()));
        return 1;
    }
    double const save_seconds = seconds_since(save_start);

    std::printf("load_s=%.6f\nsave_s=%.6f\npeak_rss_kb=%ld\n", load_seconds, save_seconds,
                peak_rss_kb());
    return 0;
}

struct Figures {
    double load_s = 0;
    double save_s = 0;
    double peak_rss_mb = 0;
    qint64 written_bytes = 0; // everything the save left in its directory
    QString version;          // the isoxml package's; empty for the store
    int warnings = 0;         // isoxml's parse warnings

    double total_s() const { return load_s + save_s; }
};

// Reads the key=value lines a measured child prints; false when one of the
// figures is missing.
bool parse_figures(QByteArray const& output, Figures& figures) {
    bool load = false, save = false, rss = false;
    for (QByteArray const& line : output.split('\n')) {
        int const equals = line.indexOf('=');
        QByteArray const key = line.left(equals);
        QByteArray const value = line.mid(equals + 1).trimmed();
        if (key == "load_s")
            figures.load_s = value.toDouble(&load);
        else if (key == "save_s")
            figures.save_s = value.toDouble(&save);
        else if (key == "peak_rss_kb")
            figures.peak_rss_mb = value.toDouble(&rss) * 1024 / bytes_per_mb;
        else if (key == "version")
            figures.version = QString::fromUtf8(value);
        else if (key == "warnings")
            figures.warnings = value.toInt();
    }
    return load && save && rss;
}

qint64 directory_bytes(QString const& dir) {
    qint64 bytes = 0;
    for (QFileInfo const& file : QDir(dir).entryInfoList(QDir::Files | QDir::Hidden))
        bytes += file.size();
    return bytes;
}

// Runs one measured child that writes into a fresh `output_dir`; its stderr
// goes to ours.
std::optional<Figures> run_measured(QString const& program, QStringList const& arguments,
                                    QString const& output_dir) {
    QDir().mkpath(output_dir);
    QProcess child;
    child.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    child.start(program, arguments);
    if (!child.waitForFinished(-1) || child.exitStatus() != QProcess::NormalExit) {
        std::fprintf(stderr, "%s did not finish: %s\n", qPrintable(program),
                     qPrintable(child.errorString()));
        return std::nullopt;
    }
    if (child.exitCode() != 0) {
        std::fprintf(stderr, "%s failed with exit code %d\n", qPrintable(program),
                     child.exitCode());
        return std::nullopt;
    }
    Figures figures;
    if (!parse_figures(child.readAllStandardOutput(), figures)) {
        std::fprintf(stderr, "%s printed no figures\n", qPrintable(program));
        return std::nullopt;
    }
    figures.written_bytes = directory_bytes(output_dir);
    QDir(output_dir).removeRecursively();
    return figures;
}

// The store's figures: the run with the median total of several.
std::optional<Figures> measure_store(QString const& input, QString const& work_dir) {
    std::vector<Figures> runs;
    for (int run = 1; run <= store_runs; ++run) {
        QString const output_dir = QStringLiteral("%1/store-%2").arg(work_dir).arg(run);
        auto figures = run_measured(QCoreApplication::applicationFilePath(),
                                    {QStringLiteral("--load-save"), input, output_dir}, output_dir);
        if (!figures)
            return std::nullopt;
        std::printf("  store run %d: load %.3f s, save %.3f s, peak RSS %.1f MB\n", run,
                    figures->load_s, figures->save_s, figures->peak_rss_mb);
        std::fflush(stdout);
        runs.push_back(*figures);
    }
    std::sort(runs.begin(), runs.end(),
              [](Figures const& a, Figures const& b) { return a.total_s() < b.total_s(); });
    return runs[runs.size() / 2];
}

QString const bench_dir = QStringLiteral(TASKDATA_BENCH_DIR);

// The isoxml figures from one run of the node script, or nothing when node
// or the package is missing (said on stdout) or the run failed.
std::optional<Figures> measure_isoxml(QString const& input, QString const& work_dir) {
    QString const node = QStandardPaths::findExecutable(QStringLiteral("node"));
    if (node.isEmpty() || !QFileInfo(bench_dir + QStringLiteral("/node_modules/isoxml")).isDir()) {
        std::printf("isoxml comparison skipped: %s; install it with `npm ci --prefix "
                    "bench/taskdata` (or run bench/taskdata/run.sh)\n",
                    node.isEmpty() ? "node is not on PATH"
                                   : "bench/taskdata/node_modules/isoxml is missing");
        return std::nullopt;
    }
    // The package needs about 20 times the file size in memory; a heap limit
    // above node's default lets sets larger than 100 MB through.
    QString const output_dir = work_dir + QStringLiteral("/isoxml");
    std::printf("  isoxml run (once) ...\n");
    std::fflush(stdout);
    return run_measured(node,
                        {QStringLiteral("--max-old-space-size=16384"),
                         bench_dir + QStringLiteral("/isoxml_bench.mjs"), input, output_dir},
                        output_dir);
}

// ---- The report -----------------------------------------------------------

void print_row(char const* label, double store, std::optional<double> isoxml, int decimals) {
    std::printf("  %-22s%12.*f", label, decimals, store);
    if (isoxml)
        std::printf("%12.*f\n", decimals, *isoxml);
    else
        std::printf("%12s\n", "-");
}

void print_report(double file_mb, Figures const& store, std::optional<Figures> const& isoxml) {
    auto of_isoxml = [&isoxml](auto figure) -> std::optional<double> {
        if (!isoxml)
            return std::nullopt;
        return figure(*isoxml);
    };
    std::printf("\nresults (MB = 10^6 bytes; store: median of %d runs; isoxml: 1 run)\n",
                store_runs);
    if (isoxml)
        std::printf("isoxml package version %s\n", qPrintable(isoxml->version));
    std::printf("  %-22s%12s%12s\n", "", "store", "isoxml");
    print_row("load s", store.load_s, of_isoxml([](Figures const& f) { return f.load_s; }), 3);
    print_row("load MB/s", file_mb / store.load_s,
              of_isoxml([=](Figures const& f) { return file_mb / f.load_s; }), 1);
    print_row("save s", store.save_s, of_isoxml([](Figures const& f) { return f.save_s; }), 3);
    print_row("save MB/s", file_mb / store.save_s,
              of_isoxml([=](Figures const& f) { return file_mb / f.save_s; }), 1);
    print_row("load+save s", store.total_s(),
              of_isoxml([](Figures const& f) { return f.total_s(); }), 3);
    print_row("load+save MB/s", file_mb / store.total_s(),
              of_isoxml([=](Figures const& f) { return file_mb / f.total_s(); }), 1);
    print_row("peak RSS MB", store.peak_rss_mb,
              of_isoxml([](Figures const& f) { return f.peak_rss_mb; }), 1);
    print_row("peak RSS / file size", store.peak_rss_mb / file_mb,
              of_isoxml([=](Figures const& f) { return f.peak_rss_mb / file_mb; }), 2);
    print_row("written MB", store.written_bytes / bytes_per_mb,
              of_isoxml([](Figures const& f) { return f.written_bytes / bytes_per_mb; }), 1);

    double const rss_ratio = store.peak_rss_mb / file_mb;
    std::printf("\nstore peak RSS / file size: %.2f (target <= 2: %s)\n", rss_ratio,
                rss_ratio <= 2 ? "met" : "missed");
    if (isoxml) {
        double const speed_ratio = isoxml->total_s() / store.total_s();
        std::printf("speed ratio isoxml/store (load+save): %.2f (target >= 5: %s)\n", speed_ratio,
                    speed_ratio >= 5 ? "met" : "missed");
        if (isoxml->warnings > 0)
            std::printf("isoxml reported %d parse warnings\n", isoxml->warnings);
    }
}

// ---- The whole run --------------------------------------------------------

bool generate(QString const& path, qint64 target_bytes) {
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly)) {
        std::fprintf(stderr, "cannot create %s: %s\n", qPrintable(path),
                     qPrintable(file.errorString()));
        return false;
    }
    auto const start = Clock::now();
    Counts const counts = Generator(&file).write(target_bytes);
    file.close();
    if (file.error() != QFileDevice::NoError) {
        std::fprintf(stderr, "cannot write %s: %s\n", qPrintable(path),
                     qPrintable(file.errorString()));
        return false;
    }
    std::printf("generated %s in %.1f s: %.1f MB, %d partfields, %d line strings, %lld points\n",
                qPrintable(path), seconds_since(start), QFileInfo(path).size() / bytes_per_mb,
                counts.partfields, counts.line_strings, static_cast<long long>(counts.points));
    std::fflush(stdout);
    return true;
}

int run_benchmark(double size_mb) {
    std::printf("%s\n", bench_support::machine_line().c_str());
    QTemporaryDir work(QDir::tempPath() + QStringLiteral("/taskdata_bench-XXXXXX"));
    if (!work.isValid()) {
        std::fprintf(stderr, "cannot create a temporary directory: %s\n",
                     qPrintable(work.errorString()));
        return 1;
    }
    QString const input = work.path() + QStringLiteral("/in/TASKDATA.XML");
    QDir().mkpath(work.path() + QStringLiteral("/in"));
    if (!generate(input, static_cast<qint64>(size_mb * bytes_per_mb)))
        return 1;

    auto const store = measure_store(input, work.path());
    if (!store)
        return 1;
    auto const isoxml = measure_isoxml(input, work.path());
    print_report(QFileInfo(input).size() / bytes_per_mb, *store, isoxml);
    return 0;
}

} // namespace

int main(int argc, char** argv) {
    // The measured child makes no QCoreApplication: nothing but the load and
    // the save should count in its peak RSS.
    if (argc == 4 && std::strcmp(argv[1], "--load-save") == 0)
        return load_and_save(QString::fromLocal8Bit(argv[2]), QString::fromLocal8Bit(argv[3]));

    QCoreApplication app(argc, argv);
    bool valid = argc <= 2;
    double const size_mb = argc == 2 ? QByteArray(argv[1]).toDouble(&valid) : default_size_mb;
    if (!valid || size_mb <= 0) {
        std::fprintf(stderr, "usage: taskdata_bench [SIZE_MB]\n");
        return 2;
    }
    return run_benchmark(size_mb);
}
