#pragma once
// Reading and writing a task data set on disk: TASKDATA.XML with its external
// files, LINKLIST.XML and GUIDLIST.XML. Used by Element_man.

#include "taskdata/node.h"

#include <QString>

namespace TC::Task_data::detail {

// Reads the set whose TASKDATA.XML is `taskdata_path` into the (reset) tree.
// False with a message naming the file and the place on failure.
bool load_set(Tree& tree, QString const& taskdata_path, QString& error);

// Writes the tree as a set whose TASKDATA.XML is `taskdata_path`, and copies
// the other files of the loaded set beside it when that is another
// directory. Every file is staged and renamed into place only when all are
// complete. False with a message on failure; the former files then stay.
bool save_set(Tree& tree, QString const& taskdata_path, QString& error);

} // namespace TC::Task_data::detail
