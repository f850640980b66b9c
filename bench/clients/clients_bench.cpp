// The import of clients, farms, fields, products and mixtures on a large
// generated display tree: 100 clients x 20 farms x 10 fields, 5,000 products
// and 1,000 mixtures of 10 ingredients each, and the same tree cut to a
// quarter (25 clients, 1,250 products, 250 mixtures). Each tree is imported
// twice, in the order of a run (count, load, clients, products, mixtures,
// save): onto an empty set, then with -m onto the set the first pass saved,
// so that every client, farm and field is found again. Each pass is repeated
// and the fastest kept. Prints the rate of each phase and how the time grows
// from the quarter to the whole tree.

#include "clients/client_import.h"
#include "driver/data_tree.h"
#include "driver/report.h"
#include "products/mixture_import.h"
#include "products/product_import.h"
#include "taskdata/store.h"

#include "bench_support/machine.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QUuid>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <string>

namespace {

using Clock = std::chrono::steady_clock;

struct TreeSize {
    int clients;
    int farms_per_client;
    int fields_per_farm;
    int products;
    int mixtures;
    int ingredients_per_mixture;

    int fields() const { return clients * farms_per_client * fields_per_farm; }
};

TreeSize const whole{100, 20, 10, 5000, 1000, 10};
int const repeats = 5;
TreeSize const quarter{25, 20, 10, 1250, 250, 10};

double seconds_since(Clock::time_point start) {
    return std::chrono::duration<double>(Clock::now() - start).count();
}

void write_text(QString const& path, QString const& text) {
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(text.toUtf8()) < 0) {
        std::fprintf(stderr, "cannot write %s\n", qPrintable(path));
        std::exit(1);
    }
}

void make_dir(QString const& path) {
    if (!QDir().mkpath(path)) {
        std::fprintf(stderr, "cannot create %s\n", qPrintable(path));
        std::exit(1);
    }
}

QUuid product_uuid(int index) {
    return QUuid::createUuidV5(QUuid(), QStringLiteral("product %1").arg(index));
}

// Product types cycle through 0 to 4. Type 2 products carry the fixed identity
// instead of their file's, so mixtures name them by that.
int product_type(int index) {
    return index % 5;
}

QUuid identity_of(int product) {
    return product_type(product) == 2 ? fixed_product_uuid : product_uuid(product);
}

void generate_tree(QString const& root, TreeSize const& size) {
    for (int client = 0; client < size.clients; ++client)
        for (int farm = 0; farm < size.farms_per_client; ++farm)
            for (int field = 0; field < size.fields_per_farm; ++field)
                make_dir(QStringLiteral("%1/Clients/Client %2/Farm %3/Field %4")
                             .arg(root)
                             .arg(client, 3, 10, QLatin1Char('0'))
                             .arg(farm, 2, 10, QLatin1Char('0'))
                             .arg(field, 2, 10, QLatin1Char('0')));
    for (int product = 0; product < size.products; ++product) {
        QString const name = QStringLiteral("Product %1").arg(product, 4, 10, QLatin1Char('0'));
        QString const dir = QStringLiteral("%1/Products/%2").arg(root, name);
        make_dir(dir);
        write_text(QStringLiteral("%1/%2.ini").arg(dir, name),
                   QStringLiteral("[Default]\nType=%1\nDensity=%2\nUID=%3\nRatePreset1=%4\n"
                                  "RatePreset2=%5\nRateInc=0.5\n")
                       .arg(product_type(product))
                       .arg(0.6 + 0.001 * product)
                       .arg(product_uuid(product).toString())
                       .arg(100 + product % 50)
                       .arg(120 + product % 50));
    }
    // Ingredients spread over all products, so that a search in list order
    // walks half the list on average.
    std::mt19937 random(20240611);
    std::uniform_int_distribution<int> pick(0, size.products - 1);
    for (int mixture = 0; mixture < size.mixtures; ++mixture) {
        QString const name = QStringLiteral("Mixture %1").arg(mixture, 4, 10, QLatin1Char('0'));
        QString const dir = QStringLiteral("%1/ProductMixtures/%2").arg(root, name);
        make_dir(dir);
        QStringList rates;
        for (int i = 0; i < size.ingredients_per_mixture; ++i)
            rates << QStringLiteral("%1:%2").arg(identity_of(pick(random)).toString()).arg(i + 1);
        write_text(QStringLiteral("%1/%2.ini").arg(dir, name),
                   QStringLiteral("UID=%1\nProductRates=%2\nRatePreset1=200\nRatePreset2=250\n"
                                  "RateInc=10\n")
                       .arg(QUuid::createUuidV5(QUuid(), name).toString(),
                            rates.join(QStringLiteral(", "))));
    }
}

struct Pass {
    double count = 0.0; // listing the tree for the progress total
    double load = 0.0;
    double clients = 0.0;
    double products = 0.0;
    double mixtures = 0.0;
    double save = 0.0;

    double total() const { return count + load + clients + products + mixtures + save; }
};

int count_items(QString const& data) {
    int total = 0;
    for (QDir const& client : list_dirs(child_path(data, data_tree::clients)))
        for (QDir const& farm : list_dirs(client))
            total += list_dirs(farm).size();
    total += list_dirs(child_path(data, data_tree::products)).size();
    total += list_dirs(child_path(data, data_tree::mixtures)).size();
    return total;
}

// One run's import of `data` onto the set in `input` (none when empty),
// saved into `output`, as the tool does it.
Pass run_once(QString const& data, QString const& input, QString const& output, bool merge) {
    Pass pass;
    merge_existing = merge;
    progress_state = ProgressState();

    auto start = Clock::now();
    progress_state.total = count_items(data);
    pass.count = seconds_since(start);

    make_dir(output);
    start = Clock::now();
    QString const load_error = load_task_data(input, output);
    pass.load = seconds_since(start);
    if (!load_error.isEmpty()) {
        std::fprintf(stderr, "%s\n", qPrintable(load_error));
        std::exit(1);
    }

    start = Clock::now();
    import_clients(child_path(data, data_tree::clients));
    pass.clients = seconds_since(start);

    start = Clock::now();
    for (QDir const& dir : list_dirs(child_path(data, data_tree::products)))
        import_product(dir);
    pass.products = seconds_since(start);

    start = Clock::now();
    for (QDir const& dir : list_dirs(child_path(data, data_tree::mixtures)))
        import_mixture(dir);
    pass.mixtures = seconds_since(start);

    start = Clock::now();
    QString const save_error = save_task_data();
    pass.save = seconds_since(start);
    if (!save_error.isEmpty()) {
        std::fprintf(stderr, "%s\n", qPrintable(save_error));
        std::exit(1);
    }
    if (progress_state.current != progress_state.total) {
        std::fprintf(stderr, "only %d of %d items were imported\n", progress_state.current,
                     progress_state.total);
        std::exit(1);
    }
    return pass;
}

// The fastest of several runs, by their total.
Pass run_pass(QString const& data, QString const& input, QString const& output, bool merge) {
    Pass fastest = run_once(data, input, output, merge);
    for (int run = 1; run < repeats; ++run) {
        Pass const pass = run_once(data, input, output, merge);
        if (pass.total() < fastest.total())
            fastest = pass;
    }
    return fastest;
}

void report(char const* what, TreeSize const& size, Pass const& pass) {
    std::printf("%-34s %8.0f fields/s %8.0f products/s %8.0f mixtures/s   "
                "count %.2f  load %.2f  clients %.2f  products %.2f  mixtures %.2f  save %.2f  "
                "total %.2f s\n",
                what, size.fields() / pass.clients, size.products / pass.products,
                size.mixtures / pass.mixtures, pass.count, pass.load, pass.clients, pass.products,
                pass.mixtures, pass.save, pass.total());
}

struct Result {
    Pass fresh;
    Pass merged;
};

Result measure(char const* name, TreeSize const& size, QString const& scratch) {
    QString const data = QStringLiteral("%1/%2/data").arg(scratch, QLatin1String(name));
    auto const start = Clock::now();
    generate_tree(data, size);
    double const generating = seconds_since(start);
    Result result;
    QString const first = QStringLiteral("%1/%2/first").arg(scratch, QLatin1String(name));
    QString const second = QStringLiteral("%1/%2/second").arg(scratch, QLatin1String(name));
    result.fresh = run_pass(data, QString(), first, false);
    result.merged = run_pass(data, first, second, true);
    std::printf("%s tree: %d fields, %d products, %d mixtures x %d ingredients "
                "(generated in %.1f s); fastest of %d runs\n",
                name, size.fields(), size.products, size.mixtures, size.ingredients_per_mixture,
                generating, repeats);
    report("  onto an empty set", size, result.fresh);
    report("  with -m onto the first pass's set", size, result.merged);
    return result;
}

// Time of the whole tree over four times the quarter's: 1.0 is linear.
void report_growth(char const* what, double quarter_seconds, double whole_seconds) {
    std::printf("  %-34s %.2f x linear\n", what, whole_seconds / (4.0 * quarter_seconds));
}

} // namespace

int main() {
    std::printf("%s; one thread\n", bench_support::machine_line().c_str());
    QTemporaryDir scratch;
    if (!scratch.isValid()) {
        std::fprintf(stderr, "cannot create a temporary directory\n");
        return 1;
    }
    Result const small = measure("quarter", quarter, scratch.path());
    Result const large = measure("whole", whole, scratch.path());

    std::printf("growth from the quarter to the whole tree:\n");
    report_growth("onto an empty set, whole run", small.fresh.total(), large.fresh.total());
    report_growth("onto an empty set, clients", small.fresh.clients, large.fresh.clients);
    report_growth("onto an empty set, mixtures", small.fresh.mixtures, large.fresh.mixtures);
    report_growth("with -m, whole run", small.merged.total(), large.merged.total());
    report_growth("with -m, clients", small.merged.clients, large.merged.clients);
    report_growth("with -m, mixtures", small.merged.mixtures, large.merged.mixtures);
    return 0;
}
