#include "driver/run.h"

#include "clients/client_import.h"
#include "driver/data_tree.h"
#include "driver/file_names.h"
#include "driver/report.h"
#include "products/mixture_import.h"
#include "products/product_import.h"
#include "taskdata/store.h"

#include <csignal>
#include <cstdlib>

namespace {

struct Paths {
    QString output_dir = QStringLiteral(".");
    QString data_dir;
};

// [-p] [-m] [-s] [-O OUTPUT] DATADIR, options before DATADIR. Only the second
// byte of an option counts ("-pxyz" is "-p"); anything else ends in usage().
Paths parse_arguments(int argc, char** argv) {
    Paths paths;
    int position = 1;
    for (;;) {
        if (position >= argc)
            usage();
        char const* argument = argv[position];
        if (argument[0] == '-') {
            switch (argument[1]) {
            case 'p':
                progress_state.enabled = true;
                break;
            case 'm':
                merge_existing = true;
                break;
            case 's':
                ignore_existing = true;
                break;
            case 'O':
                if (position + 1 >= argc)
                    usage();
                paths.output_dir = QString::fromUtf8(argv[++position]);
                break;
            default:
                usage();
            }
            ++position;
        } else {
            if (position != argc - 1)
                usage();
            paths.data_dir = QString::fromUtf8(argument);
            return paths;
        }
    }
}

// Fields three levels below Clients, whatever their names, plus products and
// mixtures.
int count_items(QString const& clients_dir, QString const& products_dir,
                QString const& mixtures_dir) {
    int total = 0;
    for (QDir const& client : list_dirs(clients_dir))
        for (QDir const& farm : list_dirs(client))
            total += list_dirs(farm).size();
    total += list_dirs(products_dir).size();
    total += list_dirs(mixtures_dir).size();
    return total;
}

} // namespace

void run(int argc, char** argv) {
    program_name = argv[0];
    keep_file_name_bytes();
    // A file size limit (ulimit -f) must make a write fail, so that the save
    // reports it and leaves the former set, rather than kill the process in
    // the middle of it.
    std::signal(SIGXFSZ, SIG_IGN);
    Paths const paths = parse_arguments(argc, argv);

    QString const taskdata_dir = child_path(paths.data_dir, data_tree::taskdata);
    QString const clients_dir = child_path(paths.data_dir, data_tree::clients);
    QString const products_dir = child_path(paths.data_dir, data_tree::products);
    QString const mixtures_dir = child_path(paths.data_dir, data_tree::mixtures);

    if (!QDir(paths.output_dir).mkpath(QStringLiteral(".")))
        fatal_error(QStringLiteral("could not create directory %1").arg(paths.output_dir));

    QString const load_error =
        load_task_data(ignore_existing ? QString() : taskdata_dir, paths.output_dir);
    if (!load_error.isEmpty())
        fatal_error(load_error);

    progress_state.total = count_items(clients_dir, products_dir, mixtures_dir);
    if (progress_state.total <= 0)
        std::exit(0);
    if (progress_state.enabled)
        print_progress();

    import_clients(clients_dir);
    // Listed afresh, not taken from the count; mixtures come last, for they
    // find their ingredients among the products.
    for (QDir const& product_dir : list_dirs(products_dir))
        import_product(product_dir);
    for (QDir const& mixture_dir : list_dirs(mixtures_dir))
        import_mixture(mixture_dir);

    QString const save_error = save_task_data();
    if (!save_error.isEmpty())
        fatal_error(save_error);
    std::exit(0);
}
