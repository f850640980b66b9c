#pragma once
// Product groups (PGP). The migration knows two, each with a fixed identity;
// they are found again by that identity, in a loaded set and among the
// products of one run.

#include "taskdata/task_data.h"

#include <QString>
#include <QUuid>

// A new group under `root`, numbered with a free "PGP" number and named
// `name`, or "Default Group Name" when `name` is empty.
TC::Task_data::Elements::Client::Product_group
new_product_group(TC::Task_data::Elements::Client::Task_data root, QString const& name);

// The first group of `root` whose identity is `uuid`, or a new one given that
// identity; in both cases the group is (re)named `name`, even when empty.
// Always valid on a valid root.
TC::Task_data::Elements::Client::Product_group
find_or_create_product_group(TC::Task_data::Elements::Client::Task_data root, QUuid const& uuid,
                             QString const& name);
