// What finding the installed version costs beside the toolkit's bare listing of the same folder:
// bench_versions ENTRIES ROUNDS, in an empty working folder that it fills.

#include "bench/measuring.h"
#include "window/testform.h"

#include <QApplication>
#include <QDir>

namespace
{
void fill(const QString &folder, int entries)
{
    if (!QDir::current().mkpath(folder)) {
        qFatal("the folder cannot be made");
    }
    const QDir parent(folder);
    for (int i = 0; i < entries; ++i) {
        // In no order, as a listing finds them.
        const int shuffled = static_cast<int>((i * 7919LL) % entries);
        const QString version = QStringLiteral("%1.%2.%3")
                                    .arg(shuffled / 10000 + 1)
                                    .arg(shuffled / 100 % 100)
                                    .arg(shuffled % 100);
        if (!parent.exists(version) && !parent.mkdir(version)) {
            qFatal("a version's folder cannot be made");
        }
    }
}
} // namespace

int main(int argc, char *argv[])
{
    Measuring::silenceConsole();
    const QApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    const int entries = arguments.at(1).toInt();
    const int rounds = arguments.at(2).toInt();
    const QString folder = QStringLiteral("Cinderfall/Official");
    fill(folder, entries);

    testform window;
    window.selectedClientInfo = ClientInfo(QStringLiteral("1.0.0"), {}, QStringLiteral("Official"),
                                           QStringLiteral("Cinderfall"));
    const int repeats = std::max(1, 5000 / entries);
    int listed = 0;
    QString installed;
    std::vector<double> ours;
    std::vector<double> bare;
    for (int round = -1; round < rounds; ++round) {
        const auto runOurs = round < 0 ? Measuring::warmUp : Measuring::ours;
        const auto runBare = round < 0 ? Measuring::warmUp : Measuring::bare;
        const double start = Measuring::threadMilliseconds();
        for (int i = 0; i < repeats; ++i) {
            runOurs([&] { installed = window.getInstalledVersion(); });
        }
        const double middle = Measuring::threadMilliseconds();
        for (int i = 0; i < repeats; ++i) {
            runBare([&] { listed = QDir(folder).entryList().size(); });
        }
        const double end = Measuring::threadMilliseconds();
        // The first round finds the folder cold.
        if (round >= 0) {
            ours.push_back((middle - start) / repeats);
            bare.push_back((end - middle) / repeats);
        }
    }
    Measuring::report({{QStringLiteral("ours"), Measuring::median(ours)},
                       {QStringLiteral("bare"), Measuring::median(bare)},
                       {QStringLiteral("listed"), listed - 2},
                       {QStringLiteral("installed"), installed}});
    Measuring::endHere();
}
