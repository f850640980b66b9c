#include "products/product_groups.h"

#include "taskdata/element_man.h"

using namespace TC::Task_data::Elements::Client;

Product_group new_product_group(Task_data root, QString const& name) {
    Product_group group = root.create_product_groups(true);
    group.id().set(group.get_element_man().get_free_uid(QStringLiteral("PGP"), false), true);
    group.designator().set(name.isEmpty() ? QStringLiteral("Default Group Name") : name, true);
    return group;
}

Product_group find_or_create_product_group(Task_data root, QUuid const& uuid, QString const& name) {
    Product_group_list const groups = root.product_groups();
    Product_group group;
    for (int index = 0; index < groups.count() && !group.valid(); ++index)
        if (groups[index].get_guid() == uuid)
            group = groups[index];
    if (!group.valid()) {
        group = new_product_group(root, name);
        group.set_guid(uuid);
    }
    // A group found by identity takes on the fixed name, whatever the loaded
    // set called it.
    group.designator().set(name, true);
    return group;
}
