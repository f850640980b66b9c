#include "patterns/piece_index.h"

#include <algorithm>
#include <cmath>

namespace {

// A piece goes into the finest level where its box spans at most this many cells.
std::int64_t const mostPieceCells = 64;
// Cells grow by 2^3 a side from one level to the next.
int const levelShift = 3;
// A probe whose box spans more cells than this walks back over all pieces instead.
std::int64_t const widestProbeCells = 4096;
// Cell numbers are held to +-2^30, so that box sizes cannot overflow.
double const farthestCell = 1073741824.0;
// The points' box spans at most about this many cells a side.
double const mostCellsASide = 1048576.0;
// The chain end, and the first number of buckets.
std::int32_t const noEntry = -1;
std::size_t const fewestBuckets = 1024;

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
    std::size_t size = fewestBuckets;
    // Room for a few cells a piece before the buckets have to grow.
    while (size < 4 * points.size())
        size *= 2;
    buckets.assign(size, noEntry);
    pieces.reserve(points.size());
    entries.reserve(size);
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

PieceIndex::Box PieceIndex::boxOf(LocalPoint a, LocalPoint b) const {
    return {cellOf(std::min(a.x, b.x), originX), cellOf(std::min(a.y, b.y), originY),
            cellOf(std::max(a.x, b.x), originX), cellOf(std::max(a.y, b.y), originY)};
}

PieceIndex::Box PieceIndex::onLevel(Box const& box, int level) {
    // Arithmetic shifts floor negative cell numbers as well.
    int const shift = levelShift * level;
    return {box.x0 >> shift, box.y0 >> shift, box.x1 >> shift, box.y1 >> shift};
}

std::size_t PieceIndex::bucketOf(int level, std::int32_t x, std::int32_t y) const {
    // Blocks of 8 x 8 cells take 64 neighbouring buckets, so that a line walking on through
    // neighbouring cells stays in the same few cache lines; the blocks themselves are spread by
    // Fibonacci hashing of both block coordinates and the level.
    std::uint64_t const block = (std::uint64_t{static_cast<std::uint32_t>(x >> 3)} << 32 |
                                 static_cast<std::uint32_t>(y >> 3)) +
                                static_cast<std::uint64_t>(level) * 0x632BE59BD9B4E019ull;
    std::size_t const inBlock = static_cast<std::size_t>((x & 7) << 3 | (y & 7));
    return (static_cast<std::size_t>((block * 0x9E3779B97F4A7C15ull) >> 32) << 6 | inBlock) &
           (buckets.size() - 1);
}

void PieceIndex::enter(int position) {
    Piece const& piece = pieces[position];
    Box const box = onLevel(boxOf(piece.start, piece.end), piece.level);
    for (std::int32_t x = box.x0; x <= box.x1; ++x) {
        for (std::int32_t y = box.y0; y <= box.y1; ++y) {
            std::int32_t& head = buckets[bucketOf(piece.level, x, y)];
            entries.push_back({piece.number, position, head});
            head = static_cast<std::int32_t>(entries.size() - 1);
        }
    }
}

void PieceIndex::grow() {
    buckets.assign(buckets.size() * 2, noEntry);
    entries.clear();
    for (std::size_t position = 0; position < pieces.size(); ++position)
        if (pieces[position].level != noLevel)
            enter(static_cast<int>(position));
}

void PieceIndex::add(int number, TSegment const& segment) {
    if (!isFinite(segment))
        return;
    Box const box = boxOf(segment.start(), segment.end());
    int level = 0;
    while (level < levels && onLevel(box, level).cells() > mostPieceCells)
        ++level;
    int const position = static_cast<int>(pieces.size());
    if (level == levels) {
        pieces.push_back({segment.start(), segment.end(), number, noLevel});
        widePieces.push_back(position);
        return;
    }
    pieces.push_back({segment.start(), segment.end(), number, level});
    ++piecesOnLevel[level];
    enter(position);
    if (entries.size() > buckets.size())
        grow();
}

void PieceIndex::removeFrom(int number) {
    while (!pieces.empty() && pieces.back().number >= number) {
        Piece const& piece = pieces.back();
        if (piece.level == noLevel) {
            widePieces.pop_back();
        } else {
            // Its entries are the newest, each at the head of its chain: unlinked in reverse.
            --piecesOnLevel[piece.level];
            Box const box = onLevel(boxOf(piece.start, piece.end), piece.level);
            for (std::int32_t x = box.x1; x >= box.x0; --x) {
                for (std::int32_t y = box.y1; y >= box.y0; --y) {
                    buckets[bucketOf(piece.level, x, y)] = entries.back().next;
                    entries.pop_back();
                }
            }
        }
        pieces.pop_back();
    }
}

bool PieceIndex::pastSearch(int number, int lowest, int best) {
    return number < lowest || number <= best;
}

bool PieceIndex::tryPiece(int position, TSegment const& probe, int& best,
                          LocalPoint& crossing) const {
    LocalPoint at;
    Piece const& piece = pieces[position];
    if (!probe.intersectSegment(TSegment(piece.start, piece.end), at))
        return false;
    best = piece.number;
    crossing = at;
    return true;
}

int PieceIndex::lastCrossing(TSegment const& probe, int lowest, LocalPoint& crossing) const {
    if (!isFinite(probe))
        return -1;
    Box const box = boxOf(probe.start(), probe.end());
    int best = -1;
    if (box.cells() > widestProbeCells) {
        for (int position = static_cast<int>(pieces.size()) - 1;
             position >= 0 && !pastSearch(pieces[position].number, lowest, best); --position)
            if (tryPiece(position, probe, best, crossing))
                break;
        return best;
    }
    for (int level = 0; level < levels; ++level) {
        if (piecesOnLevel[level] == 0)
            continue;
        Box const cells = onLevel(box, level);
        for (std::int32_t x = cells.x0; x <= cells.x1; ++x) {
            for (std::int32_t y = cells.y0; y <= cells.y1; ++y) {
                for (std::int32_t entry = buckets[bucketOf(level, x, y)]; entry != noEntry;
                     entry = entries[entry].next) {
                    if (pastSearch(entries[entry].number, lowest, best) ||
                        tryPiece(entries[entry].position, probe, best, crossing))
                        break;
                }
            }
        }
    }
    for (auto position = widePieces.rbegin(); position != widePieces.rend(); ++position)
        if (pastSearch(pieces[*position].number, lowest, best) ||
            tryPiece(*position, probe, best, crossing))
            break;
    return best;
}
