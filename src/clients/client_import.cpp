#include "clients/client_import.h"

#include "clients/field_contents.h"
#include "driver/data_tree.h"
#include "driver/report.h"
#include "taskdata/element_man.h"
#include "taskdata/store.h"

#include <QHash>

using namespace TC::Task_data::Elements::Client;

namespace {

// The run's base stations: made by the line importers, shared across all
// fields of the run, never looked up in the loaded set.
BaseStationTable base_stations;

template <class Handle> QString designator_of(Handle const& element) {
    QString name;
    element.designator().get(name);
    return name;
}

// The number of a parent's ID, which a new child's link is made from; 0
// when the parent has none.
template <class Handle> int number_of(Handle const& element) {
    int number = 0;
    element.id().get(number);
    return number;
}

// The ID text of a customer or farm ("CTR1"), as links name it.
QString id_text(Element const& element) {
    QString text;
    String(element.attribute("A")).get(text);
    return text;
}

QString link_text(LinkedID const& link) {
    QString text;
    link.get(text);
    return text;
}

// A farm or field by the texts of its links and its name; `farm` stays empty
// for farms.
struct ElementKey {
    QString customer;
    QString farm;
    QString name;

    bool operator==(ElementKey const& other) const {
        return customer == other.customer && farm == other.farm && name == other.name;
    }
};

uint qHash(ElementKey const& key, uint seed) {
    return ::qHash(key.name, ::qHash(key.farm, ::qHash(key.customer, seed)));
}

// With -m every directory looks for its element: the first in list order with
// its name and, for farms and fields, with the current parents as
// get_customer() and get_farm() give them. A walk over the list for every
// directory made a run over 20,000 loaded fields quadratic (44 s for the walk
// against 0.2 s without -m), so the lists are bucketed once at the start and
// every element the walk makes joins its bucket; a bucket keeps its first.
//
// Farms and fields are bucketed by the texts of their links: an element's
// parent is the first element holding the link's ID text, so only elements
// whose link text is the current parent's ID text can have it as parent, and
// all elements of one bucket have the same parents. Checking the bucket's
// first element against the walk's own conditions thus gives the walk's
// result, also for duplicate IDs in a loaded set and for links that name no
// element until the walk makes one with that ID.
class ExistingElements {
public:
    explicit ExistingElements(Task_data const& root) {
        for (Customer const& customer : root.customers())
            add(customer);
        for (Farm const& farm : root.farms())
            add(farm);
        for (Partfield const& field : root.partfields())
            add(field);
    }

    void add(Customer const& customer) { add_first(customers_, designator_of(customer), customer); }
    void add(Farm const& farm) {
        add_first(farms_, {link_text(farm.customer()), QString(), designator_of(farm)}, farm);
    }
    void add(Partfield const& field) {
        add_first(fields_,
                  {link_text(field.customer()), link_text(field.farm()), designator_of(field)},
                  field);
    }

    Customer find(QString const& name) const { return customers_.value(name); }

    Farm find(Customer const& customer, QString const& name) const {
        Farm const farm = farms_.value({id_text(customer), QString(), name});
        return farm.valid() && farm.get_customer() == customer ? farm : Farm();
    }

    Partfield find(Customer const& customer, Farm const& farm, QString const& name) const {
        Partfield const field = fields_.value({id_text(customer), id_text(farm), name});
        return field.valid() && field.get_customer() == customer && field.get_farm() == farm
                   ? field
                   : Partfield();
    }

private:
    template <class Key, class Handle>
    static void add_first(QHash<Key, Handle>& bucket, Key const& key, Handle const& element) {
        if (!bucket.contains(key))
            bucket.insert(key, element);
    }

    QHash<QString, Customer> customers_;
    QHash<ElementKey, Farm> farms_;
    QHash<ElementKey, Partfield> fields_;
};

// Each level: with -m the element found under that name and those parents,
// otherwise (and when none is found) a new one, numbered first and then given
// its links and name. A found element is left as it is.

Customer find_or_make_customer(ExistingElements& existing, QString const& name) {
    if (merge_existing) {
        Customer const found = existing.find(name);
        if (found.valid())
            return found;
    }
    Customer customer = task_data.create_customers(true);
    customer.id().set(customer.get_element_man().get_free_uid(QStringLiteral("CTR"), false), true);
    customer.designator().set(name, true);
    existing.add(customer);
    return customer;
}

Farm find_or_make_farm(ExistingElements& existing, Customer const& customer, QString const& name) {
    if (merge_existing) {
        Farm const found = existing.find(customer, name);
        if (found.valid())
            return found;
    }
    int const customer_number = number_of(customer);
    Farm farm = task_data.create_farms(true);
    farm.id().set(farm.get_element_man().get_free_uid(QStringLiteral("FRM"), false), true);
    farm.customer().set(customer_number, true);
    farm.designator().set(name, true);
    existing.add(farm);
    return farm;
}

Partfield find_or_make_field(ExistingElements& existing, Customer const& customer, Farm const& farm,
                             QString const& name) {
    if (merge_existing) {
        Partfield const found = existing.find(customer, farm, name);
        if (found.valid())
            return found;
    }
    int const customer_number = number_of(customer);
    int const farm_number = number_of(farm);
    Partfield field = task_data.create_partfields(true);
    field.id().set(field.get_element_man().get_free_uid(QStringLiteral("PFD"), false), true);
    field.customer().set(customer_number, true);
    field.farm().set(farm_number, true);
    field.designator().set(name, true);
    existing.add(field);
    return field;
}

} // namespace

void import_clients(QString const& clients_dir) {
    ExistingElements existing(task_data);
    for (QDir const& client_dir : list_dirs(clients_dir)) {
        Customer const customer = find_or_make_customer(existing, item_name(client_dir));
        for (QDir const& farm_dir : list_dirs(client_dir)) {
            Farm const farm = find_or_make_farm(existing, customer, item_name(farm_dir));
            for (QDir const& entry : list_dirs(farm_dir)) {
                QDir const field_dir(entry.path());
                Partfield const field =
                    find_or_make_field(existing, customer, farm, item_name(field_dir));
                import_field_boundaries(field_dir, field);
                import_flag_points(field_dir, field);
                import_field_lines(field_dir, field, base_stations);
                step_progress();
            }
        }
    }
}
