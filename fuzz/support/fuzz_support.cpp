#include "fuzz_support/fuzz_support.h"

#include "taskdata/element_man.h"
#include "taskdata/store.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QtGlobal>

#include <cstdio>
#include <cstdlib>

namespace fuzz_support {

namespace {

// The readers warn about every bad item; at thousands of inputs a second
// that is only noise. Critical and fatal messages still show.
void drop_routine_messages(QtMsgType type, QMessageLogContext const&, QString const& message) {
    if (type == QtCriticalMsg || type == QtFatalMsg)
        std::fprintf(stderr, "%s\n", qPrintable(message));
}

} // namespace

QByteArray whole_file(std::uint8_t const* data, std::size_t size) {
    return QByteArray(reinterpret_cast<char const*>(data), static_cast<int>(size));
}

std::vector<QByteArray> split_files(std::uint8_t const* data, std::size_t size) {
    QByteArray const input = whole_file(data, size);
    QByteArray const separator(file_separator);
    std::vector<QByteArray> files;
    int from = 0;
    for (int at = input.indexOf(separator); at >= 0; at = input.indexOf(separator, from)) {
        files.push_back(input.mid(from, at - from));
        from = at + separator.size();
    }
    files.push_back(input.mid(from));
    return files;
}

QString fresh_dir() {
    static QTemporaryDir const scratch(QDir::tempPath() + QStringLiteral("/tdm-fuzz-XXXXXX"));
    static unsigned long run = 0;
    if (!scratch.isValid()) {
        std::fprintf(stderr, "fuzz: cannot make a scratch directory: %s\n",
                     qPrintable(scratch.errorString()));
        std::abort();
    }
    QDir(QStringLiteral("%1/%2").arg(scratch.path()).arg(run)).removeRecursively();
    QString const path = QStringLiteral("%1/%2").arg(scratch.path()).arg(++run);
    if (!QDir().mkpath(path)) {
        std::fprintf(stderr, "fuzz: cannot make %s\n", qPrintable(path));
        std::abort();
    }
    return path;
}

void write_files(QString const& dir, QStringList const& paths,
                 std::vector<QByteArray> const& files) {
    for (std::size_t i = 0; i < files.size() && i < static_cast<std::size_t>(paths.size()); ++i) {
        QString const path = QStringLiteral("%1/%2").arg(dir, paths.at(static_cast<int>(i)));
        QFile file(path);
        if (!QDir().mkpath(QFileInfo(path).absolutePath()) || !file.open(QIODevice::WriteOnly) ||
            file.write(files[i]) != files[i].size()) {
            std::fprintf(stderr, "fuzz: cannot write %s\n", qPrintable(path));
            std::abort();
        }
    }
}

TC::Task_data::Elements::Client::Partfield fresh_field() {
    element_man.create();
    task_data = element_man.get_client_root();
    TC::Task_data::Elements::Client::Partfield field = task_data.create_partfields(true);
    field.id().set(element_man.get_free_uid(QStringLiteral("PFD"), false), true);
    field.designator().set(QStringLiteral("Field"), true);
    return field;
}

} // namespace fuzz_support

// Called once by libFuzzer, and by the replay main, before the first input.
extern "C" int LLVMFuzzerInitialize(int*, char***) {
    qInstallMessageHandler(fuzz_support::drop_routine_messages);
    return 0;
}
