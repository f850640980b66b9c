#include "polygons/path_simplify.h"

#include "polygons/lines.h"

#include <cmath>
#include <utility>

Path resamplePath(Path const& path, float max_step) {
    Path result;
    if (path.empty())
        return result;
    result.reserve(path.size());
    result.push_back(path.front());
    for (std::size_t k = 1; k < path.size(); ++k) {
        LocalPoint const a = result.back();
        LocalPoint const b = path[k];
        float const dx = b.x - a.x;
        float const dy = b.y - a.y;
        float const quotient = std::ceil(std::sqrt(dx * dx + dy * dy) / max_step);
        int pieces = 1;
        if (std::isfinite(quotient) && quotient > 1.0f)
            pieces = quotient < static_cast<float>(mostPiecesPerSegment)
                         ? static_cast<int>(quotient)
                         : mostPiecesPerSegment;
        for (int i = 1; i <= pieces; ++i) {
            float const t = static_cast<float>(i) / static_cast<float>(pieces);
            result.push_back({t * b.x + (1.0f - t) * a.x, t * b.y + (1.0f - t) * a.y});
        }
    }
    return result;
}

namespace {

// Sets the bit of every point that the Douglas-Peucker marking keeps between `first` and `last`,
// indices taken modulo the size so that a ring's range can end at its point 0. The ranges still
// to mark wait on a stack rather than in recursion, so that a long path cannot overflow the call
// stack; the bits set do not depend on the order in which ranges are marked.
void markKeptPoints(Path const& path, int first, int last, float tolerance,
                    std::vector<bool>& kept) {
    int const size = static_cast<int>(path.size());
    std::vector<std::pair<int, int>> ranges{{first, last}};
    while (!ranges.empty()) {
        auto [from, to] = ranges.back();
        ranges.pop_back();
        while (to - from >= 2) {
            LocalPoint const a = path[from % size];
            LocalPoint const b = path[to % size];
            // Distances are never negative and not-a-number ones never win, so starting at 0
            // passes over points without a distance.
            int farthest = from + 1;
            float largest = 0.0f;
            for (int i = from + 1; i < to; ++i) {
                LocalPoint const p = path[i % size];
                LocalPoint const q = closestOnSegment(p, a, b);
                float const distance =
                    std::sqrt((p.x - q.x) * (p.x - q.x) + (p.y - q.y) * (p.y - q.y));
                if (distance > largest) {
                    farthest = i;
                    largest = distance;
                }
            }
            if (!(largest > tolerance))
                break;
            kept[farthest % size] = true;
            ranges.push_back({from, farthest});
            from = farthest;
        }
    }
}

} // namespace

std::vector<int> simplifyPathIndices(Path const& path, bool closed, float tolerance) {
    std::vector<int> indices;
    int const size = static_cast<int>(path.size());
    if (size < 3)
        return indices;
    std::vector<bool> kept(path.size(), false);
    kept[0] = true;
    if (closed) {
        markKeptPoints(path, 0, size, tolerance, kept);
    } else {
        kept[size - 1] = true;
        markKeptPoints(path, 0, size - 1, tolerance, kept);
    }
    for (int i = 0; i < size; ++i)
        if (kept[i])
            indices.push_back(i);
    return indices;
}

Path simplifyPath(Path const& path, bool closed, float tolerance) {
    if (path.size() < 3)
        return path;
    Path result;
    for (int index : simplifyPathIndices(path, closed, tolerance))
        result.push_back(path[index]);
    return result;
}
