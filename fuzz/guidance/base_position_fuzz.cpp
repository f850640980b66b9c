// Any bytes as a base station's position text, parsed and made a station.
#include "fuzz_support/fuzz_support.h"
#include "guidance/base_stations.h"
#include "taskdata/store.h"

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    QByteArray const text = fuzz_support::whole_file(data, size);
    geo_position_point(parse_geo_position(text));
    geo_angle_degrees(parse_geo_angle(text));
    fuzz_support::fresh_field();
    BaseStationTable base_stations;
    int const some_station_source = 5;
    find_or_create_base_station(some_station_source, text, base_stations, task_data);
    return 0;
}
