#pragma once
// A field's flags, from its flagpoints.ini, as points (PNT) of its Partfield.
//
// The file is no settings file: every line holds one value, and its line
// number says which. Line 1 is ignored, line 2 is the number of flags, and
// each flag follows in four lines: latitude, longitude (degrees), icon
// number, name. Values that don't convert read as 0.

#include "coordinates/points.h"
#include "taskdata/task_data.h"

#include <QMap>
#include <QString>

struct FlagPoint {
    int id = 1;        // the flag's number in the file, from 0 up
    GeoPoint position; // degrees; the height is the list's reference's
    LocalPoint local;  // the position around the list's reference
    int icon = 0;      // 0 to 8
    int colour = 2;    // the same for every flag
    QString name;      // at most 32 characters
};

struct FlagPointList {
    int last_id = -1;
    QMap<int, FlagPoint> points; // by id, so in the order of the file
    GeoPoint reference;          // the centre of `local`

    // Stores `reference`, then reads the flags of the file at `path`. A
    // missing or unreadable file, or a count of 0 or less, gives none. A
    // file that ends early still gives `count` flags: the missing ones lie
    // at 0, 0 with no icon and no name. So that a damaged count can't
    // exhaust memory, at most 10,000 of them are made.
    void read(QString const& path, GeoPoint const& reference_point);
    // Adds one flag with the icon clamped to 0..8 and returns its id.
    int add(GeoPoint const& position, int icon, QString const& name);
};

// One point for each flag, in the order of the list: PNT A 1 (flag), the
// name, north and east in degrees, colour 2, and the icon as P231_iconId
// for the icons 3 to 8 only. Nothing for an invalid Partfield. The points
// the Partfield already holds are left as they are.
void write_flag_points(FlagPointList const& list,
                       TC::Task_data::Elements::Client::Partfield partfield);
