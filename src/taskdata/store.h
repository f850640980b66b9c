#pragma once
// The run's one task data store and the two steps that bring a set in and
// write it out again. Both return an empty string on success and otherwise
// the whole message for the user; the store's own explanation goes to the
// debug log.

#include "taskdata/element_man.h"

#include <QString>

// The owner of the element tree, the root every importer works on, and the
// file set that is read and then written. Set up by load_task_data.
extern TC::Task_data::Elements::Client::Element_man element_man;
extern TC::Task_data::Elements::Client::Task_data task_data;
extern TC::Task_data::XML_interface* xml_file;

// Loads the set in `input_dir` (TASKDATA.XML, or else TASKDATA.xml there);
// when there is none, or `input_dir` is empty, writes the two-line template
// and empty LINKLIST.XML and GUIDLIST.XML into `output_dir`, which must
// exist, and loads that. Afterwards a save goes to `output_dir`.
// Messages: "could not open %1: %2", "could not load taskdata from %1".
QString load_task_data(QString const& input_dir, QString const& output_dir);

// Writes the tree to the set named at the load. Message: "could not save
// taskdata".
QString save_task_data();
