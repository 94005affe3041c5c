#include "install/speedtext.h"

#include <limits>

static_assert(std::numeric_limits<double>::is_iec559, "a division by zero must give infinity");

QString speedText(qint64 bytesReceived, qint64 elapsedMilliseconds)
{
    constexpr double kilo = 1024.0;
    constexpr double mega = 1024.0 * 1024.0;

    // Nothing received in no time would be no number at all; it reads as no speed.
    double speed = bytesReceived == 0 ? 0.0
                                      : static_cast<double>(bytesReceived) * 1000.0 /
                                            static_cast<double>(elapsedMilliseconds);
    QString unit;
    if (speed < kilo) {
        unit = QStringLiteral("bytes/sec");
    } else if (speed < mega) {
        speed /= kilo;
        unit = QStringLiteral("kB/s");
    } else {
        speed /= mega;
        unit = QStringLiteral("MB/s");
    }
    return QStringLiteral("%1 %2").arg(speed, 3, 'f', 1).arg(unit);
}
