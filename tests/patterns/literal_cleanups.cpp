#include "literal_cleanups.h"

bool LiteralCleanups::removeLoops() {
    int n = static_cast<int>(result.size());
    if (n < 2)
        return false;
    bool cut = false;
    for (int i = 1; i < n; ++i) {
        TSegment const s(result[i - 1], result[i]);
        int c = 2;
        for (int j = i - 2; j > 1; --j, ++c) {
            LocalPoint crossing;
            if (s.intersectSegment(TSegment(result[j], result[j - 1]), crossing) && c < n / 2) {
                result.erase(result.begin() + j, result.begin() + i);
                result.insert(result.begin() + j, crossing);
                previous = crossing;
                current = result[j + 1];
                n = static_cast<int>(result.size());
                i = 0; // the loop's increment starts the walk again at 1
                cut = true;
                break;
            }
        }
    }
    return cut;
}

bool LiteralCleanups::turnIsGentle(LocalPoint p) const {
    if (previous.x == 0.0f || current.x == 0.0f)
        return true;
    double turn = static_cast<double>(TSegment(current, p).heading()) -
                  static_cast<double>(TSegment(previous, current).heading());
    if (turn > 180.0)
        turn -= 360.0;
    else if (turn < -180.0)
        turn += 360.0;
    return turn >= -90.0 && turn <= 90.0;
}

void LiteralCleanups::removeSharpTurns() {
    if (result.size() < 4)
        return;
    previous = result[0];
    current = result[1];
    for (int i = 2; i < static_cast<int>(result.size()); ++i) {
        LocalPoint const p = result[i];
        if (turnIsGentle(p)) {
            previous = current;
        } else {
            i = cutBack(i);
            previous = LocalPoint{};
        }
        current = p;
    }
}

int LiteralCleanups::cutBack(int index) {
    if (index + 1 >= static_cast<int>(result.size()))
        return index;
    TSegment probe;
    probe.setByHeading(result[index], TSegment(result[index + 1], result[index]).heading() - 180.0f,
                       distance);
    TSegment const s(result[index + 1], probe.end());
    if (index < 2)
        return index;
    for (int j = index - 1; j >= 1; --j) {
        LocalPoint crossing;
        if (s.intersectSegment(TSegment(result[j], result[j - 1]), crossing)) {
            result.erase(result.begin() + j, result.begin() + index);
            result.insert(result.begin() + j, crossing);
            previous = crossing;
            current = result[j + 1];
            return j + 1;
        }
    }
    return index;
}

void LiteralCleanups::removeSpikes() {
    if (result.size() < 4)
        return;
    previous = result[0];
    current = result[1];
    for (std::size_t i = 2; i < result.size(); ++i) {
        LocalPoint const p = result[i];
        if (turnIsGentle(p)) {
            previous = current;
            current = p;
            continue;
        }
        if (i + 1 >= result.size())
            return;
        LocalPoint const q = result[i + 1];
        previous = current;
        current = p;
        if (turnIsGentle(q)) {
            previous = result[i - 2];
            current = result[i - 1];
        } else {
            result.erase(result.begin() + static_cast<std::ptrdiff_t>(i) - 1,
                         result.begin() + static_cast<std::ptrdiff_t>(i) + 1);
            previous = LocalPoint{};
            current = p;
        }
    }
}
