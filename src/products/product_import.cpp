#include "products/product_import.h"

#include "driver/data_tree.h"
#include "driver/report.h"
#include "products/product_groups.h"
#include "taskdata/element_man.h"
#include "taskdata/proprietary.h"
#include "taskdata/store.h"
#include "taskdata/whole_numbers.h"

#include <QDebug>
#include <QFile>
#include <QSettings>

using namespace TC::Task_data::Elements::Client;

namespace {

// DDIs of the product's quantity (ISO 11783-11): mass content and volume
// content.
unsigned short const mass_ddi = 75;
unsigned short const volume_ddi = 72;

// What a product's "Type" decides: the DDI of its quantity (0: none is
// written), whether it takes the fixed identity instead of its file's, and,
// for the two chemical types, its group.
struct TypeTraits {
    unsigned short ddi = 0;
    bool fixed_identity = false;
    QUuid group_uuid;
    QString group_name;
};

// The display's types, gaps included: 0 and 3 are measured by mass, 1, 2 and
// 4 by volume, and only the chemicals (3 granular, 4 liquid) have a group.
TypeTraits type_traits(int type) {
    switch (type) {
    case 0:
        return {mass_ddi, false, {}, {}};
    case 1:
        return {volume_ddi, false, {}, {}};
    case 2:
        return {volume_ddi, true, {}, {}};
    case 3:
        return {mass_ddi, false, granular_group_uuid, QStringLiteral("Granular Chemicals")};
    case 4:
        return {volume_ddi, false, liquid_group_uuid, QStringLiteral("Liquid Chemicals")};
    default:
        return {};
    }
}

} // namespace

Product new_product(Task_data root, QString const& name) {
    Product product = root.create_products(true);
    product.id().set(product.get_element_man().get_free_uid(QStringLiteral("PDT"), false), true);
    product.designator().set(name, true);
    return product;
}

void store_rates(Product product, QSettings const& settings) {
    // The file numbers the presets from 1, the attributes from 0.
    set_product_preset(product, 0,
                       settings.value(QStringLiteral("RatePreset1"), QVariant()).toDouble());
    set_product_preset(product, 1,
                       settings.value(QStringLiteral("RatePreset2"), QVariant()).toDouble());
    set_product_increment(product,
                          settings.value(QStringLiteral("RateInc"), QVariant()).toDouble());
}

void import_product(QDir const& dir) {
    QString const name = item_name(dir);
    QString const path = settings_path(dir);
    if (!QFile::exists(path)) {
        qWarning() << "W: skipping empty product directory" << name;
        return;
    }
    QSettings settings(path, QSettings::IniFormat);
    settings.beginGroup(QStringLiteral("Default"));

    Product product = new_product(task_data, name);
    // The file keeps kg per litre; the set keeps mg per litre.
    std::uint32_t const density = TC::Task_data::truncate_to<std::uint32_t>(
        settings.value(QStringLiteral("Density"), QVariant()).toDouble() * 1000000.0);
    QUuid uuid(settings.value(QStringLiteral("UID"), QVariant()).toString());
    TypeTraits const traits =
        type_traits(settings.value(QStringLiteral("Type"), QVariant()).toInt());
    if (traits.fixed_identity)
        uuid = fixed_product_uuid;
    if (!traits.group_uuid.isNull())
        product.product_group().set(
            find_or_create_product_group(task_data, traits.group_uuid, traits.group_name));
    product.set_guid(uuid);
    product.density_mass_per_volume().set(density, true);
    if (traits.ddi != 0)
        product.ddi().set(traits.ddi, true);

    store_rates(product, settings);
    step_progress();
}
