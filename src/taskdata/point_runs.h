#pragma once
// Runs of plain points in the raw text of a task data file. A line string
// of a large set holds millions of PNT elements of one form:
//     <PNT A="2" C="52.123456789" D="9.123456789"/>
// Tokenising each of them through the XML reader is most of a load's time,
// so the loader finds such runs in the bytes before the reader sees them,
// stores their points itself and hands the reader only what lies around
// them. A run is a sequence of empty PNT elements directly inside an LSG,
// separated by white space only, whose attribute values are printable ASCII
// without references, which the reader would report unchanged. Everything
// else, and every document with a DTD or an encoding that is not
// ASCII-compatible, goes to the reader.

#include "taskdata/point_block.h"

#include <QByteArray>
#include <QLatin1String>

#include <vector>

namespace TC::Task_data::detail {

using PlainAttributes = std::vector<PlainAttribute>;

// The longest attribute value a set may hold, in characters. ISO 11783-10
// values are a few hundred at most; the loader refuses longer ones, so no
// run takes them either.
constexpr int max_attribute_size = 1 << 20;

// The points of a run as the scanner parsed them: their attributes one
// after another, and how many of them belong to each point.
struct PointRun {
    PlainAttributes attributes;
    std::vector<unsigned char> sizes;

    // Calls f(first attribute, count) for each point, in order.
    template <class F> void for_each_point(F&& f) const {
        PlainAttribute const* first = attributes.data();
        for (unsigned char const size : sizes) {
            f(first, static_cast<int>(size));
            first += size;
        }
    }
};

class PointRunScanner {
public:
    struct Step {
        qsizetype ordinary_end; // bytes before this are for the reader
        bool run = false;       // a run starts at ordinary_end and ends at run_end
        qsizetype run_end = 0;
        int line_string = 0; // the run's LSG: 1 for the document's first, and so on
    };

    // Scans `text` from `from`, which is where the former step ended. With
    // `final` false the text may end inside a token; the step then stops
    // before that token, and the caller comes back with more text.
    Step next(QByteArray const& text, qsizetype from, bool final);

    // The points of the run that the last step found; they point into the
    // text given to it and hold while that text stays unchanged.
    PointRun const& run() const { return run_; }

private:
    // Takes in the start or end tag [begin, end) for the nesting.
    void track(char const* begin, char const* end);

    bool checked_prolog_ = false;
    bool disabled_ = false;
    std::vector<int> open_; // per open element: its LSG number, or 0
    int line_strings_ = 0;  // LSG start tags so far
    PointRun run_;
};

// The tag at `p` if it is a plain empty PNT element: where it ends, with its
// attributes appended to `attributes`. Null when it is not one, or `end`
// comes first; `attributes` is then as it was.
char const* parse_plain_point(char const* p, char const* end, PlainAttributes& attributes);

inline bool xml_space(char c) {
    return c == ' ' || c == '\t' || c == '\n' || c == '\r';
}

} // namespace TC::Task_data::detail
