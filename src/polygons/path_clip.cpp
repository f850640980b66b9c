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

// True where the path, once its repeated points are passed over as ClipperLib does, has two
// consecutive horizontal edges that run opposite ways. With StrictlySimple on, ClipperLib 6.4.2
// processes such a chain of an open path through an iterator that it set for the other
// direction only, and reads through a null pointer.
bool turnsBackAlongAHorizontal(ClipperLib::Path const& path) {
    ClipperLib::cInt previousRun = 0; // the x run of the edge before, if horizontal
    std::size_t previous = 0;
    for (std::size_t i = 1; i < path.size(); ++i) {
        if (path[i] == path[previous])
            continue;
        ClipperLib::cInt const run =
            path[i].Y == path[previous].Y ? path[i].X - path[previous].X : 0;
        if ((run > 0 && previousRun < 0) || (run < 0 && previousRun > 0))
            return true;
        previousRun = run;
        previous = i;
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
            if (strictly_simple && !subjects_closed && turnsBackAlongAHorizontal(converted))
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
