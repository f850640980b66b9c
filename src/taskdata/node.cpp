#include "taskdata/node.h"

#include "taskdata/attribute_order.h"

#include <algorithm>

namespace TC::Task_data::detail {

Attr* Node::find_attr(QByteArray const& name) {
    for (Attr& attr : attrs)
        if (attr.name == name)
            return &attr;
    return nullptr;
}

Attr const* Node::find_attr(QByteArray const& name) const {
    return const_cast<Node*>(this)->find_attr(name);
}

Attr& attr_record(std::vector<Attr>& attrs, QByteArray const& name) {
    for (Attr& attr : attrs)
        if (attr.name == name)
            return attr;
    auto const position =
        schema_position(attrs.begin(), attrs.end(), name,
                        [](Attr const& attr) -> QByteArray const& { return attr.name; });
    return *attrs.insert(position, Attr{intern(name), QString(), false, true});
}

Attr& Node::attr_record(QByteArray const& name) {
    return detail::attr_record(attrs, name);
}

QString Node::value(QByteArray const& name) const {
    Attr const* attr = find_attr(name);
    return attr && attr->has_value ? attr->value : QString();
}

void Node::set_value(QByteArray const& name, QString const& text) {
    bool const is_id = tree && name == id_attribute(tag);
    if (is_id)
        tree->unregister_id(this);
    Attr& attr = attr_record(name);
    attr.value = text;
    attr.has_value = true;
    if (is_id)
        tree->register_id(this);
}

bool Node::attached() const {
    Node const* node = this;
    while (node->parent)
        node = node->parent;
    return tree && node == tree->root.get();
}

void UidPool::mark(int number) {
    used.insert(number);
}

int UidPool::free_number() {
    while (used.contains(cursor))
        ++cursor;
    return cursor;
}

void Tree::reset() {
    root = std::make_shared<Node>();
    root->tag = intern("ISO11783_TaskData");
    root->tree = this;
    by_id.clear();
    uids.clear();
    root_lists.clear();
    link_list.reset();
    guid_list.clear();
    loaded_dir.clear();
    consumed_files.clear();
}

std::shared_ptr<Node> Tree::make_node(QByteArray const& tag, Node* parent) {
    auto node = std::make_shared<Node>();
    node->tag = intern(tag);
    node->tree = this;
    node->parent = parent;
    if (tag == "LSG")
        node->points = std::make_unique<PointBlock>();
    return node;
}

void Tree::append_child(Node* parent, std::shared_ptr<Node> child) {
    child->parent = parent;
    if (parent == root.get())
        root_lists[child->tag].push_back(child.get());
    parent->children.push_back(std::move(child));
}

void Tree::remove_child(Node* parent, Node* child) {
    auto& siblings = parent->children;
    auto found = std::find_if(siblings.begin(), siblings.end(),
                              [child](auto const& sibling) { return sibling.get() == child; });
    if (found == siblings.end())
        return;
    unregister_ids(child);
    if (parent == root.get()) {
        auto& list = root_lists[child->tag];
        list.erase(std::remove(list.begin(), list.end(), child), list.end());
    }
    child->parent = nullptr;
    siblings.erase(found);
}

void Tree::register_id(Node* node) {
    QByteArray const attribute = id_attribute(node->tag);
    Attr const* attr = attribute.isEmpty() ? nullptr : node->find_attr(attribute);
    if (!attr || !attr->has_value)
        return;
    if (!by_id.contains(attr->value))
        by_id.insert(attr->value, node);
    int number = 0;
    if (parse_id(node->tag, attr->value, number))
        uids[node->tag].mark(number);
}

void Tree::unregister_id(Node* node) {
    QByteArray const attribute = id_attribute(node->tag);
    if (attribute.isEmpty())
        return;
    QString const id = node->value(attribute);
    if (by_id.value(id) == node)
        by_id.remove(id);
}

void Tree::unregister_ids(Node* subtree) {
    unregister_id(subtree);
    for (auto const& child : subtree->children)
        unregister_ids(child.get());
}

QByteArray id_attribute(QByteArray const& tag) {
    static QHash<QByteArray, QByteArray> const table = [] {
        QHash<QByteArray, QByteArray> t;
        for (char const* tag_with_a :
             {"BSN", "CCT", "CCG", "CCL", "CLD", "CTP", "CVT", "CPC", "CTR", "DVC", "DET",
              "FRM", "GGP", "GPN", "OTQ", "PFD", "PDT", "PGP", "TSK", "VPN", "WKR"})
            t.insert(tag_with_a, "A");
        t.insert("PLN", "E");
        t.insert("LSG", "F");
        t.insert("PNT", "G");
        return t;
    }();
    return table.value(tag);
}

bool parse_id(QByteArray const& tag, QString const& text, int& number) {
    if (text.size() <= tag.size() || !text.startsWith(QLatin1String(tag)))
        return false;
    bool ok = false;
    int const parsed = text.midRef(tag.size()).toInt(&ok, 10);
    if (!ok || text.at(tag.size()) == QLatin1Char('+'))
        return false;
    number = parsed;
    return true;
}

QString format_id(QByteArray const& tag, int number) {
    return QLatin1String(tag) + QString::number(number);
}

QByteArray intern(QByteArray const& name) {
    static QHash<QByteArray, QByteArray> names;
    auto found = names.constFind(name);
    if (found != names.constEnd())
        return found.value();
    // Attribute names of hostile files could be many; past a bound they are
    // simply not shared.
    if (names.size() < 4096)
        names.insert(name, name);
    return name;
}

} // namespace TC::Task_data::detail
