#include "test_support/test_support.h"

#include <QDataStream>
#include <QDeadlineTimer>
#include <QDir>
#include <QTemporaryDir>
#include <QTemporaryFile>
#include <QXmlStreamReader>

#include <csignal>

#include <fcntl.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

extern char** environ;

namespace test_support {

ScratchDir::ScratchDir() {
    QTemporaryDir dir(QDir::tempPath() + "/tdm-test-XXXXXX");
    dir.setAutoRemove(false);
    path_ = dir.path();
}

ScratchDir::~ScratchDir() {
    // Tests may leave read-only or odd entries behind; make them removable.
    run_program({"chmod", "-R", "u+rwx", path_});
    QDir(path_).removeRecursively();
}

void make_dirs(QString const& path) {
    ASSERT_TRUE(QDir().mkpath(path)) << path.toStdString();
}

void write_file(QString const& path, QByteArray const& content) {
    write_raw_file(QFile::encodeName(path), content);
}

void write_raw_file(QByteArray const& path, QByteArray const& content) {
    for (int slash = path.indexOf('/', 1); slash > 0; slash = path.indexOf('/', slash + 1))
        ::mkdir(path.left(slash).constData(), 0755);
    int const fd = ::open(path.constData(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
    ASSERT_GE(fd, 0) << path.constData();
    EXPECT_EQ(::write(fd, content.constData(), static_cast<size_t>(content.size())),
              content.size());
    ::close(fd);
}

QByteArray read_file(QString const& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

bool file_exists(QString const& path) {
    return QFileInfo::exists(path);
}

QByteArray point_file(double latitude, double longitude, double height,
                      std::vector<std::pair<float, float>> const& points) {
    QByteArray bytes;
    QDataStream stream(&bytes, QIODevice::WriteOnly);
    stream.setByteOrder(QDataStream::LittleEndian);
    stream << latitude << longitude << height;
    stream.writeRawData(QByteArray(40, '\x5a').constData(), 40);
    stream.setFloatingPointPrecision(QDataStream::SinglePrecision);
    for (auto const& point : points)
        stream << point.first << point.second;
    return bytes;
}

// The children are started with posix_spawn rather than QProcess: QProcess
// starts them through a clone that returns a pidfd, which qemu's user-mode
// emulation, where the tests of an arm64 build run, does not provide.
pid_t spawn(QStringList const& command, QString const& working_dir, int out_fd, int err_fd) {
    std::vector<QByteArray> words;
    std::vector<char*> argv;
    for (QString const& word : command)
        argv.push_back(words.emplace_back(QFile::encodeName(word)).data());
    argv.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, out_fd, 1);
    posix_spawn_file_actions_adddup2(&actions, err_fd, 2);
    if (!working_dir.isEmpty())
        posix_spawn_file_actions_addchdir_np(&actions, QFile::encodeName(working_dir).constData());
    pid_t pid = -1;
    if (posix_spawnp(&pid, argv[0], &actions, nullptr, argv.data(), environ) != 0)
        pid = -1;
    posix_spawn_file_actions_destroy(&actions);
    return pid;
}

// The output goes to files, which never fill up and stall the child as a
// pipe that nobody reads would.
ToolRun run_program(QStringList const& command, QString const& working_dir, bool merge_channels) {
    QTemporaryFile out, err;
    if (!out.open() || !err.open())
        return {};
    pid_t const pid =
        spawn(command, working_dir, out.handle(), (merge_channels ? out : err).handle());
    int status = -1; // neither exited nor signalled
    QDeadlineTimer const deadline(120000);
    for (bool killed = false; pid > 0 && ::waitpid(pid, &status, WNOHANG) == 0; ::usleep(500))
        if (!killed && deadline.hasExpired()) {
            ADD_FAILURE() << command.join(' ').toStdString() << " did not finish";
            killed = ::kill(pid, SIGKILL) == 0;
        }
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, read_file(out.fileName()),
            read_file(err.fileName())};
}

QStringList command_of(QString const& program) {
    return QString(TDM_EMULATOR).split(' ', Qt::SkipEmptyParts) << program;
}

ToolRun run_tool(QStringList const& arguments, QString const& working_dir,
                 QString const& shell_prefix) {
    // The snippet sees the command as "$0" "$@".
    QStringList const shell = {"bash", "-c", shell_prefix + "; exec \"$0\" \"$@\""};
    return run_program((shell_prefix.isEmpty() ? QStringList() : shell) + command_of(TDM_TOOL) +
                           arguments,
                       working_dir);
}

// The element at the reader's start tag, read to its end tag.
static XmlElement element_at(QXmlStreamReader& xml) {
    XmlElement element{xml.qualifiedName().toString(), {}, {}, {}};
    for (auto const& attribute : xml.attributes())
        element.attributes += {attribute.qualifiedName().toString(), attribute.value().toString()};
    while (xml.readNext() != QXmlStreamReader::EndElement && !xml.hasError())
        if (xml.isStartElement())
            element.children.append(element_at(xml));
        else if (xml.isCharacters())
            element.text += xml.text();
    return element;
}

XmlElement read_xml(QString const& path) {
    // A file that cannot be opened reads as an empty one, a failure too.
    QFile file(path);
    file.open(QIODevice::ReadOnly);
    QXmlStreamReader xml(&file);
    xml.setNamespaceProcessing(false);
    XmlElement const root = xml.readNextStartElement() ? element_at(xml) : XmlElement();
    while (!xml.atEnd())
        xml.readNext();
    EXPECT_FALSE(xml.hasError()) << path.toStdString() << ":" << xml.lineNumber() << ": "
                                 << xml.errorString().toStdString();
    return root;
}

// One line per element in document order, indented by its depth, with its
// attributes sorted.
static QStringList lines_of(XmlElement const& element, QString const& indent = QString()) {
    QStringList attributes;
    for (auto const& attribute : element.attributes)
        attributes << QString(" %1=\"%2\"").arg(attribute.first, attribute.second);
    attributes.sort();
    QStringList lines{indent + '<' + element.tag + attributes.join("") + '>'};
    for (XmlElement const& child : element.children)
        lines += lines_of(child, indent + "  ");
    return lines;
}

QString difference(XmlElement const& expected, XmlElement const& actual) {
    QStringList const want = lines_of(expected), got = lines_of(actual);
    for (int i = 0; i < std::max(want.size(), got.size()); ++i)
        if (want.value(i) != got.value(i))
            return QString("at element %1:\n  expected %2\n  actual   %3")
                .arg(QString::number(i), want.value(i), got.value(i));
    return QString();
}

QString shared_dir() {
    return QFileInfo::exists(TDM_SHARED_DIR "/isoxml/xsd") ? TDM_SHARED_DIR : QString();
}

QString validate_set(QString const& dir, bool& valid) {
    ToolRun const run = run_program({shared_dir() + "/tools/validate-taskdata", dir}, {}, true);
    valid = run.exit_code == 0;
    return QString::fromUtf8(run.out);
}

} // namespace test_support
