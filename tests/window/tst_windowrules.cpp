#include "window/designscale.h"
#include "window/hittest.h"

#include <QTest>

// Scaling arithmetic and hit test, without a window.
class TestWindowRules : public QObject
{
    Q_OBJECT

private slots:
    void borderAt_data();
    void borderAt();
    void borderWidthAt_data();
    void borderWidthAt();
    void answer_data();
    void answer();
    void pointsLeftOfTheFirstMonitor();
    void bordersOfNarrowWindows_data();
    void bordersOfNarrowWindows();
    void fixedDirectionsHaveNoBorders_data();
    void fixedDirectionsHaveNoBorders();
    void unpackPoint_data();
    void unpackPoint();
    void ratio_data();
    void ratio();
    void lengthsAreCutTowardZero_data();
    void lengthsAreCutTowardZero();
    void fontSize_data();
    void fontSize();
    void scaledFontSize_data();
    void scaledFontSize();
    void withFontSize_data();
    void withFontSize();
};

namespace
{
constexpr HitTest::WindowRect window{100, 200, 1074, 771};
}

void TestWindowRules::borderAt_data()
{
    QTest::addColumn<QPoint>("point");
    QTest::addColumn<int>("expected");
    const auto row = [](const char *name, int x, int y, int expected) {
        QTest::newRow(name) << QPoint(x, y) << expected;
    };
    row("first column of the left border", 100, 400, 10);
    row("last column of the left border", 107, 400, 10);
    row("just inside the left border", 108, 400, 0);
    row("just left of the window", 99, 400, 0);
    row("first column of the right border", 1066, 400, 11);
    row("last column of the right border", 1073, 400, 11);
    row("just inside the right border", 1065, 400, 0);
    row("right edge is not the window's", 1074, 400, 0);
    row("first line of the top border", 500, 200, 12);
    row("last line of the top border", 500, 207, 12);
    row("just inside the top border", 500, 208, 0);
    row("just above the window", 500, 199, 0);
    row("first line of the bottom border", 500, 763, 15);
    row("last line of the bottom border", 500, 770, 15);
    row("just inside the bottom border", 500, 762, 0);
    row("bottom edge is not the window's", 500, 771, 0);
    row("three pixels inside left and top", 103, 203, 13);
    row("top right corner", 1073, 200, 14);
    row("bottom left corner", 100, 770, 16);
    row("bottom right corner", 1073, 770, 17);
    row("middle", 500, 400, 0);
}

void TestWindowRules::borderAt()
{
    QFETCH(QPoint, point);
    QFETCH(int, expected);
    QCOMPARE(HitTest::borderAt(window, point, true, true), expected);
}

void TestWindowRules::answer_data()
{
    QTest::addColumn<QPoint>("point");
    QTest::addColumn<bool>("bare");
    QTest::addColumn<bool>("handled");
    QTest::addColumn<int>("result");
    QTest::addColumn<bool>("asked");
    QTest::newRow("a border is handled unasked") << QPoint(103, 203) << true << true << 13 << false;
    QTest::newRow("bare window area is the caption")
        << QPoint(500, 400) << true << true << 2 << true;
    QTest::newRow("a child widget gets its click")
        << QPoint(500, 400) << false << false << 0 << true;
}

void TestWindowRules::borderWidthAt_data()
{
    QTest::addColumn<qreal>("ratio");
    QTest::addColumn<int>("width");
    QTest::newRow("100 %") << 1.0 << 8;
    QTest::newRow("125 %") << 1.25 << 10;
    QTest::newRow("150 %") << 1.5 << 12;
    QTest::newRow("175 %") << 1.75 << 14;
    QTest::newRow("200 %") << 2.0 << 16;
    QTest::newRow("110 %, to the nearest") << 1.1 << 9;
}

// The bands of a window that is asked about in the screen's pixels.
void TestWindowRules::borderWidthAt()
{
    QFETCH(qreal, ratio);
    QFETCH(int, width);
    QCOMPARE(HitTest::borderWidthAt(ratio), width);
    HitTest::WindowRect scaled = window;
    scaled.border = width;
    const auto at = [&scaled](int x, int y) {
        return HitTest::borderAt(scaled, QPoint(x, y), true, true);
    };
    QCOMPARE(at(100 + width - 1, 400), HitTest::left);
    QCOMPARE(at(100 + width, 400), HitTest::nothing);
    QCOMPARE(at(1074 - width, 400), HitTest::right);
    QCOMPARE(at(1073 - width, 400), HitTest::nothing);
    QCOMPARE(at(1074 - width, 771 - width), HitTest::bottomRight);
}

void TestWindowRules::answer()
{
    QFETCH(QPoint, point);
    QFETCH(bool, bare);
    bool asked = false;
    const HitTest::Answer answer = HitTest::answer(window, point, true, true, [&asked, bare] {
        asked = true;
        return bare;
    });
    QTEST(answer.handled, "handled");
    QTEST(answer.result, "result");
    QTEST(asked, "asked");
}

void TestWindowRules::pointsLeftOfTheFirstMonitor()
{
    const HitTest::WindowRect left{-200, -50, 774, 521};
    const QPoint point = HitTest::unpackPoint(0x0064FF38);
    QCOMPARE(point, QPoint(-200, 100));
    QCOMPARE(HitTest::borderAt(left, point, true, true), 10);
    QCOMPARE(HitTest::borderAt(left, QPoint(-197, -47), true, true), 13);
}

void TestWindowRules::bordersOfNarrowWindows_data()
{
    QTest::addColumn<QPoint>("size");
    QTest::addColumn<QPoint>("point");
    QTest::addColumn<bool>("width");
    QTest::addColumn<bool>("height");
    QTest::addColumn<int>("expected");
    QTest::newRow("right wins over left") << QPoint(10, 100) << QPoint(5, 50) << true << true << 11;
    QTest::newRow("top wins over bottom") << QPoint(100, 10) << QPoint(50, 5) << true << true << 12;
    QTest::newRow("bottom wins over left when only they overlap")
        << QPoint(100, 100) << QPoint(3, 95) << true << true << 16;
    QTest::newRow("top right wins over all corners")
        << QPoint(10, 10) << QPoint(5, 5) << true << true << 14;
}

void TestWindowRules::bordersOfNarrowWindows()
{
    QFETCH(QPoint, size);
    QFETCH(QPoint, point);
    QFETCH(bool, width);
    QFETCH(bool, height);
    QFETCH(int, expected);
    QCOMPARE(HitTest::borderAt({0, 0, size.x(), size.y()}, point, width, height), expected);
}

void TestWindowRules::fixedDirectionsHaveNoBorders_data()
{
    QTest::addColumn<QPoint>("point");
    QTest::addColumn<bool>("width");
    QTest::addColumn<bool>("height");
    QTest::addColumn<int>("expected");
    QTest::newRow("fixed width, left border") << QPoint(100, 400) << false << true << 0;
    QTest::newRow("fixed width, corner is a top border") << QPoint(100, 200) << false << true << 12;
    QTest::newRow("fixed height, top border") << QPoint(500, 200) << true << false << 0;
    QTest::newRow("fixed height, corner is a left border")
        << QPoint(100, 200) << true << false << 10;
    QTest::newRow("fixed both ways") << QPoint(100, 200) << false << false << 0;
}

void TestWindowRules::fixedDirectionsHaveNoBorders()
{
    QFETCH(QPoint, point);
    QFETCH(bool, width);
    QFETCH(bool, height);
    QFETCH(int, expected);
    QCOMPARE(HitTest::borderAt(window, point, width, height), expected);
}

void TestWindowRules::unpackPoint_data()
{
    QTest::addColumn<qint64>("parameter");
    QTest::addColumn<QPoint>("expected");
    QTest::newRow("first monitor") << qint64(0x00C80064) << QPoint(100, 200);
    QTest::newRow("monitor to the left") << qint64(0x000AFF38) << QPoint(-200, 10);
    QTest::newRow("monitor above") << qint64(0xFFF60005) << QPoint(5, -10);
    QTest::newRow("sign-extended by the system") << qint64(-655355) << QPoint(5, -10);
    QTest::newRow("furthest right") << qint64(0x7FFF) << QPoint(32767, 0);
    QTest::newRow("furthest left") << qint64(0x8000) << QPoint(-32768, 0);
}

void TestWindowRules::unpackPoint()
{
    QFETCH(qint64, parameter);
    QFETCH(QPoint, expected);
    QCOMPARE(HitTest::unpackPoint(static_cast<qintptr>(parameter)), expected);
}

void TestWindowRules::ratio_data()
{
    QTest::addColumn<QSize>("previous");
    QTest::addColumn<QSize>("target");
    QTest::addColumn<float>("expected");
    const QSize design(974, 571);
    QTest::newRow("only the width changed") << design << QSize(1200, 571) << 1200.0F / 974.0F;
    QTest::newRow("only the width changed, the height's ratio is smaller")
        << QSize(1200, 571) << QSize(1500, 571) << 1500.0F / 974.0F;
    QTest::newRow("only the height changed") << design << QSize(974, 800) << 800.0F / 571.0F;
    QTest::newRow("both changed, width smaller") << design << QSize(1000, 2000) << 1000.0F / 974.0F;
    QTest::newRow("both changed, height smaller")
        << design << QSize(1920, 1080) << 1080.0F / 571.0F;
    QTest::newRow("both in proportion") << design << QSize(1948, 1142) << 2.0F;
}

void TestWindowRules::ratio()
{
    QFETCH(QSize, previous);
    QFETCH(QSize, target);
    QFETCH(float, expected);
    QCOMPARE(DesignScale::ratio(QSize(974, 571), previous, target), expected);
}

void TestWindowRules::lengthsAreCutTowardZero_data()
{
    QTest::addColumn<int>("length");
    QTest::addColumn<float>("ratio");
    QTest::addColumn<int>("expected");
    QTest::newRow("cut") << 9 << 1.99F << 17;
    QTest::newRow("negative place, toward zero") << -3 << 1.5F << -4;
    QTest::newRow("nothing") << 0 << 1.5F << 0;
    QTest::newRow("exact") << 974 << 1.0F << 974;
    QTest::newRow("window dragged to 1200") << 571 << 1200.0F / 974.0F << 703;
    QTest::newRow("full screen of 1920 x 1080") << 974 << 1080.0F / 571.0F << 1842;
    // In double precision this product is a little below 7.
    QTest::newRow("single precision") << 10 << 0.7F << 7;
}

void TestWindowRules::lengthsAreCutTowardZero()
{
    QFETCH(int, length);
    QFETCH(float, ratio);
    QFETCH(int, expected);
    QCOMPARE(DesignScale::scaled(length, ratio), expected);
    if (length >= 0) {
        QCOMPARE(DesignScale::scaledWindowSide(length, ratio), expected);
    }
}

void TestWindowRules::fontSize_data()
{
    QTest::addColumn<QString>("sheet");
    QTest::addColumn<bool>("hasFont");
    QTest::addColumn<int>("expected");
    const auto row = [](const char *name, const char *sheet, bool hasFont, int expected) {
        QTest::newRow(name) << QString::fromLatin1(sheet) << hasFont << expected;
    };
    row("plain", "font: 12px \"Lato\";", true, 12);
    row("no blank after the colon", "font:12px \"Lato\";", true, 2);
    row("two blanks after the colon", "font:  9px;", true, 9);
    row("px before font", "border: 2px; font: 14px;", true, 0);
    row("no px at all", "font: bold;", true, 0);
    row("no px, a number to the end", "font: 14", true, 14);
    row("style before the size", "font: bold 14px;", true, 0);
    row("behind other rules", "border:none;\ncolor: rgb(1,2,3);\nfont: 15px \"Lato\";\n", true, 15);
    row("other case", "FONT: 12px;", false, 0);
    row("no font", "color: white;", false, 0);
}

void TestWindowRules::fontSize()
{
    QFETCH(QString, sheet);
    QFETCH(bool, hasFont);
    QFETCH(int, expected);
    QCOMPARE(DesignScale::hasFont(sheet), hasFont);
    if (hasFont) {
        QCOMPARE(DesignScale::fontSize(sheet), expected);
    }
}

void TestWindowRules::scaledFontSize_data()
{
    QTest::addColumn<int>("size");
    QTest::addColumn<float>("ratio");
    QTest::addColumn<int>("expected");
    QTest::newRow("12 px at 1.5") << 12 << 1.5F << 18;
    QTest::newRow("12 px at 0.5") << 12 << 0.5F << 6;
    QTest::newRow("12 px at 0.05") << 12 << 0.05F << 1;
    QTest::newRow("rounded up") << 15 << 1.01F << 16;
    QTest::newRow("an unreadable size") << 0 << 3.0F << 1;
}

void TestWindowRules::scaledFontSize()
{
    QFETCH(int, size);
    QFETCH(float, ratio);
    QFETCH(int, expected);
    QCOMPARE(DesignScale::scaledFontSize(size, ratio), expected);
}

void TestWindowRules::withFontSize_data()
{
    QTest::addColumn<QString>("sheet");
    QTest::addColumn<QString>("expected");
    const auto row = [](const char *name, const char *sheet, const char *expected) {
        QTest::newRow(name) << QString::fromLatin1(sheet) << QString::fromLatin1(expected);
    };
    row("plain", "font: 12px \"Lato\"; color: red;", "font: 18px \"Lato\"; color: red;");
    row("every declaration", "A {font: 12px;} B {font: 7px \"X\";}",
        "A {font: 18px;} B {font: 18px \"X\";}");
    row("no blank after the colon stays", "font:12px \"Lato\";", "font:12px \"Lato\";");
    row("no number", "font: px;", "font: 18px;");
    row("without a semicolon stays", "font: 12px", "font: 12px");
    row("px elsewhere stays", "border: 2px; font: 14px;", "border: 2px; font: 18px;");
    row("no font", "color: red;", "color: red;");
}

void TestWindowRules::withFontSize()
{
    QFETCH(QString, sheet);
    QFETCH(QString, expected);
    QCOMPARE(DesignScale::withFontSize(sheet, 18), expected);
}

QTEST_GUILESS_MAIN(TestWindowRules)
#include "tst_windowrules.moc"
