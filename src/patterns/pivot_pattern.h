#ifndef PATTERNS_PIVOT_PATTERN_H
#define PATTERNS_PIVOT_PATTERN_H

#include "coordinates/points.h"

#include <QByteArray>
#include <QSettings>
#include <QString>

// A circular guidance pattern in a local frame: a centre, the radius of ring 0 and rings at a
// fixed spacing around it, with the current ring chosen by distance from the centre. It loads and
// saves a pivot's settings file and fits circles through recorded points. Metres, single
// precision.
class TPivotPattern {
public:
    virtual ~TPivotPattern() = default;

    // A pattern around `center` with ring 0 at `radius`; the current ring is 0, no offset.
    void set(LocalPoint center, float radius, float spacing);
    // No pattern and no current ring (999).
    void reset();
    void setSpacing(float spacing);

    // The ring nearest to a distance from the centre, halves rounded away from ring 0; 0 for a
    // spacing below 1 cm or not a number.
    int ringForDistance(float distance) const;
    // Makes ringForDistance the current ring.
    void setRingForDistance(float distance);
    float ringRadius(int ring) const;
    float currentRingRadius() const { return ringRadius(ring_); }
    float baseRadius() const { return ringRadius(0); }
    // Shifts ring 0 inward by `value`, undoing the last offset first, so that radius plus offset
    // stays as it was. Only while a pattern is set.
    void setOffset(float value);

    LocalPoint centerValue() const { return center_; }
    int ringValue() const { return ring_; }
    float offsetValue() const { return offset_; }
    int stateValue() const { return state_; }
    bool readyValue() const { return ready_; }
    void setReady(bool ready) { ready_ = ready; }
    // Set whenever the rings move, for whoever draws them.
    bool dirtyValue() const { return dirty_; }
    void setCountValue(int count);
    int countValue() const;
    int correctionSourceValue() const { return correctionSource_; }
    bool enabledValue() const { return !disabled_; }
    void setEnabled(bool enabled) { disabled_ = !enabled; }
    bool basePositionValue(QByteArray& out) const;

    // The mean of the circles through all triples (i, j, k) of the points with i < j and
    // k >= j + 2, so that the last two of a triple are never neighbours: four points give the
    // one triple (0, 1, 3). False, writing nothing, when no triple makes a circle (collinear or
    // too few points); false too, with the mean written, for a mean radius outside 1 to 10000 m.
    // The work grows with the cube of the count.
    static bool fitCircle(LocalPoint& center, float& radius, LocalPoint const* points, int count);
    // The circle through three points, its radius measured to `third`; false, writing nothing,
    // for points on a line.
    static bool circleThrough(LocalPoint& center, float& radius, LocalPoint third,
                              LocalPoint middle, LocalPoint first);
    // The vertices a circle of the radius is drawn with, so that a chord strays at most 0.1 m
    // from it; 0 for a radius under 0.05 m, the largest int for one too large to tell from a
    // straight line.
    static int vertexCount(float radius);

    // A pivot's settings file with "State" 2: the correction settings, the reference in either
    // form, "Center/X" and "Center/Y" (metres east and south of the reference) and "InnerRadius".
    // The centre is kept in the frame of latitude 0, longitude 0, not in the reference's; the
    // spacing is 10 m. False for a file without "State", with another state, or without a
    // reference: the state then is what the file said, or 0. Leaves the pattern not ready.
    bool load(QString const& path);
    // Writes a pattern of `radius` around the reference (degrees) with "State" 2 and a centre
    // offset of zero. Always true.
    static bool save(QString const& path, double latitude, double longitude, double radius);

private:
    bool loadFrom(QSettings const& settings);

    LocalPoint center_;
    float spacing_ = 10.0f;
    int ring_ = noRing;
    float radius_ = 0.0f;
    // A whole number, kept as a float.
    float count_ = 1.0f;
    float offset_ = 0.0f;
    int state_ = 0;
    bool dirty_ = false;
    bool ready_ = false;
    bool disabled_ = true;
    int correctionSource_ = 0;
    QByteArray basePosition_;

    static constexpr int noRing = 999;
    static constexpr int patternSet = 2;
};

#endif
