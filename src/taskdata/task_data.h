#pragma once
// The task data element interface: value handles on the elements of the one
// in-memory ISO 11783-10 tree. Copying a handle shares the element; dropping
// it never removes anything. A default-constructed handle refers to nothing
// and valid() is false on it; operations on such a handle do nothing, and
// look-ups through it give invalid handles and empty lists.

#include "taskdata/attributes.h"

#include <QPointF>
#include <QString>
#include <QUuid>
#include <QVector>

#include <memory>

namespace TC::Task_data {

namespace detail {
struct Node;
struct Tree;
} // namespace detail

// A ring or line in degrees: an origin and offsets from it (x longitude,
// y latitude), the first offset (0, 0).
class Polyline : public QVector<QPointF> {
public:
    explicit Polyline(QPointF const& origin = QPointF()) : origin_(origin) {}
    QPointF const& origin() const { return origin_; }
    // Closes the ring: appends the first offset again unless it is the last.
    void close();

private:
    QPointF origin_;
};

namespace Elements::Client {

using namespace Attributes::Client;

class Task_data;
class Element_man;

class Element {
public:
    Element() = default;
    explicit Element(std::shared_ptr<detail::Node> node) : node_(std::move(node)) {}

    bool valid() const { return node_ != nullptr; }
    bool operator==(Element const& other) const { return node_ == other.node_; }
    bool operator!=(Element const& other) const { return node_ != other.node_; }
    unsigned int get_qhash() const;

    // The element's identity, written to LINKLIST.XML; null when it has none.
    QUuid get_guid() const;
    void set_guid(QUuid const& guid);

    Element get_parent() const;
    Task_data get_root() const;
    Element_man get_element_man() const;

    // The attribute of that full name in UTF-8 ("P231_incDec"); invalid when
    // absent.
    Attribute attribute(QByteArray const& full_name) const;
    // Adds the attribute prefix + name (without a value yet) and returns it.
    Attribute add(QString const& name, QString const& prefix);

protected:
    template <class Handle> Handle create_child(char const* tag) const;
    template <class Handle> Handle child(char const* tag, unsigned int index) const;
    unsigned int count_children(char const* tag) const;
    void remove_child(Element const& child) const;
    UniqueID unique_id() const;
    template <class View> View view(char const* name) const { return View(node_, name); }
    LinkedID link(char const* name, char const* target_tag) const;
    std::shared_ptr<detail::Node> referenced(char const* name) const;

    std::shared_ptr<detail::Node> node_;
    friend class Attributes::Client::LinkedID;
};

uint qHash(Element const& element, uint seed = 0);

class Customer : public Element {
public:
    using Element::Element;
    UniqueID id() const { return unique_id(); }
    String designator() const { return view<String>("B"); }
};

class Farm : public Element {
public:
    using Element::Element;
    UniqueID id() const { return unique_id(); }
    String designator() const { return view<String>("B"); }
    LinkedID customer() const { return link("I", "CTR"); }
    Customer get_customer() const { return Customer(referenced("I")); }
};

class Point : public Element {
public:
    using Element::Element;
    Int8 type() const { return view<Int8>("A"); }
    String designator() const { return view<String>("B"); }
    Float north() const { return view<Float>("C"); }
    Float east() const { return view<Float>("D"); }
    UInt8 colour() const { return view<UInt8>("F"); }
    // The display's icon number, kept as "P231_iconId".
    UInt8 icon_id() const { return view<UInt8>("P231_iconId"); }
};

class Linestring : public Element {
public:
    using Element::Element;
    UInt8 type() const { return view<UInt8>("A"); }
    String designator() const { return view<String>("B"); }
    // The display's on/off flag, kept as "P231_enabled".
    UInt8 enabled() const { return view<UInt8>("P231_enabled"); }

    // Points (PNT children) by zero-based index. Out-of-range indices are
    // ignored.
    unsigned int create_new_point();
    unsigned int get_num_points() const;
    void set_type(unsigned int index, unsigned char type);
    void set_north(unsigned int index, double degrees);
    void set_east(unsigned int index, double degrees);
    void set_designator(unsigned int index, QString const& designator);
    // Position of point `index` in degrees (PNT C PointNorth, D PointEast);
    // false when there is no such point or either value is missing or not a
    // number.
    bool get_position(unsigned int index, double& north, double& east) const;
    // PNT A, PointType, of point `index`; false when there is no such point or
    // the value is missing or not a whole number of 0 to 255.
    bool get_type(unsigned int index, unsigned char& type) const;
    // Appends origin + offset for every point of the polyline, as points of
    // type 2 (other).
    void add_points(Polyline const& polyline, bool, bool);
    // Recorded; the points are written as PNT elements all the same.
    void set_binary(bool binary);
    bool binary() const;

    QUuid get_uuid() const { return get_guid(); }
    void set_uuid(QUuid const& uuid) { set_guid(uuid); }
};

class Polygon : public Element {
public:
    Polygon() = default;
    explicit Polygon(std::shared_ptr<detail::Node> node) : Element(std::move(node)) {}
    explicit Polygon(Element const& element) : Element(element) {}
    UInt8 type() const { return view<UInt8>("A"); }
    String designator() const { return view<String>("B"); }
    UInt32 area() const { return view<UInt32>("C"); }
    UInt8 colour() const { return view<UInt8>("D"); }

    Linestring create_linestring(bool = true) const;
    unsigned int num_linestring() const { return count_children("LSG"); }
    Linestring get_linestring(unsigned int index) const { return child<Linestring>("LSG", index); }
    void remove_linestring(Linestring const& linestring) const { remove_child(linestring); }
};

class Base_station : public Element {
public:
    using Element::Element;
    UniqueID id() const { return unique_id(); }
    String designator() const { return view<String>("B"); }
    Float north() const { return view<Float>("C"); }
    Float east() const { return view<Float>("D"); }
    Int32 up() const { return view<Int32>("E"); }
};

class Guidance_pattern : public Element {
public:
    using Element::Element;
    UniqueID id() const { return unique_id(); }
    String designator() const { return view<String>("B"); }
    UInt8 type() const { return view<UInt8>("C"); }
    UInt8 propagation() const { return view<UInt8>("E"); }
    UInt8 extension() const { return view<UInt8>("F"); }
    UInt32 radius() const { return view<UInt32>("H"); }
    // GuidancePatternHeading (G): degrees clockwise from north, of an A+ line.
    Float heading() const { return view<Float>("G"); }
    LinkedID base_station() const { return link("L", "BSN"); }

    Linestring create_linestring(bool = true) const;
    unsigned int num_linestring() const { return count_children("LSG"); }
    // Invalid when there is no such line string.
    Linestring get_linestring(unsigned int index) const { return child<Linestring>("LSG", index); }
    void remove_linestring(Linestring const& linestring) const { remove_child(linestring); }
};

class GuidanceGroup : public Element {
public:
    using Element::Element;
    UniqueID id() const { return unique_id(); }
    String designator() const { return view<String>("B"); }

    Guidance_pattern create_patterns(bool = true) const;
    unsigned int num_patterns() const { return count_children("GPN"); }
    Guidance_pattern get_patterns(unsigned int index) const {
        return child<Guidance_pattern>("GPN", index);
    }
};

class Partfield : public Element {
public:
    using Element::Element;
    UniqueID id() const { return unique_id(); }
    String designator() const { return view<String>("C"); }
    LinkedID customer() const { return link("E", "CTR"); }
    LinkedID farm() const { return link("F", "FRM"); }
    Customer get_customer() const { return Customer(referenced("E")); }
    Farm get_farm() const { return Farm(referenced("F")); }

    Polygon create_polygon(bool = true) const;
    unsigned int num_polygon() const { return count_children("PLN"); }
    Polygon get_polygon(unsigned int index) const { return child<Polygon>("PLN", index); }
    void remove_polygon(Polygon const& polygon) const { remove_child(polygon); }

    Point create_point(bool = true) const;
    unsigned int num_point() const { return count_children("PNT"); }
    Point get_point(unsigned int index) const { return child<Point>("PNT", index); }

    GuidanceGroup create_guidance_paths(bool = true) const;
    unsigned int num_guidance_paths() const { return count_children("GGP"); }
    GuidanceGroup get_guidance_paths(unsigned int index) const {
        return child<GuidanceGroup>("GGP", index);
    }
};

class Product_group : public Element {
public:
    using Element::Element;
    UniqueID id() const { return unique_id(); }
    String designator() const { return view<String>("B"); }
};

class Product_relation : public Element {
public:
    using Element::Element;
    LinkedID product() const { return link("A", "PDT"); }
    Int32 quantity() const { return view<Int32>("B"); }
};

class Product : public Element {
public:
    using Element::Element;
    UniqueID id() const { return unique_id(); }
    String designator() const { return view<String>("B"); }
    LinkedID product_group() const { return link("C", "PGP"); }
    UInt16 ddi() const { return view<UInt16>("E"); }
    UInt8 type() const { return view<UInt8>("F"); }
    Int32 mix_quantity() const { return view<Int32>("G"); }
    UInt32 density_mass_per_volume() const { return view<UInt32>("H"); }

    Product_relation create_product_relations(bool = true) const;
    unsigned int num_product_relations() const { return count_children("PRN"); }
    Product_relation get_product_relations(unsigned int index) const {
        return child<Product_relation>("PRN", index);
    }
};

// A live view on the root's elements of one tag, in document order: those
// loaded, then those created. Elements created meanwhile are counted too.
class Element_list {
public:
    Element_list(std::shared_ptr<detail::Tree> tree, QByteArray tag);
    int count() const;

protected:
    std::shared_ptr<detail::Node> at(int index) const;

private:
    std::shared_ptr<detail::Tree> tree_;
    QByteArray tag_;
};

} // namespace Elements::Client

// The element kinds of the root's lists; each names the handle a list yields.
namespace Elements::Base {
struct Customer {
    using Handle = Client::Customer;
    static constexpr char const* tag = "CTR";
};
struct Farm {
    using Handle = Client::Farm;
    static constexpr char const* tag = "FRM";
};
struct Partfield {
    using Handle = Client::Partfield;
    static constexpr char const* tag = "PFD";
};
struct Product {
    using Handle = Client::Product;
    static constexpr char const* tag = "PDT";
};
struct Product_group {
    using Handle = Client::Product_group;
    static constexpr char const* tag = "PGP";
};
struct Base_station {
    using Handle = Client::Base_station;
    static constexpr char const* tag = "BSN";
};
} // namespace Elements::Base

namespace Elements::Client {

template <class Kind> class Element_list_t : public Element_list {
public:
    using Handle = typename Kind::Handle;

    explicit Element_list_t(std::shared_ptr<detail::Tree> tree)
        : Element_list(std::move(tree), Kind::tag) {}

    template <class H = Handle> class Iterator {
    public:
        Iterator(Element_list_t const* list, int index) : list_(list), index_(index) {}
        H operator*() const { return (*list_)[index_]; }
        Iterator& operator++() {
            ++index_;
            return *this;
        }
        bool operator!=(Iterator const& other) const { return index_ != other.index_; }

    private:
        Element_list_t const* list_;
        int index_;
    };

    Handle operator[](int index) const { return Handle(at(index)); }
    Iterator<> begin() const { return Iterator<>(this, 0); }
    Iterator<> end() const { return Iterator<>(this, count()); }
};

using Product_group_list = Element_list_t<Elements::Base::Product_group>;

class Task_data : public Element {
public:
    using Element::Element;

    Customer create_customers(bool = true) const;
    Farm create_farms(bool = true) const;
    Partfield create_partfields(bool = true) const;
    Product create_products(bool = true) const;
    Product_group create_product_groups(bool = true) const;
    Base_station create_base_stations(bool = true) const;

    Element_list_t<Elements::Base::Customer> customers() const;
    Element_list_t<Elements::Base::Farm> farms() const;
    Element_list_t<Elements::Base::Partfield> partfields() const;
    Element_list_t<Elements::Base::Product> products() const;
    Product_group_list product_groups() const;
    Element_list_t<Elements::Base::Base_station> base_stations() const;

private:
    template <class Handle> Handle create_root_child(char const* tag) const;
    std::shared_ptr<detail::Tree> tree() const;
};

} // namespace Elements::Client
} // namespace TC::Task_data
