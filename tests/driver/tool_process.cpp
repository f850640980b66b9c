#include "tool_process.h"

#include "test_support/test_support.h"

#include <QDateTime>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>

#include <vector>

#include <csignal>
#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace tool_process {

BackgroundTool::BackgroundTool(QStringList const& arguments, QString const& working_dir)
    : err_path_(working_dir + QStringLiteral("/.tool-stderr")) {
    // Everything the child needs is made before the fork.
    QList<QByteArray> texts;
    for (QString const& argument : test_support::command_of(QStringLiteral(TDM_TOOL)) + arguments)
        texts.append(argument.toUtf8());
    std::vector<char*> argv;
    for (QByteArray& text : texts)
        argv.push_back(text.data());
    argv.push_back(nullptr);
    QByteArray const dir = QFile::encodeName(working_dir);
    QByteArray const err_file = QFile::encodeName(err_path_);

    int pipe_ends[2];
    if (::pipe(pipe_ends) != 0)
        return;
    ::fcntl(pipe_ends[1], F_SETPIPE_SZ, 4096);
    pid_ = ::fork();
    if (pid_ == 0) {
        int const err = ::open(err_file.constData(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
        if (::chdir(dir.constData()) != 0 || err < 0 || ::dup2(pipe_ends[1], 1) < 0 ||
            ::dup2(err, 2) < 0)
            ::_exit(127);
        ::close(pipe_ends[0]);
        ::execv(argv[0], argv.data());
        ::_exit(127);
    }
    ::close(pipe_ends[1]);
    out_ = pipe_ends[0];
}

BackgroundTool::~BackgroundTool() {
    if (pid_ > 0) {
        ::kill(pid_, SIGKILL);
        ::waitpid(pid_, nullptr, 0);
    }
    if (out_ >= 0)
        ::close(out_);
    QFile::remove(err_path_);
}

bool BackgroundTool::running() const {
    siginfo_t info{};
    return pid_ > 0 &&
           ::waitid(P_PID, static_cast<id_t>(pid_), &info, WEXITED | WNOHANG | WNOWAIT) == 0 &&
           info.si_pid == 0;
}

QByteArray BackgroundTool::read_line() {
    QByteArray line;
    char c = 0;
    while (out_ >= 0 && ::read(out_, &c, 1) == 1) {
        line += c;
        if (c == '\n')
            break;
    }
    return line;
}

int BackgroundTool::finish() {
    if (pid_ <= 0)
        return -1000;
    char buffer[4096];
    while (::read(out_, buffer, sizeof buffer) > 0) {
    }
    int status = 0;
    ::waitpid(pid_, &status, 0);
    pid_ = -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

QByteArray BackgroundTool::err() const {
    QFile file(err_path_);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

TmpfsMount::TmpfsMount(QString const& dir, int size_kib) : dir_(dir) {
    if (::geteuid() != 0) {
        why_ = QStringLiteral("mounting a tmpfs needs root");
        return;
    }
    QDir().mkpath(dir);
    test_support::ToolRun const mount = test_support::run_program(
        {QStringLiteral("mount"), QStringLiteral("-t"), QStringLiteral("tmpfs"),
         QStringLiteral("-o"), QStringLiteral("size=%1k").arg(size_kib), QStringLiteral("tmpfs"),
         dir},
        QString(), true);
    mounted_ = mount.exit_code == 0;
    if (!mounted_)
        why_ = QStringLiteral("cannot mount a tmpfs here: %1")
                   .arg(QString::fromLocal8Bit(mount.out).trimmed());
}

TmpfsMount::~TmpfsMount() {
    if (mounted_)
        test_support::run_program({QStringLiteral("umount"), dir_});
}

bool TmpfsMount::remount_read_only() {
    return test_support::run_program(
               {QStringLiteral("mount"), QStringLiteral("-o"), QStringLiteral("remount,ro"), dir_})
               .exit_code == 0;
}

QMap<QString, QString> snapshot(QString const& root, QStringList const& left_out) {
    QMap<QString, QString> entries;
    QDir const base(root);
    QDirIterator it(root, QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
                    QDirIterator::Subdirectories);
    while (it.hasNext()) {
        QString const path = it.next();
        bool skipped = false;
        for (QString const& excluded : left_out)
            skipped = skipped || path == excluded || path.startsWith(excluded + QLatin1Char('/'));
        if (skipped)
            continue;
        QFileInfo const info = it.fileInfo();
        entries.insert(base.relativeFilePath(path),
                       QStringLiteral("%1 bytes, modified %2")
                           .arg(info.size())
                           .arg(info.lastModified().toMSecsSinceEpoch()));
    }
    return entries;
}

QStringList file_names(QString const& dir) {
    return QDir(dir).entryList(QDir::Files | QDir::Hidden | QDir::System, QDir::Name);
}

} // namespace tool_process
