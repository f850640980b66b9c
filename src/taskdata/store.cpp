#include "taskdata/store.h"

#include <QDebug>
#include <QFile>

using TC::Task_data::XML_interface;

TC::Task_data::Elements::Client::Element_man element_man;
TC::Task_data::Elements::Client::Task_data task_data;
XML_interface* xml_file = nullptr;

namespace {

char const template_text[] = "<?xml version=\"1.0\" encoding=\"UTF-8\" ?>\n"
                             "<ISO11783_TaskData VersionMajor=\"4\" />\n";

// Opens `path` write-only and truncates it; the result is not examined, for
// a missing LINKLIST.XML or GUIDLIST.XML is no error.
void make_empty_file(QString const& path) {
    QFile file(path);
    file.open(QIODevice::WriteOnly | QIODevice::Truncate);
}

} // namespace

QString load_task_data(QString const& input_dir, QString const& output_dir) {
    QFile file;
    if (!input_dir.isEmpty()) {
        file.setFileName(QStringLiteral("%1/TASKDATA.XML").arg(input_dir));
        if (!file.exists())
            file.setFileName(QStringLiteral("%1/TASKDATA.xml").arg(input_dir));
    }
    if (!file.exists()) {
        file.setFileName(QStringLiteral("%1/TASKDATA.XML").arg(output_dir));
        if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate))
            return QStringLiteral("could not open %1: %2").arg(file.fileName(), file.errorString());
        file.write(template_text, sizeof template_text - 1);
        file.close();
        make_empty_file(QStringLiteral("%1/LINKLIST.XML").arg(output_dir));
        make_empty_file(QStringLiteral("%1/GUIDLIST.XML").arg(output_dir));
    }

    element_man.create();
    // Made at the first load and kept for the process; a later load names
    // its set on the same one.
    if (!xml_file)
        xml_file = new XML_interface(file.fileName(), true, false, false, false);
    else
        xml_file->set(file.fileName(), true, false, false, false);
    if (!element_man.load_xml(*xml_file)) {
        qDebug() << xml_file->error();
        return QStringLiteral("could not load taskdata from %1").arg(file.fileName());
    }
    xml_file->set(QStringLiteral("%1/TASKDATA.XML").arg(output_dir), true, false, false, false);
    task_data = element_man.get_client_root();
    return QString();
}

QString save_task_data() {
    if (!xml_file)
        return QStringLiteral("could not save taskdata");
    if (element_man.save_xml(*xml_file))
        return QString();
    qDebug() << xml_file->error();
    return QStringLiteral("could not save taskdata");
}
