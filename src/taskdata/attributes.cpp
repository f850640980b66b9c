#include "taskdata/attributes.h"

#include "taskdata/node.h"
#include "taskdata/task_data.h"
#include "taskdata/value_text.h"

#include <cmath>
#include <limits>

namespace TC::Task_data::Attributes::Client {

using detail::Attr;
using detail::Node;

namespace {

// Parses decimal text into T, refusing text out of T's range.
template <class T> bool parse_integer(QString const& text, T& value) {
    bool ok = false;
    qlonglong const parsed = text.toLongLong(&ok, 10);
    if (!ok || parsed < std::numeric_limits<T>::min() || parsed > std::numeric_limits<T>::max())
        return false;
    value = static_cast<T>(parsed);
    return true;
}

} // namespace

Attribute::Attribute(std::weak_ptr<Node> node, QByteArray name)
    : node_(std::move(node)), name_(std::move(name)) {}

bool Attribute::valid() const {
    auto node = node_.lock();
    return node && node->find_attr(name_) != nullptr;
}

void Attribute::set_flag_included(bool included) {
    if (auto node = node_.lock())
        node->attr_record(name_).included = included;
}

bool Attribute::get_text(QString& text) const {
    auto node = node_.lock();
    Attr const* attr = node ? node->find_attr(name_) : nullptr;
    if (!attr || !attr->has_value)
        return false;
    text = attr->value;
    return true;
}

void Attribute::set_text(QString const& text) const {
    if (auto node = node_.lock())
        node->set_value(name_, text);
}

void Attribute::clear_value() const {
    if (auto node = node_.lock())
        if (Attr* attr = node->find_attr(name_))
            attr->has_value = false;
}

bool String::get(QString& value) const {
    return get_text(value);
}
void String::set(QString const& value, bool) {
    set_text(value);
}

bool UInt8::get(unsigned char& value) const {
    QString text;
    return get_text(text) && parse_integer(text, value);
}
void UInt8::set(unsigned char value, bool) {
    set_text(QString::number(value));
}

bool UInt16::get(unsigned short& value) const {
    QString text;
    return get_text(text) && detail::parse_ddi(text, value);
}
void UInt16::set(unsigned short value, bool) {
    set_text(detail::format_ddi(value));
}

bool UInt32::get(unsigned int& value) const {
    QString text;
    return get_text(text) && parse_integer(text, value);
}
void UInt32::set(unsigned int value, bool) {
    set_text(QString::number(value));
}

bool Int8::get(signed char& value) const {
    QString text;
    return get_text(text) && parse_integer(text, value);
}
void Int8::set(signed char value, bool) {
    set_text(QString::number(value));
}

bool Int32::get(int& value) const {
    QString text;
    return get_text(text) && parse_integer(text, value);
}
void Int32::set(int value, bool) {
    set_text(QString::number(value));
}

bool Float::get(double& value) const {
    QString text;
    if (!get_text(text))
        return false;
    bool ok = false;
    double const parsed = text.toDouble(&ok);
    if (ok)
        value = parsed;
    return ok;
}
void Float::set(double value, bool) {
    if (std::isfinite(value))
        set_text(detail::format_degrees(value));
}

UniqueID::UniqueID(std::weak_ptr<Node> node, QByteArray name, QByteArray tag)
    : Attribute(std::move(node), std::move(name)), tag_(std::move(tag)) {}

bool UniqueID::get(int& value) const {
    QString text;
    return get_text(text) && detail::parse_id(tag_, text, value);
}
void UniqueID::set(int value, bool) {
    set_text(detail::format_id(tag_, value));
}

LinkedID::LinkedID(std::weak_ptr<Node> node, QByteArray name, QByteArray target_tag)
    : Attribute(std::move(node), std::move(name)), target_tag_(std::move(target_tag)) {}

bool LinkedID::get(QString& id) const {
    return get_text(id);
}

void LinkedID::set(int number, bool) {
    set_text(detail::format_id(target_tag_, number));
}

void LinkedID::set(Elements::Client::Element const& element) {
    // A line that has lost its base station must not keep naming the former.
    if (!element.node_) {
        clear_value();
        return;
    }
    QString const id = element.node_->value(detail::id_attribute(element.node_->tag));
    if (!id.isEmpty())
        set_text(id);
}

} // namespace TC::Task_data::Attributes::Client
