// A task data set: TASKDATA.XML, LINKLIST.XML, GUIDLIST.XML and the external
// file CTR00001.XML, in this order, loaded as the run loads it. A set that
// loads must save, and the saved set must load again.
#include "fuzz_support/fuzz_support.h"
#include "taskdata/store.h"

#include <QDir>

#include <cstdio>
#include <cstdlib>

namespace {

void require(QString const& error, char const* step) {
    if (error.isEmpty())
        return;
    std::fprintf(stderr, "%s: %s\n", step, qPrintable(error));
    std::abort();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    QString const dir = fuzz_support::input_files(
        data, size, {"in/TASKDATA.XML", "in/LINKLIST.XML", "in/GUIDLIST.XML", "in/CTR00001.XML"});
    QString const saved_dir = dir + "/saved";
    QString const again_dir = dir + "/again";
    QDir().mkpath(saved_dir);
    QDir().mkpath(again_dir);
    if (!load_task_data(dir + "/in", saved_dir).isEmpty())
        return 0;
    require(save_task_data(), "a loaded set does not save");
    require(load_task_data(saved_dir, again_dir), "a saved set does not load");
    return 0;
}
