// Writes a heavy display data tree for trying the tool by hand:
//   generate_display_tree [--seed N] [--scale S] DIR

#include "display_tree.h"

#include <QCoreApplication>
#include <QStringList>

#include <cstdio>
#include <stdexcept>

int main(int argc, char* argv[]) {
    QCoreApplication app(argc, argv);
    QStringList const args = app.arguments().mid(1);
    std::uint32_t seed = 1;
    double scale = 1.0;
    QString dir;
    bool ok = true;
    for (int i = 0; i < args.size() && ok; ++i) {
        if (args[i] == QLatin1String("--seed") && i + 1 < args.size())
            seed = args[++i].toUInt(&ok);
        else if (args[i] == QLatin1String("--scale") && i + 1 < args.size())
            scale = args[++i].toDouble(&ok);
        else if (dir.isEmpty() && !args[i].startsWith(QLatin1Char('-')))
            dir = args[i];
        else
            ok = false;
    }
    if (!ok || dir.isEmpty() || scale <= 0.0) {
        std::fprintf(stderr, "usage: generate_display_tree [--seed N] [--scale S] DIR\n");
        return 2;
    }
    try {
        display_tree::Counts const counts = display_tree::generate(dir, seed, scale);
        std::printf("%d clients, %d fields, %d products, %d mixtures, %lld source points, "
                    "%.1f MB\n",
                    counts.clients, counts.fields, counts.products, counts.mixtures,
                    static_cast<long long>(counts.source_points), counts.bytes / 1e6);
    } catch (std::exception const& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
    return 0;
}
