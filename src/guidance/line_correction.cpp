#include "guidance/line_correction.h"

#include <QString>

namespace {

QString const correction_source_key = QStringLiteral("CorrectionSource");
QString const position_key = QStringLiteral("BasePoint/Position");

} // namespace

LineCorrection read_line_correction(QSettings const& settings) {
    return {settings.value(correction_source_key, 0).toInt(),
            settings.value(position_key).toByteArray()};
}
