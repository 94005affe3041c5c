// What reading and applying a launcher document costs beside a bare pass of the toolkit's reader
// over the same bytes: bench_document ENTRIES ROUNDS. The entries lie on four servers. Writes
// offline.txt into the working folder, as the product does.

#include "bench/measuring.h"
#include "fetch/filedownloader.h"
#include "fetch/imagedownloader.h"
#include "window/testform.h"

#include <QApplication>
#include <QTest>
#include <QXmlStreamReader>

namespace
{
QByteArray documentOf(int entries)
{
    QByteArray text = "<launcher version=\"1\">\n";
    for (int i = 0; i < entries; ++i) {
        const QByteArray number = QByteArray::number(i / 4);
        text += "  <client server=\"Server " + QByteArray::number(i % 4) + "\" name=\"Kind " +
                number + "\" version=\"1.2." + number + "\" url=\"https://files.example/clients/" +
                QByteArray::number(i) + ".zip\"/>\n";
    }
    return text + "</launcher>\n";
}

void readBare(const QByteArray &document)
{
    QXmlStreamReader reader(document);
    while (!reader.atEnd()) {
        (void)reader.readNext();
    }
    if (reader.hasError()) {
        qFatal("the document is not XML");
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
    testform window;
    const auto apply = [&window](const QByteArray &document) {
        window.infoDownloader->m_DownloadedData = document;
        window.loadInfo(false);
    };

    // What is done once whatever the number of entries is told apart: the panel's columns and the
    // requests for pictures, none of which exist here, so that they end at once.
    const QByteArray document = documentOf(entries);
    const double begin = Measuring::milliseconds();
    apply(documentOf(4));
    const double once = Measuring::milliseconds() - begin;
    const auto ended = [&window] {
        const auto isOver = [](const News &item) { return item.imageDownloader->isDownloaded; };
        return std::all_of(std::begin(window.homeNews), std::end(window.homeNews), isOver) &&
               std::all_of(std::begin(window.news), std::end(window.news), isOver);
    };
    if (!QTest::qWaitFor(ended, Measuring::patience)) {
        qFatal("the requests for pictures do not end");
    }

    // Long enough for the clock; small documents are read several times.
    const int repeats = std::max(1, 5000 / entries);
    std::vector<double> ours;
    std::vector<double> bare;
    for (int round = -1; round < rounds; ++round) {
        const auto runOurs = round < 0 ? Measuring::warmUp : Measuring::ours;
        const auto runBare = round < 0 ? Measuring::warmUp : Measuring::bare;
        double sum = 0;
        for (int i = 0; i < repeats; ++i) {
            window.clientInfos.clear();
            const double start = Measuring::threadMilliseconds();
            runOurs([&] { apply(document); });
            sum += Measuring::threadMilliseconds() - start;
        }
        const double bareStart = Measuring::threadMilliseconds();
        for (int i = 0; i < repeats; ++i) {
            runBare([&] { readBare(document); });
        }
        if (round >= 0) {
            ours.push_back(sum / repeats);
            bare.push_back((Measuring::threadMilliseconds() - bareStart) / repeats);
        }
    }
    int read = 0;
    for (const auto &kinds : qAsConst(window.clientInfos)) {
        read += kinds.size();
    }
    Measuring::report({{QStringLiteral("ours"), Measuring::median(ours)},
                       {QStringLiteral("bare"), Measuring::median(bare)},
                       {QStringLiteral("once"), once},
                       {QStringLiteral("read"), read}});
    Measuring::endHere();
}
