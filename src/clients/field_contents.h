#pragma once
// The hand-over of one field's contents to their importers, called for each
// field in this order. Each gets the field's directory and its own copy of
// the Partfield handle, returns nothing and reports for itself, so nothing in
// one of them stops the next.

#include "guidance/base_stations.h"
#include "taskdata/task_data.h"

#include <QDir>

// Boundaries and zones below the field, as polygons of the field.
void import_field_boundaries(QDir const& field_dir,
                             TC::Task_data::Elements::Client::Partfield partfield);

// The field's flagpoints.ini, as points of the field.
void import_flag_points(QDir const& field_dir,
                        TC::Task_data::Elements::Client::Partfield partfield);

// AB lines, curves and pivots (which find or make their base stations in
// `base_stations`, the run's table), then project and optimal lines, as
// guidance groups of the field.
void import_field_lines(QDir const& field_dir, TC::Task_data::Elements::Client::Partfield partfield,
                        BaseStationTable& base_stations);
