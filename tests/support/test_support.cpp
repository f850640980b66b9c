#include "test_support/test_support.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QXmlStreamReader>
#include <QtEndian>

#include <algorithm>
#include <chrono>
#include <vector>

#include <cerrno>
#include <csignal>

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

extern char** environ;

#include <gtest/gtest.h>

namespace test_support {

ScratchDir::ScratchDir() {
    QTemporaryDir dir(QDir::tempPath() + QStringLiteral("/tdm-test-XXXXXX"));
    dir.setAutoRemove(false);
    path_ = dir.path();
}

ScratchDir::~ScratchDir() {
    // Tests may leave read-only or odd entries behind; make them removable.
    run_program({QStringLiteral("chmod"), QStringLiteral("-R"), QStringLiteral("u+rwx"), path_});
    QDir(path_).removeRecursively();
}

void make_dirs(QString const& path) {
    ASSERT_TRUE(QDir().mkpath(path)) << path.toStdString();
}

void write_file(QString const& path, QByteArray const& content) {
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate)) << path.toStdString();
    file.write(content);
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
    if (!file.open(QIODevice::ReadOnly))
        return QByteArray();
    return file.readAll();
}

bool file_exists(QString const& path) {
    return QFileInfo::exists(path);
}

QByteArray point_file(double latitude, double longitude, double height,
                      std::vector<std::pair<float, float>> const& points) {
    QByteArray bytes(64, '\x5a');
    qToLittleEndian(latitude, bytes.data());
    qToLittleEndian(longitude, bytes.data() + 8);
    qToLittleEndian(height, bytes.data() + 16);
    for (auto const& point : points) {
        char pair[8];
        qToLittleEndian(point.first, pair);
        qToLittleEndian(point.second, pair + 4);
        bytes.append(pair, sizeof pair);
    }
    return bytes;
}

// The children are started with posix_spawn rather than QProcess: QProcess
// starts them through a clone that returns a pidfd, which qemu's user-mode
// emulation, where the tests of an arm64 build run, does not provide.
ToolRun run_program(QStringList const& command, QString const& working_dir, bool merge_channels) {
    ToolRun run;
    std::vector<QByteArray> storage;
    for (QString const& word : command)
        storage.push_back(QFile::encodeName(word));
    std::vector<char*> argv;
    for (QByteArray& word : storage)
        argv.push_back(word.data());
    argv.push_back(nullptr);

    int out_pipe[2];
    int err_pipe[2];
    if (::pipe2(out_pipe, O_CLOEXEC) != 0)
        return run;
    if (::pipe2(err_pipe, O_CLOEXEC) != 0) {
        ::close(out_pipe[0]);
        ::close(out_pipe[1]);
        return run;
    }
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, out_pipe[1], 1);
    posix_spawn_file_actions_adddup2(&actions, merge_channels ? out_pipe[1] : err_pipe[1], 2);
    QByteArray const dir = QFile::encodeName(working_dir);
    if (!working_dir.isEmpty())
        posix_spawn_file_actions_addchdir_np(&actions, dir.constData());
    pid_t pid = 0;
    bool const started = posix_spawnp(&pid, argv[0], &actions, nullptr, argv.data(), environ) == 0;
    posix_spawn_file_actions_destroy(&actions);
    ::close(out_pipe[1]);
    ::close(err_pipe[1]);

    // Both pipes are drained together, so that a child that fills one while
    // the other is read cannot stall.
    auto const deadline = std::chrono::steady_clock::now() + std::chrono::minutes(2);
    pollfd fds[2] = {{out_pipe[0], POLLIN, 0}, {err_pipe[0], POLLIN, 0}};
    QByteArray* sinks[2] = {&run.out, &run.err};
    bool timed_out = false;
    while (started && (fds[0].fd >= 0 || fds[1].fd >= 0)) {
        auto const left = std::chrono::duration_cast<std::chrono::milliseconds>(
            deadline - std::chrono::steady_clock::now());
        if (left.count() <= 0) {
            timed_out = true;
            break;
        }
        if (::poll(fds, 2, static_cast<int>(left.count())) < 0 && errno != EINTR)
            break;
        for (int i = 0; i < 2; ++i) {
            if (fds[i].fd < 0 || fds[i].revents == 0)
                continue;
            char buffer[65536];
            ssize_t const got = ::read(fds[i].fd, buffer, sizeof buffer);
            if (got > 0) {
                sinks[i]->append(buffer, static_cast<int>(got));
            } else if (got == 0 || errno != EINTR) {
                ::close(fds[i].fd);
                fds[i].fd = -1;
            }
        }
    }
    for (pollfd const& fd : fds)
        if (fd.fd >= 0)
            ::close(fd.fd);
    if (!started)
        return run;
    if (timed_out) {
        ADD_FAILURE() << command.join(QLatin1Char(' ')).toStdString() << " did not finish";
        ::kill(pid, SIGKILL);
    }
    int status = 0;
    while (::waitpid(pid, &status, 0) < 0 && errno == EINTR) {
    }
    if (!timed_out && WIFEXITED(status))
        run.exit_code = WEXITSTATUS(status);
    return run;
}

QStringList command_of(QString const& program) {
    QStringList command = QStringLiteral(TDM_EMULATOR).split(QLatin1Char(' '));
    command.removeAll(QString());
    command.append(program);
    return command;
}

ToolRun run_tool(QStringList const& arguments, QString const& working_dir,
                 QString const& shell_prefix) {
    if (shell_prefix.isEmpty())
        return run_program(command_of(QStringLiteral(TDM_TOOL)) + arguments, working_dir);
    // The snippet sees the command as "$0" "$@".
    QStringList const shell = {QStringLiteral("bash"), QStringLiteral("-c"),
                               shell_prefix + QStringLiteral("; exec \"$0\" \"$@\"")};
    return run_program(shell + command_of(QStringLiteral(TDM_TOOL)) + arguments, working_dir);
}

QString XmlElement::attribute(QString const& name) const {
    for (auto const& attribute : attributes)
        if (attribute.first == name)
            return attribute.second;
    return QString();
}

bool XmlElement::has_attribute(QString const& name) const {
    for (auto const& attribute : attributes)
        if (attribute.first == name)
            return true;
    return false;
}

QList<XmlElement> XmlElement::all(QString const& wanted) const {
    QList<XmlElement> found;
    for (XmlElement const& child : children) {
        if (child.tag == wanted)
            found.append(child);
        found.append(child.all(wanted));
    }
    return found;
}

XmlElement read_xml(QString const& path) {
    QFile file(path);
    XmlElement document;
    if (!file.open(QIODevice::ReadOnly)) {
        ADD_FAILURE() << "cannot open " << path.toStdString();
        return document;
    }
    QXmlStreamReader xml(&file);
    xml.setNamespaceProcessing(false);
    QList<XmlElement*> stack{&document};
    while (!xml.atEnd()) {
        xml.readNext();
        if (xml.isStartElement()) {
            XmlElement element;
            element.tag = xml.qualifiedName().toString();
            for (auto const& attribute : xml.attributes())
                element.attributes.append(
                    {attribute.qualifiedName().toString(), attribute.value().toString()});
            stack.last()->children.append(element);
            stack.append(&stack.last()->children.last());
        } else if (xml.isEndElement()) {
            stack.removeLast();
        } else if (xml.isCharacters()) {
            stack.last()->text += xml.text();
        }
    }
    if (xml.hasError())
        ADD_FAILURE() << path.toStdString() << ":" << xml.lineNumber() << ": "
                      << xml.errorString().toStdString();
    return document.children.isEmpty() ? XmlElement() : document.children.first();
}

namespace {

QString describe(XmlElement const& element) {
    QString text = QLatin1Char('<') + element.tag;
    for (auto const& attribute : element.attributes)
        text += QStringLiteral(" %1=\"%2\"").arg(attribute.first, attribute.second);
    return text + QLatin1Char('>');
}

QString difference_at(XmlElement const& expected, XmlElement const& actual, QString const& path) {
    QString const here = path + QLatin1Char('/') + expected.tag;
    auto sorted = [](XmlElement const& element) {
        auto attributes = element.attributes;
        std::sort(attributes.begin(), attributes.end());
        return attributes;
    };
    if (expected.tag != actual.tag || sorted(expected) != sorted(actual))
        return QStringLiteral("at %1:\n  expected %2\n  actual   %3")
            .arg(here, describe(expected), describe(actual));
    if (expected.children.size() != actual.children.size())
        return QStringLiteral("at %1: expected %2 children, found %3")
            .arg(here)
            .arg(expected.children.size())
            .arg(actual.children.size());
    for (int i = 0; i < expected.children.size(); ++i) {
        QString const found = difference_at(expected.children[i], actual.children[i],
                                            here + QStringLiteral("[%1]").arg(i));
        if (!found.isEmpty())
            return found;
    }
    return QString();
}

} // namespace

QString difference(XmlElement const& expected, XmlElement const& actual) {
    return difference_at(expected, actual, QString());
}

QString shared_dir() {
    QString const dir = QStringLiteral(TDM_SHARED_DIR);
    return QFileInfo(dir + QStringLiteral("/isoxml/xsd")).exists() ? dir : QString();
}

QString validate_set(QString const& dir, bool& valid) {
    ToolRun const run = run_program(
        {shared_dir() + QStringLiteral("/tools/validate-taskdata"), dir}, QString(), true);
    valid = run.exit_code == 0;
    return QString::fromUtf8(run.out);
}

QString DisplayTree::data(QString const& relative) const {
    return scratch.file(QStringLiteral("data/") + relative);
}

QString DisplayTree::field(QString const& relative, QString const& name) const {
    return data(QStringLiteral("Clients/Client/Farm/%1/%2").arg(name, relative));
}

void DisplayTree::write(QString const& relative, QByteArray const& content) const {
    write_file(data(relative), content);
}

void DisplayTree::load(QByteArray const& elements) const {
    write(QStringLiteral("taskdata/TASKDATA.XML"),
          "<ISO11783_TaskData VersionMajor=\"4\" VersionMinor=\"3\">" + elements +
              "</ISO11783_TaskData>");
}

void DisplayTree::load_saved() const {
    for (char const* name : {"TASKDATA.XML", "LINKLIST.XML", "GUIDLIST.XML"})
        write(QStringLiteral("taskdata/") + name,
              read_file(scratch.file(QStringLiteral("out/") + name)));
}

ToolRun DisplayTree::run(QStringList const& options) const {
    ToolRun result = run_tool(options + QStringList{"-O", "out", "data"}, scratch.path());
    EXPECT_EQ(result.exit_code, 0) << result.err.constData();
    return result;
}

XmlElement DisplayTree::saved() const {
    return read_xml(scratch.file(QStringLiteral("out/TASKDATA.XML")));
}

QList<XmlElement> DisplayTree::saved(QString const& tag, QString const& attribute,
                                     QString const& value) const {
    QList<XmlElement> found;
    for (XmlElement const& element : saved().all(tag))
        if (element.attribute(attribute) == value)
            found << element;
    return found;
}

QHash<QString, QUuid> DisplayTree::identities() const {
    QHash<QString, QUuid> result;
    QString const path = scratch.file(QStringLiteral("out/LINKLIST.XML"));
    if (!read_file(path).isEmpty())
        for (XmlElement const& link : read_xml(path).all(QStringLiteral("LNK")))
            result.insert(link.attribute(QStringLiteral("A")),
                          QUuid(link.attribute(QStringLiteral("B"))));
    return result;
}

void DisplayTree::expect_valid_set() const {
    if (shared_dir().isEmpty())
        return;
    bool valid = false;
    QString const report = validate_set(scratch.file(QStringLiteral("out")), valid);
    EXPECT_TRUE(valid) << report.toStdString();
}

} // namespace test_support
