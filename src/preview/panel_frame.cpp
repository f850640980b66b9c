#include "preview/panel_frame.h"

#include <algorithm>
#include <cmath>
#include <limits>

void Bounds::add(LocalPoint point) {
    if (!std::isfinite(point.x) || !std::isfinite(point.y))
        return;
    if (empty) {
        left = right = point.x;
        top = bottom = point.y;
        empty = false;
        return;
    }
    left = std::min(left, point.x);
    right = std::max(right, point.x);
    top = std::min(top, point.y);
    bottom = std::max(bottom, point.y);
}

void Bounds::add(Bounds const& other) {
    if (other.empty)
        return;
    add(LocalPoint{other.left, other.top});
    add(LocalPoint{other.right, other.bottom});
}

Bounds Bounds::shifted(LocalPoint offset) const {
    Bounds moved = *this;
    moved.left += offset.x;
    moved.right += offset.x;
    moved.top += offset.y;
    moved.bottom += offset.y;
    return moved;
}

Bounds boundsOf(FieldSketch const& sketch) {
    Bounds bounds;
    for (Boundary const& boundary : sketch.boundaries)
        for (BoundaryRing const& ring : boundary.rings)
            for (LocalPoint point : ring.points)
                bounds.add(point);
    for (LineGroup const& group : sketch.groups)
        for (GuidanceLine const& line : group.lines) {
            for (LocalPoint point : line.points)
                bounds.add(point);
            if (line.shape == PatternShape::Circle) {
                LocalPoint const centre = line.points.front();
                bounds.add(LocalPoint{centre.x - line.radius, centre.y - line.radius});
                bounds.add(LocalPoint{centre.x + line.radius, centre.y + line.radius});
            }
        }
    for (FieldPoint const& point : sketch.points)
        bounds.add(point.at);
    return bounds;
}

QString PanelFrame::number(double metres) const {
    QString text = QString::number(metres, 'f', decimals);
    if (decimals > 0) {
        while (text.endsWith(QLatin1Char('0')))
            text.chop(1);
        if (text.endsWith(QLatin1Char('.')))
            text.chop(1);
    }
    return text == QLatin1String("-0") ? QStringLiteral("0") : text;
}

QString PanelFrame::viewBox() const {
    return QStringLiteral("%1 %2 %3 %4")
        .arg(number(left), number(top), number(width), number(height));
}

PanelFrame frameAround(Bounds const& bounds, int width, int height, int margin) {
    Bounds shown = bounds;
    if (shown.empty)
        shown.add(LocalPoint());
    double extentX = std::max<double>(shown.right - shown.left, smallestExtent);
    double extentY = std::max<double>(shown.bottom - shown.top, smallestExtent);
    PanelFrame frame;
    frame.metresPerPixel =
        std::max(extentX / (width - 2 * margin), extentY / (height - 2 * margin));
    frame.width = width * frame.metresPerPixel;
    frame.height = height * frame.metresPerPixel;
    frame.left = (double(shown.left) + shown.right - frame.width) / 2.0;
    frame.top = (double(shown.top) + shown.bottom - frame.height) / 2.0;
    frame.decimals =
        std::max(0, static_cast<int>(std::ceil(-std::log10(frame.metresPerPixel / 10))));
    return frame;
}

QString pathData(Path const& path, bool closed, PanelFrame const& frame, LocalPoint offset) {
    QString data;
    for (LocalPoint const point : path) {
        data += data.isEmpty() ? QStringLiteral("M") : QStringLiteral(" ");
        data += frame.number(double(point.x) + offset.x) + QLatin1Char(' ') +
                frame.number(double(point.y) + offset.y);
    }
    if (closed && !data.isEmpty())
        data += QLatin1Char('Z');
    return data;
}

std::optional<Path> lineAcross(LocalPoint through, LocalPoint direction, PanelFrame const& frame) {
    double const dx = direction.x;
    double const dy = direction.y;
    if (!std::isfinite(dx) || !std::isfinite(dy) || (dx == 0 && dy == 0))
        return std::nullopt;
    // The parameters t of through + t * direction between each pair of
    // opposite edges, narrowed to the range that is inside both pairs.
    double from = -std::numeric_limits<double>::infinity();
    double to = std::numeric_limits<double>::infinity();
    auto clip = [&](double start, double step, double low, double high) {
        if (step == 0)
            return low <= start && start <= high;
        double const a = (low - start) / step;
        double const b = (high - start) / step;
        from = std::max(from, std::min(a, b));
        to = std::min(to, std::max(a, b));
        return true;
    };
    if (!clip(through.x, dx, frame.left, frame.left + frame.width) ||
        !clip(through.y, dy, frame.top, frame.top + frame.height) || from > to)
        return std::nullopt;
    auto at = [&](double t) {
        return LocalPoint{static_cast<float>(through.x + t * dx),
                          static_cast<float>(through.y + t * dy)};
    };
    return Path{at(from), at(to)};
}
