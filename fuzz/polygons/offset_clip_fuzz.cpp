// Any bytes as paths for parallelPath and clipPaths: a settings byte, the distance, extension and
// arc step, then points, each with a byte that can start a new path. The first path goes through
// parallelPath, the rest, as subjects and clips in turn, through clipPaths. Results come from
// the integer grid and so are finite, and the owners that clipPaths gives count up from 0 in
// steps of one.
#include "fuzz_support/fuzz_support.h"
#include "polygons/path_clip.h"
#include "polygons/path_offset.h"

#include <clipper.hpp>

#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <vector>

namespace {

// Bits of the settings byte.
enum : std::uint8_t {
    // Coordinates, and distance, extension and arc step, are the bits of floats (not-a-number,
    // infinities, huge and tiny values), not decimetres and small steps.
    rawPoints = 1 << 0,
    rawSettings = 1 << 1,
    subjectsClosed = 1 << 2,
    strictlySimple = 1 << 3,
    // Bits 4 and 5 pick the ClipType.
    clipTypeShift = 4,
};

// Bit of a point's byte.
enum : std::uint8_t { startsPath = 1 << 0 };

// Inputs for which parallelPath may rightly give more points than this are passed over: a huge
// distance in steps of 0.1, or a path hundreds of kilometres long resampled to steps of 5, is
// only slow, not wrong, and would take the fuzzer's time from odd shapes.
double const mostPointsPerInput = 5e4;
double const pi = 3.141592653589793;
double const smallestArcStep = 0.1;
double const longestResultStep = 5.0;

// A bound on the points of parallelPath: a round join of |distance| * pi / arc_step points at
// each of the 2 n + 4 vertices of its ring (the path forward and back, with hooks and
// extensions), and lines in steps of 5 along the ring, which runs twice along the path with its
// extensions and across it, twice the distance, at every vertex. Segments that are not finite
// are resampled as one piece.
double mostResultPoints(Path const& path, float extension, float distance, float arc_step) {
    double length = 0.0;
    for (std::size_t i = 1; i < path.size(); ++i) {
        double const segment = std::hypot(static_cast<double>(path[i].x - path[i - 1].x),
                                          static_cast<double>(path[i].y - path[i - 1].y));
        if (std::isfinite(segment))
            length += segment;
    }
    double const offset = std::fabs(static_cast<double>(distance));
    double const vertices = 2.0 * static_cast<double>(path.size()) + 4.0;
    // An arc step that is not a number passes the guard and makes no joins; counting it as
    // the smallest step keeps its resampled lines in the bound.
    double const step = static_cast<double>(arc_step) > smallestArcStep
                            ? static_cast<double>(arc_step)
                            : smallestArcStep;
    double const joinPoints = offset * pi / step * vertices;
    // Only an extension that moves the ends counts, as in parallelPath: not a number does not.
    double const reach =
        static_cast<double>(extension) > 0.1 ? static_cast<double>(extension) : 0.0;
    double const ringLength = 2.0 * (length + 2.0 * reach) + vertices * offset * (2.0 + pi);
    return joinPoints + ringLength / longestResultStep + vertices;
}

bool finite(PathList const& paths) {
    for (Path const& path : paths)
        for (LocalPoint point : path)
            if (!std::isfinite(point.x) || !std::isfinite(point.y))
                return false;
    return true;
}

void checkParallelPath(Path const& path, float extension, float distance, float arc_step) {
    // A bound that is not a number passes over the input too.
    if (!(mostResultPoints(path, extension, distance, arc_step) <= mostPointsPerInput))
        return;
    try {
        PathList const lines = parallelPath(path, extension, distance, arc_step);
        // Only no offset at all returns points that did not pass through the grid.
        if (std::fabs(distance) >= 1e-4f && !finite(lines))
            std::abort();
    } catch (ClipperLib::clipperException const&) {
        // ClipperLib's failures are the caller's to handle.
    }
}

void checkClipPaths(PathList const& subjects, PathList const& clips, std::uint8_t settings) {
    auto const clipType = static_cast<ClipperLib::ClipType>((settings >> clipTypeShift) & 3);
    std::vector<int> groups{-1};
    PathList const result = clipPaths(subjects, settings & subjectsClosed, clips, clipType, &groups,
                                      settings & strictlySimple);
    if (!finite(result))
        std::abort();
    if (result.empty())
        return;
    if (groups.size() != result.size() || groups[0] != 0)
        std::abort();
    for (std::size_t i = 1; i < groups.size(); ++i)
        if (groups[i] != groups[i - 1] && groups[i] != groups[i - 1] + 1)
            std::abort();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    fuzz_support::ByteReader input{data, size};
    if (!input.has(1 + 3 * sizeof(float)))
        return 0;
    std::uint8_t const settings = input.take<std::uint8_t>();
    // Raw bits of floats, or hundredths from whole numbers.
    auto setting = [&](std::int32_t range) {
        return settings & rawSettings
                   ? input.take<float>()
                   : static_cast<float>(input.take<std::int32_t>() % range) * 0.01f;
    };
    float const distance = setting(4000);
    float const extension = setting(1000);
    float const arcStep = setting(1000);

    PathList paths(1);
    std::size_t const pointSize =
        settings & rawPoints ? 2 * sizeof(float) : 2 * sizeof(std::int16_t);
    auto coordinate = [&] {
        return settings & rawPoints ? input.take<float>()
                                    : static_cast<float>(input.take<std::int16_t>()) * 0.1f;
    };
    while (input.has(1 + pointSize)) {
        if ((input.take<std::uint8_t>() & startsPath) && !paths.back().empty())
            paths.emplace_back();
        // A braced list evaluates its elements in order: x, then y.
        paths.back().push_back(LocalPoint{coordinate(), coordinate()});
    }

    checkParallelPath(paths[0], extension, distance, arcStep);
    PathList subjects;
    PathList clips;
    for (std::size_t i = 1; i < paths.size(); ++i)
        (i % 2 ? subjects : clips).push_back(paths[i]);
    checkClipPaths(subjects, clips, settings);
    return 0;
}
