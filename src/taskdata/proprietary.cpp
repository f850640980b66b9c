#include "taskdata/proprietary.h"

namespace TC::Task_data::Elements::Client {

namespace {

QString const prefix = QStringLiteral("P231_");

// The find-or-add step that every writer shares.
void store(Element element, QString const& bare_name, QString const& text) {
    String view(element.attribute((prefix + bare_name).toUtf8()));
    if (!view.valid())
        view = String(element.add(bare_name, prefix));
    view.set(text, true);
}

QString product_number(double value) {
    return QString::number(value, 'g', 6);
}

} // namespace

void set_proprietary(Element const& element, QString const& name, QVariant const& value) {
    store(element, name, value.toString());
}

void set_product_preset(Product product, unsigned int index, double value) {
    if (index >= 2)
        return;
    store(product, QStringLiteral("preset%1").arg(index), product_number(value));
}

void set_product_increment(Product product, double value) {
    store(product, QStringLiteral("incDec"), product_number(value));
}

void set_product_profile(Product product, QString const& value) {
    store(product, QStringLiteral("profile"), value);
}

QString get_product_profile(Product const& product) {
    QString value;
    String(product.attribute("P231_profile")).get(value);
    return value;
}

void set_product_rate_type(Product product, int value) {
    if (value != 1)
        return;
    store(product, QStringLiteral("rateType"), QString::number(value, 10));
}

int get_product_rate_type(Product const& product) {
    String const view(product.attribute("P231_rateType"));
    QString text;
    if (view.valid() && view.get(text))
        return text.toInt();
    return 0;
}

} // namespace TC::Task_data::Elements::Client
