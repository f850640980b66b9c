#ifndef PATTERNS_PIECE_INDEX_H
#define PATTERNS_PIECE_INDEX_H

#include "patterns/segment.h"
#include "polygons/path.h"

#include <cstdint>
#include <unordered_map>
#include <vector>

// A uniform grid over the pieces of a polyline that the clean-ups of a parallel curve search for
// crossings, so that a search looks at the pieces near the probe instead of walking back over
// all of them. Pieces are added in ascending order of their number and removed from the back,
// as the clean-ups walk forward and cut loops behind them.
//
// The grid only narrows the search: every piece whose closed bounding box touches the probe's is
// tried with TSegment::intersectSegment, which rejects pieces whose boxes are apart, and the
// answer is the highest-numbered piece that crosses, exactly as a walk back from the newest piece
// would find it.
class PieceIndex {
public:
    // Cells of `cellSize` plane units, laid from the lower corner of the points' box.
    PieceIndex(Path const& points, double cellSize);

    // Adds piece `number`, above every number held. A piece with a non-finite coordinate is not
    // held: it crosses nothing.
    void add(int number, TSegment const& piece);
    // Removes every piece numbered `number` or above.
    void removeFrom(int number);
    // The highest number, not below `lowest`, of a piece that `probe.intersectSegment` crosses,
    // with the crossing in `crossing`; -1 if there is none.
    int lastCrossing(TSegment const& probe, int lowest, LocalPoint& crossing) const;

    // A cell size for the pieces of `points`: the median piece length, at least `smallest`, and
    // large enough that the points' box spans no more than about a million cells a side.
    static double cellSizeFor(Path const& points, double smallest);

private:
    struct Box {
        std::int32_t x0, y0, x1, y1;
        std::int64_t cells() const;
    };
    struct Piece {
        int number;
        TSegment segment;
        Box box;
        bool wide;
    };

    Box boxOf(TSegment const& segment) const;
    std::int32_t cellOf(float value, double origin) const;
    static std::uint64_t keyOf(std::int32_t x, std::int32_t y);
    // Tries the pieces at `positions`, newest first, down to `lowest` or the best found so far.
    void search(std::vector<int> const& positions, TSegment const& probe, int lowest, int& best,
                LocalPoint& crossing) const;

    double originX = 0.0;
    double originY = 0.0;
    double inverseCellSize = 1.0;
    std::vector<Piece> pieces;
    // Positions in `pieces`, ascending, of the pieces whose box overlaps each cell.
    std::unordered_map<std::uint64_t, std::vector<int>> cells;
    // Positions of pieces spanning too many cells to enter them all; tried by every search.
    std::vector<int> widePieces;
};

#endif
