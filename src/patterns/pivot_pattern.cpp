#include "patterns/pivot_pattern.h"

#include "coordinates/geodetic.h"
#include "coordinates/numbers.h"
#include "guidance/line_correction.h"
#include "guidance/pivot_file.h"

#include <cmath>

namespace {

// Rings closer than this (metres) are no rings.
double const narrowestSpacing = 0.01;
// The spacing of a loaded pattern.
float const loadedSpacing = 10.0f;
// A fitted circle outside these radii (metres) is no pivot.
float const smallestFittedRadius = 1.0f;
float const largestFittedRadius = 10000.0f;
// How far a drawn chord may stray from its circle, metres.
float const chordSagitta = 0.1f;
double const fullTurn = 6.283185307179586;

} // namespace

void TPivotPattern::set(LocalPoint center, float radius, float spacing) {
    center_ = center;
    spacing_ = spacing;
    radius_ = radius;
    ring_ = 0;
    dirty_ = true;
    ready_ = true;
    state_ = patternSet;
    offset_ = 0.0f;
}

void TPivotPattern::reset() {
    dirty_ = true;
    ring_ = noRing;
    state_ = 0;
    offset_ = 0.0f;
    ready_ = true;
}

void TPivotPattern::setSpacing(float spacing) {
    spacing_ = spacing;
    dirty_ = true;
}

int TPivotPattern::ringForDistance(float distance) const {
    if (!(static_cast<double>(spacing_) >= narrowestSpacing))
        return 0;
    float const rings = (distance - radius_) / spacing_;
    return truncatedToInt(radius_ > distance ? rings - 0.5f : rings + 0.5f);
}

void TPivotPattern::setRingForDistance(float distance) {
    int const ring = ringForDistance(distance);
    if (ring != ring_) {
        ring_ = ring;
        dirty_ = true;
    }
}

float TPivotPattern::ringRadius(int ring) const {
    return radius_ + static_cast<float>(ring) * spacing_;
}

void TPivotPattern::setOffset(float value) {
    if (state_ != patternSet)
        return;
    radius_ = radius_ + offset_ - value;
    offset_ = value;
    dirty_ = true;
}

void TPivotPattern::setCountValue(int count) {
    count_ = static_cast<float>(count);
}

int TPivotPattern::countValue() const {
    return truncatedToInt(count_);
}

bool TPivotPattern::basePositionValue(QByteArray& out) const {
    out = basePosition_;
    return !basePosition_.isEmpty();
}

bool TPivotPattern::circleThrough(LocalPoint& center, float& radius, LocalPoint third,
                                  LocalPoint middle, LocalPoint first) {
    float const x1 = first.x;
    float const y1 = first.y;
    float const x2 = middle.x;
    float const y2 = middle.y;
    float const x3 = third.x;
    float const y3 = third.y;
    float const d1 = x1 * (y2 - y3) + x2 * (y3 - y1) + x3 * (y1 - y2);
    float const d2 = y1 * (x2 - x3) + y2 * (x3 - x1) + y3 * (x1 - x2);
    if (d1 == 0.0f || d2 == 0.0f)
        return false;
    float const s1 = x1 * x1 + y1 * y1;
    float const s2 = x2 * x2 + y2 * y2;
    float const s3 = x3 * x3 + y3 * y3;
    center.y = 0.5f * ((s1 * (x2 - x3) + s2 * (x3 - x1) + s3 * (x1 - x2)) / d2);
    center.x = 0.5f * ((s1 * (y2 - y3) + s2 * (y3 - y1) + s3 * (y1 - y2)) / d1);
    float const dx = center.x - x3;
    float const dy = center.y - y3;
    radius = std::sqrt(dx * dx + dy * dy);
    return true;
}

bool TPivotPattern::fitCircle(LocalPoint& center, float& radius, LocalPoint const* points,
                              int count) {
    LocalPoint sum;
    float radiusSum = 0.0f;
    int circles = 0;
    for (int i = 0; i < count; ++i) {
        for (int j = i + 1; j < count; ++j) {
            for (int k = j + 2; k < count; ++k) {
                LocalPoint c;
                float r = 0.0f;
                if (!circleThrough(c, r, points[k], points[j], points[i]))
                    continue;
                sum.x += c.x;
                sum.y += c.y;
                radiusSum += r;
                ++circles;
            }
        }
    }
    if (circles == 0)
        return false;
    float const share = 1.0f / static_cast<float>(circles);
    center = {sum.x * share, sum.y * share};
    radius = radiusSum / static_cast<float>(circles);
    return radius >= smallestFittedRadius && radius <= largestFittedRadius;
}

int TPivotPattern::vertexCount(float radius) {
    float const cosine = 1.0f - chordSagitta / radius;
    return truncatedToInt(fullTurn / static_cast<double>(std::acos(cosine)));
}

bool TPivotPattern::load(QString const& path) {
    state_ = 0;
    offset_ = 0.0f;
    bool const loaded = loadFrom(QSettings(path, QSettings::IniFormat));
    setReady(false);
    return loaded;
}

bool TPivotPattern::loadFrom(QSettings const& settings) {
    if (!settings.contains(pivot_keys::state))
        return false;
    state_ = settings.value(pivot_keys::state).toInt();
    if (state_ != patternSet)
        return false;
    LineCorrection const correction = read_line_correction(settings);
    correctionSource_ = correction.source;
    basePosition_ = correction.position_text;
    GeoPoint reference;
    if (!read_pivot_reference(settings, reference.latitude, reference.longitude))
        return false;
    LocalPoint const offset{static_cast<float>(settings.value(pivot_keys::centre_x).toDouble()),
                            static_cast<float>(settings.value(pivot_keys::centre_y).toDouble())};
    // The pattern works in the frame of latitude 0, longitude 0.
    LocalPoint const center = geoToLocal(localToGeo(offset, reference), GeoPoint());
    set(center, static_cast<float>(settings.value(pivot_keys::inner_radius).toDouble()),
        loadedSpacing);
    return true;
}

bool TPivotPattern::save(QString const& path, double latitude, double longitude, double radius) {
    QSettings settings(path, QSettings::IniFormat);
    settings.setValue(pivot_keys::centre_x, 0.0);
    settings.setValue(pivot_keys::centre_y, 0.0);
    settings.setValue(pivot_keys::inner_radius, radius);
    settings.setValue(pivot_keys::reference_latitude, latitude);
    settings.setValue(pivot_keys::reference_longitude, longitude);
    settings.setValue(pivot_keys::state, patternSet);
    settings.sync();
    return true;
}
