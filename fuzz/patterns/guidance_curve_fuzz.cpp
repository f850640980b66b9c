// Any bytes as a recorded point stream: a distance, then points each with a control byte, added
// to a guidance line with queries and parallel curves between them. A parallel curve never has
// more points than its line has, plus the two end caps of the vertex procedure.
#include "fuzz_support/fuzz_support.h"
#include "patterns/guidance_curve.h"

#include <cstdint>
#include <cstdlib>

namespace {

// Control bits of a point record.
enum : std::uint8_t {
    keepAll = 1 << 0,
    // The two coordinates are the bits of floats (not-a-number, infinities, huge and tiny
    // values), not whole centimetres: small coordinates make the crossings and cut-backs.
    rawFloats = 1 << 1,
    finishLine = 1 << 2,
    offsetByEventsNow = 1 << 3,
    offsetByVerticesNow = 1 << 4,
    forceOffset = 1 << 5,
};

void checkOffset(TGuidanceCurve const& line) {
    if (line.offsetPoints().size() > line.points().size() + 2)
        std::abort();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    fuzz_support::ByteReader input{data, size};
    if (!input.has(sizeof(float)))
        return 0;
    float const distance = input.take<float>();
    TGuidanceCurve line;
    std::uint8_t control = 0;
    auto coordinate = [&] {
        return control & rawFloats
                   ? input.take<float>()
                   : static_cast<float>(input.take<std::int32_t>() % 100000) * 0.01f;
    };
    while (input.has(1 + 2 * sizeof(float))) {
        control = input.take<std::uint8_t>();
        // A braced list evaluates its elements in order: x, then y.
        LocalPoint const point{coordinate(), coordinate()};
        line.add(point, control & keepAll);
        if (control & finishLine)
            line.finish();
        TSegment nearest;
        float squared = 0.0f;
        line.nearChord(point, distance);
        line.nearestSegment(point, nearest);
        line.squaredDistance(point, squared);
        // A distance that changes with the line, so that each offset is computed anew.
        float const now = distance + static_cast<float>(line.count());
        if (control & offsetByEventsNow)
            line.offsetByEvents(control & forceOffset, now);
        if (control & offsetByVerticesNow)
            line.offsetByVertices(-now);
        checkOffset(line);
    }
    line.finish();
    line.offsetByEvents(control & forceOffset, distance);
    checkOffset(line);
    line.offsetByVertices(-distance);
    checkOffset(line);
    TGuidanceCurve copy = line;
    copy.clear();
    copy.appendRange(line.points(), 1, line.count() - 1);
    copy.offsetByEvents(true, distance * 0.5f);
    checkOffset(copy);
    return 0;
}
