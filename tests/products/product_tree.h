#pragma once
// A display tree of products and mixtures built in a scratch directory, and
// what the tool makes of it in "out".
#include "test_support/test_support.h"

#include <QHash>
#include <QUuid>

#include <gtest/gtest.h>

#include <ostream>

// Readable values in failure messages.
inline void PrintTo(QString const& text, std::ostream* out) {
    *out << '"' << text.toStdString() << '"';
}
inline void PrintTo(QByteArray const& bytes, std::ostream* out) {
    *out << '"' << bytes.toStdString() << '"';
}

class ProductTree : public ::testing::Test {
protected:
    QString data() const { return scratch.file(QStringLiteral("data")); }

    // <top>/<name>/<name>.ini below data, top being "Products" or "ProductMixtures".
    void add(QString const& top, QString const& name, QByteArray const& ini) const {
        test_support::write_file(QStringLiteral("%1/%2/%3/%3.ini").arg(data(), top, name), ini);
    }

    // The tool on "data" with `options`, writing into "out".
    test_support::ToolRun run(QStringList const& options = {}) const {
        return test_support::run_tool(options + QStringList{"-O", "out", "data"}, scratch.path());
    }

    // Element ID to identity, from out/LINKLIST.XML (empty when none has one).
    QHash<QString, QUuid> identities() const {
        QHash<QString, QUuid> result;
        QString const path = scratch.file(QStringLiteral("out/LINKLIST.XML"));
        if (!test_support::read_file(path).isEmpty())
            for (auto const& link : test_support::read_xml(path).all("LNK"))
                result.insert(link.attribute("A"), QUuid(link.attribute("B")));
        return result;
    }

    // The saved PDT elements with that designator, in order.
    QList<test_support::XmlElement> products_named(QString const& name) const {
        QList<test_support::XmlElement> found;
        for (auto const& product :
             test_support::read_xml(scratch.file("out/TASKDATA.XML")).all("PDT"))
            if (product.attribute(QStringLiteral("B")) == name)
                found << product;
        return found;
    }

    // The one saved product of that name (a failure if there is not one).
    test_support::XmlElement product(QString const& name) const {
        QList<test_support::XmlElement> const found = products_named(name);
        EXPECT_EQ(found.size(), 1) << "products named " << name.toStdString();
        return found.value(0);
    }

    test_support::ScratchDir scratch;
};
