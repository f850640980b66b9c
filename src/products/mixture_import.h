#pragma once
// Product mixtures from the directories below ProductMixtures: each becomes a
// product of type 2 with one product relation (PRN) per ingredient. Its values
// stand in <name>/<name>.ini outside any section, unlike a product's file.

#include <QDir>

// Adds one mixture to the run's task data and steps the progress. Each entry
// "uuid:rate" of "ProductRates" names an ingredient by identity among all
// products already in the task data (earlier mixtures included, the mixture
// itself not); the rate is stored times 1000. Bad entries are skipped with
// one warning each:
//   W: bad product/rate pair in "path"      (not exactly one ':')
//   W: bad product uuid in "path"            (no identifier before ':')
//   W: could not find referenced product "uuid" in mixture "Name"
// Without the .ini file: `W: skipping empty product mixture directory "Name"`,
// no product and no progress step.
void import_mixture(QDir const& dir);
