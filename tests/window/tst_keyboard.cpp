#include "support/urlcatcher.h"
#include "window/keyboardworld.h"

// The whole launcher by keys alone: which buttons Tab reaches, what presses them, and how the panel
// is left.
class TestKeyboard : public QObject
{
    Q_OBJECT

private slots:
    void init() { m_world = std::make_unique<KeyboardWorld>(); }
    void cleanup() { m_world.reset(); }
    void panelHoldsTheKeyboard();
    void waitingPanelHoldsTheKeyboard();
    void closedPanelLeavesWhatIsVisibleAndEnabled_data();
    void closedPanelLeavesWhatIsVisibleAndEnabled();
    void arrowsGoTheSameWay();
    void nothingIsPressedUnasked_data();
    void nothingIsPressedUnasked();
    void keysPressAClient_data();
    void keysPressAClient();
    void keysPressEveryOtherStop_data();
    void keysPressEveryOtherStop();
    void heldKeyPressesOnce();
    void choiceByKeysOffersTheAction_data();
    void choiceByKeysOffersTheAction();
    void choiceByPointerLeavesTheKeyboardAlone();
    void openedPanelTakesTheKeyboard_data();
    void openedPanelTakesTheKeyboard();
    void escapeLeavesThePanelThatWasOpenedAgain();
    void escapeDoesNothingOnTheFirstPanel();
    void escapeDoesNothingWithoutAPanel();
    void disabledButtonHandsTheKeyboardOn();
    void closeButtonsEndTheLauncher_data();
    void closeButtonsEndTheLauncher();

private:
    bool panelIsOpen() const { return m_world->window->ui->serverButtonsGroup->isVisible(); }

    std::unique_ptr<KeyboardWorld> m_world;
};

namespace
{
const QStringList panelStops{QStringLiteral("Alpha, Official"),  QStringLiteral("Alpha, Beta"),
                             QStringLiteral("Bravo, Official"),  QStringLiteral("Charlie, Beta"),
                             QStringLiteral("rememberCheckBox"), QStringLiteral("btnCloseIntro")};

void addKeys()
{
    QTest::addColumn<Qt::Key>("key");
    QTest::newRow("Space") << Qt::Key_Space;
    QTest::newRow("Enter") << Qt::Key_Enter;
    QTest::newRow("Return") << Qt::Key_Return;
}

QStringList reversed(QStringList list)
{
    std::reverse(list.begin(), list.end());
    return list;
}
} // namespace

void TestKeyboard::panelHoldsTheKeyboard()
{
    QVERIFY(m_world->open());
    QCOMPARE(m_world->round(), panelStops);
    // It began anew, and goes the other way as well.
    QCOMPARE(m_world->focused(), panelStops.first());
    QStringList back = m_world->round(Qt::Key_Backtab, Qt::ShiftModifier);
    QCOMPARE(back, reversed(panelStops));
}

void TestKeyboard::waitingPanelHoldsTheKeyboard()
{
    QVERIFY(m_world->openUnanswered());
    QVERIFY(panelIsOpen());
    QCOMPARE(m_world->round(), panelStops.mid(4));
}

void TestKeyboard::closedPanelLeavesWhatIsVisibleAndEnabled_data()
{
    QTest::addColumn<QString>("installed");
    QTest::addColumn<bool>("onNews");
    QTest::addColumn<QStringList>("stops");
    const QStringList title{QStringLiteral("btnSelectServer"), QStringLiteral("btnClose")};
    const QStringList home = QStringList{QStringLiteral("btnNews_2")} + title +
                             QStringList{QStringLiteral("btnLeft"), QStringLiteral("btnHomeNews"),
                                         QStringLiteral("btnRight"), QStringLiteral("btnFacebook"),
                                         QStringLiteral("btnDiscord")};
    QTest::newRow("HOME, nothing installed")
        << QString() << false << home + QStringList{QStringLiteral("btnDownload")};
    QTest::newRow("HOME, an older version")
        << QStringLiteral("1.0") << false
        << home + QStringList{QStringLiteral("btnPlay_2"), QStringLiteral("btnUpdate")};
    QTest::newRow("HOME, the offered version")
        << QStringLiteral("2.0") << false << home + QStringList{QStringLiteral("btnPlay")};
    QTest::newRow("NEWS") << QString() << true
                          << QStringList{QStringLiteral("btnHome_2")} + title +
                                 QStringList{QStringLiteral("btnNewsBig"),
                                             QStringLiteral("btnNewsMedium1"),
                                             QStringLiteral("btnNewsMedium2"),
                                             QStringLiteral("btnNewsSmall1"),
                                             QStringLiteral("btnNewsSmall2"),
                                             QStringLiteral("btnNewsSmall3")};
}

void TestKeyboard::closedPanelLeavesWhatIsVisibleAndEnabled()
{
    QFETCH(QString, installed);
    QFETCH(bool, onNews);
    QFETCH(QStringList, stops);
    if (!installed.isEmpty()) {
        KeyboardWorld::install(installed);
    }
    QVERIFY(m_world->open(KeyboardWorld::remembered()));
    QVERIFY(!panelIsOpen());
    if (onNews) {
        m_world->window->setMenuState(1);
    }
    for (const QSize size : {QSize(974, 571), QSize(487, 286), QSize(1200, 703)}) {
        m_world->window->customResize(size.width(), size.height());
        m_world->window->setFocus();
        QCOMPARE(m_world->round(), stops);
        m_world->window->setFocus();
        QCOMPARE(m_world->round(Qt::Key_Backtab, Qt::ShiftModifier), reversed(stops));
    }
}

void TestKeyboard::arrowsGoTheSameWay()
{
    QVERIFY(m_world->open());
    m_world->press(Qt::Key_Tab);
    QCOMPARE(m_world->round(Qt::Key_Right), panelStops.mid(1) + panelStops.mid(0, 1));
}

void TestKeyboard::nothingIsPressedUnasked_data()
{
    QTest::addColumn<Qt::Key>("key");
    QTest::addColumn<QByteArray>("settings");
    const auto add = [](const char *name, Qt::Key key) {
        QTest::addRow("%s on the first panel", name) << key << QByteArray();
        QTest::addRow("%s after a remembered choice", name) << key << KeyboardWorld::remembered();
    };
    add("Space", Qt::Key_Space);
    add("Enter", Qt::Key_Enter);
    add("Return", Qt::Key_Return);
}

// Before the first Tab no button has the keyboard, though the toolkit would give it to one.
void TestKeyboard::nothingIsPressedUnasked()
{
    QFETCH(Qt::Key, key);
    QFETCH(QByteArray, settings);
    QVERIFY(m_world->open(settings));
    QCOMPARE(m_world->focused(), QStringLiteral("the window"));
    const bool wasOpen = panelIsOpen();
    m_world->press(key);
    QCOMPARE(panelIsOpen(), wasOpen);
    QCOMPARE(m_world->window->menuState, 0);
    QCOMPARE(m_world->window->downloadManager, nullptr);
}

void TestKeyboard::keysPressAClient_data()
{
    addKeys();
}

void TestKeyboard::keysPressAClient()
{
    QFETCH(Qt::Key, key);
    QVERIFY(m_world->open());
    QVERIFY(m_world->tabTo(QStringLiteral("Bravo, Official")));
    m_world->press(key);
    QVERIFY(!panelIsOpen());
    QCOMPARE(m_world->window->selectedClientInfo.server, QStringLiteral("Bravo"));
    QCOMPARE(m_world->window->selectedClientInfo.client, QStringLiteral("Official"));
}

void TestKeyboard::keysPressEveryOtherStop_data()
{
    addKeys();
}

void TestKeyboard::keysPressEveryOtherStop()
{
    QFETCH(Qt::Key, key);
    UrlCatcher desktop;
    QVERIFY(m_world->open());
    const testform &window = *m_world->window;
    const bool remembers = window.ui->rememberCheckBox->isChecked();
    QVERIFY(m_world->tabTo(QStringLiteral("rememberCheckBox")));
    m_world->press(key);
    QCOMPARE(window.ui->rememberCheckBox->isChecked(), !remembers);
    QCOMPARE(window.settings.rememberSettings, !remembers);
    QVERIFY(m_world->tabTo(QStringLiteral("Alpha, Official")));
    m_world->press(key);

    QVERIFY(m_world->tabTo(QStringLiteral("btnRight")));
    m_world->press(key);
    QCOMPARE(window.slideState, 1);
    QVERIFY(m_world->tabTo(QStringLiteral("btnDiscord")));
    m_world->press(key);
    QTRY_COMPARE(desktop.opened, QList<QUrl>{QUrl(window.urlDiscord)});
    QVERIFY(m_world->tabTo(QStringLiteral("btnNews_2")));
    m_world->press(key);
    QCOMPARE(window.menuState, 1);
    QVERIFY(m_world->tabTo(QStringLiteral("btnHome_2")));
    m_world->press(key);
    QCOMPARE(window.menuState, 0);
    QVERIFY(m_world->tabTo(QStringLiteral("btnDownload")));
    m_world->press(key);
    QVERIFY(window.downloadManager != nullptr);
}

void TestKeyboard::heldKeyPressesOnce()
{
    QVERIFY(m_world->open());
    QVERIFY(m_world->tabTo(QStringLiteral("Alpha, Official")));
    QTest::keyPress(m_world->window->windowHandle(), Qt::Key_Return);
    QCOMPARE(m_world->focused(), QStringLiteral("btnDownload"));
    // As the system repeats it.
    QKeyEvent repeated(QEvent::KeyPress, Qt::Key_Return, Qt::NoModifier, QStringLiteral("\r"),
                       true);
    QCoreApplication::sendEvent(QApplication::focusWidget(), &repeated);
    QCOMPARE(m_world->window->downloadManager, nullptr);
    QTest::keyRelease(m_world->window->windowHandle(), Qt::Key_Return);
}

void TestKeyboard::choiceByKeysOffersTheAction_data()
{
    QTest::addColumn<QString>("installed");
    QTest::addColumn<QString>("action");
    QTest::newRow("nothing installed") << QString() << QStringLiteral("btnDownload");
    QTest::newRow("an older version") << QStringLiteral("1.0") << QStringLiteral("btnUpdate");
    QTest::newRow("the offered version") << QStringLiteral("2.0") << QStringLiteral("btnPlay");
}

void TestKeyboard::choiceByKeysOffersTheAction()
{
    QFETCH(QString, installed);
    QFETCH(QString, action);
    if (!installed.isEmpty()) {
        KeyboardWorld::install(installed);
    }
    QVERIFY(m_world->open());
    m_world->press(Qt::Key_Tab);
    m_world->press(Qt::Key_Return);
    QVERIFY(!panelIsOpen());
    QCOMPARE(m_world->focused(), action);
}

void TestKeyboard::choiceByPointerLeavesTheKeyboardAlone()
{
    QVERIFY(m_world->open());
    QCOMPARE(WindowDriver::click(*m_world->window,
                                 *m_world->clientButton(QStringLiteral("Alpha, Official"))),
             QString());
    QVERIFY(!panelIsOpen());
    QCOMPARE(m_world->focused(), QStringLiteral("the window"));
}

void TestKeyboard::openedPanelTakesTheKeyboard_data()
{
    QTest::addColumn<bool>("byKeys");
    QTest::newRow("by keys") << true;
    QTest::newRow("by the pointer") << false;
}

void TestKeyboard::openedPanelTakesTheKeyboard()
{
    QFETCH(bool, byKeys);
    QVERIFY(m_world->open(KeyboardWorld::remembered()));
    testform &window = *m_world->window;
    if (byKeys) {
        QVERIFY(m_world->tabTo(QStringLiteral("btnSelectServer")));
        m_world->press(Qt::Key_Return);
    } else {
        QCOMPARE(WindowDriver::click(window, QStringLiteral("btnSelectServer")), QString());
    }
    QVERIFY(panelIsOpen());
    // A reader may put the keyboard where nobody sees it.
    window.ui->btnNews_2->setFocus();
    QCOMPARE(m_world->focused(), QStringLiteral("the window"));
    QCOMPARE(m_world->round(), panelStops);
    // A choice lets it go again.
    m_world->press(Qt::Key_Return);
    QVERIFY(!panelIsOpen());
    QVERIFY(!window.ui->serverButtonsGroup->isAncestorOf(QApplication::focusWidget()));
}

void TestKeyboard::escapeLeavesThePanelThatWasOpenedAgain()
{
    QVERIFY(m_world->open(KeyboardWorld::remembered()));
    const testform &window = *m_world->window;
    QVERIFY(m_world->tabTo(QStringLiteral("btnSelectServer")));
    for (int i = 0; i < 3; ++i) {
        m_world->press(Qt::Key_Return);
        QVERIFY(panelIsOpen());
        // From wherever in the panel the keyboard is.
        for (int tabs = 0; tabs < i * 3; ++tabs) {
            m_world->press(Qt::Key_Tab);
        }
        m_world->press(Qt::Key_Escape);
        QVERIFY(!panelIsOpen());
        QCOMPARE(m_world->focused(), QStringLiteral("btnSelectServer"));
        QVERIFY(window.isVisible());
    }
    QCOMPARE(window.selectedClientInfo.server, QStringLiteral("Alpha"));
    QCOMPARE(ScratchFolder::read(QStringLiteral("settings.txt")), KeyboardWorld::remembered());
    QVERIFY(window.ui->btnDownload->isVisible());
}

void TestKeyboard::escapeDoesNothingOnTheFirstPanel()
{
    QVERIFY(m_world->open());
    testform &window = *m_world->window;
    m_world->press(Qt::Key_Escape);
    QVERIFY(panelIsOpen());
    QVERIFY(m_world->tabTo(QStringLiteral("Alpha, Beta")));
    m_world->press(Qt::Key_Escape);
    QVERIFY(panelIsOpen());
    QCOMPARE(m_world->focused(), QStringLiteral("Alpha, Beta"));
    // As a reader presses it behind the panel.
    window.ui->btnSelectServer->click();
    m_world->press(Qt::Key_Escape);
    QVERIFY(panelIsOpen());
    QVERIFY(window.isVisible());
    QVERIFY(window.selectedClientInfo.server.isEmpty());
}

void TestKeyboard::escapeDoesNothingWithoutAPanel()
{
    QVERIFY(m_world->open(KeyboardWorld::remembered()));
    QVERIFY(m_world->tabTo(QStringLiteral("btnRight")));
    m_world->press(Qt::Key_Escape);
    QVERIFY(m_world->window->isVisible());
    QCOMPARE(m_world->focused(), QStringLiteral("btnRight"));
}

void TestKeyboard::disabledButtonHandsTheKeyboardOn()
{
    QVERIFY(m_world->open(KeyboardWorld::remembered()));
    testform &window = *m_world->window;
    QVERIFY(m_world->tabTo(QStringLiteral("btnDownload")));
    window.ui->btnDownload->setEnabled(false);
    QCOMPARE(m_world->focused(), QStringLiteral("btnNews_2"));
    // Who uses a mouse has put it nowhere.
    window.ui->btnDownload->setEnabled(true);
    window.ui->btnDownload->setFocus(Qt::MouseFocusReason);
    window.ui->btnDownload->setEnabled(false);
    QCOMPARE(m_world->focused(), QStringLiteral("the window"));
}

void TestKeyboard::closeButtonsEndTheLauncher_data()
{
    QTest::addColumn<QString>("button");
    QTest::addColumn<QByteArray>("settings");
    QTest::newRow("the panel's") << QStringLiteral("btnCloseIntro") << QByteArray();
    QTest::newRow("the title bar's") << QStringLiteral("btnClose") << KeyboardWorld::remembered();
}

void TestKeyboard::closeButtonsEndTheLauncher()
{
    QFETCH(QString, button);
    QFETCH(QByteArray, settings);
    QVERIFY(m_world->open(settings));
    QVERIFY(m_world->tabTo(button));
    QTimer::singleShot(0, m_world->window.get(), [this] { m_world->press(Qt::Key_Return); });
    QTimer::singleShot(10000, m_world->window.get(), [] { QApplication::exit(-2); });
    QCOMPARE(QApplication::exec(), 0);
}

QTEST_MAIN(TestKeyboard)
#include "tst_keyboard.moc"
