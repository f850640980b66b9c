#pragma once
// The correction settings that every guidance line's settings file holds,
// read alike by the importers and the pattern library.

#include <QByteArray>
#include <QSettings>

// The correction settings of a line: "CorrectionSource" (0 when missing or no
// number) and "BasePoint/Position" (empty when missing). The display writes
// a position text in double quotes; unquoted, its commas would make it a
// list, which reads as empty.
struct LineCorrection {
    int source = 0;
    QByteArray position_text;
};
LineCorrection read_line_correction(QSettings const& settings);
