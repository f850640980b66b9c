#include "polygons/path_clip.h"

#include "polygons/path_grid.h"

namespace {

ClipperLib::Path toGridPath(Path const& path) {
    ClipperLib::Path converted;
    converted.reserve(path.size());
    for (LocalPoint point : path)
        converted.push_back(toGrid(point));
    return converted;
}

Path fromGridPath(ClipperLib::Path const& path) {
    Path converted;
    converted.reserve(path.size());
    for (ClipperLib::IntPoint const& point : path)
        converted.push_back(fromGrid(point));
    return converted;
}

// The cross and dot products of two differences of grid points, each below 2^63 in size, are
// exact in 128 bits.
__extension__ typedef __int128 WideInt;

// True where the path, once its repeated points are passed over as ClipperLib does, has two
// consecutive edges that run opposite ways along one line: a spike. ClipperLib 6.4.2 keeps the
// spikes of open paths and then can misplace them: it follows a chain of horizontal edges that
// turns back through an iterator it set for the other direction only (with StrictlySimple), and
// it can leave a horizontal edge after a spike among the edges it crosses, whose x it then
// computes from a slope of -1e40. Both are undefined behaviour: a null pointer read, and a
// conversion of a double far beyond 64 bits.
bool hasSpike(ClipperLib::Path const& path) {
    std::size_t const size = path.size();
    std::size_t a = 0;
    std::size_t b = 1;
    while (b < size && path[b] == path[a])
        ++b;
    for (std::size_t c = b + 1; c < size; ++c) {
        if (path[c] == path[b])
            continue;
        WideInt const abX = path[b].X - path[a].X;
        WideInt const abY = path[b].Y - path[a].Y;
        WideInt const bcX = path[c].X - path[b].X;
        WideInt const bcY = path[c].Y - path[b].Y;
        if (abX * bcY == abY * bcX && abX * bcX + abY * bcY < 0)
            return true;
        a = b;
        b = c;
    }
    return false;
}

} // namespace

PathList clipPaths(PathList const& subjects, bool subjects_closed, PathList const& clips,
                   ClipperLib::ClipType clip_type, std::vector<int>* group_index,
                   bool strictly_simple) {
    ClipperLib::PolyTree tree;
    try {
        ClipperLib::Clipper clipper;
        for (Path const& subject : subjects) {
            ClipperLib::Path const converted = toGridPath(subject);
            if (!subjects_closed && hasSpike(converted))
                return {};
            clipper.AddPath(converted, ClipperLib::ptSubject, subjects_closed);
        }
        for (Path const& clip : clips)
            clipper.AddPath(toGridPath(clip), ClipperLib::ptClip, true);
        clipper.StrictlySimple(strictly_simple);
        clipper.Execute(clip_type, tree, ClipperLib::pftPositive, ClipperLib::pftPositive);
    } catch (ClipperLib::clipperException const&) {
        return {};
    } catch (char const*) {
        return {};
    }

    if (group_index)
        group_index->clear();
    PathList result;
    std::vector<ClipperLib::PolyNode const*> pending;
    for (int group = 0; group < tree.ChildCount(); ++group) {
        pending.push_back(tree.Childs[group]);
        while (!pending.empty()) {
            ClipperLib::PolyNode const* node = pending.back();
            pending.pop_back();
            result.push_back(fromGridPath(node->Contour));
            if (group_index)
                group_index->push_back(group);
            pending.insert(pending.end(), node->Childs.begin(), node->Childs.end());
        }
    }
    return result;
}

PathList clipPair(Path const& subject, Path const& clip, ClipperLib::ClipType clip_type,
                  std::vector<int>* group_index) {
    return clipPaths({subject}, true, {clip}, clip_type, group_index, false);
}
