#pragma once
// The run's table of base stations: one Base_station element per position
// text ("BasePoint/Position" of a guidance line), shared by all lines of all
// fields that name the same text in one run. The AB line, curve and pivot
// importers fill it; the field walk only hands it down.

#include "coordinates/points.h"
#include "taskdata/task_data.h"

#include <QByteArray>
#include <QHash>

struct BaseStationEntry {
    GeoPoint position; // degrees, metres; worked out from the text
    TC::Task_data::Elements::Client::Base_station station; // invalid until made
};

// Keyed by the position text byte for byte: texts that differ in case or
// spacing are different stations.
using BaseStationTable = QHash<QByteArray, BaseStationEntry>;
