#include "check/pictures.h"

#include "base/documentlimits.h"
#include "check/webpage.h"
#include "fetch/pictureparts.h"
#include "fetch/picturesize.h"

#include <QBuffer>
#include <QImage>
#include <QImageReader>
#include <QSet>

#include <algorithm>
#include <array>

namespace
{
constexpr std::array<QSize, DocumentLimits::tiles> tileSizes{QSize{559, 319}, QSize{276, 157},
                                                             QSize{276, 157}, QSize{138, 75},
                                                             QSize{138, 75},  QSize{138, 75}};
// Below that nobody sees by how much a picture is stretched: it is a plain ground, or a dot.
constexpr int smallestShape = 32;
// By how much a picture may be wider or higher than its place, before one sees it.
constexpr double shapeTolerance = 1.15;
// More than that many times as wide and as high as its place a picture costs time at each start,
// and shows no more: the largest screens show the window four times as large.
constexpr int usefulTimes = 4;
constexpr int usefulBytes = 1024 * 1024;

Finding isStretched(const QSize &size, const QSize &shown, const Place &place, const QString &named)
{
    return warningAt(place, "picture-shape",
                     QStringLiteral("%1 has %2 x %3 pixels, and its place %4 x %5: it is stretched "
                                    "to that, and looks distorted")
                         .arg(named)
                         .arg(size.width())
                         .arg(size.height())
                         .arg(shown.width())
                         .arg(shown.height()),
                     QStringLiteral("if it is the right picture, cut it to the proportions of its "
                                    "place, best to %1 x %2")
                         .arg(2 * shown.width())
                         .arg(2 * shown.height()));
}

bool hasOtherShape(const QSize &size, const QSize &shown)
{
    const double ratio = double(size.width()) * shown.height() / size.height() / shown.width();
    return std::min(size.width(), size.height()) >= smallestShape &&
           (ratio > shapeTolerance || ratio < 1 / shapeTolerance);
}

bool isAnimated(QByteArray bytes)
{
    // A PNG file says it before its first data.
    if (bytes.startsWith("\x89PNG")) {
        const int control = bytes.indexOf("acTL");
        return control >= 0 && control < bytes.indexOf("IDAT");
    }
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::ReadOnly);
    QImageReader reader(&buffer);
    return reader.supportsAnimation() && reader.imageCount() > 1;
}

bool isJpeg(const QByteArray &bytes)
{
    return bytes.startsWith("\xFF\xD8\xFF");
}

// Where the first scan of a JPEG file begins, behind all that may hold other pictures; -1 when
// there is none.
int firstScan(const QByteArray &bytes)
{
    constexpr int markerLength = 2;
    constexpr uchar startOfScan = 0xDA;
    int at = markerLength;
    while (at + 2 * markerLength <= bytes.size() && uchar(bytes.at(at)) == 0xFF) {
        if (uchar(bytes.at(at + 1)) == startOfScan) {
            return at;
        }
        at += markerLength + (uchar(bytes.at(at + 2)) << 8) + uchar(bytes.at(at + 3));
    }
    return -1;
}

// The decoder takes what there is, and leaves the rest grey or clear.
bool isCut(const QByteArray &bytes)
{
    return (isJpeg(bytes) && bytes.lastIndexOf("\xFF\xD9") < firstScan(bytes)) ||
           breaksOffInGif(bytes);
}

// Cameras store a picture as they were held, and say how to turn it, which the launcher does not.
bool isTurned(QByteArray bytes)
{
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::ReadOnly);
    return QImageReader(&buffer).transformation() != QImageIOHandler::TransformationNone;
}

// Whether there is nothing to be seen in it at all.
bool isClear(const QImage &picture)
{
    constexpr int faintest = 8;
    if (!picture.hasAlphaChannel()) {
        return false;
    }
    const QImage alpha = picture.convertToFormat(QImage::Format_Alpha8);
    for (int y = 0; y < alpha.height(); ++y) {
        const uchar *const line = alpha.constScanLine(y);
        if (std::any_of(line, line + alpha.width(),
                        [](uchar pixel) { return pixel >= faintest; })) {
            return false;
        }
    }
    return true;
}

// What the picture itself shows.
void checkContent(const QByteArray &bytes, const QImage &picture, const Place &place,
                  const QString &named, Findings &findings)
{
    if (isClear(picture)) {
        findings << warningAt(place, "picture-transparent",
                              named + QStringLiteral(" is transparent all over: players see "
                                                     "nothing of it"),
                              QStringLiteral("publish the picture that is to be seen"));
    }
    if (isTurned(bytes)) {
        findings << warningAt(place, "picture-turned",
                              named + QStringLiteral(" is stored lying or mirrored, with a mark "
                                                     "how to turn it, which the launcher does not "
                                                     "follow: players see it as it is stored"),
                              QStringLiteral("save it anew as it is to be seen, with a program "
                                             "that edits pictures"));
    }
}

// A kind of picture that operators have at hand, and the launcher does not decode; empty when it is
// none of them.
QString unknownKind(const QByteArray &bytes)
{
    if (bytes.startsWith("RIFF") && bytes.mid(8, 4) == "WEBP") {
        return QStringLiteral("WebP");
    }
    if (bytes.mid(4, 4) == "ftyp") {
        static const QSet<QByteArray> stills{"avif", "avis", "heic", "heix", "mif1"};
        return stills.contains(bytes.mid(8, 4)) ? QStringLiteral("AVIF or HEIC")
                                                : QStringLiteral("a film");
    }
    if (bytes.startsWith("8BPS")) {
        return QStringLiteral("a file of layers (PSD)");
    }
    constexpr int enough = 1024;
    return bytes.startsWith('<') && bytes.left(enough).contains("<svg") ? QStringLiteral("SVG")
                                                                        : QString();
}

// What the launcher decodes nothing of.
Finding isNotShown(const QByteArray &bytes, const Place &place, const QString &named)
{
    const QString loss = QStringLiteral(": players see an empty place");
    const QString kind = unknownKind(bytes);
    if (isWebPage(bytes)) {
        return errorAt(place, "not-a-picture", named + QStringLiteral(" is a web page") + loss,
                       QStringLiteral("name the address of the file itself, not that of a page "
                                      "about it or behind a login"));
    }
    if (!kind.isEmpty()) {
        return errorAt(
            place, "not-a-picture",
            named + QStringLiteral(" is %1, which the launcher does not know").arg(kind) + loss,
            QStringLiteral("save it as PNG or JPEG; another name alone changes nothing"));
    }
    if (bytes.startsWith("\x89PNG") || isJpeg(bytes) || bytes.startsWith("GIF8")) {
        return errorAt(place, "not-a-picture",
                       named + QStringLiteral(" is damaged, or breaks off") + loss,
                       QStringLiteral("upload it again; if it is whole there, save it anew"));
    }
    return errorAt(place, "not-a-picture", named + QStringLiteral(" is no picture") + loss,
                   QStringLiteral("publish a PNG or JPEG file"));
}
} // namespace

QSize shownSizeOfLogo()
{
    return {320, 150};
}

QSize shownSizeOfSlide()
{
    return {325, 325};
}

QSize shownSizeOfTile(int index)
{
    return tileSizes.at(static_cast<std::size_t>(index));
}

Findings findingsOfPicture(const QByteArray &bytes, const QSize &shown, const Place &place,
                           const QString &named)
{
    if (!isPictureOfReasonableSize(bytes)) {
        return {errorAt(place, "picture-too-large",
                        named + QStringLiteral(" is too large or takes too long to decode: players "
                                               "see an empty place"),
                        QStringLiteral("publish no more than %1 million pixels, saved anew by a "
                                       "common program")
                            .arg(largestPicture / 1000000))};
    }
    const QImage picture = decodedPicture(bytes);
    // Where the system has more decoders than players get, it is decoded here.
    if (picture.isNull() || !unknownKind(bytes).isEmpty()) {
        return {isNotShown(bytes, place, named)};
    }
    Findings findings;
    if (isCut(bytes)) {
        findings << errorAt(place, "picture-cut",
                            named + QStringLiteral(" breaks off: players see its beginning, and "
                                                   "nothing or grey of the rest"),
                            QStringLiteral("upload it again"));
    }
    checkContent(bytes, picture, place, named, findings);
    if (hasOtherShape(picture.size(), shown)) {
        findings << isStretched(picture.size(), shown, place, named);
    }
    if (isAnimated(bytes)) {
        findings << warningAt(place, "picture-animated",
                              named + QStringLiteral(" is animated: players see its first picture, "
                                                     "which does not move"),
                              QStringLiteral("publish the one picture that is to be seen"));
    }
    const bool isLarge = picture.width() > usefulTimes * shown.width() &&
                         picture.height() > usefulTimes * shown.height();
    if (isLarge || bytes.size() > usefulBytes) {
        findings << warningAt(place, "picture-oversized",
                              QStringLiteral("%1 has %2 x %3 pixels and %4 kB, for a place of %5 x "
                                             "%6: every start fetches and decodes them")
                                  .arg(named)
                                  .arg(picture.width())
                                  .arg(picture.height())
                                  .arg(bytes.size() / 1000)
                                  .arg(shown.width())
                                  .arg(shown.height()),
                              QStringLiteral("publish it twice as wide and high as its place, "
                                             "below a few hundred kB"));
    }
    return findings;
}
