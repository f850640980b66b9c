#pragma once
// Products and mixtures below a display tree, and the saved products by name.
#include "test_support/test_support.h"

class ProductTree : public test_support::DisplayTree {
protected:
    void add_product(QString const& name, QByteArray const& ini) const {
        write(QStringLiteral("Products/%1/%1.ini").arg(name), ini);
    }
    void add_mixture(QString const& name, QByteArray const& ini) const {
        write(QStringLiteral("ProductMixtures/%1/%1.ini").arg(name), ini);
    }

    QList<test_support::XmlElement> products_named(QString const& name) const {
        return saved(QStringLiteral("PDT"), QStringLiteral("B"), name);
    }

    // The one saved product of that name (a failure if there is not one).
    test_support::XmlElement product(QString const& name) const {
        QList<test_support::XmlElement> const found = products_named(name);
        EXPECT_EQ(found.size(), 1) << "products named " << name.toStdString();
        return found.value(0);
    }
};
