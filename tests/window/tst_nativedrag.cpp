#include "nativewindowtest.h"

#include <atomic>
#include <thread>

// The window's borders and its caption, dragged by a pointer that Windows itself moves.
class TestNativeDrag : public NativeWindowTest
{
    Q_OBJECT

private slots:
    void bordersCanBeDragged_data();
    void bordersCanBeDragged();
    void captionCanBeDragged();
};

namespace
{
// Drags with the left button, from a thread of its own: while Windows resizes or moves a window, it
// keeps the thread of the window for itself.
class Hand
{
public:
    Hand(QPoint from, QPoint to)
        : m_window(GetCurrentThreadId())
        , m_thread([this, from, to] { drag(from, to); })
    {
    }
    ~Hand() { m_thread.join(); }
    Hand(const Hand &) = delete;
    Hand &operator=(const Hand &) = delete;

    bool hasEnded() const { return m_ended; }
    // Whether Windows took the drag for its own business.
    bool wasTaken() const { return m_taken; }

private:
    static void put(DWORD what)
    {
        INPUT input{};
        input.type = INPUT_MOUSE;
        input.mi.dwFlags = what;
        SendInput(1, &input, sizeof input);
    }
    bool isMovingOrSizing() const
    {
        GUITHREADINFO info{};
        info.cbSize = sizeof info;
        return GetGUIThreadInfo(m_window, &info) != 0 && (info.flags & GUI_INMOVESIZE) != 0;
    }
    // Looks until it is so, three seconds at most.
    bool waitUntil(bool movingOrSizing) const
    {
        for (int look = 0; look < 300; ++look) {
            if (isMovingOrSizing() == movingOrSizing) {
                return true;
            }
            Sleep(10);
        }
        return false;
    }
    // Puts the pointer there until it stays, three seconds at most: where it was sent before may be
    // told late, and a press would land there.
    static void rest(QPoint place)
    {
        constexpr int enough = 20;
        int stayed = 0;
        for (int look = 0; look < 300 && stayed < enough; ++look) {
            POINT now{};
            GetCursorPos(&now);
            const bool isThere = now.x == place.x() && now.y == place.y();
            stayed = isThere ? stayed + 1 : 0;
            if (!isThere) {
                SetCursorPos(place.x(), place.y());
            }
            Sleep(10);
        }
    }
    void drag(QPoint from, QPoint to)
    {
        constexpr int steps = 10;
        rest(from);
        put(MOUSEEVENTF_LEFTDOWN);
        m_taken = waitUntil(true);
        for (int step = 1; step <= steps; ++step) {
            const QPoint place = from + (to - from) * step / steps;
            SetCursorPos(place.x(), place.y());
            Sleep(10); // a hand's speed
        }
        // The last step may be lost when the machine is busy; a hand trembles there.
        for (int nudge = 5; nudge >= 0; --nudge) {
            SetCursorPos(to.x() + nudge % 2, to.y());
            Sleep(10);
        }
        do {
            put(MOUSEEVENTF_LEFTUP);
        } while (!waitUntil(false));
        m_ended = true;
    }

    DWORD m_window;
    std::atomic<bool> m_taken{false};
    std::atomic<bool> m_ended{false};
    std::thread m_thread;
};
} // namespace

void TestNativeDrag::bordersCanBeDragged_data()
{
    QTest::addColumn<QPoint>("grip"); // pixels of the screen; negative: from the right or bottom
    QTest::addColumn<QPoint>("distance");
    QTest::addColumn<QSize>("dragged");
    QTest::addColumn<QSize>("rescaled");
    QTest::newRow("right border") << QPoint(-4, 300) << QPoint(226, 0) << QSize(1200, 571)
                                  << QSize(1200, 703);
    QTest::newRow("bottom border")
        << QPoint(300, -4) << QPoint(0, 129) << QSize(974, 700) << QSize(1194, 700);
    QTest::newRow("bottom right corner")
        << QPoint(-4, -4) << QPoint(100, 20) << QSize(1074, 591) << QSize(1008, 591);
    QTest::newRow("smaller than allowed")
        << QPoint(-4, 300) << QPoint(-700, 0) << QSize(487, 571) << QSize(487, 285);
}

void TestNativeDrag::bordersCanBeDragged()
{
    QFETCH(QPoint, grip);
    QFETCH(QPoint, distance);
    QFETCH(QSize, dragged);
    QFETCH(QSize, rescaled);
    // A hand may come a pixel of the screen off, which is one of the window; what follows from
    // there is exact, and so is the smallest size, where every hand is stopped.
    const int slack = dragged.width() > 487 ? 1 : 0;
    const bool byWidth = rescaled.width() == dragged.width();
    const auto isClose = [slack](int one, int other) { return qAbs(one - other) <= slack; };
    const auto isDragged = [&] {
        return isClose(m_window->width(), dragged.width()) &&
               isClose(m_window->height(), dragged.height());
    };
    const auto isRescaled = [&] {
        const int width = m_window->width();
        const int height = m_window->height();
        return byWidth ? isClose(width, rescaled.width()) && height == width * 571 / 974
                       : isClose(height, rescaled.height()) && width == height * 974 / 571;
    };
    const auto sizeText = [this] {
        return QStringLiteral("%1 x %2").arg(m_window->width()).arg(m_window->height());
    };
    const RECT window = frame();
    const QPoint from(int(grip.x() < 0 ? window.right : window.left) + grip.x(),
                      int(grip.y() < 0 ? window.bottom : window.top) + grip.y());
    // By as many of the screen's pixels as lie between the two sizes.
    const QSize grown = inPixels(m_window->size() + QSize(distance.x(), distance.y()));
    const QPoint byPixels(grown.width() - sizeOf(window).width(),
                          grown.height() - sizeOf(window).height());
    {
        const Hand hand(from, from + byPixels);
        QVERIFY(QTest::qWaitFor([&hand] { return hand.hasEnded(); }, 20000));
        QVERIFY(hand.wasTaken());
    }
    QTRY_VERIFY2(isDragged() || isRescaled(), qPrintable(sizeText()));
    // The pointer moves over the border again.
    const RECT now = frame();
    SetCursorPos(int(grip.x() < 0 ? now.right : now.left) + grip.x() + 1,
                 int(grip.y() < 0 ? now.bottom : now.top) + grip.y() + 1);
    QTRY_VERIFY2(isRescaled(), qPrintable(sizeText()));
    QCOMPARE(m_window->ui->backgroundImage->size(), m_window->size());
}

void TestNativeDrag::captionCanBeDragged()
{
    m_window->ui->mainwindow->resize(500, 571);
    const QPoint from = inPixels(m_window->mapToGlobal(QPoint(700, 300)));
    {
        const Hand hand(from, from + inPixels(QPoint(120, -60)));
        QVERIFY(QTest::qWaitFor([&hand] { return hand.hasEnded(); }, 20000));
        QVERIFY(hand.wasTaken());
    }
    QTRY_COMPARE(m_window->pos(), QPoint(320, 90));
    QCOMPARE(m_window->size(), QSize(974, 571));
}

QTEST_MAIN(TestNativeDrag)
#include "tst_nativedrag.moc"
