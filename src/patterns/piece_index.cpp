#include "patterns/piece_index.h"

#include <algorithm>
#include <cmath>

namespace {

// A piece whose box spans more cells than this is tried by every search instead of entering its
// cells, so that one long piece costs one entry.
std::int64_t const widePieceCells = 64;
// A probe whose box spans more cells than this walks back over all pieces instead.
std::int64_t const widestProbeCells = 4096;
// Cell numbers are held to +-2^30, so that box sizes cannot overflow.
double const farthestCell = 1073741824.0;
// The points' box spans at most about this many cells a side.
double const mostCellsASide = 1048576.0;

bool isFinite(TSegment const& segment) {
    return std::isfinite(segment.start().x) && std::isfinite(segment.start().y) &&
           std::isfinite(segment.end().x) && std::isfinite(segment.end().y);
}

bool isFinite(LocalPoint p) {
    return std::isfinite(p.x) && std::isfinite(p.y);
}

struct Bounds {
    double x0 = 0.0, y0 = 0.0, x1 = 0.0, y1 = 0.0;
    bool any = false;
};

Bounds boundsOf(Path const& points) {
    Bounds bounds;
    for (LocalPoint const p : points) {
        if (!isFinite(p))
            continue;
        if (!bounds.any) {
            bounds = {p.x, p.y, p.x, p.y, true};
            continue;
        }
        bounds.x0 = std::min<double>(bounds.x0, p.x);
        bounds.y0 = std::min<double>(bounds.y0, p.y);
        bounds.x1 = std::max<double>(bounds.x1, p.x);
        bounds.y1 = std::max<double>(bounds.y1, p.y);
    }
    return bounds;
}

} // namespace

std::int64_t PieceIndex::Box::cells() const {
    return (std::int64_t{x1} - x0 + 1) * (std::int64_t{y1} - y0 + 1);
}

PieceIndex::PieceIndex(Path const& points, double cellSize) {
    Bounds const bounds = boundsOf(points);
    originX = bounds.x0;
    originY = bounds.y0;
    inverseCellSize = 1.0 / cellSize;
}

double PieceIndex::cellSizeFor(Path const& points, double smallest) {
    std::vector<double> lengths;
    lengths.reserve(points.size());
    for (std::size_t i = 1; i < points.size(); ++i) {
        LocalPoint const a = points[i - 1];
        LocalPoint const b = points[i];
        if (isFinite(a) && isFinite(b))
            lengths.push_back(std::hypot(double{b.x} - a.x, double{b.y} - a.y));
    }
    double size = smallest;
    if (!lengths.empty()) {
        auto const middle = lengths.begin() + static_cast<std::ptrdiff_t>(lengths.size() / 2);
        std::nth_element(lengths.begin(), middle, lengths.end());
        size = std::max(size, *middle);
    }
    Bounds const bounds = boundsOf(points);
    size = std::max(size, std::max(bounds.x1 - bounds.x0, bounds.y1 - bounds.y0) / mostCellsASide);
    return size > 0.0 && std::isfinite(size) ? size : 1.0;
}

std::int32_t PieceIndex::cellOf(float value, double origin) const {
    double const cell = std::floor((double{value} - origin) * inverseCellSize);
    return static_cast<std::int32_t>(std::clamp(cell, -farthestCell, farthestCell));
}

PieceIndex::Box PieceIndex::boxOf(TSegment const& segment) const {
    LocalPoint const a = segment.start();
    LocalPoint const b = segment.end();
    return {cellOf(std::min(a.x, b.x), originX), cellOf(std::min(a.y, b.y), originY),
            cellOf(std::max(a.x, b.x), originX), cellOf(std::max(a.y, b.y), originY)};
}

std::uint64_t PieceIndex::keyOf(std::int32_t x, std::int32_t y) {
    return std::uint64_t{static_cast<std::uint32_t>(x)} << 32 | static_cast<std::uint32_t>(y);
}

void PieceIndex::add(int number, TSegment const& segment) {
    if (!isFinite(segment))
        return;
    Box const box = boxOf(segment);
    bool const wide = box.cells() > widePieceCells;
    int const position = static_cast<int>(pieces.size());
    pieces.push_back({number, segment, box, wide});
    if (wide) {
        widePieces.push_back(position);
        return;
    }
    for (std::int32_t x = box.x0; x <= box.x1; ++x)
        for (std::int32_t y = box.y0; y <= box.y1; ++y)
            cells[keyOf(x, y)].push_back(position);
}

void PieceIndex::removeFrom(int number) {
    while (!pieces.empty() && pieces.back().number >= number) {
        Piece const& piece = pieces.back();
        if (piece.wide) {
            widePieces.pop_back();
        } else {
            for (std::int32_t x = piece.box.x0; x <= piece.box.x1; ++x)
                for (std::int32_t y = piece.box.y0; y <= piece.box.y1; ++y)
                    cells[keyOf(x, y)].pop_back();
        }
        pieces.pop_back();
    }
}

void PieceIndex::search(std::vector<int> const& positions, TSegment const& probe, int lowest,
                        int& best, LocalPoint& crossing) const {
    for (auto position = positions.rbegin(); position != positions.rend(); ++position) {
        Piece const& piece = pieces[*position];
        if (piece.number < lowest || piece.number <= best)
            return;
        LocalPoint at;
        if (probe.intersectSegment(piece.segment, at)) {
            best = piece.number;
            crossing = at;
            return;
        }
    }
}

int PieceIndex::lastCrossing(TSegment const& probe, int lowest, LocalPoint& crossing) const {
    if (!isFinite(probe))
        return -1;
    Box const box = boxOf(probe);
    int best = -1;
    if (box.cells() > widestProbeCells) {
        for (auto piece = pieces.rbegin(); piece != pieces.rend() && piece->number >= lowest;
             ++piece) {
            LocalPoint at;
            if (probe.intersectSegment(piece->segment, at)) {
                crossing = at;
                return piece->number;
            }
        }
        return -1;
    }
    for (std::int32_t x = box.x0; x <= box.x1; ++x) {
        for (std::int32_t y = box.y0; y <= box.y1; ++y) {
            auto const cell = cells.find(keyOf(x, y));
            if (cell != cells.end())
                search(cell->second, probe, lowest, best, crossing);
        }
    }
    search(widePieces, probe, lowest, best, crossing);
    return best;
}
