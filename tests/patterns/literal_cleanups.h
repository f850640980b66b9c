#pragma once
// The clean-ups of a raw parallel curve exactly as their procedures read, for comparison with the
// library's: every search walks back over all older pieces, a loop cut starts the walk again at
// the first piece, and points are erased and inserted in place. Slow on purpose.

#include "patterns/segment.h"
#include "polygons/path.h"

struct LiteralCleanups {
    Path result;
    float distance = 0.0f;
    LocalPoint previous;
    LocalPoint current;

    bool removeLoops();
    void removeSharpTurns();
    void removeSpikes();
    int cutBack(int index);
    bool turnIsGentle(LocalPoint p) const;
};
