#pragma once
// The owner of the element tree and the file set it is read from and written
// to. Element_man is a handle too: copies share one tree.

#include "taskdata/task_data.h"

#include <QString>

#include <memory>

namespace TC::Task_data {

// Names a task data set by the path of its TASKDATA.XML and carries the text
// of the last failure. The four flags are accepted and have no effect.
class XML_interface {
public:
    XML_interface(QString const& file, bool, bool, bool, bool) : file_(file) {}
    void set(QString const& file, bool, bool, bool, bool) { file_ = file; }

    QString const& file() const { return file_; }
    QString error() const { return error_; }
    void set_error(QString const& error) { error_ = error; }

private:
    QString file_;
    QString error_;
};

namespace Elements::Client {

class Element_man {
public:
    Element_man();
    explicit Element_man(std::shared_ptr<detail::Tree> tree) : tree_(std::move(tree)) {}

    // Starts a new, empty tree: a root without attributes or children.
    void create();

    // Reads TASKDATA.XML (with its external XFR files), LINKLIST.XML and
    // GUIDLIST.XML beside it into the tree. False, with the reason in
    // xml.error(), when the files are not a readable task data set; the tree
    // is then empty.
    bool load_xml(XML_interface& xml);

    // Writes the tree as TASKDATA.XML, LINKLIST.XML and GUIDLIST.XML at the
    // path xml names, and copies the other files of the loaded set there.
    // All files are staged beside their targets and renamed into place only
    // when every one is complete, so a failure leaves the former set whole.
    bool save_xml(XML_interface& xml);

    Task_data get_client_root() const;

    // A number that no element of that tag ("CTR", "PFD", ...) holds yet.
    int get_free_uid(QString const& tag, bool);

private:
    std::shared_ptr<detail::Tree> tree_;
};

} // namespace Elements::Client
} // namespace TC::Task_data
