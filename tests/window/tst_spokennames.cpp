#include "info/serverbutton.h"
#include "news/newsworld.h"
#include "support/pointer.h"
#include "support/scratchfolder.h"
#include "support/windowdriver.h"
#include "ui_testform.h"

#include <QAbstractButton>
#include <QAccessible>
#include <QApplication>
#include <QCursor>
#include <QDir>
#include <QImage>
#include <QTest>
#include <QTextDocument>
#include <QToolTip>

#include <memory>

namespace
{
QString spoken(QWidget *widget, QAccessible::Text what = QAccessible::Name)
{
    const QAccessibleInterface *reader = QAccessible::queryAccessibleInterface(widget);
    return reader != nullptr ? reader->text(what) : QString();
}

// Buttons that a reader has no name for, or only what the toolkit makes up.
QStringList nameless(const testform &window)
{
    QStringList found;
    const auto buttons = window.findChildren<QAbstractButton *>();
    for (QAbstractButton *button : buttons) {
        if (spoken(button).trimmed().isEmpty() || button->accessibleName().trimmed().isEmpty()) {
            found << button->objectName() + QLatin1Char('/') + button->styleSheet();
        }
    }
    return found;
}

QWidget *shownToolTip()
{
    const auto widgets = QApplication::topLevelWidgets();
    for (QWidget *widget : widgets) {
        if (widget->inherits("QTipLabel") && widget->isVisible()) {
            return widget;
        }
    }
    return nullptr;
}

QImage look(QWidget *widget)
{
    return widget->grab().toImage();
}
} // namespace

// What a screen reader is told, and what tooltips tell.
class TestSpokenNames : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void everyButtonHasAName();
    void clientButtonsAreServerAndKind();
    void newsAreCalledByTheirTitles();
    void titlesAreSpokenWithoutMarkup_data();
    void titlesAreSpokenWithoutMarkup();
    void slideIsTheOneThatIsShown();
    void progressIsDescribed();
    void versionSaysWhatItsColourTells_data();
    void versionSaysWhatItsColourTells();
    void picturesHaveToolTips_data();
    void picturesHaveToolTips();
    void toolTipLooksLikeAnyOther_data();
    void toolTipLooksLikeAnyOther();
    void toolTipOfADocumentIsNoMarkup();

private:
    bool open(const QStringList &elements);

    std::unique_ptr<ScratchFolder> m_folder;
    std::unique_ptr<NewsWorld> m_world;
    std::unique_ptr<testform> m_window;
};

void TestSpokenNames::init()
{
    m_folder = std::make_unique<ScratchFolder>();
    m_world = std::make_unique<NewsWorld>();
}

void TestSpokenNames::cleanup()
{
    QToolTip::hideText();
    m_window.reset();
    m_world.reset();
    m_folder.reset();
}

bool TestSpokenNames::open(const QStringList &elements)
{
    m_world->publish(elements);
    m_window = std::make_unique<testform>();
    return PublishedWorld::answered(*m_window) && WindowDriver::show(*m_window);
}

namespace
{
const QString alpha = QStringLiteral("Alpha");

QString client(const QString &server, const char *kind)
{
    return Documents::client(server, QLatin1String(kind), QStringLiteral("2.0"));
}
} // namespace

void TestSpokenNames::everyButtonHasAName()
{
    {
        const testform early;
        QCOMPARE(nameless(early), QStringList());
    }
    // Empty spaces and logos are buttons as well.
    QVERIFY(open({client(alpha, "Official"), client(QStringLiteral("Bravo"), "Beta"),
                  client(QStringLiteral("Charlie"), "Nightly"),
                  Documents::news(QStringLiteral("news"), QStringLiteral("<b> </b>"))}));
    QCOMPARE(m_window->ui->serverButtonsGroup->findChildren<QAbstractButton *>().size(), 3 * 3 + 2);
    QCOMPARE(nameless(*m_window), QStringList());
}

void TestSpokenNames::clientButtonsAreServerAndKind()
{
    QVERIFY(open({client(alpha, "Official"), client(alpha, "Beta"),
                  client(QStringLiteral("Bravo"), "Official")}));
    QStringList names;
    const auto buttons = m_window->ui->serverButtonsGroup->findChildren<QAbstractButton *>();
    for (QAbstractButton *button : buttons) {
        names << spoken(button);
    }
    QCOMPARE(names.mid(2),
             QStringList({QStringLiteral("Logo of Alpha"), QStringLiteral("Alpha, Official"),
                          QStringLiteral("Alpha, Beta"), QStringLiteral("Logo of Bravo"),
                          QStringLiteral("Bravo, Official"), QStringLiteral("Bravo has no Beta")}));
    m_window->onServerSelect(QStringLiteral("Alpha|Beta"));
    QCOMPARE(spoken(m_window->ui->labelServer), alpha);
}

void TestSpokenNames::newsAreCalledByTheirTitles()
{
    QVERIFY(open(m_world->elements()));
    for (const NewsWorld::Item &item : NewsWorld::items) {
        if (!item.isSlide) {
            auto *tile = m_window->findChild<QWidget *>(QLatin1String(item.button));
            QCOMPARE(spoken(tile), NewsWorld::titleOf(item));
            QCOMPARE(spoken(tile, QAccessible::Description), NewsWorld::subtitleOf(item));
        }
    }
}

void TestSpokenNames::titlesAreSpokenWithoutMarkup_data()
{
    QTest::addColumn<QString>("title");
    QTest::addColumn<QString>("name");
    QTest::newRow("plain") << QStringLiteral("A & B") << QStringLiteral("A & B");
    QTest::newRow("simple markup")
        << QStringLiteral("<b>Big</b> news<br>today") << QStringLiteral("Big news\ntoday");
    QTest::newRow("other markup, shown letter by letter")
        << QStringLiteral("<img src='x'>") << QStringLiteral("<img src='x'>");
    QTest::newRow("none") << QString() << QStringLiteral("News 1");
}

void TestSpokenNames::titlesAreSpokenWithoutMarkup()
{
    QFETCH(QString, title);
    QFETCH(QString, name);
    QVERIFY(open({Documents::news(QStringLiteral("news"), title)}));
    QCOMPARE(spoken(m_window->ui->btnNewsBig), name);
}

void TestSpokenNames::slideIsTheOneThatIsShown()
{
    QVERIFY(open(m_world->elements()));
    for (int slide : {0, 1, 2, 0}) {
        m_window->setSlideState(slide);
        const NewsWorld::Item &item = NewsWorld::itemNumber(slide);
        QCOMPARE(spoken(m_window->ui->btnHomeNews), NewsWorld::titleOf(item));
        QCOMPARE(spoken(m_window->ui->btnHomeNews, QAccessible::Description),
                 NewsWorld::subtitleOf(item));
    }
}

void TestSpokenNames::progressIsDescribed()
{
    QVERIFY(open({}));
    QCOMPARE(spoken(m_window->ui->downloadProgressBar), QStringLiteral("Download"));
    QCOMPARE(spoken(m_window->ui->downloadProgressBar, QAccessible::Description),
             QStringLiteral("How much of the client's archive has arrived, in percent"));
    QCOMPARE(spoken(m_window->ui->serverButtonsGroup), QStringLiteral("Server selection"));
}

void TestSpokenNames::versionSaysWhatItsColourTells_data()
{
    QTest::addColumn<QString>("installed");
    QTest::addColumn<QString>("told");
    QTest::newRow("red") << QString() << QStringLiteral("Not installed");
    QTest::newRow("orange") << QStringLiteral("1.0")
                            << QStringLiteral("Another version is offered");
    QTest::newRow("green") << QStringLiteral("2.0") << QStringLiteral("Installed and current");
}

void TestSpokenNames::versionSaysWhatItsColourTells()
{
    QFETCH(QString, installed);
    QFETCH(QString, told);
    if (!installed.isEmpty()) {
        QVERIFY(QDir::current().mkpath(QStringLiteral("Alpha/Official/") + installed));
    }
    QVERIFY(open({client(alpha, "Official")}));
    m_window->onServerSelect(QStringLiteral("Alpha|Official"));
    QCOMPARE(spoken(m_window->ui->labelClientVersion, QAccessible::Description), told);
}

void TestSpokenNames::picturesHaveToolTips_data()
{
    QTest::addColumn<QString>("button");
    QTest::addColumn<QString>("text");
    const auto add = [](const char *button, const char *text) {
        QTest::newRow(button) << QString::fromLatin1(button) << QString::fromLatin1(text);
    };
    add("btnClose", "Close");
    add("btnCloseIntro", "Close");
    add("btnFullscreen", "Full screen");
    add("btnMinimize", "Minimise");
    add("btnLeft", "Previous slide");
    add("btnRight", "Next slide");
    add("btnFacebook", "Facebook");
    add("btnDiscord", "Discord");
    add("btnDownload", "Download");
    add("btnUpdate", "Update");
    add("btnPlay", "Play");
    add("btnPlay_2", "Play");
}

void TestSpokenNames::picturesHaveToolTips()
{
    QFETCH(QString, button);
    QFETCH(QString, text);
    const testform window;
    QCOMPARE(window.findChild<QWidget *>(button)->toolTip(), text);
}

void TestSpokenNames::toolTipLooksLikeAnyOther_data()
{
    QTest::addColumn<QString>("button");
    QTest::newRow("a sheet without a ground") << QStringLiteral("btnClose");
    QTest::newRow("a sheet with a picture") << QStringLiteral("btnRight");
}

// By a pointer that rests on the button.
void TestSpokenNames::toolTipLooksLikeAnyOther()
{
    QFETCH(QString, button);
    QVERIFY(open({}));
    m_window->ui->serverButtonsGroup->hide();
    auto *target = m_window->findChild<QWidget *>(button);
    QVERIFY(Pointer::moveTo(m_window->mapToGlobal(QPoint(500, 500))));
    QVERIFY(Pointer::moveTo(target->mapToGlobal(target->rect().center())));
    QTRY_VERIFY(shownToolTip() != nullptr);
    QCOMPARE(QToolTip::text().contains(target->toolTip()), true);
    const QImage seen = look(shownToolTip());
    QToolTip::hideText();
    QTRY_VERIFY(shownToolTip() == nullptr);

    QWidget plain;
    QVERIFY(WindowDriver::show(plain));
    QToolTip::showText(plain.mapToGlobal(QPoint(5, 5)),
                       Qt::convertFromPlainText(target->toolTip(), Qt::WhiteSpaceNormal), &plain);
    QTRY_VERIFY(shownToolTip() != nullptr);
    QCOMPARE(look(shownToolTip()), seen);
}

void TestSpokenNames::toolTipOfADocumentIsNoMarkup()
{
    const QString server = QStringLiteral("<b>A</b> & B");
    QVERIFY(open({client(server, "Official")}));
    auto *button = m_window->ui->serverButtonsGroup->findChildren<QAbstractButton *>().at(3);
    QCOMPARE(spoken(button), server + QStringLiteral(", Official"));
    QVERIFY(Pointer::moveTo(m_window->mapToGlobal(QPoint(5, 500))));
    QVERIFY(Pointer::moveTo(button->mapToGlobal(button->rect().center())));
    QTRY_VERIFY(shownToolTip() != nullptr);
    QVERIFY(QToolTip::text().contains(server.toHtmlEscaped()));
}

QTEST_MAIN(TestSpokenNames)
#include "tst_spokennames.moc"
