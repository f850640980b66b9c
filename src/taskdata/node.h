#pragma once
// The store's internal representation: a tree of generic element nodes that
// keeps every element and attribute of a loaded set, and the compact point
// storage of line strings. Only the store's own sources include this header;
// the rest of the system sees the handles of task_data.h.

#include "taskdata/point_block.h"

#include <QByteArray>
#include <QHash>
#include <QSet>
#include <QString>
#include <QStringList>
#include <QUuid>

#include <memory>
#include <vector>

namespace TC::Task_data::detail {

// One XML attribute. A record may exist without a value: made by add() or by
// set_flag_included() before any set(); such a record is never written.
struct Attr {
    QByteArray name;
    QString value;
    bool has_value = false;
    bool included = true;
};

struct Tree;

struct Node : std::enable_shared_from_this<Node> {
    QByteArray tag;
    std::vector<Attr> attrs;
    std::vector<std::shared_ptr<Node>> children;
    Node* parent = nullptr;
    Tree* tree = nullptr;

    QUuid guid;
    QString guid_text;    // the link value as loaded; empty once set_guid changed it
    Node* link = nullptr; // the LNK element of LINKLIST.XML that named this element
    bool binary = false;  // Linestring::set_binary was called

    std::unique_ptr<PointBlock> points; // LSG only: its PNT children, compactly
    int point_anchor = -1;              // other children of an LSG: points before them

    bool resolved_link = false;         // an LNK node that named an element when loaded
    std::weak_ptr<Node> linked_element; // and that element

    Attr* find_attr(QByteArray const& name);
    Attr const* find_attr(QByteArray const& name) const;
    // The record of that name, added in schema order (single capital letters
    // sorted, other names behind them) when missing.
    Attr& attr_record(QByteArray const& name);
    QString value(QByteArray const& name) const; // empty when absent
    void set_value(QByteArray const& name, QString const& value);

    bool attached() const; // still part of its tree (not removed)
};

// Numbers handed out by get_free_uid: the numbers of one tag in use, and a
// cursor below which every number is known to be taken.
struct UidPool {
    QSet<int> used;
    int cursor = 1;

    void mark(int number);
    int free_number();
};

struct Tree {
    std::shared_ptr<Node> root;
    QHash<QString, Node*> by_id;                      // element ID text ("CTR1") to node
    QHash<QByteArray, UidPool> uids;                  // tag to numbers in use
    QHash<QByteArray, std::vector<Node*>> root_lists; // root children by tag, in order

    std::shared_ptr<Node> link_list; // root of LINKLIST.XML as loaded, or null
    QByteArray guid_list;            // GUIDLIST.XML as loaded
    QString loaded_dir;              // directory of the set that was read
    QStringList consumed_files;      // names in loaded_dir the load read itself

    void reset();
    std::shared_ptr<Node> make_node(QByteArray const& tag, Node* parent);
    void append_child(Node* parent, std::shared_ptr<Node> child);
    void remove_child(Node* parent, Node* child);

    // Records an element's ID text in the index and its number in the pool.
    // The first element that holds an ID text is the one it names.
    void register_id(Node* node);
    void unregister_id(Node* node);
    void unregister_ids(Node* subtree);
};

// The attribute holding the element ID of that tag ("A", or "E", "F", "G" for
// PLN, LSG, PNT), or an empty array for elements without one.
QByteArray id_attribute(QByteArray const& tag);
// The number of an element ID of that tag ("CTR-1" gives -1); false when the
// text is not of that form.
bool parse_id(QByteArray const& tag, QString const& text, int& number);
QString format_id(QByteArray const& tag, int number);

// The record of that name in `attrs`, added in schema order when missing.
Attr& attr_record(std::vector<Attr>& attrs, QByteArray const& name);

// Interns short names (tags and attribute names) so that the many nodes of a
// large set share one copy of each.
QByteArray intern(QByteArray const& name);

} // namespace TC::Task_data::detail
