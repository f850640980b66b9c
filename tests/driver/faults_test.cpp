// The tool under faults: trees and task data sets built to hurt it, and
// saves that meet a fault of the file system or are killed.
#include "test_support/test_support.h"

#include <QDir>
#include <QElapsedTimer>
#include <QStandardPaths>
#include <QTemporaryFile>
#include <QXmlStreamReader>

#include <csignal>
#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace test_support;

namespace {

QByteArray const ab_line = "State=2\n[APoint]\nLatitude=52.1\nLongitude=13.2\n"
                           "[BPoint]\nLatitude=52.2\nLongitude=13.3\n";
// Path, size and modification time of every entry outside OUTPUT.
QStringList const listing = QString("find . -path ./out -prune -o -printf %p:%s:%T@\n").split(' ');

// A .crv or .bdy file of `count` points in a zigzag.
QByteArray zigzag(int count) {
    std::vector<std::pair<float, float>> turns;
    for (int i = 0; i < count; ++i)
        turns.emplace_back(static_cast<float>(10 * i), static_cast<float>(i % 2 ? 10 : -10));
    return point_file(52.5, 13.25, 0.0, turns);
}

// Trees that a broken display, a full card or a malicious hand could leave:
// names full of markup, control characters and foreign bytes, link loops,
// files where directories belong and the reverse, empty, gigantic and
// unreadable files. The tool ends normally with a well-formed set, keeps
// what it could read, and writes nothing outside OUTPUT.
struct HostileTree : DisplayTree {
    QString client(QString const& relative) const { return data("Clients/" + relative); }
    // A field below DATADIR with a boundary, a flag, an AB line and a curve.
    void write_field(QString const& dir) const {
        write(dir + "Boundaries/edge.bdy", zigzag(5));
        write(dir + "flagpoints.ini", "7\n1\n52.5\n13.25\n4\nStone\n");
        write(dir + "ABLines/AB/AB.ini", ab_line);
        write(dir + "Curves/Curve/Curve.ini", "");
        write(dir + "Curves/Curve/Curve.crv", zigzag(3));
    }
    // Runs the tool (with `shell_prefix`) beside a good field, and checks
    // what every hostile run must give: status 0, standard error
    // `warnings`, a well-formed set (valid too, with `validate`) holding the
    // good field whole, and nothing changed outside OUTPUT. Returns the set.
    // Links loop below the good field's boundaries and zones; its files are
    // read once all the same, however many ways lead to them.
    XmlElement run_and_check(QByteArray const& warnings, bool validate,
                             QString const& shell_prefix = QString()) {
        QString const dir = client("Good/Farm/Good field/");
        write_field("Clients/Good/Farm/Good field/");
        make_dirs(dir + "Zones");
        char const* const links[][2] = {{"..", "Boundaries/parent"}, {".", "Boundaries/self"},
                                        {"b", "Boundaries/a"},       {"a", "Boundaries/b"},
                                        {"..", "Zones/up"},          {"../Zones", "Zones/again"}};
        for (auto const& link : links)
            EXPECT_EQ(::symlink(link[0], QFile::encodeName(dir + link[1])), 0);
        make_dirs(scratch.file("out"));
        QByteArray const before = run_program(listing, scratch.path()).out;
        EXPECT_EQ(run_tool({"-O", "out", "data"}, scratch.path(), shell_prefix).outcome(),
                  "0 |  | " + warnings);
        EXPECT_EQ(run_program(listing, scratch.path()).out, before) << "written outside OUTPUT";
        XmlElement const good = saved().find("PFD", "C", "Good field");
        // The boundary's five vertices closed (a ring of 400 m2), the AB
        // line's two points, the curve's three, and the flag: twelve points,
        // three line strings.
        EXPECT_EQ(good.all("PNT").size(), 12);
        EXPECT_EQ(good.all("LSG").size(), 3);
        EXPECT_EQ(good.values("GPN", "B"), QStringList({"AB", "Curve"}));
        if (validate)
            expect_valid_set();
        return saved();
    }
};

// A link list of one link.
QString const link_head = "<ISO11783LinkList VersionMajor=\"4\"><LGP A=\"LGP1\" B=\"1\">"
                          "<LNK A=\"%1\" B=\"%2\"/></LGP></ISO11783LinkList>";

// A set of the elements given.
QByteArray taskdata(QByteArray const& elements) {
    return "<ISO11783_TaskData VersionMajor=\"4\">" + elements + "</ISO11783_TaskData>";
}

// The set a run of another day left in OUTPUT.
QByteArray const former_set = taskdata("<CTR A=\"CTR1\" B=\"Former\"/>");

// Ten times more text at every level: a few hundred bytes that would
// expand to gigabytes.
QByteArray entity_bomb(QByteArray const& root, QByteArray const& body) {
    QByteArray text = "<?xml version=\"1.0\"?>\n<!DOCTYPE " + root + " [\n<!ENTITY l0 \"lol\">\n";
    for (int level = 1; level <= 9; ++level)
        text += "<!ENTITY l" + QByteArray::number(level) + " \"" +
                ("&l" + QByteArray::number(level - 1) + ";").repeated(10) + "\">\n";
    return text + "]>\n" + body;
}

// One field whose boundary holds the points given.
QByteArray with_points(QByteArray const& points) {
    return "<PFD A=\"PFD1\" C=\"f\" D=\"1\"><PLN A=\"1\"><LSG A=\"1\">" + points +
           "</LSG></PLN></PFD>";
}

// Task data sets in DATADIR/taskdata built to hurt the reader: entity
// bombs, external entities, absurd nesting, huge values, lying encodings.
// Each is refused with the load error in bounded memory, and OUTPUT keeps
// the set it held.
struct HostileSet : DisplayTree {
    HostileSet() {
        write("Products/Seed/Seed.ini", "[Default]\nType=0\n");
        write_file(scratch.file("out/TASKDATA.XML"), former_set);
    }

    // Runs the tool on the set and expects the load error with `reason`
    // before it. Address space is limited, so that a reader that grows
    // without bound fails instead of swapping (not under AddressSanitizer,
    // which reserves terabytes of it).
    void expect_refused(QByteArray const& text, char const* reason) {
        SCOPED_TRACE(reason);
        write("taskdata/TASKDATA.XML", text);
        QString limit;
#ifndef __SANITIZE_ADDRESS__
        limit = "ulimit -v 2000000";
#endif
        ToolRun const run = run_tool({"-O", "out", "data"}, scratch.path(), limit);
        EXPECT_TRUE(
            run.exit_code == 1 && run.err.contains(reason) &&
            run.err.endsWith("E: could not load taskdata from data/taskdata/TASKDATA.XML\n"))
            << run.outcome().left(2000).constData();
        EXPECT_EQ(read_file(scratch.file("out/TASKDATA.XML")), former_set);
    }
};

// taskdata-migrate started in the background. Its standard output is a pipe
// of one page that the test reads at its own pace: while the test does not
// read, the tool stops at its next progress line. A tool still running at
// destruction is killed.
struct BackgroundTool {
    BackgroundTool(QStringList const& arguments, QString const& working_dir) {
        int ends[2];
        if (!err.open() || ::pipe2(ends, O_CLOEXEC) != 0)
            return;
        ::fcntl(ends[1], F_SETPIPE_SZ, 4096);
        pid = spawn(command_of(TDM_TOOL) + arguments, working_dir, ends[1], err.handle());
        ::close(ends[1]);
        out = ends[0];
    }
    ~BackgroundTool() {
        if (pid > 0 && ::kill(pid, SIGKILL) == 0)
            ::waitpid(pid, nullptr, 0);
        ::close(out);
    }
    // Waits until the tool's staged `file` appears in `dir`, or the tool
    // ends (it is not reaped here).
    void wait_for_staged(QString const& dir, QString const& file) const {
        siginfo_t info{};
        while (!file_exists(QString("%1/.%2.%3.tmp").arg(dir, file).arg(pid)) &&
               ::waitid(P_PID, static_cast<id_t>(pid), &info, WEXITED | WNOHANG | WNOWAIT) == 0 &&
               info.si_pid == 0)
            ::usleep(100);
    }
    // The next line of standard output with its line end; empty at its end.
    QByteArray read_line() {
        QByteArray line;
        for (char c = 0; !line.endsWith('\n') && ::read(out, &c, 1) == 1;)
            line += c;
        return line;
    }
    // Reads standard output to its end and waits for the tool. The exit
    // status, or minus the number of the signal that ended it (-127 where
    // the tool did not start).
    int finish() {
        while (!read_line().isEmpty()) {
        }
        int status = -1; // neither exited nor signalled
        ::waitpid(pid, &status, 0);
        pid = -1;
        return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
    }

    pid_t pid = -1;
    int out = -1;
    QTemporaryFile err;
};

// A tmpfs of `kib` mounted on `on` for the life of the object, where
// that can be (as root); `why` says why not.
struct TmpfsMount {
    TmpfsMount(QString const& on, int kib) : dir(on) {
        make_dirs(dir);
        QStringList const mount = {"mount", "-t", "tmpfs", "-o", QString("size=%1k").arg(kib),
                                   "tmpfs", dir};
        why = run_program(mount, {}, true).outcome().toStdString();
    }
    ~TmpfsMount() {
        if (mounted())
            run_program({"umount", dir});
    }
    bool mounted() const { return why[0] == '0'; }

    QString dir;
    std::string why; // the outcome of mount
};

QByteArray const former_links =
    link_head.arg("CTR1", "4f0c0a3e-5d1b-4a8e-9b6c-2e7d1f3a9c11").toUtf8();
QStringList const set_files = {"GUIDLIST.XML", "LINKLIST.XML", "TASKDATA.XML"};

// Saves that meet a fault: a file size limit, a full disk, OUTPUT made
// read-only while the tool runs, the tool killed while it writes. Whatever
// happens, OUTPUT holds the former set whole or the new one whole.
struct SaveFaults : DisplayTree {
    QString out(QString const& file = QString()) const { return scratch.file("out/" + file); }
    QStringList out_files() const { return QDir(out()).entryList(QDir::Files | QDir::Hidden); }

    // `customers` customers to load, one field to import, the former set in
    // OUTPUT.
    void prepare(int customers) {
        QByteArray elements;
        for (int i = 1; i <= customers; ++i)
            elements += QString("<CTR A=\"CTR%1\" B=\"Customer number %1\"/>").arg(i).toUtf8();
        load(elements + "<PFD A=\"PFD1\" C=\"Field\" D=\"1\"/>");
        make_dirs(field(""));
        write_former_set();
    }
    // A former complete set, as a run of another day left it.
    void write_former_set() const {
        write_file(out("TASKDATA.XML"), former_set);
        write_file(out("LINKLIST.XML"), former_links);
        write_file(out("GUIDLIST.XML"), "former guids");
    }
    bool holds_former_set() const {
        return read_file(out("TASKDATA.XML")) == former_set &&
               read_file(out("LINKLIST.XML")) == former_links &&
               read_file(out("GUIDLIST.XML")) == "former guids";
    }
    void expect_save_failed(ToolRun const& run) const {
        EXPECT_EQ(run.exit_code, 1);
        EXPECT_TRUE(run.err.endsWith("E: could not save taskdata\n")) << run.err.constData();
        EXPECT_TRUE(holds_former_set());
        EXPECT_EQ(out_files(), set_files);
    }
};

// The new set whole: TASKDATA.XML well-formed with every point, and each
// link naming an element of it.
QString new_set_fault(QString const& dir, int points) {
    QByteArray const set = read_file(dir + "/TASKDATA.XML");
    QXmlStreamReader xml(set);
    while (!xml.atEnd())
        xml.readNext();
    QStringList const links = read_xml(dir + "/LINKLIST.XML").values("LNK", "A");
    if (xml.hasError() || set.count("<PNT ") != points || links.isEmpty())
        return QString::asprintf("%d of %d points, %d links; ", set.count("<PNT "), points,
                                 links.size()) +
               xml.errorString();
    for (QString const& link : links)
        if (!set.contains("A=\"" + link.toUtf8() + '"'))
            return "LINKLIST.XML names " + link + ", which TASKDATA.XML lacks";
    return QString();
}

} // namespace

// Names of markup, control characters and full length; files where
// directories belong and the reverse; empty and gigantic point files.
TEST_F(HostileTree, MarkupNamesMisplacedEntriesAndGiganticFiles) {
    QString const markup = "<Field & \"Co\"> 'x'";
    QString const control = "ctl\x01\x1b\tname";
    QString const longest = QString(127, QChar(0xE9)) + 'x'; // 255 bytes in UTF-8
    QString const named = "Clients/" + markup + '/' + control + '/' + longest;
    write(named + "/ABLines/" + markup + '/' + markup + ".ini",
          ab_line + "CorrectionSource=5\n[BasePoint]\nPosition=\"" + QByteArray(4000, 'p') +
              "\"\n");
    write(named + "/Curves/" + control + '/' + control + ".ini", "");
    write(named + "/Curves/" + control + '/' + control + ".crv", zigzag(2));
    write(named + "/Pivots/" + longest + "/x", "");
    write(named + "/flagpoints.ini", "7\n3\n52.5\n13.25\n4\n<b>&amp;\"'\x01\x1b\n52.6\n13.26\n5\n" +
                                         QByteArray(4000, 'n') +
                                         "\n52.7\n13.27\n6\n\xff\xfe\xc3(\n");

    // Files where directories belong and the reverse, empty files.
    for (QString const file : {"A file as client", "C/A file as farm", "C/F/Field/Boundaries",
                               "C/F/Field/Zones", "C/F/Field/ABLines"})
        write("Clients/" + file, "x");
    for (QString const dir : {"C/F/Field/flagpoints.ini", "C/F/Field/Curves/C/C.crv",
                              "C/F/Field/Curves/D/D.ini", "C/F/Other/Boundaries/dir.bdy"})
        make_dirs(client(dir));
    for (QString const file :
         {"C/F/Field/Curves/C/C.ini", "C/F/Other/Boundaries/empty.bdy", "C/F/Other/Curves/E/E.ini",
          "C/F/Other/Curves/E/E.crv", "Big/Farm/Huge/Curves/Huge/Huge.ini"})
        write("Clients/" + file, "");
    write("Clients/C/F/Field/Curves/D/D.crv", zigzag(3));
    make_dirs(data("Products/P/P.ini"));
    write("ProductMixtures", "x");
    QByteArray warnings;
    for (QString const file : {"Boundaries/huge.bdy", "Curves/Huge/Huge.crv"}) {
        write("Clients/Big/Farm/Huge/" + file, zigzag(0));
        ASSERT_TRUE(QFile(client("Big/Farm/Huge/" + file)).resize(1 << 30)); // sparse: no disk
        warnings += "W: skipping oversized file \"" + client("Big/Farm/Huge/" + file).toUtf8() +
                    "\" of 1073741824 bytes\n";
    }

    // Names go into designators unchanged, and the schema allows 32
    // characters; an empty or oversized .bdy makes a ring without points,
    // which the schema forbids.
    XmlElement const set = run_and_check(warnings, false);
    EXPECT_TRUE(set.values("CTR", "B").contains(markup));
    EXPECT_EQ(set.find("PFD", "C", longest).all("GPN").size(), 2);
    // An .ini that is a directory exists and reads as empty; a .crv that is
    // one gives no points. The directory .bdy is no file.
    EXPECT_EQ(set.find("PFD", "C", "Field").values("GPN", "B"), QStringList{"D"});
    EXPECT_EQ(set.find("PFD", "C", "Other").all("PLN").size(), 1);
    XmlElement const huge = set.find("PFD", "C", "Huge");
    EXPECT_TRUE(huge.all("GPN").isEmpty());
    ASSERT_EQ(huge.all("LSG").size(), 1);
    EXPECT_TRUE(huge.all("PNT").isEmpty());
}

// Names in Latin-1 or Windows-1252, as a display without a UTF-8 locale or a
// FAT stick with a Windows code page leaves them: everything is read through
// the names' own bytes, and the names arrive decoded as Windows-1252, with a
// warning each. The second run, with -m, finds the client, farm and field
// again by their decoded names.
TEST_F(HostileTree, NamesThatAreNotUtf8ArriveDecodedAsWindows1252) {
    QByteArray const root = QFile::encodeName(data());
    QByteArray const field = root + "/Clients/M\xfcller/Gro\xdfhof/\xc4"
                                    "cker";
    write_raw_file(field + "/Boundaries/R\xe4nder.bdy", zigzag(4));
    write_raw_file(field + "/ABLines/Sp\xfcr/Sp\xfcr.ini", ab_line);
    write_raw_file(field + "/Curves/B\xf6gen/B\xf6gen.ini", "");
    write_raw_file(field + "/Curves/B\xf6gen/B\xf6gen.crv", zigzag(3));
    write_raw_file(root + "/Products/D\xfcnger/D\xfcnger.ini", "[Default]\nType=0\n");
    write_raw_file(root + "/ProductMixtures/Mischung \x80/Mischung \x80.ini", "");
    // By its bytes it would come first; by the decoded names, ü before ą.
    make_dirs(client("M\u0105dry"));

    QStringList const names = {"M\u00fcller", "Gro\u00dfhof", "\u00c4cker",     "Sp\u00fcr",
                               "B\u00f6gen",  "D\u00fcnger",  "Mischung \u20ac"};
    QByteArray warnings;
    for (QString const& name : names)
        warnings += "W: name is not UTF-8, read as Windows-1252: \"" + name.toUtf8() + "\"\n";
    QStringList products;
    for (QStringList const& options : {QStringList(), QStringList{"-m"}}) {
        EXPECT_EQ(run_tool(options + QStringList{"-O", "data/taskdata", "data"}, scratch.path())
                      .outcome(),
                  "0 |  | " + warnings);
        XmlElement const set = read_xml(data("taskdata/TASKDATA.XML"));
        EXPECT_EQ(set.values("CTR", "B") + set.values("FRM", "B") + set.values("PFD", "C"),
                  QStringList({names[0], "M\u0105dry", names[1], names[2]}));
        // Every file read: the four vertices of the .bdy closed, the AB line's
        // two points and the curve's three.
        XmlElement const arable = set.find("PFD", "C", names[2]);
        EXPECT_EQ(arable.all("PNT").size(), 10);
        EXPECT_EQ(arable.values("GPN", "B"), names.mid(3, 2));
        // Products and mixtures are made anew in every run.
        products << names[5] << names[6];
        EXPECT_EQ(set.values("PDT", "B"), products);
    }
}

TEST_F(HostileTree, UnreadableFilesAndDirectories) {
    bool const root = ::geteuid() == 0;
    if (root && QStandardPaths::findExecutable("setpriv").isEmpty())
        GTEST_SKIP() << "running as root, and without setpriv there is no unprivileged user "
                        "for whom chmod 000 means anything";
    QString const field = "Clients/Locked/Farm/Field/";
    write_field(field);
    write("Clients/Locked/Farm/Closed/ABLines/L/L.ini", ab_line);
    write("Products/P/P.ini", "[Default]\nType=0\n");
    for (QString const& path : {field + "flagpoints.ini", field + "Boundaries",
                                field + "Curves/Curve/Curve.crv", field + "ABLines/AB/AB.ini",
                                QString("Clients/Locked/Farm/Closed"), QString("Products/P/P.ini")})
        ASSERT_TRUE(QFile::setPermissions(data(path), {}));
    // As root, the scratch directory is opened to nobody, who runs the tool.
    QString const prefix = root ? "chmod a+rx . && chmod a+rwx out && exec setpriv --reuid=65534 "
                                  "--regid=65534 --clear-groups -- \"$0\" \"$@\""
                                : "";
    // An unreadable product .ini reads as one without keys.
    XmlElement const set = run_and_check("", true, prefix);
    EXPECT_TRUE(set.find("PFD", "C", "Field").all("PLN").isEmpty());
    EXPECT_TRUE(set.find("PFD", "C", "Field").all("GPN").isEmpty());
    EXPECT_TRUE(set.find("PFD", "C", "Closed").all("GPN").isEmpty());
}

// Entity bombs, external entities, and text that is not in its declared
// encoding.
TEST_F(HostileSet, EntityBombsExternalEntitiesAndFalseEncodingsAreRefused) {
    expect_refused(entity_bomb("ISO11783_TaskData", taskdata("<CTR A=\"CTR1\" B=\"&l9;\"/>")),
                   "TASKDATA.XML:13:2: document type declarations are refused");
    for (char const* reference :
         {"<CTR A=\"CTR1\" B=\"&x;\"/>", "<CTR A=\"CTR1\" B=\"x\">&x;</CTR>"})
        expect_refused("<!DOCTYPE ISO11783_TaskData [<!ENTITY x SYSTEM \"file:///etc/passwd\">]>" +
                           taskdata(reference),
                       "document type declarations are refused");
    QByteArray const body = taskdata("<CTR A=\"CTR1\" B=\"M\xc3\xbcller\"/>");
    expect_refused("<?xml version=\"1.0\" encoding=\"UTF-16\"?>\n" + body, "TASKDATA.XML:1:");
    expect_refused("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n" +
                       taskdata("<CTR A=\"CTR1\" B=\"M\xfcller\"/>"),
                   "Encountered incorrectly encoded content");
    // Invalid bytes inside a run of plain points, which the reader does not
    // tokenise itself.
    expect_refused(taskdata(with_points("<PNT A=\"2\" B=\"\xc3\" C=\"1\" D=\"1\"/>")),
                   "Encountered incorrectly encoded content");
    expect_refused("<?xml version=\"1.0\" encoding=\"X-NO-SUCH\"?>\n" + body,
                   "Encoding X-NO-SUCH is unsupported");
    write("taskdata/LINKLIST.XML",
          entity_bomb("ISO11783LinkList", link_head.arg("CTR1", "&l9;").toUtf8()));
    expect_refused(taskdata(""), "LINKLIST.XML:13:2: document type declarations are refused");
}

TEST_F(HostileSet, DeepNestingAndHugeValuesAreRefusedWithTheirPlace) {
    expect_refused(
        taskdata(QByteArray("<CTR>").repeated(100000) + QByteArray("</CTR>").repeated(100000)),
        "elements nested too deeply");
    // Longer than any value of the standard: named with its element and
    // place, the element's end (column 17 + 1048577 + 9), also as a point
    // among plain ones.
    expect_refused(
        taskdata("\n<PFD A=\"PFD1\" C=\"" + QByteArray((1 << 20) + 1, 'x') + "\" D=\"1\"/>"),
        "TASKDATA.XML:2:1048603: attribute C of <PFD> is longer than 1048576 characters");
    expect_refused(taskdata(with_points("\n<PNT A=\"2\" C=\"1\" D=\"1\"/>\n<PNT A=\"2\" C=\"" +
                                        QByteArray((1 << 20) + 1, '1') + "\" D=\"1\"/>\n")),
                   "attribute C of <PNT>");
    // So long that the reader must not even hold it: 200 MB.
    expect_refused(taskdata("\n<CTR A=\"CTR1\" B=\"" + QByteArray(200000000, 'x') + "\"/>"),
                   "tag or text longer than 64 MiB");
}

// Found by fuzzing: the reader took NUL bytes between an attribute name and
// its '=' into the name, and the save wrote that attribute as a second "E"
// beside the default one, a set that no run could load again. Every
// character XML forbids is refused where it stands, in names too.
TEST_F(HostileSet, NulBytesInAnAttributeNameAreRefusedNotSavedAsADuplicate) {
    // The second line of TASKDATA.XML and the reason.
    std::pair<QByteArray, char const*> const cases[] = {
        {QByteArray("<BSN A=\"BSN1\" E\0\0\0\0\0=\"118400\"/>", 31),
         "TASKDATA.XML:2:31: attribute name \\\"E\\u0000\\u0000\\u0000\\u0000\\u0000\\\" of <BSN>"},
        {"<CTR A=\"CTR1\" B\x7f=\"x\"/>", "TASKDATA.XML:2:22: attribute name \\\"B\\u007F\\\""},
        {QByteArray("<CTR A=\"CTR1\" B=\"x\0\"/>", 22), "TASKDATA.XML:2:19: "},
        {"<CTR A=\"CTR1\">\x01</CTR>", "TASKDATA.XML:2:15: "},
        // A point that the reader of plain points passes to the XML reader.
        {with_points(QByteArray("<PNT A\0=\"2\" C=\"1\" D=\"2\"/>", 25)),
         "TASKDATA.XML:2:73: attribute name \\\"A\\u0000\\\" of <PNT>"},
        // One it leaves to the XML reader for its colons, which the save would
        // refuse to write.
        {with_points("<PNT a:b:c=\"2\"/>"), "TASKDATA.XML:2:57: Expected '=', but got ':'."},
    };
    for (auto const& [line, reason] : cases)
        expect_refused(taskdata("\n" + line), reason);
}

TEST_F(SaveFaults, FileSizeLimitOrFullDiskFailsTheSaveAndKeepsTheFormerSet) {
    TmpfsMount const disk(out(), 128);
    prepare(10000);
    // No trap here: the tool itself must not die of SIGXFSZ.
    expect_save_failed(run_tool({"-O", "out", "data"}, scratch.path(), "ulimit -f 64"));
    if (!disk.mounted())
        GTEST_SKIP() << "a full disk needs a small file system of its own: " << disk.why;
    expect_save_failed(run_tool({"-O", "out", "data"}, scratch.path()));
}

TEST_F(SaveFaults, OutputMadeReadOnlyWhileTheToolRunsFailsTheSave) {
    bool const root = ::geteuid() == 0;
    // Root writes through any mode: its OUTPUT is a file system that is
    // remounted read-only.
    TmpfsMount const disk(out(), 1024);
    if (root && !disk.mounted())
        GTEST_SKIP() << "as root, needs a file system to remount: " << disk.why;
    prepare(10);
    // Far more progress than the pipe holds: the tool cannot reach the save
    // before the test has read it all.
    for (int i = 0; i < 2000; ++i)
        make_dirs(data(QString("Clients/Client/Farm/Field %1").arg(i)));

    BackgroundTool tool({"-p", "-O", "out", "data"}, scratch.path());
    // The set is loaded from DATADIR/taskdata, and OUTPUT not yet written.
    ASSERT_EQ(tool.read_line(), "P: 0%\n");
    if (root)
        ASSERT_EQ(run_program({"mount", "-o", "remount,ro", out()}).exit_code, 0);
    else
        ASSERT_TRUE(QFile::setPermissions(out(), QFile::ReadOwner | QFile::ExeOwner));
    expect_save_failed({tool.finish(), {}, read_file(tool.err.fileName())});
}

TEST_F(SaveFaults, KilledSaveLeavesTheFormerOrTheNewSetAndItsLeftoversGoNextTime) {
    // One field with a boundary of many points, its identity in the link
    // list: a set whose save takes a while.
    int const points = 1500000;
    QByteArray boundary;
    for (int i = 0; i < points; ++i)
        boundary +=
            QString::asprintf("<PNT A=\"2\" C=\"52.%09d\" D=\"7.%09d\"/>\n", i, i).toLatin1();
    load("<PFD A=\"PFD1\" C=\"Field\" D=\"1\"><PLN A=\"1\"><LSG A=\"1\">" + boundary +
         "</LSG></PLN></PFD>");
    write("taskdata/LINKLIST.XML",
          link_head.arg("PFD1", "9b2f6f0e-8a51-4f7e-a1c4-6d3e2b1a0f77").toUtf8());
    make_dirs(field(""));
    write_former_set();

    // How long a save takes, from its first staged file to the end.
    BackgroundTool reference({"-O", "reference", "data"}, scratch.path());
    reference.wait_for_staged(scratch.file("reference"), "TASKDATA.XML");
    QElapsedTimer timer;
    timer.start();
    ASSERT_EQ(reference.finish(), 0) << read_file(reference.err.fileName()).constData();
    qint64 const save_ms = std::max<qint64>(timer.elapsed(), 1);
    ASSERT_EQ(new_set_fault(scratch.file("reference"), points), QString());

    // Killed while TASKDATA.XML is being staged, at moments spread over the
    // save, and just as the last staged file appears, before the renames:
    // the staged file whose appearance starts the clock, and the fraction of
    // the measured save time after it.
    std::pair<char const*, double> const moments[] = {
        {"TASKDATA.XML", 0.0}, {"TASKDATA.XML", 0.2}, {"TASKDATA.XML", 0.5},
        {"TASKDATA.XML", 0.8}, {"TASKDATA.XML", 1.0}, {"LINKLIST.XML", 0.0},
        {"GUIDLIST.XML", 0.0}, {"GUIDLIST.XML", 0.05}};
    int left_over = 0;
    for (auto const& [watched, fraction] : moments) {
        SCOPED_TRACE(
            QString("%1 + %2 of %3 ms").arg(watched).arg(fraction).arg(save_ms).toStdString());
        BackgroundTool tool({"-O", "out", "data"}, scratch.path());
        tool.wait_for_staged(out(), watched);
        ::usleep(static_cast<useconds_t>(fraction * save_ms * 1000));
        ::kill(tool.pid, SIGKILL);
        tool.finish();

        left_over += out_files().filter(".tmp").size();
        if (!holds_former_set()) {
            EXPECT_EQ(new_set_fault(out(), points), QString())
                << "neither the former set nor a whole new one";
            write_former_set(); // for the moments after
        }
    }
    EXPECT_GT(left_over, 0) << "no kill left a staged file; the moments missed the save";

    // A save that still runs elsewhere keeps its staged file: this test's
    // own process stands for it.
    QString const alive = QString(".TASKDATA.XML.%1.tmp").arg(::getpid());
    write_file(out(alive), "in progress");
    run();
    EXPECT_EQ(new_set_fault(out(), points), QString());
    EXPECT_EQ(out_files(), QStringList(alive) + set_files);
}
