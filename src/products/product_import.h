#pragma once
// Products (PDT) from the directories below Products: one directory, one
// product, named like the directory; its values stand in <name>/<name>.ini,
// in the section "Default".

#include "taskdata/task_data.h"

#include <QDir>
#include <QSettings>
#include <QString>
#include <QUuid>

// The identity every product of type 2 gets, whatever its file says.
inline QUuid const fixed_product_uuid{QStringLiteral("{903c0cf8-9478-4b5a-85b3-5438c71e7696}")};
// The identities of the two product groups of the chemical types.
inline QUuid const liquid_group_uuid{QStringLiteral("{50b3c385-bee4-4042-9206-330b02040194}")};
inline QUuid const granular_group_uuid{QStringLiteral("{c8a398d3-97e3-43c5-94e6-4e038e1ef21b}")};

// A new product under `root`: a free "PDT" number, then `name` as designator,
// stored as it is even when empty.
TC::Task_data::Elements::Client::Product
new_product(TC::Task_data::Elements::Client::Task_data root, QString const& name);

// Reads "RatePreset1", "RatePreset2" and "RateInc" from the settings' current
// group and stores them as "P231_preset0", "P231_preset1" and "P231_incDec";
// a missing or malformed key stores "0".
void store_rates(TC::Task_data::Elements::Client::Product product, QSettings const& settings);

// Adds one product to the run's task data from a product directory and steps
// the progress. The product is always new; only its group, for the types 3
// and 4, is found again by identity. Without the .ini file: the warning
// `W: skipping empty product directory "Name"`, no product, no progress step.
// An unreadable or malformed file reads as all keys missing (zeros, null
// identity, type 0).
void import_product(QDir const& dir);
