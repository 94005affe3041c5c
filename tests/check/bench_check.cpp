// How long the checker takes for a document of many entries, beside a bare pass of the toolkit's
// reader over the same text. A benchmark, not a test: it prints figures and judges nothing.

#include "base/console.h"
#include "check/documentcontent.h"
#include "check/output.h"
#include "check/playersview.h"
#include "check/report.h"
#include "check/rules.h"

#include <QXmlStreamReader>

#include <algorithm>
#include <ctime>

namespace
{
constexpr int entries = 15000;
constexpr int rounds = 7;

// Half of the servers have two clients, every tenth entry is a tester's, every hundredth is faulty.
QByteArray documentOfManyEntries()
{
    QString text = QStringLiteral("<launcher version=\"1\">\n");
    for (int i = 0; i < entries; ++i) {
        text +=
            QStringLiteral("  <client server=\"Server %1\" name=\"%2\" version=\"%3\" "
                           "url=\"https://files.example/%4.zip\"%5/>\n")
                .arg(QString::number(i / 2),
                     i % 2 == 0 ? QStringLiteral("Official") : QStringLiteral("Beta"),
                     i % 100 == 0 ? QStringLiteral("22.0") : QStringLiteral("1.2.3"),
                     QString::number(i),
                     i % 10 == 1
                         ? QStringLiteral(" auth=\"%1\"").arg(authCodeSum(QStringLiteral("code")))
                         : QString());
    }
    return (text + QStringLiteral("</launcher>\n")).toUtf8();
}

// Seconds of processor time, the best of some rounds.
template<typename Function>
double secondsOf(Function function)
{
    double best = 1e9;
    for (int round = 0; round < rounds; ++round) {
        const std::clock_t begin = std::clock();
        function();
        best = std::min(best, double(std::clock() - begin) / CLOCKS_PER_SEC);
    }
    return best;
}

QString milliseconds(double seconds)
{
    return QString::number(seconds * 1000, 'f', 1) + QStringLiteral(" ms");
}
} // namespace

int main()
{
    const QByteArray body = documentOfManyEntries();
    int found = 0;
    int printed = 0;
    const double bare = secondsOf([&body] {
        QXmlStreamReader reader(QString::fromUtf8(body));
        while (!reader.atEnd()) {
            (void)reader.readNext();
        }
    });
    const double reading = secondsOf([&body] { (void)readContent(body, {}); });
    const DocumentContent before = readContent(body, {});
    const auto check = [&](const DocumentContent *previous) {
        const DocumentContent content = readContent(body, {});
        Report report;
        report.asked.document = QStringLiteral("launcher.xml");
        report.view = playersViewOf(content);
        report.findings = findingsOf(content, previous);
        found = report.findings.size();
        printed = textOutput(report, Colours::None).size();
    };
    const double all = secondsOf([&check] { check(nullptr); });
    const double compared = secondsOf([&] { check(&before); });
    Console::out(QStringLiteral("%1 entries, %2 findings, %3 characters of output\n")
                     .arg(entries)
                     .arg(found)
                     .arg(printed));
    Console::out(QStringLiteral("bare reader        ") + milliseconds(bare) + QLatin1Char('\n'));
    Console::out(QStringLiteral("reading with places ") + milliseconds(reading) +
                 QLatin1Char('\n'));
    Console::out(QStringLiteral("the whole check    ") + milliseconds(all) +
                 QStringLiteral(", %1 times the bare reader\n").arg(all / bare, 0, 'f', 1));
    Console::out(QStringLiteral("beside a previous one ") + milliseconds(compared) +
                 QLatin1Char('\n'));
    return 0;
}
