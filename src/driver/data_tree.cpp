#include "driver/data_tree.h"

#include "driver/file_names.h"

#include <QDebug>

#include <algorithm>
#include <tuple>
#include <vector>

QFileInfoList list_entries(QDir const& dir, QDir::Filters filters) {
    // By name ignoring case, as QDir sorts, but on the decoded names; equal
    // ones in a fixed order.
    struct Entry {
        QString folded;
        QString decoded;
        QString name;
        QFileInfo info;
    };
    std::vector<Entry> entries;
    for (QFileInfo const& info : dir.entryInfoList(filters, QDir::Unsorted)) {
        QString const decoded = decoded_file_name(info.fileName());
        entries.push_back({decoded.toLower(), decoded, info.fileName(), info});
    }
    std::sort(entries.begin(), entries.end(), [](Entry const& a, Entry const& b) {
        return std::tie(a.folded, a.decoded, a.name) < std::tie(b.folded, b.decoded, b.name);
    });
    QFileInfoList sorted;
    sorted.reserve(static_cast<int>(entries.size()));
    for (Entry const& entry : entries)
        sorted.append(entry.info);
    return sorted;
}

QList<QDir> list_dirs(QDir const& dir) {
    QList<QDir> dirs;
    QFileInfoList const entries = list_entries(dir, QDir::Dirs | QDir::NoDot | QDir::NoDotDot);
    dirs.reserve(entries.size());
    for (QFileInfo const& entry : entries)
        dirs.append(QDir(entry.filePath()));
    return dirs;
}

QList<QDir> list_dirs(QString const& path) {
    return list_dirs(QDir(path));
}

QString item_name(QDir const& dir) {
    QString const name = dir.dirName();
    QString const decoded = decoded_file_name(name);
    if (decoded != name)
        qWarning() << "W: name is not UTF-8, read as Windows-1252:" << decoded;
    return decoded;
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
