#pragma once
// The display's data tree as the tool sees it: fixed names, and the listing
// of sub-directories that every importer shares.

#include <QDir>
#include <QFile>
#include <QList>
#include <QString>

namespace data_tree {

// Top level below DATADIR.
inline QString const taskdata = QStringLiteral("taskdata");
inline QString const clients = QStringLiteral("Clients");
inline QString const products = QStringLiteral("Products");
inline QString const mixtures = QStringLiteral("ProductMixtures");

// Below a field.
inline QString const boundaries = QStringLiteral("Boundaries");
inline QString const zones = QStringLiteral("Zones");
inline QString const ab_lines = QStringLiteral("ABLines");
inline QString const curves = QStringLiteral("Curves");
inline QString const pivots = QStringLiteral("Pivots");
inline QString const project_lines = QStringLiteral("ProjectLines");
inline QString const optimal_lines = QStringLiteral("OptimalLines");

// File suffixes, with the dot.
inline QString const ini_suffix = QStringLiteral(".ini");
inline QString const crv_suffix = QStringLiteral(".crv");
inline QString const shp_suffix = QStringLiteral(".shp");
inline QString const dbf_suffix = QStringLiteral(".dbf");
inline QString const bdy_suffix = QStringLiteral(".bdy");

// Fixed files relative to a field and to a line directory.
inline QString const flag_points_file = QStringLiteral("/flagpoints.ini");
inline QString const tramline_file = QStringLiteral("Tramline/Tramline.ini");

} // namespace data_tree

// The entries of `dir` that `filters` select, sorted by their decoded names
// (decoded_file_name) ignoring case. Nothing for a directory that is missing
// or unreadable.
QFileInfoList list_entries(QDir const& dir, QDir::Filters filters);

// The sub-directories of `dir` (not "." and "..", not hidden ones; links to
// directories count), in the order of list_entries.
QList<QDir> list_dirs(QDir const& dir);
QList<QDir> list_dirs(QString const& path);

// The name of the item that `dir` holds, for its element: the directory's
// name, decoded as decoded_file_name does. A name that is not UTF-8 gives a
// warning that shows it as decoded, at each call.
QString item_name(QDir const& dir);

// The largest .crv or .bdy file that is read: 64 MiB, eight million curve
// points or vertices, far beyond what a display records. A larger one is
// broken or hostile, and reading it would take minutes and gigabytes.
constexpr qint64 max_point_file_size = qint64(64) << 20;
// True when the open `file` is within max_point_file_size; otherwise false,
// with a warning naming the file and its size.
bool point_file_size_ok(QFile const& file);

// "%1/%2": the path of `name` inside `dir_path`.
QString child_path(QString const& dir_path, QString const& name);
// "%1/%2.ini": the settings file of an item directory, named like it.
QString settings_path(QDir const& dir);
