// Saves that meet a fault: a file size limit, a full disk, OUTPUT made
// read-only while the tool runs, the tool killed while it writes. Whatever
// happens, OUTPUT holds the former set whole or the new one whole.
#include "test_support/test_support.h"

#include <QDir>
#include <QElapsedTimer>
#include <QTemporaryFile>
#include <QXmlStreamReader>

#include <csignal>
#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

using namespace test_support;

namespace {

QString staged_name(QString const& file, pid_t pid) {
    return QString(".%1.%2.tmp").arg(file).arg(pid);
}

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
    // Until the staged `file` appears in `dir`, or the tool ends (it is not
    // reaped here).
    void wait_for_staged(QString const& dir, QString const& file) const {
        siginfo_t info{};
        while (!file_exists(dir + '/' + staged_name(file, pid)) &&
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
        int status = -1; // neither exited nor signalled, where the tool did not start
        ::waitpid(pid, &status, 0);
        pid = -1;
        return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
    }

    pid_t pid = -1;
    int out = -1;
    QTemporaryFile err;
};

// A tmpfs of `size_kib` mounted on `dir` for the life of the object, where
// that can be (as root); `why` says why not.
struct TmpfsMount {
    TmpfsMount(QString const& mount_point, int size_kib) : dir(mount_point) {
        make_dirs(dir);
        ToolRun const mount = run_program(
            {"mount", "-t", "tmpfs", "-o", QString("size=%1k").arg(size_kib), "tmpfs", dir}, {},
            true);
        mounted = mount.exit_code == 0;
        why = mount.out.trimmed().toStdString();
    }
    ~TmpfsMount() {
        if (mounted)
            run_program({"umount", dir});
    }

    QString dir;
    std::string why;
    bool mounted = false;
};

QString const link_head =
    "<ISO11783LinkList VersionMajor=\"4\" VersionMinor=\"3\" "
    "ManagementSoftwareManufacturer=\"m\" ManagementSoftwareVersion=\"1\" "
    "DataTransferOrigin=\"1\"><LGP A=\"LGP1\" B=\"1\"><LNK A=\"%1\" B=\"%2\"/>"
    "</LGP></ISO11783LinkList>";

QByteArray const former_set =
    "<ISO11783_TaskData VersionMajor=\"4\"><CTR A=\"CTR1\" B=\"Former\"/></ISO11783_TaskData>";
QByteArray const former_links =
    link_head.arg("CTR1", "4f0c0a3e-5d1b-4a8e-9b6c-2e7d1f3a9c11").toUtf8();
QStringList const set_files = {"GUIDLIST.XML", "LINKLIST.XML", "TASKDATA.XML"};

class SaveFaults : public DisplayTree {
protected:
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

} // namespace

TEST_F(SaveFaults, FileSizeLimitFailsTheSaveInsteadOfKillingTheTool) {
    prepare(3000);
    // No trap here: the tool itself must not die of SIGXFSZ.
    expect_save_failed(run_tool({"-O", "out", "data"}, scratch.path(), "ulimit -f 64"));
}

TEST_F(SaveFaults, FullDiskFailsTheSaveAndKeepsTheFormerSet) {
    TmpfsMount const disk(out(), 128);
    if (!disk.mounted)
        GTEST_SKIP() << "needs a small file system of its own: " << disk.why;
    prepare(10000);
    expect_save_failed(run_tool({"-O", "out", "data"}, scratch.path()));
}

TEST_F(SaveFaults, OutputMadeReadOnlyWhileTheToolRunsFailsTheSave) {
    bool const root = ::geteuid() == 0;
    // Root writes through any mode: its OUTPUT is a file system that is
    // remounted read-only.
    TmpfsMount const disk(out(), 1024);
    if (root && !disk.mounted)
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

namespace {

// The new set whole: TASKDATA.XML well-formed with every point, and each
// link naming an element of it.
QString new_set_fault(QString const& dir, int points) {
    QByteArray const set = read_file(dir + "/TASKDATA.XML");
    QXmlStreamReader xml(set);
    while (!xml.atEnd())
        xml.readNext();
    QStringList const links = read_xml(dir + "/LINKLIST.XML").values("LNK", "A");
    if (xml.hasError() || set.count("<PNT ") != points || links.isEmpty())
        return QString("%1 points of %2 (%3), %4 links")
            .arg(set.count("<PNT "))
            .arg(points)
            .arg(xml.errorString())
            .arg(links.size());
    for (QString const& link : links)
        if (!set.contains("A=\"" + link.toUtf8() + '"'))
            return "LINKLIST.XML names " + link + ", which TASKDATA.XML lacks";
    return QString();
}

} // namespace

TEST_F(SaveFaults, KilledSaveLeavesTheFormerOrTheNewSetAndItsLeftoversGoNextTime) {
    // One field with a boundary of many points, its identity in the link
    // list: a set whose save takes a while.
    int const points = 1500000;
    QByteArray boundary;
    for (int i = 0; i < points; ++i)
        boundary +=
            QString("<PNT A=\"2\" C=\"52.%1\" D=\"7.%1\"/>\n").arg(i, 9, 10, QChar('0')).toLatin1();
    load("<PFD A=\"PFD1\" C=\"Field\" D=\"1\"><PLN A=\"1\"><LSG A=\"1\">" + boundary +
         "</LSG></PLN></PFD>");
    write("taskdata/LINKLIST.XML",
          link_head.arg("PFD1", "9b2f6f0e-8a51-4f7e-a1c4-6d3e2b1a0f77").toUtf8());
    make_dirs(field(""));
    write_former_set();

    // How long a save takes, from its first staged file to the end.
    qint64 save_ms = 0;
    {
        BackgroundTool tool({"-O", "reference", "data"}, scratch.path());
        tool.wait_for_staged(scratch.file("reference"), "TASKDATA.XML");
        QElapsedTimer timer;
        timer.start();
        ASSERT_EQ(tool.finish(), 0) << read_file(tool.err.fileName()).constData();
        save_ms = std::max<qint64>(timer.elapsed(), 1);
        ASSERT_EQ(new_set_fault(scratch.file("reference"), points), QString());
    }

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
    QString const alive = staged_name("TASKDATA.XML", ::getpid());
    write_file(out(alive), "in progress");
    run();
    EXPECT_EQ(new_set_fault(out(), points), QString());
    EXPECT_EQ(out_files(), QStringList(alive) + set_files);
}
