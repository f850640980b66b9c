#pragma once
// The frame of a drawing: which part of a plane in metres (x east, y south)
// a panel of so many pixels shows, and the text of coordinates in it. The
// page keeps metres as its SVG user units, so every coordinate in it is a
// plane coordinate.

#include "coordinates/points.h"
#include "polygons/path.h"
#include "preview/field_sketch.h"

#include <QString>

#include <optional>

// A rectangle of the plane in metres; empty until something is added.
struct Bounds {
    float left = 0, top = 0, right = 0, bottom = 0;
    bool empty = true;

    void add(LocalPoint point);
    void add(Bounds const& other);
    Bounds shifted(LocalPoint offset) const;
};

// What the sketch draws: rings, line points, pivot circles and points.
Bounds boundsOf(FieldSketch const& sketch);

struct PanelFrame {
    double left = 0, top = 0, width = 1, height = 1; // the part of the plane shown, metres
    double metresPerPixel = 1;
    int decimals = 0; // of a coordinate, enough for a tenth of a pixel

    // Metres as text with `decimals` digits at most, no trailing zeros.
    QString number(double metres) const;
    // Metres of `pixels` on the screen, as text.
    QString pixels(double pixels) const { return number(pixels * metresPerPixel); }
    QString viewBox() const;
};

// The frame of a panel of `width` x `height` pixels that shows the bounds
// whole, centred, at one scale on both axes, with `margin` pixels around
// them. Bounds narrower than smallestExtent metres (a single point) are
// widened to it.
PanelFrame frameAround(Bounds const& bounds, int width, int height, int margin);
inline constexpr float smallestExtent = 50.0f;

// SVG path data of the path moved by `offset`: "M x y x y ...", with "Z" for a
// ring; empty for an empty path.
QString pathData(Path const& path, bool closed, PanelFrame const& frame,
                 LocalPoint offset = LocalPoint());

// The part of the straight line through `through` along `direction` that
// lies in the frame, as its two ends; none when it misses the frame or the
// direction is zero or not finite.
std::optional<Path> lineAcross(LocalPoint through, LocalPoint direction, PanelFrame const& frame);
