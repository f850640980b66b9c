#pragma once
// The tool as a process that a test steers while it runs, and the file
// system conditions that the fault tests put it under.

#include <QByteArray>
#include <QMap>
#include <QString>
#include <QStringList>

#include <sys/types.h>

namespace tool_process {

// taskdata-migrate started in the background. Its standard output is a pipe
// of one page that the test reads at its own pace: while the test does not
// read, the tool stops at its next progress line. Standard error goes to a
// file. A tool still running at destruction is killed.
class BackgroundTool {
public:
    BackgroundTool(QStringList const& arguments, QString const& working_dir);
    ~BackgroundTool();
    BackgroundTool(BackgroundTool const&) = delete;
    BackgroundTool& operator=(BackgroundTool const&) = delete;

    pid_t pid() const { return pid_; }
    // True until the tool has ended (it is not reaped here).
    bool running() const;
    // The next line of standard output with its line end; empty at its end.
    QByteArray read_line();
    // Reads standard output to its end and waits for the tool. The exit
    // status, or minus the number of the signal that ended it.
    int finish();
    QByteArray err() const;

private:
    pid_t pid_ = -1;
    int out_ = -1;
    QString err_path_;
};

// A tmpfs of `size_kib` mounted on `dir` for the life of the object; needs
// root. mounted() is false (with the reason in why()) where that can't be.
class TmpfsMount {
public:
    TmpfsMount(QString const& dir, int size_kib);
    ~TmpfsMount();
    TmpfsMount(TmpfsMount const&) = delete;
    TmpfsMount& operator=(TmpfsMount const&) = delete;

    bool mounted() const { return mounted_; }
    QString why() const { return why_; }
    bool remount_read_only();

private:
    QString dir_;
    bool mounted_ = false;
    QString why_;
};

// Path (relative to `root`), size and modification time of every entry
// below `root`, except below the paths in `left_out`.
QMap<QString, QString> snapshot(QString const& root, QStringList const& left_out = {});

// The hidden and visible file names in `dir`, sorted.
QStringList file_names(QString const& dir);

} // namespace tool_process
