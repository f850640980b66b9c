#include "guidance/tramlines.h"

#include "driver/data_tree.h"
#include "taskdata/proprietary.h"

#include <QString>
#include <QVariant>

#include <array>

using namespace TC::Task_data::Elements::Client;

namespace {

struct TramlineValue {
    QString group;
    QString key;
    QString attribute; // the bare name, without "P231_"
};

std::array<TramlineValue, 7> tramline_values() {
    return {{
        {QStringLiteral("Tramline"), QStringLiteral("MajorOffset"), QStringLiteral("majorOffset")},
        {QStringLiteral("Tramline"), QStringLiteral("MinorOffset"), QStringLiteral("minorOffset")},
        {QStringLiteral("Tramline"), QStringLiteral("ExtraOffset"), QStringLiteral("extraOffset")},
        {QStringLiteral("Tramline"), QStringLiteral("Smoothing"), QStringLiteral("smoothing")},
        {QStringLiteral("Tramline"), QStringLiteral("Spacing"), QStringLiteral("spacing")},
        {QStringLiteral("Tramline"), QStringLiteral("TrackWidth"), QStringLiteral("trackWidth")},
        // The curve's own offset lies in another group of the same file.
        {QStringLiteral("Curve"), QStringLiteral("ImplicitOffset"), QStringLiteral("impOffset")},
    }};
}

} // namespace

void set_tramline_attributes(Guidance_pattern pattern, QSettings const& settings) {
    for (TramlineValue const& value : tramline_values()) {
        QString const key = QStringLiteral("%1/%2").arg(value.group, value.key);
        if (!settings.contains(key))
            continue;
        set_proprietary(pattern, value.attribute, QVariant(settings.value(key).toDouble()));
    }
}

void import_tramlines(Guidance_pattern pattern, QDir const& line_dir) {
    if (!line_dir.exists(data_tree::tramline_file))
        return;
    QSettings const settings(line_dir.absoluteFilePath(data_tree::tramline_file),
                             QSettings::IniFormat);
    set_tramline_attributes(pattern, settings);
}
