#include "driver/data_tree.h"

#include <QDebug>

QList<QDir> list_dirs(QDir const& dir) {
    QList<QDir> dirs;
    QFileInfoList const entries =
        dir.entryInfoList(QDir::Dirs | QDir::NoDot | QDir::NoDotDot, QDir::NoSort);
    dirs.reserve(entries.size());
    for (QFileInfo const& entry : entries)
        dirs.append(QDir(entry.filePath()));
    return dirs;
}

QList<QDir> list_dirs(QString const& path) {
    return list_dirs(QDir(path));
}

bool point_file_size_ok(QFile const& file) {
    if (file.size() <= max_point_file_size)
        return true;
    qWarning() << "W: skipping oversized file" << file.fileName() << "of" << file.size() << "bytes";
    return false;
}

QString child_path(QString const& dir_path, QString const& name) {
    return QStringLiteral("%1/%2").arg(dir_path).arg(name);
}

QString settings_path(QDir const& dir) {
    return QStringLiteral("%1/%2.ini").arg(dir.path()).arg(dir.dirName());
}
