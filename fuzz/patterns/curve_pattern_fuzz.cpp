// Any bytes as a .crv file, loaded into a curve pattern and searched. Every finished curve holds
// a point, the open curve none, and the load succeeds exactly when it finished a curve.
#include "fuzz_support/fuzz_support.h"
#include "patterns/curve_pattern.h"

#include <cstdlib>

namespace {

GeoPoint const centre{52.5, 13.25, 40.0};

void check(bool holds) {
    if (!holds)
        std::abort();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    QString const dir = fuzz_support::input_files(data, size, {"Line.crv"});
    TCurvePattern pattern;
    bool const loaded = pattern.loadFile(dir + "/Line.crv", centre, size % 2 == 0);
    int const curves = pattern.curveCount();
    check(loaded == (curves > 1));
    check(pattern.lastCurvePoints().empty());
    for (int i = 0; i + 1 < curves; ++i)
        check(!pattern.curvePoints(i).empty());

    LocalPoint const probe = loaded ? pattern.firstCurvePoints().front() : LocalPoint{};
    check(pattern.nearestCurve(probe, -1.0f) < curves - 1);
    for (int i = 0; i < curves; ++i) {
        Path const& points = pattern.curvePoints(i);
        int index = 0;
        TCurvePattern::nearestSegment(points, probe, &index);
        int start = static_cast<int>(points.size()) / 2;
        int const reached =
            TCurvePattern::widenToDistance(points, start, i % 2 == 0 ? 1 : -1, 5.0f);
        check(reached == -1 || (start >= 0 && start < static_cast<int>(points.size())));
    }
    check(pattern.writePoint(probe) == loaded);
    return 0;
}
