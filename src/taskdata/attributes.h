#pragma once
// Attribute views: short-lived values bound to one attribute of one element.
// A view holds its element weakly; it never keeps the element alive, and on an
// element that is gone every operation does nothing and every get fails.

#include <QByteArray>
#include <QString>

#include <memory>

namespace TC::Task_data::detail {
struct Node;
struct Attr;
} // namespace TC::Task_data::detail

namespace TC::Task_data::Elements::Client {
class Element;
}

namespace TC::Task_data::Attributes::Client {

class Attribute {
public:
    Attribute() = default;
    Attribute(std::weak_ptr<detail::Node> node, QByteArray name);
    virtual ~Attribute() = default;

    // True when the element holds this attribute (with or without a value).
    bool valid() const;
    // Whether the attribute is written out; an attribute that was never set
    // is not written either way.
    void set_flag_included(bool included);

protected:
    // The stored text; false when the attribute is absent or has no value.
    bool get_text(QString& text) const;
    void set_text(QString const& text) const;
    // The attribute holds no value any more and is not written.
    void clear_value() const;

    std::weak_ptr<detail::Node> node_;
    QByteArray name_;
};

// Free text (designators and proprietary attributes).
class String : public Attribute {
public:
    using Attribute::Attribute;
    String() = default;
    explicit String(Attribute const& attribute) : Attribute(attribute) {}
    bool get(QString& value) const;
    void set(QString const& value, bool = true);
};

// Decimal integers. get() fails on text that is not a number of the range.
class UInt8 : public Attribute {
public:
    using Attribute::Attribute;
    bool get(unsigned char& value) const;
    void set(unsigned char value, bool = true);
};

// A data dictionary identifier (PDT E, QuantityDDI): written as the four hex
// digits of ISO 11783-10's hexBinary form, "0001".
class UInt16 : public Attribute {
public:
    using Attribute::Attribute;
    bool get(unsigned short& value) const;
    void set(unsigned short value, bool = true);
};

class UInt32 : public Attribute {
public:
    using Attribute::Attribute;
    bool get(unsigned int& value) const;
    void set(unsigned int value, bool = true);
};

class Int8 : public Attribute {
public:
    using Attribute::Attribute;
    bool get(signed char& value) const;
    void set(signed char value, bool = true);
};

class Int32 : public Attribute {
public:
    using Attribute::Attribute;
    bool get(int& value) const;
    void set(int value, bool = true);
};

// Degrees of latitude or longitude (PNT C/D, BSN C/D): at most nine fraction
// digits are written. A value that is not finite is not stored.
class Float : public Attribute {
public:
    using Attribute::Attribute;
    bool get(double& value) const;
    void set(double value, bool = true);
};

// The element's own ID: its tag and a number, "CTR1"; get() gives the number.
class UniqueID : public Attribute {
public:
    UniqueID(std::weak_ptr<detail::Node> node, QByteArray name, QByteArray tag);
    bool get(int& value) const;
    void set(int value, bool = true);

private:
    QByteArray tag_;
};

// A reference to another element by its ID (FRM I, PFD E/F, PDT C, PRN A,
// GPN L). The target tag is the one the accessor implies.
class LinkedID : public Attribute {
public:
    LinkedID(std::weak_ptr<detail::Node> node, QByteArray name, QByteArray target_tag);
    bool get(QString& id) const;
    // A reference to the element of that number.
    void set(int number, bool = true);
    // A reference to that element, by its current ID; nothing when it has
    // none. An invalid handle drops the reference.
    void set(Elements::Client::Element const& element);

private:
    QByteArray target_tag_;
};

} // namespace TC::Task_data::Attributes::Client
