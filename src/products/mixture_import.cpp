#include "products/mixture_import.h"

#include "driver/data_tree.h"
#include "driver/report.h"
#include "products/product_import.h"
#include "taskdata/store.h"
#include "taskdata/whole_numbers.h"

#include <QDebug>
#include <QFile>
#include <QHash>
#include <QSettings>
#include <QStringList>
#include <QUuid>

using namespace TC::Task_data::Elements::Client;

namespace {

// The first product of each identity in the task data. A walk over the
// product list for every ingredient grows with the square of the products
// (1.4 s for 1,000 mixtures of 10 ingredients over 6,000 products, 0.1 s for
// a quarter of them), so the list is indexed, with the walk's result: products
// are only ever appended, each gets its identity in the call that makes it,
// and the index takes in new products at the start of each mixture, when all
// earlier ones hold their final identity and the mixture itself is not made
// yet. A new root (a set loaded afresh) starts the index over.
class ProductsByIdentity {
public:
    void catch_up(Task_data const& root) {
        if (root != root_) {
            root_ = root;
            indexed_ = 0;
            first_.clear();
        }
        auto const products = root.products();
        for (; indexed_ < products.count(); ++indexed_) {
            Product const product = products[indexed_];
            if (!product.get_guid().isNull() && !first_.contains(product.get_guid()))
                first_.insert(product.get_guid(), product);
        }
    }

    // Invalid when no product has that identity.
    Product find(QUuid const& uuid) const { return first_.value(uuid); }

private:
    Task_data root_; // held, so that a new root never takes its address
    int indexed_ = 0;
    QHash<QUuid, Product> first_;
};

ProductsByIdentity products_by_identity;

// One "uuid:rate" entry of a mixture's "ProductRates".
void add_ingredient(Product mixture, QString const& entry, QString const& path,
                    QString const& mixture_name) {
    // Empty parts are kept, so ":5" has an empty identifier and "a:" an empty rate.
    QStringList const parts = entry.split(QLatin1Char(':'));
    if (parts.size() != 2) {
        qWarning() << "W: bad product/rate pair in" << path;
        return;
    }
    QUuid const uuid(parts[0]);
    if (uuid.isNull()) {
        qWarning() << "W: bad product uuid in" << path;
        return;
    }
    Product const ingredient = products_by_identity.find(uuid);
    if (!ingredient.valid()) {
        qWarning() << "W: could not find referenced product" << parts[0] << "in mixture"
                   << mixture_name;
        return;
    }
    Product_relation relation = mixture.create_product_relations(true);
    relation.product().set(ingredient);
    // A malformed rate reads as 0. The attribute is signed; the unsigned
    // thousandths go in bit for bit.
    relation.quantity().set(
        static_cast<int>(TC::Task_data::truncate_to<std::uint32_t>(parts[1].toDouble() * 1000.0)),
        true);
}

} // namespace

void import_mixture(QDir const& dir) {
    QString const name = item_name(dir);
    QString const path = settings_path(dir);
    if (!QFile::exists(path)) {
        qWarning() << "W: skipping empty product mixture directory" << name;
        return;
    }
    QSettings settings(path, QSettings::IniFormat);
    QUuid const uuid(settings.value(QStringLiteral("UID"), QVariant()).toString());

    products_by_identity.catch_up(task_data);
    Product mixture = new_product(task_data, name);
    mixture.type().set(2, true);
    for (QString const& entry :
         settings.value(QStringLiteral("ProductRates"), QVariant()).toStringList())
        add_ingredient(mixture, entry, path, name);
    mixture.mix_quantity().set(0, true);
    // Only now: a mixture cannot be an ingredient of itself.
    mixture.set_guid(uuid);
    store_rates(mixture, settings);
    step_progress();
}
