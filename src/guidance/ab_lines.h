#pragma once
// A field's AB lines: ABLines/<name>/<name>.ini, with the two end points in
// degrees, and optional tramline settings in ABLines/<name>/Tramline.

#include "guidance/base_stations.h"
#include "taskdata/task_data.h"

#include <QDir>

// Each line directory below the field's "ABLines", in name order ignoring
// case, whose settings file has "State" 2 becomes a guidance pattern of type
// 1 named like the directory, found again or made (see
// find_or_create_pattern): points A and B from "APoint/Latitude",
// "APoint/Longitude", "BPoint/Latitude" and "BPoint/Longitude" (0.0 when
// missing), the base station of its correction settings, "P231_correction"
// and the tramline attributes. A directory without its settings file, or any
// other "State", is skipped without a word and leaves an earlier pattern of
// that name as it was.
void import_ab_lines(QDir const& field_dir, TC::Task_data::Elements::Client::Partfield partfield,
                     BaseStationTable& base_stations);
