#include "taskdata/set_files.h"
#include "taskdata/value_text.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QXmlStreamWriter>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>

namespace TC::Task_data::detail {

namespace {

QString const manufacturer = QStringLiteral("taskdata-migrate");
QString const software_version = QStringLiteral("1.0");

using Attrs = std::vector<Attr>;

// The attributes a PNT is written with when nothing set them: point type
// "other" at position 0, 0.
struct PointDefault {
    char name;
    QLatin1String value;
};
PointDefault const point_defaults[] = {
    {'A', QLatin1String("2")}, {'C', QLatin1String("0")}, {'D', QLatin1String("0")}};
constexpr int point_default_count = 3;

// Which of the point defaults the attribute `name` stands for, or -1.
int point_default_index(QLatin1String name) {
    for (int i = 0; i < point_default_count; ++i)
        if (name.size() == 1 && name.at(0) == QLatin1Char(point_defaults[i].name))
            return i;
    return -1;
}

// Adds `name` with `value` unless the element already holds a value for it.
void add_default(Attrs& attrs, QByteArray const& name, QString const& value) {
    Attr& attr = attr_record(attrs, name);
    if (!attr.has_value) {
        attr.value = value;
        attr.has_value = true;
    }
}

// Sets `name` to `value`, whatever it held.
void set_attribute(Attrs& attrs, QByteArray const& name, QString const& value) {
    Attr& attr = attr_record(attrs, name);
    attr.value = value;
    attr.has_value = true;
}

// The attributes of `node` as written: required ISO 11783-10 attributes that
// nothing set get a neutral value, so that readers and the schema accept the
// element.
Attrs written_attributes(Node const& node) {
    Attrs attrs = node.attrs;
    QByteArray const& tag = node.tag;
    if (tag == "ISO11783_TaskData") {
        add_default(attrs, "VersionMajor", QStringLiteral("4"));
        add_default(attrs, "VersionMinor", QStringLiteral("3"));
        add_default(attrs, "ManagementSoftwareManufacturer", manufacturer);
        add_default(attrs, "ManagementSoftwareVersion", software_version);
        add_default(attrs, "DataTransferOrigin", QStringLiteral("1"));
    } else if (tag == "CTR" || tag == "FRM" || tag == "PDT" || tag == "PGP") {
        add_default(attrs, "B", QString());
    } else if (tag == "PFD") {
        add_default(attrs, "C", QString());
        add_default(attrs, "D", QStringLiteral("0"));
    } else if (tag == "PRN") {
        add_default(attrs, "B", QStringLiteral("0"));
    } else if (tag == "GPN") {
        add_default(attrs, "C", QStringLiteral("1"));
    } else if (tag == "PLN") {
        add_default(attrs, "A", QStringLiteral("8")); // other
    } else if (tag == "LSG") {
        // Guidance pattern or polygon exterior, by where the line stands.
        bool const guidance = node.parent && node.parent->tag == "GPN";
        add_default(attrs, "A", guidance ? QStringLiteral("5") : QStringLiteral("1"));
    } else if (tag == "PNT") {
        for (PointDefault const& point_default : point_defaults)
            add_default(attrs, QByteArray(1, point_default.name), point_default.value);
    } else if (tag == "BSN") {
        add_default(attrs, "B", QString());
        add_default(attrs, "C", QStringLiteral("0"));
        add_default(attrs, "D", QStringLiteral("0"));
        add_default(attrs, "E", QStringLiteral("0"));
    }
    return attrs;
}

// A name as stored (UTF-8) as text, NUL bytes and all.
QString name_text(char const* name, int size) {
    return QString::fromUtf8(name, size);
}

// Attribute names of points as QString without an allocation for the common
// letters.
QString attribute_name(QLatin1String name) {
    static QString const letters[26] = {
        QStringLiteral("A"), QStringLiteral("B"), QStringLiteral("C"), QStringLiteral("D"),
        QStringLiteral("E"), QStringLiteral("F"), QStringLiteral("G"), QStringLiteral("H"),
        QStringLiteral("I"), QStringLiteral("J"), QStringLiteral("K"), QStringLiteral("L"),
        QStringLiteral("M"), QStringLiteral("N"), QStringLiteral("O"), QStringLiteral("P"),
        QStringLiteral("Q"), QStringLiteral("R"), QStringLiteral("S"), QStringLiteral("T"),
        QStringLiteral("U"), QStringLiteral("V"), QStringLiteral("W"), QStringLiteral("X"),
        QStringLiteral("Y"), QStringLiteral("Z")};
    if (name.size() == 1 && name.at(0) >= QLatin1Char('A') && name.at(0) <= QLatin1Char('Z'))
        return letters[name.at(0).unicode() - 'A'];
    return name_text(name.data(), name.size());
}

// An XML file written through QXmlStreamWriter into a string that goes to
// the file in large UTF-8 chunks. Writing to the file device directly costs a
// text encoding and a buffered device write for every name, quote and value:
// most of the save's time when a set holds millions of points. Text that is
// ASCII already, such as plain points, can go into the chunk as bytes.
class XmlFile {
public:
    explicit XmlFile(QFile& file) : file_(file), xml(&text_) {
        bytes_.reserve(chunk_size + chunk_size / 8);
        xml.setAutoFormatting(true);
        xml.setAutoFormattingIndent(-1);
        // A writer on a string declares no encoding; the file is UTF-8.
        bytes_ += "<?xml version=\"1.0\" encoding=\"UTF-8\"?>";
    }

    // Hands a full chunk to the file; called between elements.
    void pace() {
        if (bytes_.size() + text_.size() >= chunk_size)
            flush();
    }

    // The writer's text that bytes() has not yet taken into the chunk.
    QString const& text() const { return text_; }

    // Whether the element <tag> with attributes of these names may be
    // written: every name an XML name, no attribute name twice. Otherwise the
    // first such fault is kept, and the file must not be used: a damaged or
    // careless name would make a document that no reader takes.
    bool accepts(QString const& tag, QStringList const& names) {
        if (!is_xml_name(tag)) {
            refuse(QStringLiteral("element name \"%1\" is not an XML name").arg(tag));
            return false;
        }
        for (int i = 0; i < names.size(); ++i) {
            QString const& name = names[i];
            if (!is_xml_name(name)) {
                refuse(QStringLiteral("attribute name \"%1\" of <%2> is not an XML name")
                           .arg(name, tag));
                return false;
            }
            if (names.indexOf(name, i + 1) >= 0) {
                refuse(QStringLiteral("attribute name \"%1\" of <%2> comes twice").arg(name, tag));
                return false;
            }
        }
        return true;
    }

    // Why the file must not be used; empty when it may.
    QString const& fault() const { return fault_; }

    // The chunk, with the writer's text in it. Bytes appended here must be
    // what the writer itself would have written.
    QByteArray& bytes() {
        if (!text_.isEmpty()) {
            bytes_ += text_.toUtf8();
            text_.resize(0);
        }
        return bytes_;
    }

    // False when any chunk could not be written whole.
    bool flush() {
        QByteArray& chunk = bytes();
        ok_ = ok_ && file_.write(chunk) == chunk.size() && file_.flush();
        if (ok_)
            write_behind(chunk.size());
        chunk.resize(0);
        return ok_;
    }

private:
    // Starts the write-back of each window of the file once it is complete,
    // then waits for the window before it and drops that from the page
    // cache. A set of gigabytes thus keeps a few megabytes of the file in
    // memory instead of all of it, the same pages serve the whole file, and
    // the disk works while the text is made rather than at the final sync.
    // All of this is advice: the sync before the files go into place
    // reports any fault of the write-back.
    void write_behind(qint64 size) {
        constexpr qint64 window = 8 << 20;
        written_ += size;
        if (written_ - started_ < window)
            return;
        int const fd = file_.handle();
        ::sync_file_range(fd, started_, written_ - started_, SYNC_FILE_RANGE_WRITE);
        if (started_ > settled_) {
            ::sync_file_range(fd, settled_, started_ - settled_,
                              SYNC_FILE_RANGE_WAIT_BEFORE | SYNC_FILE_RANGE_WRITE |
                                  SYNC_FILE_RANGE_WAIT_AFTER);
            ::posix_fadvise(fd, settled_, started_ - settled_, POSIX_FADV_DONTNEED);
            settled_ = started_;
        }
        started_ = written_;
    }

    void refuse(QString const& why) {
        if (fault_.isEmpty())
            fault_ = why;
    }

    static constexpr int chunk_size = 1 << 20;
    QFile& file_;
    QString fault_;
    QString text_;
    QByteArray bytes_;
    bool ok_ = true;
    qint64 written_ = 0; // bytes of the file handed to the kernel
    qint64 started_ = 0; // those whose write-back has been started
    qint64 settled_ = 0; // those written back and dropped from the cache

public:
    QXmlStreamWriter xml; // declared after text_, which it writes into
};

// Starts the element <tag> with these attributes; false, with nothing
// written, when out.accepts() refuses the names.
bool start_element(XmlFile& out, QString const& tag, QStringList const& names,
                   QStringList const& values) {
    if (!out.accepts(tag, names))
        return false;
    out.xml.writeStartElement(tag);
    for (int i = 0; i < names.size(); ++i)
        out.xml.writeAttribute(names[i], xml_safe(values[i]));
    return true;
}

// The same with those of `attrs` that have a value and are included.
bool start_element(XmlFile& out, QByteArray const& tag, Attrs const& attrs) {
    QStringList names;
    QStringList values;
    for (Attr const& attr : attrs)
        if (attr.has_value && attr.included) {
            names.append(name_text(attr.name.constData(), attr.name.size()));
            values.append(attr.value);
        }
    return start_element(out, name_text(tag.constData(), tag.size()), names, values);
}

void write_point(XmlFile& out, PointBlock const& points, int index) {
    QStringList names;
    QStringList values;
    bool given[point_default_count] = {};
    points.for_each(index, [&](QLatin1String name, QString const& value) {
        int const default_index = point_default_index(name);
        if (default_index >= 0)
            given[default_index] = true;
        names.append(attribute_name(name));
        values.append(value);
    });
    for (int i = 0; i < point_default_count; ++i)
        if (!given[i]) {
            names.append(QString(QChar::fromLatin1(point_defaults[i].name)));
            values.append(point_defaults[i].value);
        }
    if (start_element(out, QStringLiteral("PNT"), names, values))
        out.xml.writeEndElement();
}

// Text that the writer puts into an attribute unchanged: printable ASCII
// without the characters it escapes.
bool plain(QLatin1String value) {
    for (char const c : value)
        if (c < 0x20 || c > 0x7e || c == '&' || c == '<' || c == '>' || c == '"')
            return false;
    return true;
}

// An XML name in ASCII without a colon, which needs no closer look: a letter
// or '_', then letters, digits, '_', '-' and '.'.
bool plain_name(QLatin1String name) {
    auto letter = [](char c) {
        return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '_';
    };
    // One capital letter is what nearly every name of a point is.
    if (name.size() == 1)
        return name.data()[0] >= 'A' && name.data()[0] <= 'Z';
    if (name.isEmpty() || !letter(name.data()[0]))
        return false;
    for (char const c : name.mid(1))
        if (!letter(c) && !(c >= '0' && c <= '9') && c != '-' && c != '.')
            return false;
    return true;
}

// The points of one line string. The writer writes the first point, and
// from its text the line and indentation before each point are learnt; the
// points after it whose names and values are plain are then appended as the same text
// directly, which leaves the writer in the state that its own empty PNT
// element would. Millions of points thus cost no allocation each.
class PointWriter {
public:
    explicit PointWriter(XmlFile& out) : out_(out) {}

    void write(PointBlock const& points, int index) {
        if (learnt_ && append_plain(points, index))
            return;
        out_.bytes(); // the text so far, so that text() holds this point alone
        write_point(out_, points, index);
        QString const& text = out_.text();
        int const element = text.indexOf(QLatin1String("<PNT"));
        int const line = text.lastIndexOf(QLatin1Char('\n'), element);
        if (element >= 0 && line >= 0) {
            indent_ = text.mid(line, element - line).toUtf8();
            learnt_ = true;
        }
    }

private:
    bool append_plain(PointBlock const& points, int index) {
        bool all_plain = true;
        bool given[point_default_count] = {};
        qsizetype size = indent_.size() + 6; // "<PNT" and "/>"
        auto entry_size = [](QLatin1String name, QLatin1String value) {
            return name.size() + value.size() + 4; // ' ', '=' and the quotes
        };
        points.for_each_bytes(index, [&](QLatin1String name, QLatin1String value) {
            all_plain = all_plain && plain_name(name) && plain(value);
            int const default_index = point_default_index(name);
            if (default_index >= 0)
                given[default_index] = true;
            size += entry_size(name, value);
        });
        if (!all_plain)
            return false;
        for (int i = 0; i < point_default_count; ++i)
            if (!given[i])
                size += entry_size(QLatin1String(" "), point_defaults[i].value);
        QByteArray& bytes = out_.bytes();
        qsizetype const start = bytes.size();
        bytes.resize(static_cast<int>(start + size));
        char* out = bytes.data() + start;
        auto put = [&out](char const* text, qsizetype length) {
            std::memcpy(out, text, static_cast<size_t>(length));
            out += length;
        };
        auto put_attribute = [&](char const* name, qsizetype name_size, QLatin1String value) {
            *out++ = ' ';
            put(name, name_size);
            put("=\"", 2);
            put(value.data(), value.size());
            *out++ = '"';
        };
        put(indent_.constData(), indent_.size());
        put("<PNT", 4);
        points.for_each_bytes(index, [&](QLatin1String name, QLatin1String value) {
            put_attribute(name.data(), name.size(), value);
        });
        for (int i = 0; i < point_default_count; ++i)
            if (!given[i])
                put_attribute(&point_defaults[i].name, 1, point_defaults[i].value);
        put("/>", 2);
        return true;
    }

    XmlFile& out_;
    QByteArray indent_;
    bool learnt_ = false;
};

void write_element(XmlFile& out, Node const& node) {
    if (!start_element(out, node.tag, written_attributes(node)))
        return;
    if (node.points) {
        // Children that stood among the points when loaded go back there.
        auto child = node.children.begin();
        PointWriter points(out);
        for (int i = 0; i < node.points->count(); ++i) {
            for (; child != node.children.end() && (*child)->point_anchor <= i; ++child)
                write_element(out, **child);
            points.write(*node.points, i);
            out.pace();
        }
        for (; child != node.children.end(); ++child)
            write_element(out, **child);
    } else {
        for (auto const& child : node.children)
            write_element(out, *child);
    }
    out.xml.writeEndElement();
    out.pace();
}

// Elements with an identity, in document order.
void collect_identified(Node* node, std::vector<Node*>& out) {
    if (!node->guid.isNull())
        out.push_back(node);
    for (auto const& child : node->children)
        collect_identified(child.get(), out);
}

// An element with an identity needs an ID for its link to name it; one that
// has none gets a free number of its tag.
void give_ids(Tree& tree, std::vector<Node*> const& identified) {
    for (Node* node : identified) {
        QByteArray const attribute = id_attribute(node->tag);
        if (!attribute.isEmpty() && node->value(attribute).isEmpty())
            node->set_value(attribute, format_id(node->tag, tree.uids[node->tag].free_number()));
    }
}

QString link_value(Node const& element) {
    return element.guid_text.isEmpty() ? element.guid.toString(QUuid::WithoutBraces)
                                       : element.guid_text;
}

void write_link(XmlFile& out, Node const& element, Attrs attrs) {
    set_attribute(attrs, "A", element.value(id_attribute(element.tag)));
    set_attribute(attrs, "B", link_value(element));
    if (start_element(out, "LNK", attrs))
        out.xml.writeEndElement();
}

bool uuid_group(Node const& node) {
    return node.tag == "LGP" && node.value("B") == QLatin1String("1");
}

// The link list: every link of the loaded one that still names an element
// with its identity, the others as they were, and a link for each element
// that got its identity in this run, in the first group of type 1.
class LinkListWriter {
public:
    LinkListWriter(Tree const& tree, std::vector<Node*> const& identified) : tree_(tree) {
        for (Node* node : identified)
            if (node->attached() && !node->value(id_attribute(node->tag)).isEmpty() && !node->link)
                new_links_.push_back(node);
    }

    bool empty() const { return new_links_.empty() && !tree_.link_list; }

    void write(XmlFile& out, Node const& task_root) {
        QXmlStreamWriter& xml = out.xml;
        if (!start_element(out, "ISO11783LinkList",
                           tree_.link_list ? tree_.link_list->attrs
                                           : new_root_attributes(task_root)))
            return;
        bool new_links_written = false;
        UidPool group_numbers;
        if (tree_.link_list)
            for (auto const& child : tree_.link_list->children) {
                bool const takes_new = uuid_group(*child) && !new_links_written;
                new_links_written = new_links_written || takes_new;
                int number = 0;
                if (child->tag == "LGP" && parse_id("LGP", child->value("A"), number))
                    group_numbers.mark(number);
                write_group(out, *child, takes_new);
            }
        if (!new_links_written && !new_links_.empty()) {
            xml.writeStartElement(QStringLiteral("LGP"));
            xml.writeAttribute(QStringLiteral("A"), format_id("LGP", group_numbers.free_number()));
            xml.writeAttribute(QStringLiteral("B"), QStringLiteral("1"));
            for (Node* node : new_links_)
                write_link(out, *node, {});
            xml.writeEndElement();
        }
        xml.writeEndElement();
        xml.writeEndDocument();
    }

private:
    // The root of a link list that the loaded set did not have: the version
    // and origin of the task data.
    static Attrs new_root_attributes(Node const& task_root) {
        QString const major = task_root.value("VersionMajor");
        QString const minor = task_root.value("VersionMinor");
        bool const v4 = major == QLatin1String("4") || major.isEmpty();
        Attrs link_attrs;
        add_default(link_attrs, "VersionMajor", QStringLiteral("4"));
        add_default(link_attrs, "VersionMinor",
                    v4 && !minor.isEmpty() ? minor : QStringLiteral("3"));
        for (Attr const& attr : written_attributes(task_root))
            if (attr.name == "ManagementSoftwareManufacturer" ||
                attr.name == "ManagementSoftwareVersion" || attr.name == "DataTransferOrigin")
                add_default(link_attrs, attr.name, attr.value);
        return link_attrs;
    }

    // A link that named an element is written while the element stands in
    // the tree with an identity, with the element's current ID and identity.
    static Node const* live_element(Node const& link) {
        auto element = link.linked_element.lock();
        if (!element)
            return nullptr;
        if (!element->attached() || element->guid.isNull() || element->link != &link)
            return nullptr;
        return element.get();
    }

    void write_group(XmlFile& out, Node const& group, bool takes_new) {
        if (!uuid_group(group)) {
            write_element(out, group);
            return;
        }
        std::vector<Node const*> links;
        for (auto const& link : group.children)
            if (!link->resolved_link || live_element(*link))
                links.push_back(link.get());
        bool const had_children = !group.children.empty();
        if (had_children && links.empty() && (!takes_new || new_links_.empty()))
            return; // every element it named is gone
        if (!start_element(out, group.tag, group.attrs))
            return;
        for (Node const* link : links) {
            if (Node const* element = live_element(*link))
                write_link(out, *element, link->attrs);
            else
                write_element(out, *link);
        }
        if (takes_new)
            for (Node* node : new_links_)
                write_link(out, *node, {});
        out.xml.writeEndElement();
    }

    Tree const& tree_;
    std::vector<Node*> new_links_;
};

// Files written beside their targets under a temporary name, renamed into
// place together once all are complete; removed again if that never comes.
class StagedFiles {
public:
    ~StagedFiles() {
        for (auto const& file : files_)
            QFile::remove(file.temporary);
    }

    // A fresh temporary path for `target`, or empty with `error` set.
    QString stage(QString const& target, QString& error) {
        QFileInfo const info(target);
        remove_abandoned(info);
        QString const temporary = QStringLiteral("%1/.%2.%3.tmp")
                                      .arg(info.absolutePath(), info.fileName())
                                      .arg(QCoreApplication::applicationPid());
        if (QFileInfo::exists(temporary) && !QFile::remove(temporary)) {
            error = QStringLiteral("cannot remove stale %1").arg(temporary);
            return QString();
        }
        files_.push_back({temporary, target});
        return temporary;
    }

    bool commit(QString& error) {
        // Everything that can be checked is checked before the first rename.
        for (auto const& file : files_) {
            if (!sync_file(file.temporary, error))
                return false;
            if (QFileInfo(file.target).isDir()) {
                error = QStringLiteral("cannot replace %1: it is a directory").arg(file.target);
                return false;
            }
        }
        // The first file staged (TASKDATA.XML) goes into place last, so a
        // reader finds the new set only when all its files are there.
        for (auto file = files_.rbegin(); file != files_.rend(); ++file) {
            if (std::rename(QFile::encodeName(file->temporary).constData(),
                            QFile::encodeName(file->target).constData()) != 0) {
                error = QStringLiteral("cannot rename %1 to %2: %3")
                            .arg(file->temporary, file->target, qt_error_string(errno));
                return false;
            }
        }
        QString const dir = files_.empty() ? QString() : QFileInfo(files_[0].target).absolutePath();
        files_.clear();
        sync_directory(dir);
        return true;
    }

private:
    // Temporary files of `target` that a killed save left behind: those of
    // processes that are gone. Another save that still runs keeps its own.
    static void remove_abandoned(QFileInfo const& target) {
        QString const prefix = QStringLiteral(".%1.").arg(target.fileName());
        QString const suffix = QStringLiteral(".tmp");
        QDir const dir = target.absoluteDir();
        for (QString const& name : dir.entryList(QDir::Files | QDir::Hidden | QDir::System)) {
            if (!name.startsWith(prefix) || !name.endsWith(suffix))
                continue;
            bool number = false;
            qint64 const pid = name.mid(prefix.size(), name.size() - prefix.size() - suffix.size())
                                   .toLongLong(&number);
            if (number && pid > 0 && pid != QCoreApplication::applicationPid() &&
                ::kill(static_cast<pid_t>(pid), 0) != 0 && errno == ESRCH)
                QFile::remove(dir.filePath(name));
        }
    }

    static bool sync_file(QString const& path, QString& error) {
        int const fd = ::open(QFile::encodeName(path).constData(), O_RDONLY);
        bool const ok = fd >= 0 && ::fsync(fd) == 0;
        if (!ok)
            error = QStringLiteral("cannot write %1: %2").arg(path, qt_error_string(errno));
        if (fd >= 0)
            ::close(fd);
        return ok;
    }

    static void sync_directory(QString const& dir) {
        int const fd = ::open(QFile::encodeName(dir).constData(), O_RDONLY | O_DIRECTORY);
        if (fd >= 0) {
            ::fsync(fd);
            ::close(fd);
        }
    }

    struct File {
        QString temporary;
        QString target;
    };
    std::vector<File> files_;
};

// Writes one XML file through `body`; false with a message when any write or
// the final flush failed (a full disk shows up here).
template <class Body> bool write_xml_file(QString const& path, Body&& body, QString& error) {
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::NewOnly)) {
        error = QStringLiteral("cannot create %1: %2").arg(path, file.errorString());
        return false;
    }
    XmlFile out(file);
    body(out);
    if (!out.fault().isEmpty()) {
        error = QStringLiteral("cannot write %1: %2").arg(path, out.fault());
        return false;
    }
    if (!out.flush() || !file.flush() || file.error() != QFileDevice::NoError) {
        error = QStringLiteral("cannot write %1: %2").arg(path, file.errorString());
        return false;
    }
    file.close();
    return true;
}

bool write_bytes(QString const& path, QByteArray const& bytes, QString& error) {
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::NewOnly) ||
        file.write(bytes) != bytes.size() || !file.flush()) {
        error = QStringLiteral("cannot write %1: %2").arg(path, file.errorString());
        return false;
    }
    return true;
}

bool needs_link_list_reference(Node const& root) {
    for (auto const& child : root.children)
        if (child->tag == "AFE" && child->value("A") == QLatin1String("LINKLIST.XML"))
            return false;
    return true;
}

void write_task_data(XmlFile& out, Node const& root, bool reference_link_list) {
    QXmlStreamWriter& xml = out.xml;
    if (!start_element(out, root.tag, written_attributes(root)))
        return;
    if (reference_link_list) {
        xml.writeStartElement(QStringLiteral("AFE"));
        xml.writeAttribute(QStringLiteral("A"), QStringLiteral("LINKLIST.XML"));
        xml.writeAttribute(QStringLiteral("B"), QStringLiteral("1"));
        xml.writeAttribute(QStringLiteral("C"), QString());
        xml.writeAttribute(QStringLiteral("D"), QStringLiteral("1"));
        xml.writeEndElement();
    }
    for (auto const& child : root.children)
        write_element(out, *child);
    xml.writeEndElement();
    xml.writeEndDocument();
}

bool same_directory(QString const& a, QString const& b) {
    QString const canonical_a = QFileInfo(a).canonicalFilePath();
    return !canonical_a.isEmpty() && canonical_a == QFileInfo(b).canonicalFilePath();
}

// The files of the loaded set that the save does not write itself: attached
// files and binary data files.
QStringList attached_files(Tree const& tree) {
    static QStringList const own = {QStringLiteral("TASKDATA.XML"), QStringLiteral("TASKDATA.xml"),
                                    QStringLiteral("LINKLIST.XML"), QStringLiteral("GUIDLIST.XML")};
    QStringList files;
    if (tree.loaded_dir.isEmpty())
        return files;
    for (QString const& name : QDir(tree.loaded_dir).entryList(QDir::Files, QDir::Name))
        if (!own.contains(name) && !tree.consumed_files.contains(name))
            files.append(name);
    return files;
}

} // namespace

bool save_set(Tree& tree, QString const& taskdata_path, QString& error) {
    QString const dir = QFileInfo(taskdata_path).absolutePath();
    std::vector<Node*> identified;
    collect_identified(tree.root.get(), identified);
    give_ids(tree, identified);
    LinkListWriter links(tree, identified);
    bool const link_list = !links.empty();

    StagedFiles staged;
    QString path = staged.stage(taskdata_path, error);
    if (path.isEmpty() ||
        !write_xml_file(
            path,
            [&](XmlFile& out) {
                write_task_data(out, *tree.root,
                                link_list && needs_link_list_reference(*tree.root));
            },
            error))
        return false;

    path = staged.stage(QStringLiteral("%1/LINKLIST.XML").arg(dir), error);
    if (path.isEmpty())
        return false;
    if (link_list ? !write_xml_file(
                        path, [&](XmlFile& out) { links.write(out, *tree.root); }, error)
                  : !write_bytes(path, QByteArray(), error))
        return false;

    path = staged.stage(QStringLiteral("%1/GUIDLIST.XML").arg(dir), error);
    if (path.isEmpty() || !write_bytes(path, tree.guid_list, error))
        return false;

    if (!same_directory(tree.loaded_dir, dir)) {
        for (QString const& name : attached_files(tree)) {
            QString const source = QStringLiteral("%1/%2").arg(tree.loaded_dir, name);
            path = staged.stage(QStringLiteral("%1/%2").arg(dir, name), error);
            if (path.isEmpty())
                return false;
            QFile file(source);
            if (!file.copy(path)) {
                error = QStringLiteral("cannot copy %1 to %2: %3")
                            .arg(source, path, file.errorString());
                return false;
            }
        }
    }
    return staged.commit(error);
}

} // namespace TC::Task_data::detail
