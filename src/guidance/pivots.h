#pragma once
// A field's pivots: Pivots/<name>/<name>.ini, with the centre as an offset in
// metres from a reference point that is given in degrees or in UTM grid
// coordinates.

#include "guidance/base_stations.h"
#include "taskdata/task_data.h"

#include <QDir>
#include <QString>

// Each pivot directory below the field's "Pivots", in name order ignoring
// case, whose settings have a reference becomes a guidance pattern of type 4
// named like the directory, found again or made (see
// find_or_create_pattern): the centre "Center/X" metres east and "Center/Y"
// metres south of the reference (each in single precision, 0.0 when
// missing), the radius "InnerRadius" in metres, the base station of its
// correction settings and "P231_correction". A pivot without a usable
// reference is skipped without a word.
void import_pivots(QDir const& field_dir, TC::Task_data::Elements::Client::Partfield partfield,
                   BaseStationTable& base_stations);
