#pragma once
// The preview page of a task data set: one self-contained XHTML document
// (inline SVG and CSS, nothing fetched from elsewhere) with a title, an
// overview of all fields by their position, and a panel per field, grouped by
// client and farm.

#include "taskdata/task_data.h"

#include <QIODevice>
#include <QString>

// Writes the page of the set whose root is `root`; `set_name` names it in the
// title. Every field gets a panel, "f1", "f2", ... in page order, holding its
// map "f1-map"; SVG user units are metres of the field's plane.
void writePage(QIODevice* device, TC::Task_data::Elements::Client::Task_data const& root,
               QString const& set_name);
