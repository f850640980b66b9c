#include "taskdata/element_man.h"

#include "taskdata/node.h"
#include "taskdata/set_files.h"

namespace TC::Task_data::Elements::Client {

using detail::Tree;

Element_man::Element_man() : tree_(std::make_shared<Tree>()) {
    tree_->reset();
}

void Element_man::create() {
    if (tree_)
        tree_->reset();
}

Task_data Element_man::get_client_root() const {
    return tree_ ? Task_data(tree_->root) : Task_data();
}

bool Element_man::load_xml(XML_interface& xml) {
    if (!tree_)
        return false;
    QString error;
    if (detail::load_set(*tree_, xml.file(), error))
        return true;
    tree_->reset();
    xml.set_error(error);
    return false;
}

bool Element_man::save_xml(XML_interface& xml) {
    if (!tree_)
        return false;
    QString error;
    if (detail::save_set(*tree_, xml.file(), error))
        return true;
    xml.set_error(error);
    return false;
}

int Element_man::get_free_uid(QString const& tag, bool) {
    if (!tree_)
        return 1;
    return tree_->uids[tag.toLatin1()].free_number();
}

} // namespace TC::Task_data::Elements::Client
