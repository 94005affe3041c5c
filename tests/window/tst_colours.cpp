// The colours that the toolkit's style brings along, in every style that the system has: what shows
// beside the window's content, and the check box of the panel.

#include "support/contrast.h"
#include "support/relation.h"
#include "support/scratchfolder.h"
#include "support/windowdriver.h"
#include "ui_testform.h"
#include "window/testform.h"

#include <QApplication>
#include <QCheckBox>
#include <QCursor>
#include <QDialog>
#include <QImage>
#include <QStyleFactory>
#include <QTest>

#include <algorithm>
#include <memory>

namespace
{
constexpr double enough = 3.0;

QImage pictureOf(QWidget &widget)
{
    return widget.grab().toImage().convertToFormat(QImage::Format_RGB32);
}

// Of the box with its mark beside the box without, pixel by pixel.
struct Mark {
    int pixels = 0;    // that differ
    int clear = 0;     // that stand out from what is there without the mark
    double best = 1.0; // the clearest of them
};

Mark markOf(testform &window)
{
    QCheckBox &box = *window.ui->rememberCheckBox;
    const QRect place(box.mapTo(&window, QPoint()), box.size());
    box.setChecked(true);
    const QImage with = pictureOf(window).copy(place);
    box.setChecked(false);
    const QImage without = pictureOf(window).copy(place);
    Mark mark;
    for (int y = 0; y < with.height(); ++y) {
        for (int x = 0; x < with.width(); ++x) {
            if (with.pixel(x, y) != without.pixel(x, y)) {
                const double ratio = Contrast::ratio(with.pixel(x, y), without.pixel(x, y));
                ++mark.pixels;
                mark.clear += ratio >= enough ? 1 : 0;
                mark.best = std::max(mark.best, ratio);
            }
        }
    }
    return mark;
}
} // namespace

class TestColours : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void largerWindowIsDarkAround_data() { addStyles(); }
    void largerWindowIsDarkAround();
    void dialogsKeepTheSystemsColours_data() { addStyles(); }
    void dialogsKeepTheSystemsColours();
    void checkMarkCanBeSeen_data() { addStyles(); }
    void checkMarkCanBeSeen();
    void emptyCheckBoxCanBeSeen_data() { addStyles(); }
    void emptyCheckBoxCanBeSeen();

private:
    static void addStyles();

    std::unique_ptr<ScratchFolder> m_folder;
    std::unique_ptr<testform> m_window;
};

void TestColours::initTestCase()
{
    // Where it changes no look of a button.
    QCursor::setPos(1900, 1060);
#ifdef Q_OS_WIN
    QVERIFY(QStyleFactory::keys().contains(QStringLiteral("windowsvista"), Qt::CaseInsensitive));
#endif
}

void TestColours::addStyles()
{
    QTest::addColumn<QString>("style");
    for (const QString &key : QStyleFactory::keys()) {
        QTest::newRow(qPrintable(key)) << key;
    }
}

void TestColours::init()
{
    QFETCH(QString, style);
    QVERIFY(QApplication::setStyle(style) != nullptr);
    m_folder = std::make_unique<ScratchFolder>();
    m_window = std::make_unique<testform>();
    // Else Windows' own style lets the mark appear little by little.
    m_window->ui->rememberCheckBox->setProperty("_q_no_animation", true);
    QVERIFY(WindowDriver::show(*m_window));
}

void TestColours::cleanup()
{
    m_window.reset();
    m_folder.reset();
}

void TestColours::largerWindowIsDarkAround()
{
    // As a dragged border leaves it: the content has its size yet.
    m_window->resize(1200, 800);
    QTRY_COMPARE(m_window->size(), QSize(1200, 800));
    QTRY_COMPARE(m_window->ui->mainwindow->size(), QSize(1200, 800));

    const QImage picture = pictureOf(*m_window);

    for (const QPoint &place :
         {QPoint(980, 5), QPoint(1199, 400), QPoint(1199, 799), QPoint(500, 577), QPoint(0, 799)}) {
        const QColor colour(picture.pixel(place));
        QVERIFY2(colour.lightness() < 16, qPrintable(colour.name()));
    }
    // And where the content ends nothing is brighter than beside it.
    QVERIFY(QColor(picture.pixel(980, 560)).lightness() <=
            QColor(picture.pixel(970, 560)).lightness() + 8);
}

void TestColours::dialogsKeepTheSystemsColours()
{
    QDialog dialog(m_window.get());
    dialog.ensurePolished();
    QCOMPARE(dialog.palette().color(QPalette::Window),
             QApplication::palette(&dialog).color(QPalette::Window));
}

void TestColours::checkMarkCanBeSeen()
{
    for (const bool pressed : {false, true}) {
        m_window->ui->rememberCheckBox->setDown(pressed);
        const Mark mark = markOf(*m_window);
        qInfo("%s: %d of %d pixels, %.2f:1", pressed ? "pressed" : "as it is", mark.clear,
              mark.pixels, mark.best);
        VERIFY_RELATION(mark.pixels, >=, 15);
        VERIFY_RELATION(mark.best, >=, enough);
        // While it is pressed Windows' own style draws a fainter one, which nobody can colour.
        VERIFY_RELATION(mark.clear, >=, pressed ? 1 : 10);
    }
}

void TestColours::emptyCheckBoxCanBeSeen()
{
    QCheckBox &box = *m_window->ui->rememberCheckBox;
    box.setChecked(false);
    const QRect place(box.mapTo(m_window.get(), QPoint()), box.size());
    const QImage with = pictureOf(*m_window).copy(place);
    box.setText(QString());
    box.hide();
    const QImage without = pictureOf(*m_window).copy(place);
    int clear = 0;
    for (int y = 0; y < with.height(); ++y) {
        for (int x = 0; x < 20; ++x) { // without its text
            clear += Contrast::ratio(with.pixel(x, y), without.pixel(x, y)) >= enough ? 1 : 0;
        }
    }
    qInfo("%d pixels", clear);
    VERIFY_RELATION(clear, >=, 20);
}

QTEST_MAIN(TestColours)
#include "tst_colours.moc"
