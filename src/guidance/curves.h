#pragma once
// A field's curves: Curves/<name>/<name>.crv with the points, <name>.ini with
// the correction settings, and optional tramline settings in
// Curves/<name>/Tramline.

#include "guidance/base_stations.h"
#include "taskdata/task_data.h"

#include <QDir>

// Each curve directory below the field's "Curves", in name order ignoring
// case, becomes a guidance pattern of type 3 named like the directory, found
// again or made (see find_or_create_pattern): the first segment of its .crv
// file, turned into degrees around the file's reference, the base station of
// its correction settings, "P231_correction" and the tramline attributes.
// Further segments are dropped. A curve without its settings or .crv file,
// with a .crv file shorter than the reference or without a point, is skipped
// without a word.
void import_curves(QDir const& field_dir, TC::Task_data::Elements::Client::Partfield partfield,
                   BaseStationTable& base_stations);
