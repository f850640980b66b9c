#include "clients/field_contents.h"

using TC::Task_data::Elements::Client::Partfield;

void import_field_boundaries(QDir const& /*field_dir*/, Partfield /*partfield*/) {
    // The boundary reader and the polygon writer come here.
}

void import_flag_points(QDir const& /*field_dir*/, Partfield /*partfield*/) {
    // The flag point reader comes here.
}

void import_field_lines(QDir const& /*field_dir*/, Partfield /*partfield*/,
                        BaseStationTable& /*base_stations*/) {
    // The AB line, curve, pivot, project line and optimal line importers come here.
}
