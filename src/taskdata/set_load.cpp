#include "taskdata/point_runs.h"
#include "taskdata/set_files.h"
#include "taskdata/value_text.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QXmlStreamReader>

#include <algorithm>
#include <cstring>
#include <functional>
#include <optional>

#include <fcntl.h>

namespace TC::Task_data::detail {

namespace {

// ISO 11783-10 nests six levels at most; anything far deeper is hostile.
constexpr int max_depth = 64;
// Bytes of the file that the reader may take in for one token (a tag with
// all its attributes, a text, a comment): far beyond any honest set, and
// small enough that a hostile one cannot make the reader hold gigabytes.
constexpr qint64 max_token_size = qint64(64) << 20;

QString const taskdata_root = QStringLiteral("ISO11783_TaskData");
QString const external_root = QStringLiteral("XFC");
QString const link_list_root = QStringLiteral("ISO11783LinkList");

enum class Document { task_data, external_file, link_list };

// "<path>:<line>:<column>: <what>", at where the reader stands.
QString located(QXmlStreamReader const& xml, QString const& path, QString const& what) {
    return QStringLiteral("%1:%2:%3: %4")
        .arg(path)
        .arg(xml.lineNumber())
        .arg(xml.columnNumber())
        .arg(what);
}

// Refuses, with `error`, what the XML reader passes but no set may hold: a
// DTD, which could declare entities that expand beyond measure or name files
// outside the set, and names that XML forbids. The reader checks element
// names, but takes everything up to the '=' as an attribute's name, NUL
// bytes and other characters that XML forbids included.
bool refused(QXmlStreamReader const& xml, QString const& path, QString& error) {
    if (xml.tokenType() == QXmlStreamReader::DTD) {
        error = located(xml, path, QStringLiteral("document type declarations are refused"));
        return true;
    }
    if (xml.tokenType() != QXmlStreamReader::StartElement)
        return false;
    QStringRef const tag = xml.qualifiedName();
    if (!is_xml_name(tag)) {
        error =
            located(xml, path, QStringLiteral("element name \"%1\" is not an XML name").arg(tag));
        return true;
    }
    for (QXmlStreamAttribute const& attribute : xml.attributes())
        if (!is_xml_name(attribute.qualifiedName())) {
            error = located(xml, path,
                            QStringLiteral("attribute name \"%1\" of <%2> is not an XML name")
                                .arg(attribute.qualifiedName(), tag));
            return true;
        }
    return false;
}

void copy_attributes(Node& node, QXmlStreamAttributes const& attributes) {
    node.attrs.reserve(static_cast<size_t>(attributes.size()));
    for (QXmlStreamAttribute const& attribute : attributes)
        node.attrs.push_back(Attr{intern(attribute.qualifiedName().toUtf8()),
                                  attribute.value().toString(), true, true});
}

class Reader {
public:
    Reader(Tree& tree, QString dir) : tree_(tree), dir_(std::move(dir)) {}

    // Reads the document at `path` below `into`: its root's attributes onto
    // `into` (not for external files), its root's children as children.
    bool read(QString const& path, Document kind, Node* into, QString& error);

private:
    struct Frame {
        Node* node;         // null inside an XFR, whose content is not read
        bool compact_point; // a PNT stored in its line string's point block
    };

    // One document on its way through the XML reader.
    struct Parse {
        QString const& path;
        Document kind;
        Node* into;
        QXmlStreamReader xml;
        std::vector<Frame> stack;
        bool seen_root = false;
        int line_strings = 0; // LSG elements started so far
    };

    bool take_run(Parse& parse, PointRun const& run, int line_string);
    bool start_element(Parse& parse, QString& error);
    void expand_compact_point(std::vector<Frame>& stack);
    bool read_external(QString const& name, QString& error);

    Tree& tree_;
    QString dir_;
};

// The text of a file as the XML reader gets it: read piece by piece, with
// each run of plain points handed to `take_run` once the reader has had all
// text before it. When that takes the points, the reader gets as many line
// breaks instead, so that the lines it names in errors stay true; otherwise
// it gets the run as it stands.
class PointRunFilter : public QIODevice {
public:
    using TakeRun = std::function<bool(PointRun const& run, int line_string)>;

    PointRunFilter(QFile& file, TakeRun take_run) : file_(file), take_run_(std::move(take_run)) {
        open(QIODevice::ReadOnly | QIODevice::Unbuffered);
    }

    bool isSequential() const override { return true; }
    // After a failure the reader must see the end, or it would wait for
    // more input for ever.
    bool atEnd() const override { return failed() || (pending() == 0 && exhausted()); }
    QString read_error() const { return read_error_; }
    // Called before the reader reads its next token; the file text it takes
    // in for that token is counted against max_token_size.
    void begin_token() { token_size_ = 0; }
    // True once a token grew beyond max_token_size; the reader then got an
    // end of input.
    bool oversized() const { return oversized_; }

protected:
    qint64 readData(char* data, qint64 size) override {
        while (pending() == 0 && !exhausted() && read_error_.isEmpty())
            produce();
        qint64 const count = std::min<qint64>(size, pending());
        if (out_is_file_text_)
            token_size_ += count;
        if (token_size_ > max_token_size)
            oversized_ = true;
        if (failed())
            return -1;
        std::memcpy(data, out_ + out_taken_, static_cast<size_t>(count));
        out_taken_ += count;
        return count;
    }

    qint64 writeData(char const*, qint64) override { return -1; }

private:
    bool exhausted() const { return final_ && !run_ && from_ >= text_.size(); }
    bool failed() const { return oversized_ || !read_error_.isEmpty(); }
    qint64 pending() const { return out_size_ - out_taken_; }

    // Points `out_` at what the reader gets next. That is mostly a stretch
    // of `text_`, which therefore changes only here, once the reader has
    // had all of the former stretch.
    void produce() {
        out_taken_ = 0;
        if (run_) {
            char const* const begin = text_.constData() + from_;
            char const* const end = text_.constData() + run_->run_end;
            out_is_file_text_ = !take_run_(scanner_.run(), run_->line_string);
            if (out_is_file_text_) {
                hand_out(begin, end - begin);
            } else {
                line_breaks_.fill('\n', static_cast<int>(std::count(begin, end, '\n')));
                hand_out(line_breaks_.constData(), line_breaks_.size());
            }
            from_ = run_->run_end;
            run_.reset();
            return;
        }
        if (needs_piece_) {
            read_piece();
            needs_piece_ = false;
        }
        PointRunScanner::Step const step = scanner_.next(text_, from_, final_);
        hand_out(text_.constData() + from_, step.ordinary_end - from_);
        out_is_file_text_ = true;
        from_ = step.ordinary_end;
        if (step.run)
            run_ = step; // taken when the reader has had `out_`
        else
            needs_piece_ = !final_;
    }

    void hand_out(char const* data, qint64 size) {
        out_ = data;
        out_size_ = size;
    }

    // Appends the next piece of the file to what is left of `text_`. The
    // buffer is kept from piece to piece: a fresh one of this size costs the
    // kernel more to hand over than the read itself.
    void read_piece() {
        constexpr int piece_size = 1 << 22;
        text_.remove(0, static_cast<int>(from_));
        from_ = 0;
        int const kept = text_.size();
        text_.reserve(kept + piece_size);
        text_.resize(kept + piece_size);
        qint64 const read = file_.read(text_.data() + kept, piece_size);
        if (read < 0)
            read_error_ = file_.errorString();
        text_.resize(kept + static_cast<int>(std::max<qint64>(read, 0)));
        final_ = read <= 0;
        drop_behind();
    }

    // A set's files are read once: what has been read need not stay in the
    // page cache, where a set of gigabytes would push out everything else
    // and take fresh memory for all of it. Only advice.
    void drop_behind() {
        qint64 const position = file_.pos();
        if (position > dropped_)
            ::posix_fadvise(file_.handle(), dropped_, position - dropped_, POSIX_FADV_DONTNEED);
        dropped_ = position;
    }

    QFile& file_;
    TakeRun take_run_;
    PointRunScanner scanner_;
    QByteArray text_;
    qsizetype from_ = 0;
    bool final_ = false;
    bool needs_piece_ = true;
    qint64 dropped_ = 0; // bytes of the file advised out of the page cache
    std::optional<PointRunScanner::Step> run_;
    QByteArray line_breaks_;    // what a taken run leaves to the reader
    char const* out_ = nullptr; // into text_ or line_breaks_
    qint64 out_size_ = 0;
    qint64 out_taken_ = 0;         // of out_, what the reader has had
    bool out_is_file_text_ = true; // not the line breaks that stand for a run
    qint64 token_size_ = 0;
    bool oversized_ = false;
    QString read_error_;
};

bool Reader::read(QString const& path, Document kind, Node* into, QString& error) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        error = QStringLiteral("cannot read %1: %2").arg(path, file.errorString());
        return false;
    }
    Parse parse{path, kind, into, QXmlStreamReader(), {}, false, 0};
    PointRunFilter filter(file, [&](PointRun const& run, int line_string) {
        return take_run(parse, run, line_string);
    });
    QXmlStreamReader& xml = parse.xml;
    xml.setDevice(&filter);
    // Namespace declarations stay plain attributes, and so are kept.
    xml.setNamespaceProcessing(false);
    while (!xml.atEnd()) {
        filter.begin_token();
        QXmlStreamReader::TokenType const token = xml.readNext();
        if (refused(xml, path, error))
            return false;
        switch (token) {
        case QXmlStreamReader::StartElement:
            if (!start_element(parse, error))
                return false;
            break;
        case QXmlStreamReader::EndElement:
            parse.stack.pop_back();
            break;
        default:
            break;
        }
    }
    if (filter.oversized()) {
        error = located(xml, path,
                        QStringLiteral("tag or text longer than %1 MiB").arg(max_token_size >> 20));
        return false;
    }
    if (!filter.read_error().isEmpty()) {
        error = QStringLiteral("cannot read %1: %2").arg(path, filter.read_error());
        return false;
    }
    if (xml.hasError()) {
        error = located(xml, path, xml.errorString());
        return false;
    }
    if (!parse.seen_root) {
        error = QStringLiteral("%1: no root element").arg(path);
        return false;
    }
    return true;
}

// Takes the points of a run into their line string when the reader stands
// in that very LSG; false leaves them to the reader.
bool Reader::take_run(Parse& parse, PointRun const& run, int line_string) {
    if (parse.stack.empty() || parse.line_strings != line_string)
        return false;
    Frame const& top = parse.stack.back();
    if (!top.node || !top.node->points || top.compact_point)
        return false;
    PointBlock& points = *top.node->points;
    UidPool& point_numbers = tree_.uids["PNT"];
    run.for_each_point([&](PlainAttribute const* attributes, int count) {
        points.append(attributes, count);
        for (PlainAttribute const* attribute = attributes; attribute != attributes + count;
             ++attribute) {
            int number = 0;
            if (attribute->name == QLatin1String("G") &&
                parse_id("PNT", QString(attribute->value), number))
                point_numbers.mark(number);
        }
    });
    return true;
}

bool Reader::start_element(Parse& parse, QString& error) {
    QXmlStreamReader& xml = parse.xml;
    std::vector<Frame>& stack = parse.stack;
    for (QXmlStreamAttribute const& attribute : xml.attributes())
        if (attribute.value().size() > max_attribute_size) {
            error = located(
                xml, parse.path,
                QStringLiteral("attribute %1 of <%2> is longer than %3 characters")
                    .arg(attribute.qualifiedName().toString(), xml.qualifiedName().toString())
                    .arg(max_attribute_size));
            return false;
        }
    // Counted as the point run scanner counts them, wherever they stand.
    if (xml.qualifiedName() == QLatin1String("LSG"))
        ++parse.line_strings;
    if (stack.empty()) {
        QString const& expected = parse.kind == Document::task_data       ? taskdata_root
                                  : parse.kind == Document::external_file ? external_root
                                                                          : link_list_root;
        if (parse.seen_root || xml.qualifiedName() != expected) {
            error = located(xml, parse.path,
                            QStringLiteral("not an ISO 11783 %1 file: root element <%2>")
                                .arg(expected, xml.qualifiedName().toString()));
            return false;
        }
        parse.seen_root = true;
        if (parse.kind != Document::external_file)
            copy_attributes(*parse.into, xml.attributes());
        stack.push_back({parse.into, false});
        return true;
    }
    if (static_cast<int>(stack.size()) >= max_depth) {
        error = located(xml, parse.path, QStringLiteral("elements nested too deeply"));
        return false;
    }
    if (!stack.back().node) {
        stack.push_back({nullptr, false});
        return true;
    }
    if (stack.back().compact_point)
        expand_compact_point(stack);
    Node* parent = stack.back().node;
    QStringRef const name = xml.qualifiedName();

    if (parent->points && name == QLatin1String("PNT")) {
        parent->points->append(xml.attributes());
        int number = 0;
        if (parse_id("PNT", xml.attributes().value(QLatin1String("G")).toString(), number))
            tree_.uids["PNT"].mark(number);
        stack.push_back({parent, true});
        return true;
    }
    if (parent == tree_.root.get() && name == QLatin1String("XFR")) {
        // External files do not nest. Kept as an element, an XFR in one
        // would be saved into TASKDATA.XML naming a file that the save
        // does not write, and the set would no longer load.
        if (parse.kind == Document::external_file) {
            error = located(xml, parse.path, QStringLiteral("an external file holds an XFR"));
            return false;
        }
        if (!read_external(xml.attributes().value(QLatin1String("A")).toString(), error))
            return false;
        stack.push_back({nullptr, false});
        return true;
    }

    auto node = tree_.make_node(name.toUtf8(), parent);
    copy_attributes(*node, xml.attributes());
    if (parent->points)
        node->point_anchor = parent->points->count();
    Node* raw = node.get();
    if (parse.kind == Document::link_list)
        parent->children.push_back(std::move(node));
    else {
        tree_.append_child(parent, std::move(node));
        tree_.register_id(raw);
    }
    stack.push_back({raw, false});
    return true;
}

// A PNT inside a line string that turns out to have children of its own is
// taken out of the point block and kept as a full node, so nothing is lost.
void Reader::expand_compact_point(std::vector<Frame>& stack) {
    Node* line = stack.back().node;
    auto node = tree_.make_node("PNT", line);
    for (auto& attribute : line->points->take_last())
        node->attrs.push_back(Attr{intern(attribute.first), attribute.second, true, true});
    node->point_anchor = line->points->count();
    Node* raw = node.get();
    tree_.append_child(line, std::move(node));
    tree_.register_id(raw);
    stack.back() = {raw, false};
}

// An XFR names a file beside TASKDATA.XML whose XFC root holds more elements
// of the root; they are read in the XFR's place. The name must be an ISO
// 11783-10 external file name, so no path can reach outside the set.
bool Reader::read_external(QString const& name, QString& error) {
    static QRegularExpression const valid_name(QStringLiteral("^[A-Z]{3}[0-9]{5}$"));
    if (!valid_name.match(name).hasMatch()) {
        error = QStringLiteral("invalid external file name \"%1\" in XFR").arg(name);
        return false;
    }
    QString file_name = name + QStringLiteral(".XML");
    if (!QFileInfo::exists(QStringLiteral("%1/%2").arg(dir_, file_name)))
        file_name = name + QStringLiteral(".xml");
    QString const path = QStringLiteral("%1/%2").arg(dir_, file_name);
    if (!QFileInfo(path).isFile()) {
        error =
            QStringLiteral("external file %1.XML named by XFR is missing in %2").arg(name, dir_);
        return false;
    }
    if (tree_.consumed_files.contains(file_name)) {
        error = QStringLiteral("external file %1 is named twice").arg(file_name);
        return false;
    }
    tree_.consumed_files.append(file_name);
    return read(path, Document::external_file, tree_.root.get(), error);
}

// GUIDLIST.XML is written back as it was read, so it must be well-formed to
// be kept; a blank one counts as empty.
bool check_kept_document(QString const& path, QByteArray const& text, QString& error) {
    if (text.trimmed().isEmpty())
        return true;
    QXmlStreamReader xml(text);
    xml.setNamespaceProcessing(false);
    while (!xml.atEnd()) {
        xml.readNext();
        if (refused(xml, path, error))
            return false;
    }
    if (xml.hasError()) {
        error = located(xml, path, xml.errorString());
        return false;
    }
    return true;
}

// A file of only white space counts as empty, as a new set has them.
bool blank_file(QString const& path, bool& blank, QString& error) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        error = QStringLiteral("cannot read %1: %2").arg(path, file.errorString());
        return false;
    }
    blank = file.readAll().trimmed().isEmpty();
    return true;
}

// Gives each element named in a link group of type 1 (UUIDs) its identity.
// Links that name no element, or hold no UUID, stay as they were read.
void resolve_links(Tree& tree) {
    for (auto const& group : tree.link_list->children) {
        if (group->tag != "LGP" || group->value("B") != QLatin1String("1"))
            continue;
        for (auto const& link : group->children) {
            if (link->tag != "LNK")
                continue;
            Node* element = tree.by_id.value(link->value("A"));
            QString const text = link->value("B");
            QUuid const uuid(text);
            if (!element || element->link || uuid.isNull())
                continue;
            element->guid = uuid;
            element->guid_text = text;
            element->link = link.get();
            link->resolved_link = true;
            link->linked_element = element->shared_from_this();
        }
    }
}

} // namespace

bool load_set(Tree& tree, QString const& taskdata_path, QString& error) {
    QFileInfo const info(taskdata_path);
    QString const dir = info.absolutePath();
    tree.reset();
    tree.loaded_dir = dir;
    tree.consumed_files.append(info.fileName());

    Reader reader(tree, dir);
    if (!reader.read(taskdata_path, Document::task_data, tree.root.get(), error))
        return false;

    QString const link_path = QStringLiteral("%1/LINKLIST.XML").arg(dir);
    tree.consumed_files.append(QStringLiteral("LINKLIST.XML"));
    if (QFileInfo::exists(link_path)) {
        bool blank = false;
        if (!blank_file(link_path, blank, error))
            return false;
        if (!blank) {
            tree.link_list = tree.make_node("ISO11783LinkList", nullptr);
            if (!reader.read(link_path, Document::link_list, tree.link_list.get(), error))
                return false;
            resolve_links(tree);
        }
    }

    QString const guid_path = QStringLiteral("%1/GUIDLIST.XML").arg(dir);
    tree.consumed_files.append(QStringLiteral("GUIDLIST.XML"));
    if (QFileInfo::exists(guid_path)) {
        QFile file(guid_path);
        if (!file.open(QIODevice::ReadOnly)) {
            error = QStringLiteral("cannot read %1: %2").arg(guid_path, file.errorString());
            return false;
        }
        tree.guid_list = file.readAll();
        return check_kept_document(guid_path, tree.guid_list, error);
    }
    return true;
}

} // namespace TC::Task_data::detail
