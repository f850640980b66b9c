#include "clients/flag_points.h"

#include "coordinates/geodetic.h"

#include <QFile>
#include <QFileInfo>
#include <QTextStream>

#include <algorithm>

using TC::Task_data::Elements::Client::Partfield;
using TC::Task_data::Elements::Client::Point;

namespace {

int const lowest_icon = 0;
int const highest_icon = 8;
// Icons below this are the display's defaults and aren't written.
int const lowest_written_icon = 3;
int const name_length = 32;
// PNT A, PointType: flag.
signed char const flag_point_type = 1;
// Flags made for records that a file which ends early doesn't hold.
int const most_flags_past_end = 10000;

} // namespace

void FlagPointList::read(QString const& path, GeoPoint const& reference_point) {
    reference = reference_point;
    if (path.isEmpty())
        return;
    // Not a FIFO or a directory: reading those blocks or fails half-way.
    QFile file(path);
    if (!QFileInfo(path).isFile() || !file.open(QIODevice::ReadOnly | QIODevice::Text))
        return;
    QTextStream in(&file);
    in.setCodec("UTF-8");
    in.readLine();
    int const count = in.readLine().toInt(nullptr, 10);
    int past_end = 0;
    for (int i = 0; i < count; ++i) {
        if (in.atEnd() && ++past_end > most_flags_past_end)
            break;
        double const latitude = in.readLine().toDouble();
        double const longitude = in.readLine().toDouble();
        int const icon = in.readLine().toInt(nullptr, 10);
        QString const name = in.readLine().left(name_length);
        add({latitude, longitude, reference.height}, icon, name);
    }
}

int FlagPointList::add(GeoPoint const& position, int icon, QString const& name) {
    FlagPoint flag;
    flag.position = position;
    flag.icon = std::clamp(icon, lowest_icon, highest_icon);
    flag.id = ++last_id;
    flag.local = geoToLocal(position, reference);
    flag.name = name;
    points.insert(flag.id, flag);
    return flag.id;
}

void write_flag_points(FlagPointList const& list, Partfield partfield) {
    if (!partfield.valid())
        return;
    for (FlagPoint const& flag : list.points) {
        Point point = partfield.create_point(true);
        point.type().set(flag_point_type, true);
        point.designator().set(flag.name, true);
        point.north().set(flag.position.latitude, true);
        point.east().set(flag.position.longitude, true);
        point.colour().set(static_cast<unsigned char>(flag.colour), true);
        if (flag.icon < lowest_written_icon)
            point.icon_id().set_flag_included(false);
        else
            point.icon_id().set(static_cast<unsigned char>(flag.icon), true);
    }
}
