#ifndef TESTS_COORDINATES_PROJ_ORACLE_H
#define TESTS_COORDINATES_PROJ_ORACLE_H

#include <proj.h>

#include <memory>
#include <string>

// A PROJ operation, the independent reference for the conversions under test. Definitions are
// PROJ strings; geographic input is in degrees, longitude first.
class ProjOracle {
public:
    explicit ProjOracle(std::string const& definition)
        : operation(proj_create(PJ_DEFAULT_CTX, ("+proj=pipeline +step +proj=unitconvert "
                                                 "+xy_in=deg +xy_out=rad +step " +
                                                 definition)
                                                    .c_str()),
                    &proj_destroy) {}

    bool valid() const { return operation != nullptr; }
    PJ_COORD forward(double a, double b, double c = 0.0) const {
        return proj_trans(operation.get(), PJ_FWD, proj_coord(a, b, c, 0.0));
    }

private:
    std::unique_ptr<PJ, decltype(&proj_destroy)> operation;
};

#endif
