#include "taskdata/element_man.h"
#include "taskdata/node.h"
#include "taskdata/task_data.h"
#include "taskdata/value_text.h"

#include <charconv>
#include <cmath>

namespace TC::Task_data {

void Polyline::close() {
    if (!isEmpty() && first() != last())
        append(first());
}

namespace Elements::Client {

using detail::Node;
using detail::Tree;

unsigned int Element::get_qhash() const {
    return ::qHash(static_cast<void const*>(node_.get()));
}

uint qHash(Element const& element, uint seed) {
    return element.get_qhash() ^ seed;
}

QUuid Element::get_guid() const {
    return node_ ? node_->guid : QUuid();
}

void Element::set_guid(QUuid const& guid) {
    if (!node_)
        return;
    node_->guid = guid;
    node_->guid_text.clear();
}

Element Element::get_parent() const {
    if (!node_ || !node_->parent)
        return Element();
    return Element(node_->parent->shared_from_this());
}

Task_data Element::get_root() const {
    if (!node_ || !node_->tree)
        return Task_data();
    return Task_data(node_->tree->root);
}

Element_man Element::get_element_man() const {
    if (!node_ || !node_->tree)
        return Element_man(std::shared_ptr<Tree>());
    // The tree is owned by the process's Element_man; this handle shares it
    // without owning it.
    return Element_man(std::shared_ptr<Tree>(std::shared_ptr<Tree>(), node_->tree));
}

Attribute Element::attribute(QByteArray const& full_name) const {
    if (!node_ || !node_->find_attr(full_name))
        return Attribute();
    return Attribute(node_, full_name);
}

Attribute Element::add(QString const& name, QString const& prefix) {
    if (!node_)
        return Attribute();
    QByteArray const full_name = (prefix + name).toUtf8();
    node_->attr_record(full_name);
    return Attribute(node_, full_name);
}

template <class Handle> Handle Element::create_child(char const* tag) const {
    if (!node_ || !node_->tree)
        return Handle();
    auto child = node_->tree->make_node(tag, node_.get());
    node_->tree->append_child(node_.get(), child);
    return Handle(child);
}

template <class Handle> Handle Element::child(char const* tag, unsigned int index) const {
    if (!node_)
        return Handle();
    for (auto const& child : node_->children)
        if (child->tag == tag && index-- == 0)
            return Handle(child);
    return Handle();
}

unsigned int Element::count_children(char const* tag) const {
    unsigned int count = 0;
    if (node_)
        for (auto const& child : node_->children)
            count += child->tag == tag ? 1 : 0;
    return count;
}

void Element::remove_child(Element const& child) const {
    if (node_ && node_->tree && child.node_ && child.node_->parent == node_.get())
        node_->tree->remove_child(node_.get(), child.node_.get());
}

UniqueID Element::unique_id() const {
    QByteArray const tag = node_ ? node_->tag : QByteArray();
    return UniqueID(node_, detail::id_attribute(tag), tag);
}

LinkedID Element::link(char const* name, char const* target_tag) const {
    return LinkedID(node_, name, target_tag);
}

std::shared_ptr<Node> Element::referenced(char const* name) const {
    if (!node_ || !node_->tree)
        return nullptr;
    Node* target = node_->tree->by_id.value(node_->value(name));
    return target ? target->shared_from_this() : nullptr;
}

// Instantiations used by the headers' inline accessors.
template Linestring Element::child<Linestring>(char const*, unsigned int) const;
template Polygon Element::child<Polygon>(char const*, unsigned int) const;
template Point Element::child<Point>(char const*, unsigned int) const;
template GuidanceGroup Element::child<GuidanceGroup>(char const*, unsigned int) const;
template Guidance_pattern Element::child<Guidance_pattern>(char const*, unsigned int) const;
template Product_relation Element::child<Product_relation>(char const*, unsigned int) const;

namespace {

bool valid_index(Node const* node, unsigned int index) {
    return node && node->points && index < static_cast<unsigned int>(node->points->count());
}

// Point attributes are read as Float::get and UInt8::get read theirs.
bool parse_number(QLatin1String text, double& value) {
    bool ok = false;
    value = QByteArray::fromRawData(text.data(), text.size()).toDouble(&ok);
    return ok;
}

} // namespace

unsigned int Linestring::create_new_point() {
    if (!node_ || !node_->points)
        return 0;
    return static_cast<unsigned int>(node_->points->append_empty());
}

unsigned int Linestring::get_num_points() const {
    return node_ && node_->points ? static_cast<unsigned int>(node_->points->count()) : 0;
}

// Numbers are formatted into a buffer and stored as they are: curves and
// boundaries set millions of them.
void Linestring::set_type(unsigned int index, unsigned char type) {
    if (!valid_index(node_.get(), index))
        return;
    char text[4];
    char const* const end = std::to_chars(text, text + sizeof text, type).ptr;
    node_->points->set(static_cast<int>(index), QByteArrayLiteral("A"),
                       QLatin1String(text, static_cast<int>(end - text)));
}

void Linestring::set_north(unsigned int index, double degrees) {
    if (!valid_index(node_.get(), index) || !std::isfinite(degrees))
        return;
    char text[detail::degrees_text_size];
    node_->points->set(static_cast<int>(index), QByteArrayLiteral("C"),
                       QLatin1String(text, detail::format_degrees(degrees, text)));
}

void Linestring::set_east(unsigned int index, double degrees) {
    if (!valid_index(node_.get(), index) || !std::isfinite(degrees))
        return;
    char text[detail::degrees_text_size];
    node_->points->set(static_cast<int>(index), QByteArrayLiteral("D"),
                       QLatin1String(text, detail::format_degrees(degrees, text)));
}

void Linestring::set_designator(unsigned int index, QString const& designator) {
    if (valid_index(node_.get(), index))
        node_->points->set(static_cast<int>(index), QByteArrayLiteral("B"), designator);
}

bool Linestring::get_position(unsigned int index, double& north, double& east) const {
    if (!valid_index(node_.get(), index))
        return false;
    bool has_north = false;
    bool has_east = false;
    node_->points->for_each_bytes(static_cast<int>(index),
                                  [&](QLatin1String name, QLatin1String value) {
                                      if (name == QLatin1String("C"))
                                          has_north = parse_number(value, north);
                                      else if (name == QLatin1String("D"))
                                          has_east = parse_number(value, east);
                                  });
    return has_north && has_east;
}

bool Linestring::get_type(unsigned int index, unsigned char& type) const {
    if (!valid_index(node_.get(), index))
        return false;
    bool found = false;
    node_->points->for_each_bytes(
        static_cast<int>(index), [&](QLatin1String name, QLatin1String value) {
            if (name != QLatin1String("A"))
                return;
            bool ok = false;
            uint const parsed = QByteArray::fromRawData(value.data(), value.size()).toUInt(&ok);
            found = ok && parsed <= 255;
            if (found)
                type = static_cast<unsigned char>(parsed);
        });
    return found;
}

void Linestring::add_points(Polyline const& polyline, bool, bool) {
    for (QPointF const& offset : polyline) {
        unsigned int const index = create_new_point();
        set_type(index, 2);
        set_north(index, polyline.origin().y() + offset.y());
        set_east(index, polyline.origin().x() + offset.x());
    }
}

void Linestring::set_binary(bool binary) {
    if (node_)
        node_->binary = binary;
}

bool Linestring::binary() const {
    return node_ && node_->binary;
}

Linestring Polygon::create_linestring(bool) const {
    return create_child<Linestring>("LSG");
}
Linestring Guidance_pattern::create_linestring(bool) const {
    return create_child<Linestring>("LSG");
}
Guidance_pattern GuidanceGroup::create_patterns(bool) const {
    return create_child<Guidance_pattern>("GPN");
}
Polygon Partfield::create_polygon(bool) const {
    return create_child<Polygon>("PLN");
}
Point Partfield::create_point(bool) const {
    return create_child<Point>("PNT");
}
GuidanceGroup Partfield::create_guidance_paths(bool) const {
    return create_child<GuidanceGroup>("GGP");
}
Product_relation Product::create_product_relations(bool) const {
    return create_child<Product_relation>("PRN");
}

Element_list::Element_list(std::shared_ptr<Tree> tree, QByteArray tag)
    : tree_(std::move(tree)), tag_(std::move(tag)) {}

int Element_list::count() const {
    if (!tree_)
        return 0;
    auto found = tree_->root_lists.constFind(tag_);
    return found == tree_->root_lists.constEnd() ? 0 : static_cast<int>(found->size());
}

std::shared_ptr<Node> Element_list::at(int index) const {
    if (index < 0 || index >= count())
        return nullptr;
    auto const& list = *tree_->root_lists.constFind(tag_);
    return list[static_cast<size_t>(index)]->shared_from_this();
}

template <class Handle> Handle Task_data::create_root_child(char const* tag) const {
    return create_child<Handle>(tag);
}

std::shared_ptr<Tree> Task_data::tree() const {
    if (!node_ || !node_->tree)
        return nullptr;
    return std::shared_ptr<Tree>(std::shared_ptr<Tree>(), node_->tree);
}

Customer Task_data::create_customers(bool) const {
    return create_root_child<Customer>("CTR");
}
Farm Task_data::create_farms(bool) const {
    return create_root_child<Farm>("FRM");
}
Partfield Task_data::create_partfields(bool) const {
    return create_root_child<Partfield>("PFD");
}
Product Task_data::create_products(bool) const {
    return create_root_child<Product>("PDT");
}
Product_group Task_data::create_product_groups(bool) const {
    return create_root_child<Product_group>("PGP");
}
Base_station Task_data::create_base_stations(bool) const {
    return create_root_child<Base_station>("BSN");
}

Element_list_t<Elements::Base::Customer> Task_data::customers() const {
    return Element_list_t<Elements::Base::Customer>(tree());
}
Element_list_t<Elements::Base::Farm> Task_data::farms() const {
    return Element_list_t<Elements::Base::Farm>(tree());
}
Element_list_t<Elements::Base::Partfield> Task_data::partfields() const {
    return Element_list_t<Elements::Base::Partfield>(tree());
}
Element_list_t<Elements::Base::Product> Task_data::products() const {
    return Element_list_t<Elements::Base::Product>(tree());
}
Product_group_list Task_data::product_groups() const {
    return Product_group_list(tree());
}
Element_list_t<Elements::Base::Base_station> Task_data::base_stations() const {
    return Element_list_t<Elements::Base::Base_station>(tree());
}

} // namespace Elements::Client
} // namespace TC::Task_data
