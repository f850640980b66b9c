#pragma once
// A heavy but realistic display data tree, written from a seed and a scale
// factor: what a contractor's display holds after some years. At scale 1 it
// has 20 clients x 10 farms x 10 fields, 500 products and 100 mixtures; the
// number of clients, products and mixtures grows with the scale, everything
// inside a field stays the same. Names carry blanks, non-ASCII letters and
// XML markup characters. The same seed and scale always give the same tree.

#include <QString>

#include <cstdint>

namespace display_tree {

struct Counts {
    int clients = 0;
    int fields = 0;
    int products = 0;
    int mixtures = 0;
    std::int64_t source_points = 0; // vertices, flags, line and curve points
    std::int64_t bytes = 0;         // size of all files written
};

// Writes the tree into `root`, which must not exist yet or be empty, and
// returns what it wrote. Throws std::runtime_error when a file cannot be
// written.
Counts generate(QString const& root, std::uint32_t seed, double scale);

} // namespace display_tree
