// Saves that meet a fault: a file size limit, a full disk, OUTPUT made
// read-only while the tool runs, the tool killed while it writes. Whatever
// happens, OUTPUT holds the former set whole or the new one whole.
#include "test_support/test_support.h"
#include "tool_process.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QThread>
#include <QXmlStreamReader>

#include <csignal>
#include <unistd.h>

#include <gtest/gtest.h>

using namespace test_support;
using namespace tool_process;

namespace {

QStringList const set_files = {QStringLiteral("GUIDLIST.XML"), QStringLiteral("LINKLIST.XML"),
                               QStringLiteral("TASKDATA.XML")};

QByteArray const save_error = "E: could not save taskdata\n";

// A loaded set of `customers` customers, one field and, in its link list,
// the field's identity.
QByteArray customers_set(int customers) {
    QByteArray text = "<ISO11783_TaskData VersionMajor=\"4\">";
    for (int i = 1; i <= customers; ++i)
        text += QStringLiteral("<CTR A=\"CTR%1\" B=\"Customer number %1\"/>").arg(i).toUtf8();
    return text + "<PFD A=\"PFD1\" C=\"Field\" D=\"1\"/></ISO11783_TaskData>";
}

QByteArray link_list(char const* element, char const* uuid) {
    return QByteArray("<ISO11783LinkList VersionMajor=\"4\" VersionMinor=\"3\" "
                      "ManagementSoftwareManufacturer=\"m\" ManagementSoftwareVersion=\"1\" "
                      "DataTransferOrigin=\"1\"><LGP A=\"LGP1\" B=\"1\"><LNK A=\"") +
           element + "\" B=\"" + uuid + "\"/></LGP></ISO11783LinkList>";
}

// A former complete set, as a run of another day left it.
QMap<QString, QByteArray> write_former_set(QString const& dir) {
    QMap<QString, QByteArray> const former = {
        {QStringLiteral("TASKDATA.XML"),
         "<ISO11783_TaskData VersionMajor=\"4\"><CTR A=\"CTR1\" B=\"Former\"/>"
         "</ISO11783_TaskData>"},
        {QStringLiteral("LINKLIST.XML"), link_list("CTR1", "4f0c0a3e-5d1b-4a8e-9b6c-2e7d1f3a9c11")},
        {QStringLiteral("GUIDLIST.XML"), "former guids"}};
    for (auto file = former.begin(); file != former.end(); ++file)
        write_file(dir + QLatin1Char('/') + file.key(), file.value());
    return former;
}

bool holds_former_set(QString const& dir, QMap<QString, QByteArray> const& former) {
    for (auto file = former.begin(); file != former.end(); ++file)
        if (read_file(dir + QLatin1Char('/') + file.key()) != file.value())
            return false;
    return true;
}

class SaveFaults : public ::testing::Test {
protected:
    ScratchDir scratch;
    QString data() const { return scratch.file(QStringLiteral("data")); }
    QString out() const { return scratch.file(QStringLiteral("out")); }

    // Something to import: `fields` empty fields, each a progress line.
    void make_fields(int fields) {
        for (int i = 0; i < fields; ++i)
            make_dirs(QStringLiteral("%1/Clients/Client/Farm/Field %2").arg(data()).arg(i));
    }
};

} // namespace

TEST_F(SaveFaults, FileSizeLimitFailsTheSaveInsteadOfKillingTheTool) {
    write_file(data() + QStringLiteral("/taskdata/TASKDATA.XML"), customers_set(3000));
    make_fields(1);
    QMap<QString, QByteArray> const former = write_former_set(out());

    // No trap here: the tool itself must not die of SIGXFSZ.
    ToolRun const run = run_tool({"-O", "out", "data"}, scratch.path(), "ulimit -f 64");
    EXPECT_EQ(run.exit_code, 1);
    EXPECT_TRUE(run.err.endsWith(save_error)) << run.err.constData();
    EXPECT_TRUE(holds_former_set(out(), former));
    EXPECT_EQ(file_names(out()), set_files);
}

TEST_F(SaveFaults, FullDiskFailsTheSaveAndKeepsTheFormerSet) {
    TmpfsMount const disk(out(), 128);
    if (!disk.mounted())
        GTEST_SKIP() << "needs a small file system of its own: " << disk.why().toStdString();
    write_file(data() + QStringLiteral("/taskdata/TASKDATA.XML"), customers_set(10000));
    make_fields(1);
    QMap<QString, QByteArray> const former = write_former_set(out());

    ToolRun const run = run_tool({"-O", "out", "data"}, scratch.path());
    EXPECT_EQ(run.exit_code, 1);
    EXPECT_TRUE(run.err.endsWith(save_error)) << run.err.constData();
    EXPECT_TRUE(holds_former_set(out(), former));
    EXPECT_EQ(file_names(out()), set_files);
}

TEST_F(SaveFaults, OutputMadeReadOnlyWhileTheToolRunsFailsTheSave) {
    bool const root = ::geteuid() == 0;
    // Root writes through any mode: its OUTPUT is a file system that is
    // remounted read-only.
    TmpfsMount disk(root ? out() : QString(), 1024);
    if (root && !disk.mounted())
        GTEST_SKIP() << "as root, needs a file system to remount: " << disk.why().toStdString();
    write_file(data() + QStringLiteral("/taskdata/TASKDATA.XML"), customers_set(10));
    // Far more progress than the pipe holds: the tool cannot reach the save
    // before the test has read it all.
    make_fields(2000);
    QMap<QString, QByteArray> const former = write_former_set(out());

    BackgroundTool tool({"-p", "-O", "out", "data"}, scratch.path());
    // The set is loaded from DATADIR/taskdata, and OUTPUT not yet written.
    ASSERT_EQ(tool.read_line(), QByteArray("P: 0%\n"));
    if (root)
        ASSERT_TRUE(disk.remount_read_only());
    else
        ASSERT_TRUE(QFile::setPermissions(out(), QFile::ReadOwner | QFile::ExeOwner));

    EXPECT_EQ(tool.finish(), 1);
    EXPECT_TRUE(tool.err().endsWith(save_error)) << tool.err().constData();
    EXPECT_TRUE(holds_former_set(out(), former));
    EXPECT_EQ(file_names(out()), set_files);
    if (!root)
        QFile::setPermissions(out(), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
}

namespace {

// One field with a boundary of `points` points, its identity in the link
// list: a set whose save takes a while.
void write_long_set(QString const& dir, int points) {
    QFile file(dir + QStringLiteral("/TASKDATA.XML"));
    QDir().mkpath(dir);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("<ISO11783_TaskData VersionMajor=\"4\">\n<PFD A=\"PFD1\" C=\"Field\" D=\"1\">"
               "<PLN A=\"1\"><LSG A=\"1\">\n");
    QByteArray chunk;
    for (int i = 0; i < points; ++i) {
        chunk += QStringLiteral("<PNT A=\"2\" C=\"52.%1\" D=\"7.%1\"/>\n")
                     .arg(i, 9, 10, QLatin1Char('0'))
                     .toLatin1();
        if (chunk.size() > (1 << 20)) {
            file.write(chunk);
            chunk.clear();
        }
    }
    file.write(chunk + "</LSG></PLN></PFD></ISO11783_TaskData>\n");
    file.close();
    write_file(dir + QStringLiteral("/LINKLIST.XML"),
               link_list("PFD1", "9b2f6f0e-8a51-4f7e-a1c4-6d3e2b1a0f77"));
}

// The new set whole: TASKDATA.XML well-formed with every point, and each
// link naming an element of it.
QString new_set_fault(QString const& dir, int points) {
    QFile file(dir + QStringLiteral("/TASKDATA.XML"));
    if (!file.open(QIODevice::ReadOnly))
        return QStringLiteral("no TASKDATA.XML");
    QXmlStreamReader xml(&file);
    int found = 0;
    QStringList ids;
    while (!xml.atEnd())
        if (xml.readNext() == QXmlStreamReader::StartElement) {
            found += xml.name() == QLatin1String("PNT");
            if (xml.name() == QLatin1String("PFD") || xml.name() == QLatin1String("CTR"))
                ids << xml.attributes().value(QLatin1String("A")).toString();
        }
    if (xml.hasError())
        return QStringLiteral("TASKDATA.XML: ") + xml.errorString();
    if (found != points)
        return QStringLiteral("%1 points of %2").arg(found).arg(points);
    XmlElement const links = read_xml(dir + QStringLiteral("/LINKLIST.XML"));
    if (links.all(QStringLiteral("LNK")).isEmpty())
        return QStringLiteral("LINKLIST.XML holds no link");
    for (XmlElement const& link : links.all(QStringLiteral("LNK")))
        if (!ids.contains(link.attribute(QStringLiteral("A"))))
            return QStringLiteral("LINKLIST.XML names %1, which TASKDATA.XML lacks")
                .arg(link.attribute(QStringLiteral("A")));
    return QString();
}

QString staged_name(QString const& file, pid_t pid) {
    return QStringLiteral(".%1.%2.tmp").arg(file).arg(pid);
}

} // namespace

TEST_F(SaveFaults, KilledSaveLeavesTheFormerOrTheNewSetAndItsLeftoversGoNextTime) {
    int const points = 1500000;
    write_long_set(data() + QStringLiteral("/taskdata"), points);
    make_fields(1);
    QMap<QString, QByteArray> const former = write_former_set(out());

    // How long a save takes, from its first staged file to the end.
    qint64 save_ms = 0;
    {
        QString const reference = scratch.file(QStringLiteral("reference"));
        BackgroundTool tool({"-O", "reference", "data"}, scratch.path());
        QString const staged =
            reference + QLatin1Char('/') + staged_name("TASKDATA.XML", tool.pid());
        while (!file_exists(staged) && tool.running())
            QThread::usleep(100);
        QElapsedTimer timer;
        timer.start();
        ASSERT_EQ(tool.finish(), 0) << tool.err().constData();
        save_ms = std::max<qint64>(timer.elapsed(), 1);
        ASSERT_EQ(new_set_fault(reference, points), QString());
    }

    // Killed while TASKDATA.XML is being staged, at moments spread over the
    // save, and just as the last staged file appears, before the renames.
    struct Moment {
        char const* watched; // the staged file whose appearance starts the clock
        double fraction;     // of the measured save time
    };
    QList<Moment> const moments = {{"TASKDATA.XML", 0.0}, {"TASKDATA.XML", 0.2},
                                   {"TASKDATA.XML", 0.5}, {"TASKDATA.XML", 0.8},
                                   {"TASKDATA.XML", 1.0}, {"LINKLIST.XML", 0.0},
                                   {"GUIDLIST.XML", 0.0}, {"GUIDLIST.XML", 0.05}};
    int left_over = 0;
    for (Moment const& moment : moments) {
        SCOPED_TRACE(QStringLiteral("%1 + %2 of %3 ms")
                         .arg(moment.watched)
                         .arg(moment.fraction)
                         .arg(save_ms)
                         .toStdString());
        BackgroundTool tool({"-O", "out", "data"}, scratch.path());
        QString const staged = out() + QLatin1Char('/') + staged_name(moment.watched, tool.pid());
        while (!file_exists(staged) && tool.running())
            QThread::usleep(100);
        QThread::usleep(static_cast<unsigned long>(moment.fraction * save_ms * 1000));
        ::kill(tool.pid(), SIGKILL);
        tool.finish();

        for (QString const& name : file_names(out()))
            left_over += name.endsWith(QLatin1String(".tmp"));
        if (!holds_former_set(out(), former)) {
            EXPECT_EQ(new_set_fault(out(), points), QString())
                << "neither the former set nor a whole new one";
            write_former_set(out()); // for the moments after
        }
    }
    EXPECT_GT(left_over, 0) << "no kill left a staged file; the moments missed the save";

    // A save that still runs elsewhere keeps its staged file: this test's
    // own process stands for it.
    QString const alive = out() + QLatin1Char('/') + staged_name("TASKDATA.XML", ::getpid());
    write_file(alive, "in progress");
    ToolRun const run = run_tool({"-O", "out", "data"}, scratch.path());
    EXPECT_EQ(run.exit_code, 0) << run.err.constData();
    EXPECT_EQ(new_set_fault(out(), points), QString());
    EXPECT_EQ(file_names(out()),
              QStringList({staged_name("TASKDATA.XML", ::getpid())}) + set_files);
}
