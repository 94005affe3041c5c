#include "support/pointer.h"
#include "support/scratchfolder.h"
#include "support/windowdriver.h"
#include "ui_testform.h"
#include "window/testform.h"

#include <QTest>

// The window among others: a real window manager, and a pointer moved by the display server.
class TestWindowManager : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void bareAreaDragsTheWindow();
    void minimizeButton();
    void fullScreenButton();

private:
    QPoint middleOf(const QWidget *widget) const;

    std::unique_ptr<ScratchFolder> m_folder;
    std::unique_ptr<testform> m_window;
};

void TestWindowManager::init()
{
    m_folder = std::make_unique<ScratchFolder>();
    m_window = std::make_unique<testform>();
    m_window->ui->serverButtonsGroup->hide();
    QVERIFY(WindowDriver::show(*m_window));
    QVERIFY(QTest::qWaitForWindowActive(m_window.get()));
    m_window->move(200, 150);
    QTRY_COMPARE(m_window->pos(), QPoint(200, 150));
}

void TestWindowManager::cleanup()
{
    m_window.reset();
    m_folder.reset();
}

QPoint TestWindowManager::middleOf(const QWidget *widget) const
{
    return widget->mapToGlobal(widget->rect().center());
}

void TestWindowManager::bareAreaDragsTheWindow()
{
    // Bare background under the slide.
    const QPoint grip = m_window->mapToGlobal(QPoint(500, 450));
    QVERIFY(Pointer::moveTo(grip));
    QVERIFY(Pointer::press());
    QTRY_COMPARE(m_window->mousePos, grip);
    QVERIFY(Pointer::moveTo(grip + QPoint(60, 25)));
    QTRY_COMPARE(m_window->pos(), QPoint(260, 175));
    QVERIFY(Pointer::moveTo(grip + QPoint(133, -47)));
    QTRY_COMPARE(m_window->pos(), QPoint(333, 103));
    QVERIFY(Pointer::release());
    QVERIFY(Pointer::moveTo(grip));
    QTRY_COMPARE(m_window->pos(), QPoint(333, 103));
}

void TestWindowManager::minimizeButton()
{
    QVERIFY(Pointer::moveTo(middleOf(m_window->ui->btnMinimize)));
    QVERIFY(Pointer::press() && Pointer::release());
    QTRY_VERIFY(m_window->isMinimized());
    m_window->on_btnMinimize_clicked();
    QTRY_VERIFY(!m_window->isMinimized());
    QTRY_VERIFY(m_window->isActiveWindow());
}

void TestWindowManager::fullScreenButton()
{
    QVERIFY(Pointer::moveTo(middleOf(m_window->ui->btnFullscreen)));
    QVERIFY(Pointer::press() && Pointer::release());
    QTRY_VERIFY(m_window->isMax);
#ifndef Q_OS_WIN
    // There the toolkit takes a window that does not fill the screen for a normal one again.
    QTRY_VERIFY(m_window->isFullScreen());
#endif
    QCOMPARE(QSize(m_window->prevWidth, m_window->prevHeight), QSize(1842, 1080));
    m_window->on_btnFullscreen_clicked();
    QVERIFY(!m_window->isMax);
    QCOMPARE(QSize(m_window->prevWidth, m_window->prevHeight), QSize(974, 571));
}

QTEST_MAIN(TestWindowManager)
#include "tst_windowmanager.moc"
