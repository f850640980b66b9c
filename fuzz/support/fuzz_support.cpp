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

[[noreturn]] void fail(char const* what, QString const& detail) {
    std::fprintf(stderr, "fuzz: %s %s\n", what, qPrintable(detail));
    std::abort();
}

QList<QByteArray> pieces(QByteArray const& input) {
    QList<QByteArray> files;
    int from = 0;
    for (int at = input.indexOf(file_separator); at >= 0;
         at = input.indexOf(file_separator, from)) {
        files << input.mid(from, at - from);
        from = at + static_cast<int>(sizeof file_separator) - 1;
    }
    return files << input.mid(from);
}

} // namespace

QByteArray whole_file(std::uint8_t const* data, std::size_t size) {
    return QByteArray(reinterpret_cast<char const*>(data), static_cast<int>(size));
}

QString input_files(std::uint8_t const* data, std::size_t size, QStringList const& paths) {
    static QTemporaryDir const scratch(QDir::tempPath() + QStringLiteral("/tdm-fuzz-XXXXXX"));
    static unsigned long run = 0;
    if (!scratch.isValid())
        fail("cannot make a scratch directory:", scratch.errorString());
    QDir(QStringLiteral("%1/%2").arg(scratch.path()).arg(run)).removeRecursively();
    QString const dir = QStringLiteral("%1/%2").arg(scratch.path()).arg(++run);
    if (!QDir().mkpath(dir))
        fail("cannot make", dir);
    QByteArray const input = whole_file(data, size);
    QList<QByteArray> const files = paths.size() == 1 ? QList<QByteArray>{input} : pieces(input);
    for (int i = 0; i < files.size() && i < paths.size(); ++i) {
        QString const path = dir + QLatin1Char('/') + paths[i];
        QFile file(path);
        if (!QDir().mkpath(QFileInfo(path).absolutePath()) || !file.open(QIODevice::WriteOnly) ||
            file.write(files[i]) != files[i].size())
            fail("cannot write", path);
    }
    return dir;
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
