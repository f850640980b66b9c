// taskdata-preview: writes one self-contained HTML page that draws every field
// of an ISO 11783-10 task data set.
//
//   taskdata-preview SETDIR [-o FILE]     (FILE defaults to SETDIR/preview.html)

#include "driver/report.h"
#include "preview/page_writer.h"
#include "taskdata/element_man.h"

#include <QDir>
#include <QFileInfo>
#include <QSaveFile>

#include <cstdio>
#include <cstdlib>

using TC::Task_data::XML_interface;
using TC::Task_data::Elements::Client::Element_man;

namespace {

struct Arguments {
    QString set_dir;
    QString output;
};

[[noreturn]] void preview_usage() {
    std::fprintf(stderr, "usage: taskdata-preview SETDIR [-o FILE]\n");
    std::exit(1);
}

Arguments parse_arguments(int argc, char** argv) {
    Arguments arguments;
    for (int i = 1; i < argc; ++i) {
        QString const argument = QString::fromLocal8Bit(argv[i]);
        if (argument == QLatin1String("-o") && i + 1 < argc && arguments.output.isEmpty())
            arguments.output = QString::fromLocal8Bit(argv[++i]);
        else if (!argument.startsWith(QLatin1Char('-')) && arguments.set_dir.isEmpty())
            arguments.set_dir = argument;
        else
            preview_usage();
    }
    if (arguments.set_dir.isEmpty())
        preview_usage();
    if (arguments.output.isEmpty())
        arguments.output = QDir(arguments.set_dir).filePath(QStringLiteral("preview.html"));
    return arguments;
}

// TASKDATA.XML in the directory, or else TASKDATA.xml; empty when neither is a
// file.
QString taskdata_file(QString const& set_dir) {
    for (char const* name : {"TASKDATA.XML", "TASKDATA.xml"}) {
        QString const path = QDir(set_dir).filePath(QLatin1String(name));
        if (QFileInfo(path).isFile())
            return path;
    }
    return QString();
}

} // namespace

int main(int argc, char** argv) {
    Arguments const arguments = parse_arguments(argc, argv);
    QString const taskdata = taskdata_file(arguments.set_dir);
    if (taskdata.isEmpty())
        fatal_error(QStringLiteral("no task data set in %1").arg(arguments.set_dir));

    Element_man store;
    store.create();
    XML_interface set(taskdata, true, false, false, false);
    if (!store.load_xml(set))
        fatal_error(
            QStringLiteral("could not load taskdata from %1: %2").arg(taskdata, set.error()));

    // Written beside its place and renamed into it when complete, so that a
    // failed run leaves no half page behind.
    QSaveFile page(arguments.output);
    if (!page.open(QIODevice::WriteOnly))
        fatal_error(
            QStringLiteral("could not write %1: %2").arg(arguments.output, page.errorString()));
    writePage(&page, store.get_client_root(),
              QFileInfo(QDir(arguments.set_dir).absolutePath()).fileName());
    if (!page.commit())
        fatal_error(
            QStringLiteral("could not write %1: %2").arg(arguments.output, page.errorString()));
    return 0;
}
