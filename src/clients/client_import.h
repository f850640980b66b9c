#pragma once
// Clients, farms and fields: the three directory levels below Clients become
// Customer (CTR), Farm (FRM) and Partfield (PFD) elements, by position alone,
// named like their directories.

#include <QString>

// Walks `clients_dir` (the Clients directory of DATADIR) in listing order.
// Every directory gets a new element, numbered with a free number of its tag
// and linked to its parents; with -m (merge_existing) an element that the
// task data already holds under the same name and the same parents (the
// first in list order) is reused unchanged instead. Each field's contents
// are handed over to their importers, then the progress steps once per
// field. A missing or empty directory imports nothing; nothing is reported.
void import_clients(QString const& clients_dir);
