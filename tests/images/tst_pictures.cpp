#include "info/serverpanel.h"
#include "support/relation.h"
#include "ui_testform.h"

#include <QColor>
#include <QDirIterator>
#include <QFileInfo>
#include <QIcon>
#include <QImage>
#include <QImageReader>
#include <QMainWindow>
#include <QMap>
#include <QRegularExpression>
#include <QTest>

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace
{
struct Picture {
    const char *path;
    QSize place;    // design size of where it is shown; one pixel for what nothing shows
    int detail = 2; // how many times that size it has: twice, because the window grows
};

// News replace a placeholder, and the panel's picture is dark and soft.
constexpr int once = 1;
// The toolkit draws them no larger than they are, and the window can have four times its size.
constexpr int fourTimes = 4;

const QSize nowhere(1, 1);
const QSize window(974, 571);
const QSize actionButton(196, 81);

const Picture pictures[] = {
    {"bg_new.png", window},
    {"servers_nobutton_dark.png", window, once},
    {"buttonClose.png", {25, 25}},
    {"buttonFullScreen.png", {10, 8}},
    {"buttonMinimize.png", {9, 3}},
    {"newsBig.png", {559, 319}, once},
    {"newsMedium1.png", {276, 157}, once},
    {"newsMedium2.png", {276, 157}, once},
    {"newsSmall1.png", {138, 75}, once},
    {"newsSmall2.png", {138, 75}, once},
    {"newsSmall3.png", {138, 75}, once},
    {"leftArrow.png", {12, 34}, fourTimes},
    {"rightArrow.png", {12, 34}, fourTimes},
    {"slideActive.png", {9, 9}},
    {"slidePassive.png", {9, 9}},
    {"facebook.png", {40, 40}, fourTimes},
    {"discord.png", {40, 45}, fourTimes},
    {"new_buttons/download.png", actionButton},
    {"new_buttons/download-disabled.png", actionButton},
    {"new_buttons/download-hover.png", actionButton},
    {"new_buttons/play.png", actionButton},
    {"new_buttons/play-disabled.png", actionButton},
    {"new_buttons/play-hover.png", actionButton},
    {"new_buttons/update.png", actionButton},
    {"new_buttons/update-disabled.png", actionButton},
    {"new_buttons/update-hover.png", actionButton},
    {"new_buttons/official.png", actionButton},
    {"new_buttons/official-hover.png", actionButton},
    {"new_buttons/official-disabled.png", actionButton},
    {"new_buttons/beta.png", actionButton},
    {"new_buttons/beta-hover.png", actionButton},
    {"new_buttons/beta-disabled.png", actionButton},
    {"facebookHover.png", {40, 40}},
    {"discordHover.png", {40, 45}},
    {"newsHome.png", {325, 325}},
    {"bg.png", nowhere},
    {"box.png", nowhere},
    {"buttonEmpty.png", nowhere},
    {"panel_content.png", nowhere},
    {"window_headless.png", nowhere},
    {"Beta.png", nowhere},
};

QString resource(const char *path)
{
    return QStringLiteral(":/images/") + QLatin1String(path);
}

// Mean light of the picture on black, 0 to 255, as an eye without colour weighs it.
double meanLight(const QString &path)
{
    const QImage image = QImage(path).convertToFormat(QImage::Format_ARGB32);
    double sum = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            const QRgb pixel = image.pixel(x, y);
            sum += (0.299 * qRed(pixel) + 0.587 * qGreen(pixel) + 0.114 * qBlue(pixel)) *
                   qAlpha(pixel) / 255;
        }
    }
    return sum / (image.width() * image.height());
}

// Every picture that the sheet names, commented-out ones included.
QStringList picturesNamedIn(const QString &styleSheet)
{
    static const QRegularExpression url(QStringLiteral("url\\(\\s*\"?([^\")]*)\"?\\s*\\)"));
    QStringList paths;
    for (auto match = url.globalMatch(styleSheet); match.hasNext();) {
        paths << match.next().captured(1);
    }
    return paths;
}

QMap<QString, QString> styleSheets()
{
    QMainWindow form;
    Ui::testform ui;
    ui.setupUi(&form);
    QMap<QString, QString> sheets;
    const auto widgets = form.findChildren<QWidget *>();
    for (const QWidget *widget : widgets) {
        sheets[widget->objectName()] = widget->styleSheet();
    }
    sheets[QStringLiteral("the live official button")] = ServerPanel::officialStyleSheet();
    sheets[QStringLiteral("the live beta button")] = ServerPanel::betaStyleSheet();
    return sheets;
}
} // namespace

// The pictures, as a program finds them that links the launcher and calls nothing for them.
class TestPictures : public QObject
{
    Q_OBJECT

private slots:
    void picture_data();
    void picture();
    void proportions_data();
    void proportions();
    void buttonsShowTheirState_data();
    void buttonsShowTheirState();
    void letteringHasOneSize_data();
    void letteringHasOneSize();
    void bundleHoldsNothingElse();
    void bundleIsSmall();
    void iconHasAllSizes_data();
    void iconHasAllSizes();
    void sheetNamesExistingPictures_data();
    void sheetNamesExistingPictures();
    void sheetsNameWhatTheFormShows();
};

void TestPictures::picture_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QSize>("place");
    QTest::addColumn<int>("detail");
    for (const Picture &row : pictures) {
        QTest::newRow(row.path) << resource(row.path) << row.place << row.detail;
    }
}

void TestPictures::picture()
{
    QFETCH(QString, path);
    QFETCH(QSize, place);
    QFETCH(int, detail);
    QImageReader reader(path);
    QCOMPARE(reader.format(), QByteArray("png"));
    const QImage image = reader.read();
    QVERIFY2(!image.isNull(), qPrintable(reader.errorString()));
    if (place != nowhere) {
        VERIFY_RELATION(image.width(), >=, detail * place.width());
        VERIFY_RELATION(image.height(), >=, detail * place.height());
    }
}

void TestPictures::proportions_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QSize>("place");
    for (const Picture &row : pictures) {
        if (row.place != nowhere) {
            QTest::newRow(row.path) << resource(row.path) << row.place;
        }
    }
}

// A picture is stretched over its place; it must not be seen to be.
void TestPictures::proportions()
{
    QFETCH(QString, path);
    QFETCH(QSize, place);
    const QSize size = QImageReader(path).size();
    const double stretch =
        (double(size.width()) / size.height()) / (double(place.width()) / place.height());
    QVERIFY2(std::abs(stretch - 1) < 0.02, qPrintable(QString::number(stretch)));
}

void TestPictures::buttonsShowTheirState_data()
{
    QTest::addColumn<QString>("path");
    for (const char *name : {"download", "update", "play", "official", "beta"}) {
        QTest::newRow(name) << QStringLiteral(":/images/new_buttons/") + QLatin1String(name);
    }
}

// By light alone, which everybody sees: a third brighter under the pointer, a third darker
// disabled.
void TestPictures::buttonsShowTheirState()
{
    QFETCH(QString, path);
    const double normal = meanLight(path + QStringLiteral(".png"));
    const double hover = meanLight(path + QStringLiteral("-hover.png"));
    const double disabled = meanLight(path + QStringLiteral("-disabled.png"));
    QVERIFY2(hover > 1.25 * normal, qPrintable(QStringLiteral("%1 %2").arg(hover).arg(normal)));
    QVERIFY2(normal > 1.25 * disabled,
             qPrintable(QStringLiteral("%1 %2").arg(normal).arg(disabled)));
}

void TestPictures::letteringHasOneSize_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QColor>("letters");
    const auto row = [](const char *button, const char *state, const char *letters) {
        QTest::addRow("%s%s", button, state)
            << QStringLiteral(":/images/new_buttons/%1%2.png")
                   .arg(QLatin1String(button), QLatin1String(state))
            << QColor(QLatin1String(letters));
    };
    for (const char *button : {"download", "update", "play"}) {
        row(button, "", "#260d05");
        row(button, "-hover", "#260d05");
    }
    for (const char *button : {"official", "beta"}) {
        row(button, "", "#ffd9ae");
        row(button, "-hover", "#fff6e8");
    }
    for (const char *button : {"download", "update", "play", "official", "beta"}) {
        row(button, "-disabled", "#697085");
    }
}

// Official and Beta stand below each other, Play and Update side by side. 26 pixels, twice the
// design's size; round letters reach a little further than straight ones.
void TestPictures::letteringHasOneSize()
{
    QFETCH(QString, path);
    QFETCH(QColor, letters);
    const QImage image = QImage(path).convertToFormat(QImage::Format_ARGB32);
    const auto isLetter = [&image, &letters](int x, int y) {
        const QColor pixel = image.pixelColor(x, y);
        return std::abs(pixel.red() - letters.red()) + std::abs(pixel.green() - letters.green()) +
                   std::abs(pixel.blue() - letters.blue()) <
               60;
    };
    int top = image.height();
    int bottom = -1;
    // Within the frame, and between the marks of the shortest word.
    for (int y = 40; y < image.height() - 40; ++y) {
        for (int x = 150; x < image.width() - 150; ++x) {
            if (isLetter(x, y)) {
                top = std::min(top, y);
                bottom = y;
            }
        }
    }
    VERIFY_RELATION(std::abs(bottom - top + 1 - 26), <=, 1);
}

void TestPictures::bundleIsSmall()
{
    qint64 bytes = QFileInfo(QStringLiteral(":/clienticon.ico")).size();
    for (const Picture &row : pictures) {
        bytes += QFileInfo(resource(row.path)).size();
    }
    VERIFY_RELATION(bytes, >, 0);
    VERIFY_RELATION(bytes, <, 4 * 1024 * 1024);
}

void TestPictures::bundleHoldsNothingElse()
{
    QStringList expected;
    for (const Picture &row : pictures) {
        expected << resource(row.path);
    }
    QStringList found;
    QDirIterator files(QStringLiteral(":/images"), QDir::Files, QDirIterator::Subdirectories);
    while (files.hasNext()) {
        found << files.next();
    }
    expected.sort();
    found.sort();
    QCOMPARE(found, expected);
}

void TestPictures::iconHasAllSizes_data()
{
    QTest::addColumn<int>("side");
    for (const int side : {16, 24, 32, 48, 64, 128, 256}) {
        QTest::addRow("%d pixels", side) << side;
    }
}

void TestPictures::iconHasAllSizes()
{
    QFETCH(int, side);
    const QSize size(side, side);
    const QIcon icon(QStringLiteral(":/clienticon.ico"));
    QVERIFY(icon.availableSizes().contains(size));
    const QImage image = icon.pixmap(size).toImage();
    QCOMPARE(image.size(), size);
    QVERIFY(image.hasAlphaChannel());
    VERIFY_RELATION(qAlpha(image.pixel(side / 2, side / 2)), >, 0);
}

void TestPictures::sheetNamesExistingPictures_data()
{
    QTest::addColumn<QString>("path");
    const QMap<QString, QString> sheets = styleSheets();
    for (auto sheet = sheets.cbegin(); sheet != sheets.cend(); ++sheet) {
        const QStringList named = picturesNamedIn(sheet.value());
        for (const QString &path : named) {
            QTest::addRow("%s shows %s", qPrintable(sheet.key()), qPrintable(path)) << path;
        }
    }
}

void TestPictures::sheetNamesExistingPictures()
{
    QFETCH(QString, path);
    QImageReader reader(path);
    QVERIFY2(!reader.read().isNull(), qPrintable(reader.errorString()));
}

// Guards the walk over the sheets: one that finds nothing would pass.
void TestPictures::sheetsNameWhatTheFormShows()
{
    QSet<QString> named;
    const QMap<QString, QString> sheets = styleSheets();
    for (const QString &sheet : sheets) {
        const QStringList paths = picturesNamedIn(sheet);
        named += QSet<QString>(paths.begin(), paths.end());
    }
    for (const Picture &row : pictures) {
        const QByteArray path(row.path);
        const bool isShown = row.place != nowhere && path != "newsHome.png" &&
                             path != "new_buttons/official-disabled.png" &&
                             path != "new_buttons/beta-disabled.png";
        QVERIFY2(!isShown || named.contains(resource(row.path)), row.path);
    }
}

QTEST_MAIN(TestPictures)
#include "tst_pictures.moc"
