// Curve and pivot patterns: TCurvePattern::loadFile on .crv files of 10,000, 100,000 and
// 1,000,000 points recorded as a season's runs between separators, in points per second with
// the growth exponent and the peak memory per point; nearestCurve and nearestSegment queries per
// second on a pattern of 200 curves of 2,000 points; TPivotPattern::fitCircle on 10, 30 and 100
// points, whose work grows with the cube of the count.

#include "bench_support/machine.h"
#include "bench_support/timing.h"

#include "patterns/curve_pattern.h"
#include "patterns/pivot_pattern.h"

#include <QByteArray>
#include <QFile>
#include <QTemporaryDir>
#include <QtEndian>

#include <malloc.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <random>
#include <string>
#include <vector>

namespace {

GeoPoint const reference{52.5, 13.25, 95.0};
// The display's centre lies a little away from the file's reference.
GeoPoint const centre{52.501, 13.251, 95.0};

int const loadSizes[] = {10000, 100000, 1000000};

[[noreturn]] void fail(char const* what, QString const& path) {
    std::fprintf(stderr, "%s %s\n", what, qPrintable(path));
    std::exit(1);
}

void appendRecord(QByteArray& bytes, LocalPoint point) {
    char record[8];
    qToLittleEndian(point.x, record);
    qToLittleEndian(point.y, record + 4);
    bytes.append(record, sizeof record);
}

// A season of recording: passes across a field, each a gently bending run of 200 to 4,000 points
// 2.5 m apart with 3 cm of noise, a separator after each, until `count` points are written;
// `runLength`, if given, fixes the points of each run.
QByteArray seasonFile(int count, unsigned seed, int runLength = 0) {
    std::mt19937 random(seed);
    std::uniform_int_distribution<int> length(200, 4000);
    std::uniform_real_distribution<double> unit(0.0, 1.0);
    std::normal_distribution<double> noise(0.0, 0.03);
    QByteArray bytes(64, '\0');
    qToLittleEndian(reference.latitude, bytes.data());
    qToLittleEndian(reference.longitude, bytes.data() + 8);
    qToLittleEndian(reference.height, bytes.data() + 16);
    bytes.reserve(64 + 8 * (count + count / 200 + 1));
    for (int pass = 0, written = 0; written < count; ++pass) {
        int const points = std::min(count - written, runLength > 0 ? runLength : length(random));
        double heading = 0.3 * (unit(random) - 0.5);
        double const bend = 0.002 * (unit(random) - 0.5);
        double x = -2000.0;
        double y = -3000.0 + 6.0 * pass;
        for (int i = 0; i < points; ++i) {
            heading += bend;
            x += 2.5 * std::cos(heading);
            y += 2.5 * std::sin(heading);
            appendRecord(bytes, {static_cast<float>(x + noise(random)),
                                 static_cast<float>(y + noise(random))});
        }
        appendRecord(bytes, TPointHistory::breakMark);
        written += points;
    }
    return bytes;
}

QString writeFile(QTemporaryDir const& dir, QString const& name, QByteArray const& bytes) {
    QString const path = dir.filePath(name);
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
        fail("cannot write", path);
    return path;
}

// A figure of /proc/self/status in bytes, such as "VmRSS" or "VmHWM".
long long statusBytes(std::string const& key) {
    std::ifstream status("/proc/self/status");
    std::string line;
    while (std::getline(status, line))
        if (line.rfind(key + ":", 0) == 0)
            return std::atoll(line.c_str() + key.size() + 1) * 1024;
    return -1;
}

// The growth of the resident set while one pattern loads the file: freed memory goes back to the
// system first, and the kernel's peak is reset to the resident set of the moment.
long long peakLoadBytes(QString const& path, bool keepAllPoints) {
    malloc_trim(0);
    std::ofstream("/proc/self/clear_refs") << "5";
    long long const before = statusBytes("VmRSS");
    {
        TCurvePattern pattern;
        pattern.loadFile(path, centre, keepAllPoints);
    }
    return statusBytes("VmHWM") - before;
}

void benchLoad(QTemporaryDir const& dir) {
    std::printf("%-24s %9s %12s %10s %16s\n", "loadFile", "points", "M points/s", "ms",
                "peak bytes/point");
    for (bool keepAll : {true, false}) {
        char const* mode = keepAll ? "every point kept" : "thinned as recorded";
        double seconds[3] = {};
        for (int s = 0; s < 3; ++s) {
            int const points = loadSizes[s];
            QString const path =
                writeFile(dir, QStringLiteral("season%1.crv").arg(points), seasonFile(points, 7));
            long long const peak = peakLoadBytes(path, keepAll);
            TCurvePattern pattern;
            seconds[s] = bench_support::medianSeconds(
                [] {}, [&] { pattern.loadFile(path, centre, keepAll); });
            std::printf("%-24s %9d %12.2f %10.2f %16.1f\n", mode, points, points / seconds[s] / 1e6,
                        seconds[s] * 1e3, static_cast<double>(peak) / points);
        }
        std::printf("%-24s growth exponent 10k to 100k %.2f, 100k to 1M %.2f\n\n", mode,
                    std::log10(seconds[1] / seconds[0]), std::log10(seconds[2] / seconds[1]));
    }
}

void benchSearch(QTemporaryDir const& dir) {
    int const curves = 200;
    int const pointsPerCurve = 2000;
    QString const path = writeFile(dir, QStringLiteral("search.crv"),
                                   seasonFile(curves * pointsPerCurve, 11, pointsPerCurve));
    TCurvePattern pattern;
    if (!pattern.loadFile(path, centre, true) || pattern.curveCount() != curves + 1)
        fail("the search pattern did not load:", path);
    // Queries anywhere over the field that the passes cover.
    std::mt19937 random(3);
    std::uniform_real_distribution<float> across(-2000.0f, 3000.0f);
    std::uniform_real_distribution<float> along(-3200.0f, -1600.0f);
    std::vector<LocalPoint> queries(256);
    for (LocalPoint& query : queries)
        query = {across(random), along(random)};

    long long found = 0;
    double const curveSeconds =
        bench_support::medianSeconds([] {},
                                     [&] {
                                         for (LocalPoint const& query : queries)
                                             found += pattern.nearestCurve(query, -1.0f);
                                     });
    double const segmentSeconds = bench_support::medianSeconds(
        [] {},
        [&] {
            for (std::size_t i = 0; i < queries.size(); ++i) {
                int index = 0;
                TCurvePattern::nearestSegment(pattern.curvePoints(static_cast<int>(i) % curves),
                                              queries[i], &index);
                found += index;
            }
        });
    std::printf("%d curves of %d points (checksum %lld)\n", curves, pointsPerCurve, found);
    std::printf("%-24s %12.0f queries/s\n", "nearestCurve",
                static_cast<double>(queries.size()) / curveSeconds);
    std::printf("%-24s %12.0f queries/s (one curve of %d points)\n\n", "nearestSegment",
                static_cast<double>(queries.size()) / segmentSeconds, pointsPerCurve);
}

void benchFitCircle() {
    std::mt19937 random(5);
    std::normal_distribution<float> noise(0.0f, 0.05f);
    std::printf("%-24s %9s %12s %12s\n", "fitCircle", "points", "ms", "circles");
    for (int count : {10, 30, 100}) {
        // Recorded along a third of a circle of 400 m around (100, -50).
        std::vector<LocalPoint> points;
        for (int i = 0; i < count; ++i) {
            float const angle = 2.1f * static_cast<float>(i) / static_cast<float>(count);
            points.push_back({100.0f + 400.0f * std::cos(angle) + noise(random),
                              -50.0f + 400.0f * std::sin(angle) + noise(random)});
        }
        LocalPoint center;
        float radius = 0.0f;
        double const seconds = bench_support::medianSeconds(
            [] {}, [&] { TPivotPattern::fitCircle(center, radius, points.data(), count); });
        // The triples (i, j, k) with k >= j + 2.
        long long triples = 0;
        for (int j = 1; j < count; ++j)
            triples += static_cast<long long>(j) * std::max(0, count - j - 2);
        std::printf("%-24s %9d %12.3f %12lld   radius %.2f m around (%.2f, %.2f)\n", "", count,
                    seconds * 1e3, triples, radius, center.x, center.y);
    }
}

} // namespace

int main() {
    std::setvbuf(stdout, nullptr, _IOLBF, 0);
    std::printf("%s; one thread\n", bench_support::machine_line().c_str());
    std::printf("median of %d timings\n\n", bench_support::timings);
    QTemporaryDir dir;
    if (!dir.isValid())
        fail("no temporary directory", dir.path());
    benchLoad(dir);
    benchSearch(dir);
    benchFitCircle();
    return 0;
}
