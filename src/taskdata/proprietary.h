#pragma once
// Values that ISO 11783-10 has no place for, kept as text attributes named
// "P231_" + a bare name on the standard elements. Writing an attribute that
// exists overwrites it; a second one is never made.

#include "taskdata/task_data.h"

#include <QString>
#include <QVariant>

namespace TC::Task_data::Elements::Client {

// "P231_<name>" = value.toString().
void set_proprietary(Element const& element, QString const& name, QVariant const& value);

// "P231_preset0" and "P231_preset1", six significant digits ("1e+06");
// an index of 2 or more stores nothing.
void set_product_preset(Product product, unsigned int index, double value);
// "P231_incDec", six significant digits.
void set_product_increment(Product product, double value);
// "P231_profile", the text unchanged; empty when absent.
void set_product_profile(Product product, QString const& value);
QString get_product_profile(Product const& product);
// "P231_rateType": only the value 1 is stored; reads 0 when absent.
void set_product_rate_type(Product product, int value);
int get_product_rate_type(Product const& product);

} // namespace TC::Task_data::Elements::Client
