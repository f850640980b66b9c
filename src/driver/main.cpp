// taskdata-migrate: turns a display's working data tree into one ISO 11783-10
// task data set.
#include "driver/run.h"

int main(int argc, char** argv) {
    run(argc, argv);
}
