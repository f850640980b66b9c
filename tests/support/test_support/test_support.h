#pragma once
// Helpers shared by the tests: scratch trees in temporary directories, the
// real tool run as a child process, and written XML read back as a tree.

#include <QHash>
#include <QStringList>
#include <QUuid>

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include <sys/types.h>

namespace test_support {

// A fresh directory removed again at the end of the test.
class ScratchDir {
public:
    ScratchDir();
    ~ScratchDir();
    QString path() const { return path_; }
    QString file(QString const& relative) const { return path_ + QLatin1Char('/') + relative; }

private:
    QString path_;
};

void make_dirs(QString const& path);
void write_file(QString const& path, QByteArray const& content);
// The same for a path given as bytes, for names that are not UTF-8, which a
// QString path would turn into U+FFFD.
void write_raw_file(QByteArray const& path, QByteArray const& content);
QByteArray read_file(QString const& path);
bool file_exists(QString const& path);

// The display's .crv and .bdy files: the reference (latitude, longitude,
// height), 40 reserved bytes that nobody reads, then x, y per point (metres
// east and south), all little-endian.
QByteArray point_file(double latitude, double longitude, double height,
                      std::vector<std::pair<float, float>> const& points);

struct ToolRun {
    int exit_code = -1; // -1 where the program did not start or did not end by itself
    QByteArray out;
    QByteArray err;
    // All three in one line, to compare at once.
    QByteArray outcome() const { return QByteArray::number(exit_code) + " | " + out + " | " + err; }
};

// Starts `command` (a program, found on PATH, and its arguments) in
// `working_dir` with standard output and error on the descriptors given; the
// process id, or -1 where it did not start.
pid_t spawn(QStringList const& command, QString const& working_dir, int out_fd, int err_fd);

// Runs `command` in `working_dir` to its end, or kills it after two minutes;
// with `merge_channels`, standard error goes into `out` too.
ToolRun run_program(QStringList const& command, QString const& working_dir = QString(),
                    bool merge_channels = false);

// The command that starts `program`, a program of this build: the program
// itself, after the emulator that runs the programs of a build for another
// processor.
QStringList command_of(QString const& program);

// Runs taskdata-migrate with `arguments` in `working_dir`; `shell_prefix`, if
// given, is a shell snippet run first in the same shell (limits, traps).
ToolRun run_tool(QStringList const& arguments, QString const& working_dir,
                 QString const& shell_prefix = QString());

// An element of a written XML file: tag, attributes in order, children.
struct XmlElement {
    QString tag;
    QList<QPair<QString, QString>> attributes;
    QList<XmlElement> children;
    QString text; // the character data directly inside, joined

    QString attribute(QString const& name) const { // empty when absent
        for (auto const& attribute : attributes)
            if (attribute.first == name)
                return attribute.second;
        return QString();
    }
    bool has_attribute(QString const& name) const {
        return std::any_of(attributes.begin(), attributes.end(),
                           [&](auto const& attribute) { return attribute.first == name; });
    }
    QList<XmlElement> all(QString const& wanted) const { // descendants, document order
        QList<XmlElement> found;
        for (XmlElement const& child : children)
            found += (child.tag == wanted ? QList<XmlElement>{child} : QList<XmlElement>()) +
                     child.all(wanted);
        return found;
    }
    // The descendants `wanted` whose `attribute` is `value`, in document order.
    QList<XmlElement> where(QString const& wanted, QString const& attribute,
                            QString const& value) const {
        QList<XmlElement> found;
        for (XmlElement const& element : all(wanted))
            if (element.attribute(attribute) == value)
                found << element;
        return found;
    }
    // The `attribute` of every descendant `wanted`, in document order.
    QStringList values(QString const& wanted, QString const& attribute) const {
        QStringList found;
        for (XmlElement const& element : all(wanted))
            found << element.attribute(attribute);
        return found;
    }
    // The first descendant `wanted` whose `attribute` is `value`; a failure and
    // an empty element when there is none.
    XmlElement find(QString const& wanted, QString const& attribute, QString const& value) const {
        QList<XmlElement> const found = where(wanted, attribute, value);
        EXPECT_FALSE(found.isEmpty()) << "no " << wanted.toStdString() << " with "
                                      << attribute.toStdString() << " " << value.toStdString();
        return found.value(0);
    }
};

// Parses a whole XML file; fails the current test on malformed XML.
XmlElement read_xml(QString const& path);
// A readable first difference of two trees, empty when equal. Attribute
// order is not compared.
QString difference(XmlElement const& expected, XmlElement const& actual);

// The team's shared material (schemas, samples, validator), or empty when
// this checkout stands alone.
QString shared_dir();

// Runs the shared schema validator on a written set; returns its output and
// sets `valid`.
QString validate_set(QString const& dir, bool& valid);

// A display tree built below "data" in a scratch directory, the tool run on
// it into "out", and what it wrote read back: the one builder of the suites
// that run the tool on source data.
class DisplayTree : public ::testing::Test {
protected:
    // A path below data, e.g. "Products/Seed/Seed.ini".
    QString data(QString const& relative = {}) const { return scratch.file("data/" + relative); }
    // A path below the directory of a field of the one farm
    // (data/Clients/Client/Farm/<name>).
    QString field(QString const& relative, QString const& name = "Field") const {
        return data("Clients/Client/Farm/" + name + '/' + relative);
    }
    void write(QString const& relative, QByteArray const& content) const {
        write_file(data(relative), content);
    }
    // A set in data/taskdata for the tool to load, from its elements.
    void load(QByteArray const& elements) const {
        write("taskdata/TASKDATA.XML", "<ISO11783_TaskData VersionMajor=\"4\" VersionMinor=\"3\">" +
                                           elements + "</ISO11783_TaskData>");
    }
    // The set of the last run becomes the one the next run loads.
    void load_saved() const {
        for (QString const name : {"TASKDATA.XML", "LINKLIST.XML", "GUIDLIST.XML"})
            write("taskdata/" + name, read_file(scratch.file("out/" + name)));
    }

    // The tool on data with `options`, writing into out; a failure unless it
    // ends with status 0.
    ToolRun run(QStringList const& options = {}) const {
        ToolRun result = run_tool(options + QStringList{"-O", "out", "data"}, scratch.path());
        EXPECT_EQ(result.exit_code, 0) << result.err.constData();
        return result;
    }
    XmlElement saved() const { return read_xml(scratch.file("out/TASKDATA.XML")); }
    // The saved elements `tag` whose `attribute` is `value`, in document order.
    QList<XmlElement> saved(QString const& tag, QString const& attribute,
                            QString const& value) const {
        return saved().where(tag, attribute, value);
    }
    // Element ID to identity, from out/LINKLIST.XML (empty when there is none).
    QHash<QString, QUuid> identities() const {
        QHash<QString, QUuid> result;
        if (!read_file(scratch.file("out/LINKLIST.XML")).isEmpty())
            for (XmlElement const& link : read_xml(scratch.file("out/LINKLIST.XML")).all("LNK"))
                result.insert(link.attribute("A"), QUuid(link.attribute("B")));
        return result;
    }
    // The written set checked against the schemas, where ../shared is there.
    void expect_valid_set() const {
        bool valid = shared_dir().isEmpty();
        QString const report = valid ? QString() : validate_set(scratch.file("out"), valid);
        EXPECT_TRUE(valid) << report.toStdString();
    }

    ScratchDir scratch;
};

} // namespace test_support

// Readable values in failure messages.
inline void PrintTo(QString const& text, std::ostream* out) {
    *out << '"' << text.toStdString() << '"';
}
inline void PrintTo(QByteArray const& bytes, std::ostream* out) {
    *out << '"' << bytes.toStdString() << '"';
}

// Skips the current test when the shared material is absent.
#define REQUIRE_SHARED_DIR()                                                                       \
    do {                                                                                           \
        if (test_support::shared_dir().isEmpty())                                                  \
            GTEST_SKIP() << "../shared is not beside this checkout; skipping";                     \
    } while (false)
