#ifndef PATTERNS_PIECE_INDEX_H
#define PATTERNS_PIECE_INDEX_H

#include "patterns/segment.h"
#include "polygons/path.h"

#include <cstdint>
#include <vector>

// A grid over the pieces of a polyline that the clean-ups of a parallel curve search for
// crossings, so that a search looks at the pieces near the probe instead of walking back over
// all of them. Pieces are added in ascending order of their number and removed from the back,
// as the clean-ups walk forward and cut loops behind them.
//
// The grid has levels whose cells grow eightfold from one to the next: a piece goes into the
// finest level where its box spans few cells, so that the long pieces of straight runs cost a
// few entries each and a search looks at a few cells on each level in use.
//
// The grid only narrows the search: every piece whose closed bounding box touches the probe's is
// tried with TSegment::intersectSegment, which rejects pieces whose boxes are apart, and the
// answer is the highest-numbered piece that crosses, exactly as a walk back from the newest piece
// would find it.
class PieceIndex {
public:
    // Cells of `cellSize` plane units on the finest level, laid from the lower corner of the
    // points' box.
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
        LocalPoint start;
        LocalPoint end;
        int number;
        // The grid level, or noLevel for a piece too wide even for the coarsest.
        int level;
    };
    static constexpr int levels = 8;
    static constexpr int noLevel = -1;

    // The cells of the box of a and b on the finest level, and that box on `level`.
    Box boxOf(LocalPoint a, LocalPoint b) const;
    static Box onLevel(Box const& box, int level);
    std::int32_t cellOf(float value, double origin) const;
    std::size_t bucketOf(int level, std::int32_t x, std::int32_t y) const;
    // Makes an entry of the piece at `position` in each cell of its box, x outer, y inner.
    void enter(int position);
    // Doubles the buckets and enters every piece again, in the order they came.
    void grow();
    // Whether a piece numbered `number` is worth no more search: below `lowest`, or not above the
    // best found so far. Chains hold the newest pieces first, so a search ends there.
    static bool pastSearch(int number, int lowest, int best);
    // Tries the piece at `position`, and keeps it in `best` and `crossing` if the probe crosses it.
    bool tryPiece(int position, TSegment const& probe, int& best, LocalPoint& crossing) const;

    double originX = 0.0;
    double originY = 0.0;
    double inverseCellSize = 1.0;
    std::vector<Piece> pieces;
    // One entry for each cell that a piece's box overlaps, in the order they were made. Cells are
    // hashed into buckets, each the head of a chain of entries linked newest first; cells that
    // share a bucket share its chain, which costs a search some extra tries but no answers.
    // Pieces go in ascending order and leave from the back, so an entry that leaves is always the
    // head of its chain.
    struct Entry {
        std::int32_t number;
        std::int32_t position;
        std::int32_t next;
    };
    std::vector<Entry> entries;
    std::vector<std::int32_t> buckets;
    // How many pieces each level holds, so that searches pass over empty levels.
    int piecesOnLevel[levels] = {};
    // Positions of pieces too wide for every level; tried by every search.
    std::vector<int> widePieces;
};

#endif
