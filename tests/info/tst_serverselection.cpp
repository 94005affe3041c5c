#include "fetch/filedownloader.h"
#include "fetch/imagedownloader.h"
#include "fetch/oneperturn.h"
#include "info/panelcolumns.h"
#include "info/serverbutton.h"
#include "info/world.h"
#include "support/messagelog.h"
#include "support/relation.h"
#include "support/testsettings.h"
#include "support/windowdriver.h"
#include "ui_testform.h"

#include <QDir>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QPainter>
#include <QSignalSpy>
#include <QTest>
#include <QThreadPool>

#include <functional>
#include <memory>

namespace
{
const QString settingsTxt = QStringLiteral("settings.txt");
const QString alpha = QStringLiteral("Alpha");
const QString official = QStringLiteral("Official");
const QString beta = QStringLiteral("Beta");

constexpr QRgb red = 0xFFFF0000;
constexpr QRgb green = 0xFF00FF00;
constexpr QRgb blue = 0xFF0000FF;

const char officialSheet[] = "QPushButton {width:196; height: 81; border-image: "
                             "url(\":/images/new_buttons/official.png\");}"
                             "QPushButton:hover {width:196; height: 81; border-image: "
                             "url(\":/images/new_buttons/official-hover.png\");}";
const char betaSheet[] = "QPushButton {width:196; height: 81; border-image: "
                         "url(\":/images/new_buttons/beta.png\");}"
                         "QPushButton:hover {width:196; height: 81; border-image: "
                         "url(\":/images/new_buttons/beta-hover.png\");}";
const char placeholderSheet[] = "QPushButton {width:196; height: 81; border-color: rgba(0,0,0,0)";

QString entry(const QString &server, const QString &client,
              const QString &version = QStringLiteral("2.0"))
{
    return Documents::client(server, client, version);
}

QImage pictureOn(const QLabel *label)
{
    return label->pixmap(Qt::ReturnByValue).toImage();
}

// Whether the label shows a picture of just this colour that fills it.
bool showsColour(const QLabel *label, QRgb colour)
{
    const QImage picture = pictureOn(label);
    return picture.size() == label->size() && picture.pixel(0, 0) == colour &&
           picture.pixel(picture.width() - 1, picture.height() - 1) == colour;
}

void paint(QLabel *label, QRgb colour)
{
    QPixmap picture(label->size());
    picture.fill(QColor(colour));
    label->setPixmap(picture);
}

// A window over the published document, shown, with its panel built.
class OpenLauncher
{
public:
    bool open() { return World::answered(window) && WindowDriver::show(window); }

    testform window;
};

bool allLogosArrived(const testform &window)
{
    for (const ServerButton *server : window.serverButtons) {
        if (server->getPixmap() == nullptr) {
            return false;
        }
    }
    return true;
}
} // namespace

// The selection panel as it stands on the screen, and what a selection sets off.
class TestServerSelection : public QObject
{
    Q_OBJECT

private slots:
    void columnsStandInOrder_data();
    void columnsStandInOrder();
    void columnsHaveTheirSizesAndDoNotOverlap_data();
    void columnsHaveTheirSizesAndDoNotOverlap();
    void bothKindsHaveAButton();
    void onlyOfficialLeavesAnEmptySpace();
    void onlyBetaStandsOnTop();
    void neitherKindSelectsAnEmptyEntry();
    void placeholderShowsNoPicture();
    void eachServerWarnsTwice_data();
    void eachServerWarnsTwice();
    void noServersGiveAnEmptyRow();
    void secondDocumentKeepsThePanel();
    void onlyTheFirstServersHaveColumns();

    void clickSelects_data();
    void clickSelects();
    void rememberBoxDecidesWhatIsWritten_data();
    void rememberBoxDecidesWhatIsWritten();
    void rememberBoxIsMirroredAndWrittenLater();
    void statusAreaShowsTheInstalledVersion_data();
    void statusAreaShowsTheInstalledVersion();
    void selectionTidiesTheWindow();
    void selectServerShowsThePanelAgain();
    void rememberedSelectionIsApplied_data();
    void rememberedSelectionIsApplied();
    void unusableKeysSelectAnEmptyEntry_data();
    void unusableKeysSelectAnEmptyEntry();

    void logoIsShownOnButtonAndLabel();
    void logoIsFetchedAndCachedUnderTheServersName();
    void lateLogoAppearsWhenItArrives();
    void lateLogoOfAnEarlierChoiceStaysAway();
    void lateLogoThatFailsTakesNoPlace_data();
    void lateLogoThatFailsTakesNoPlace();
    void cachedLogoIsShownUntilTheDownloadArrives();
    void logoThatWaitsForItsTurnIsShown_data();
    void logoThatWaitsForItsTurnIsShown();
    void failedLogo_data();
    void failedLogo();
    void targetLabelReceivesTheNextPicture();
    void cacheFileIsReadOnlyOnDemand();
};

void TestServerSelection::columnsStandInOrder_data()
{
    QTest::addColumn<QStringList>("published");
    QTest::addColumn<QStringList>("shown");
    const auto row = [](const char *name, const char *published, const char *shown) {
        QTest::newRow(name) << QString::fromLatin1(published).split(QLatin1Char(' '))
                            << QString::fromLatin1(shown).split(QLatin1Char(' '));
    };
    row("equal letters: the capital first", "b Beta A a", "A a b Beta");
    row("any capital before any small letter", "b Zulu a", "Zulu a b");
    row("Beta last even before what follows it in the alphabet", "Beta Zulu Charlie",
        "Charlie Zulu Beta");
}

void TestServerSelection::columnsStandInOrder()
{
    QFETCH(QStringList, published);
    QFETCH(QStringList, shown);
    World world;
    QStringList elements;
    for (const QString &name : published) {
        elements << entry(name, official);
    }
    world.publish(elements);
    OpenLauncher launcher;
    QVERIFY(launcher.open());

    // From left to right, as the eye meets them.
    QMap<int, QString> names;
    for (auto server = launcher.window.serverButtons.cbegin();
         server != launcher.window.serverButtons.cend(); ++server) {
        names[placeOf(launcher.window, server.value()->getButton()).center().x()] = server.key();
    }
    QCOMPARE(names.values(), shown);
    // Each column's buttons select its own server.
    const QList<Column> columns = columnsOf(launcher.window);
    for (int i = 0; i < columns.size(); ++i) {
        QCOMPARE(launcher.window.serverButtons[names.values()[i]]->getButton(), columns[i].logo);
        launcher.window.ui->serverButtonsGroup->show();
        QCOMPARE(WindowDriver::click(launcher.window, *columns[i].upper), QString());
        QCOMPARE(launcher.window.selectedClientInfo.server, names.values()[i]);
    }
}

void TestServerSelection::columnsHaveTheirSizesAndDoNotOverlap_data()
{
    QTest::addColumn<int>("servers");
    QTest::addColumn<QSize>("logo");
    QTest::addColumn<int>("height");
    QTest::addColumn<bool>("logosArrive");
    const QSize sizes[] = {{438, 205}, {291, 136}, {218, 102}, {174, 81}};
    const int heights[] = {367, 298, 264, 243};
    const char *const words[] = {"one server", "two servers", "three servers", "four servers"};
    for (int i = 0; i < 4; ++i) {
        QTest::newRow(words[i]) << i + 1 << sizes[i] << heights[i] << true;
        const QByteArray before = QByteArray(words[i]) + " whose logos are missing";
        QTest::newRow(before.constData()) << i + 1 << sizes[i] << heights[i] << false;
    }
}

void TestServerSelection::columnsHaveTheirSizesAndDoNotOverlap()
{
    QFETCH(int, servers);
    QFETCH(QSize, logo);
    QFETCH(int, height);
    QFETCH(bool, logosArrive);
    World world;
    QStringList elements;
    for (int i = 0; i < servers; ++i) {
        const QString name = QStringLiteral("Server%1").arg(i);
        // Every kind of column: both buttons, only the one, only the other.
        if (i % 3 != 2) {
            elements << entry(name, official);
        }
        if (i % 3 != 1) {
            elements << entry(name, beta);
        }
        if (logosArrive) {
            world.server.serve(name + QStringLiteral(".png"), Documents::png(320, 150, green));
        }
    }
    world.publish(elements);
    OpenLauncher launcher;
    QVERIFY(launcher.open());
    const testform &window = launcher.window;
    QTRY_VERIFY(allLogosArrived(window));

    const QRect panel = placeOf(window, window.ui->serverButtonsGroup);
    QCOMPARE(panel, QRect(0, 0, 974, 571));
    const QList<Column> columns = columnsOf(window);
    QCOMPARE(columns.size(), servers);
    QList<QRect> places{placeOf(window, window.ui->btnCloseIntro),
                        placeOf(window, window.ui->rememberCheckBox)};
    for (const Column &column : columns) {
        QCOMPARE(column.container->height(), height);
        QCOMPARE(column.upper->size(), QSize(196, 81));
        QCOMPARE(column.lower->size(), QSize(196, 81));
        if (logosArrive) {
            QCOMPARE(column.logo->iconSize(), logo);
            QCOMPARE(column.logo->icon().availableSizes(), QList<QSize>{logo});
            // The whole picture has room, once the layout has answered its arrival.
            TRY_VERIFY_RELATION(column.logo->width(), >=, logo.width(), 5000);
            TRY_VERIFY_RELATION(column.logo->height(), >=, logo.height(), 5000);
        }
        // Centred in the height of the panel.
        const QRect container = placeOf(window, column.container);
        VERIFY_RELATION(qAbs(container.center().y() - panel.center().y()), <=, 1);
        for (const QPushButton *button : {column.logo, column.upper, column.lower}) {
            QVERIFY(button->isVisible());
            const QRect place = placeOf(window, button);
            QVERIFY2(container.contains(place), qPrintable(column.container->title()));
            if (button != column.logo) {
                VERIFY_RELATION(qAbs(place.center().x() - container.center().x()), <=, 1);
            }
            places << place;
        }
        VERIFY_RELATION(placeOf(window, column.logo).bottom(), <,
                        placeOf(window, column.upper).top());
        VERIFY_RELATION(placeOf(window, column.upper).bottom(), <,
                        placeOf(window, column.lower).top());
    }
    for (int i = 0; i < places.size(); ++i) {
        QVERIFY(panel.contains(places[i]));
        for (int j = 0; j < i; ++j) {
            QVERIFY2(!places[i].intersects(places[j]),
                     qPrintable(QStringLiteral("%1 and %2").arg(i).arg(j)));
        }
    }
}

void TestServerSelection::bothKindsHaveAButton()
{
    World world;
    world.publish({entry(alpha, beta), entry(alpha, official)});
    OpenLauncher launcher;
    QVERIFY(launcher.open());
    const Column column = columnsOf(launcher.window).value(0);
    QVERIFY(column.logo->isFlat());
    QVERIFY(column.upper->isFlat());
    QVERIFY(column.lower->isFlat());
    QCOMPARE(column.upper->styleSheet(), QString::fromLatin1(officialSheet));
    QCOMPARE(column.lower->styleSheet(), QString::fromLatin1(betaSheet));
    QCOMPARE(column.container->styleSheet(), QStringLiteral("border: 0px solid black;"));
    QCOMPARE(column.container->title(), QString());
    QCOMPARE(column.container->layout()->spacing(), 0);

    QCOMPARE(WindowDriver::click(launcher.window, *column.upper), QString());
    QCOMPARE(launcher.window.selectedClientInfo.client, official);
    QCOMPARE(WindowDriver::click(launcher.window, QStringLiteral("btnSelectServer")), QString());
    QCOMPARE(WindowDriver::click(launcher.window, *column.lower), QString());
    QCOMPARE(launcher.window.selectedClientInfo.client, beta);

    // The logo selects nothing.
    launcher.window.selectedClientInfo = ClientInfo();
    launcher.window.ui->serverButtonsGroup->show();
    QCOMPARE(WindowDriver::click(launcher.window, *column.logo), QString());
    QCOMPARE(launcher.window.selectedClientInfo.server, QString());
    QVERIFY(launcher.window.ui->serverButtonsGroup->isVisible());
}

void TestServerSelection::onlyOfficialLeavesAnEmptySpace()
{
    World world;
    world.publish({entry(alpha, official), entry(alpha, QStringLiteral("Nightly"))});
    OpenLauncher launcher;
    QVERIFY(launcher.open());
    testform &window = launcher.window;
    const Column column = columnsOf(window).value(0);
    QCOMPARE(column.upper->styleSheet(), QString::fromLatin1(officialSheet));
    QCOMPARE(column.lower->styleSheet(), QString::fromLatin1(placeholderSheet));

    QCOMPARE(WindowDriver::click(window, *column.lower), QString());
    QVERIFY(window.ui->serverButtonsGroup->isVisible());
    QCOMPARE(window.selectedClientInfo.server, QString());
    QVERIFY(!QFile::exists(settingsTxt));
    QCOMPARE(window.clientInfos[alpha].size(), 2);

    QCOMPARE(WindowDriver::click(window, *column.upper), QString());
    QVERIFY(!window.ui->serverButtonsGroup->isVisible());
    QCOMPARE(window.selectedClientInfo.client, official);
}

void TestServerSelection::onlyBetaStandsOnTop()
{
    World world;
    world.publish({entry(alpha, beta)});
    OpenLauncher launcher;
    QVERIFY(launcher.open());
    testform &window = launcher.window;
    const Column column = columnsOf(window).value(0);
    QCOMPARE(column.upper->styleSheet(), QString::fromLatin1(betaSheet));
    QCOMPARE(column.lower->styleSheet(), QString::fromLatin1(placeholderSheet));
    VERIFY_RELATION(placeOf(window, column.upper).bottom(), <, placeOf(window, column.lower).top());

    QCOMPARE(WindowDriver::click(window, *column.lower), QString());
    QVERIFY(window.ui->serverButtonsGroup->isVisible());
    QCOMPARE(window.selectedClientInfo.server, QString());
    QVERIFY(!QFile::exists(settingsTxt));

    QCOMPARE(WindowDriver::click(window, *column.upper), QString());
    QVERIFY(!window.ui->serverButtonsGroup->isVisible());
    QCOMPARE(window.selectedClientInfo.server, alpha);
    QCOMPARE(window.selectedClientInfo.client, beta);
}

void TestServerSelection::neitherKindSelectsAnEmptyEntry()
{
    World world;
    world.publish({entry(alpha, QStringLiteral("Nightly"))});
    OpenLauncher launcher;
    QVERIFY(launcher.open());
    testform &window = launcher.window;
    const QStringList outside = world.folder.treeOutside();
    const Column column = columnsOf(window).value(0);
    QCOMPARE(column.upper->styleSheet(), QString::fromLatin1(betaSheet));
    QCOMPARE(column.lower->styleSheet(), QString::fromLatin1(placeholderSheet));

    QCOMPARE(WindowDriver::click(window, *column.upper), QString());
    // The pair is added as an empty entry, selected, and remembered under its own names.
    QCOMPARE(window.clientInfos[alpha].size(), 2);
    QVERIFY(window.clientInfos[alpha].contains(beta));
    QCOMPARE(window.clientInfos[alpha][beta].version, QString());
    QCOMPARE(window.selectedClientInfo.server, QString());
    QCOMPARE(window.selectedClientInfo.client, QString());
    QCOMPARE(window.ui->labelClient->text(), QString());
    QCOMPARE(window.ui->labelClientVersion->text(), QStringLiteral("()"));
    QCOMPARE(ScratchFolder::read(settingsTxt), QByteArray("Alpha|Beta|true|"));
    QVERIFY(!window.ui->serverButtonsGroup->isVisible());
    QCOMPARE(world.folder.treeOutside(), outside);
    QVERIFY(!QFile::exists(alpha));
}

void TestServerSelection::placeholderShowsNoPicture()
{
    World world;
    world.publish({entry(alpha, official), entry(QStringLiteral("Bravo"), beta)});
    OpenLauncher launcher;
    QVERIFY(launcher.open());
    const QList<Column> columns = columnsOf(launcher.window);
    // As empty as the panel itself: hiding the button changes no pixel.
    for (const Column &column : columns) {
        const QRect place = placeOf(launcher.window, column.lower);
        const QImage with = launcher.window.grab(place).toImage();
        column.lower->hide();
        const QImage without = launcher.window.grab(place).toImage();
        column.lower->show();
        QCOMPARE(with, without);

        const QRect live = placeOf(launcher.window, column.upper);
        const QImage withLive = launcher.window.grab(live).toImage();
        column.upper->hide();
        const QImage withoutLive = launcher.window.grab(live).toImage();
        column.upper->show();
        QVERIFY(withLive != withoutLive);
    }
}

void TestServerSelection::eachServerWarnsTwice_data()
{
    QTest::addColumn<QStringList>("elements");
    QTest::addColumn<int>("warnings");
    const QString bravo = QStringLiteral("Bravo");
    QTest::newRow("no server") << QStringList() << 0;
    QTest::newRow("one with both kinds")
        << QStringList{entry(alpha, official), entry(alpha, beta)} << 2;
    QTest::newRow("one with Official only") << QStringList{entry(alpha, official)} << 2;
    QTest::newRow("two, one with Beta only")
        << QStringList{entry(alpha, official), entry(bravo, beta)} << 4;
}

void TestServerSelection::eachServerWarnsTwice()
{
    QFETCH(QStringList, elements);
    QFETCH(int, warnings);
    World world;
    world.publish(elements);
    const MessageLog log;
    testform window;
    QVERIFY(World::answered(window));
    QCOMPARE(MessageLog::containing(QStringLiteral("Argument missing")).size(), warnings);
}

void TestServerSelection::noServersGiveAnEmptyRow()
{
    World world;
    world.publish({});
    OpenLauncher launcher;
    QVERIFY(launcher.open());
    const auto *row = qobject_cast<QHBoxLayout *>(launcher.window.ui->serverButtonsGroup->layout());
    QVERIFY(row != nullptr);
    QCOMPARE(row->count(), 0);
    QVERIFY(launcher.window.ui->serverButtonsGroup->isVisible());
    QVERIFY(!launcher.window.ui->labelConnecting->isVisible());
    QVERIFY(launcher.window.serverButtons.isEmpty());
}

void TestServerSelection::secondDocumentKeepsThePanel()
{
    World world;
    world.publish({entry(alpha, official)});
    OpenLauncher launcher;
    QVERIFY(launcher.open());
    const Column before = columnsOf(launcher.window).value(0);
    launcher.window.loadBuffer();
    const QList<Column> after = columnsOf(launcher.window);
    QCOMPARE(after.size(), 1);
    QCOMPARE(after[0].upper, before.upper);
    QCOMPARE(WindowDriver::click(launcher.window, *before.upper), QString());
    QCOMPARE(launcher.window.selectedClientInfo.server, alpha);
}

// The last by name has none, wherever it stands in the document, but is in the table all the same.
void TestServerSelection::onlyTheFirstServersHaveColumns()
{
    World world;
    const auto name = [](int number) {
        return QStringLiteral("S%1").arg(number, 3, 10, QLatin1Char('0'));
    };
    const QString last = name(100);
    QStringList entries;
    for (int i = 100; i >= 0; --i) {
        entries << entry(name(i), official);
    }
    ScratchFolder::write(settingsTxt, (last + QStringLiteral("|Official|true|")).toUtf8());
    world.publish(entries);
    testform window;
    QVERIFY(World::answered(window));
    QCOMPARE(window.clientInfos.size(), 101);
    QCOMPARE(columnsOf(window).size(), 100);
    QCOMPARE(window.serverButtons.size(), 100);
    QVERIFY(window.serverButtons.contains(name(0)));
    QVERIFY(window.serverButtons.contains(name(99)));
    QVERIFY(!window.serverButtons.contains(last));
    // A choice of earlier days holds.
    QCOMPARE(window.selectedClientInfo.server, last);
    QCOMPARE(window.selectedClientInfo.version, QStringLiteral("2.0"));

    QTRY_VERIFY(allLogosArrived(window));
    QCOMPARE(world.server.requests(name(99) + QStringLiteral(".png")), 1);
    QCOMPARE(world.server.requests(last + QStringLiteral(".png")), 0);
}

void TestServerSelection::clickSelects_data()
{
    QTest::addColumn<int>("column");
    QTest::addColumn<bool>("upper");
    QTest::addColumn<QString>("version");
    QTest::addColumn<QByteArray>("settings");
    QTest::newRow("Official of the first")
        << 0 << true << QStringLiteral("1.1") << QByteArray("Alpha|Official|true|");
    QTest::newRow("Beta of the first")
        << 0 << false << QStringLiteral("1.2") << QByteArray("Alpha|Beta|true|");
    QTest::newRow("Official of the second")
        << 1 << true << QStringLiteral("2.1") << QByteArray("Two words|Official|true|");
    QTest::newRow("Beta of the third")
        << 2 << true << QStringLiteral("3.2") << QByteArray("Zulu|Beta|true|");
}

void TestServerSelection::clickSelects()
{
    QFETCH(int, column);
    QFETCH(bool, upper);
    QFETCH(QString, version);
    QFETCH(QByteArray, settings);
    World world;
    const QString two = QStringLiteral("Two words");
    const QString zulu = QStringLiteral("Zulu");
    world.publish(
        {entry(alpha, official, QStringLiteral("1.1")), entry(alpha, beta, QStringLiteral("1.2")),
         entry(two, official, QStringLiteral("2.1")), entry(zulu, beta, QStringLiteral("3.2"))});
    OpenLauncher launcher;
    QVERIFY(launcher.open());
    testform &window = launcher.window;
    const Column chosen = columnsOf(window).value(column);
    QCOMPARE(WindowDriver::click(window, *(upper ? chosen.upper : chosen.lower)), QString());

    QCOMPARE(window.selectedClientInfo.version, version);
    QCOMPARE(ScratchFolder::read(settingsTxt), settings);
    QVERIFY(!window.ui->serverButtonsGroup->isVisible());
    QCOMPARE(window.ui->labelClient->text(), window.selectedClientInfo.client.toUpper());
    QCOMPARE(window.ui->labelClientVersion->text(), QStringLiteral("(%1)").arg(version));
    QVERIFY(window.ui->btnDownload->isVisible());
}

void TestServerSelection::rememberBoxDecidesWhatIsWritten_data()
{
    QTest::addColumn<QByteArray>("before");
    QTest::addColumn<bool>("clickBox");
    QTest::addColumn<QByteArray>("after");
    QTest::newRow("checked: the choice is written")
        << QByteArray("Old|Beta|true|code") << false << QByteArray("Alpha|Official|true|code");
    QTest::newRow("unchecked: the earlier choice stays, the flag is false")
        << QByteArray("Old|Beta|true|code") << true << QByteArray("Old|Beta|false|code");
    QTest::newRow("unchecked from the file: the earlier choice stays")
        << QByteArray("Old|Beta|false|code") << false << QByteArray("Old|Beta|false|code");
    QTest::newRow("checked again: the choice is written")
        << QByteArray("Old|Beta|false|code") << true << QByteArray("Alpha|Official|true|code");
}

void TestServerSelection::rememberBoxDecidesWhatIsWritten()
{
    QFETCH(QByteArray, before);
    QFETCH(bool, clickBox);
    QFETCH(QByteArray, after);
    World world;
    world.publish({entry(alpha, official)});
    ScratchFolder::write(settingsTxt, before);
    OpenLauncher launcher;
    QVERIFY(launcher.open());
    testform &window = launcher.window;
    if (clickBox) {
        QCOMPARE(WindowDriver::click(window, QStringLiteral("rememberCheckBox")), QString());
    }
    QCOMPARE(ScratchFolder::read(settingsTxt), before);
    QCOMPARE(WindowDriver::click(window, *columnsOf(window).value(0).upper), QString());
    QCOMPARE(ScratchFolder::read(settingsTxt), after);
    // Selected in either case.
    QCOMPARE(window.selectedClientInfo.server, alpha);
    QVERIFY(!window.ui->serverButtonsGroup->isVisible());
}

void TestServerSelection::rememberBoxIsMirroredAndWrittenLater()
{
    World world;
    world.publish({entry(alpha, official)});
    OpenLauncher launcher;
    QVERIFY(launcher.open());
    testform &window = launcher.window;
    QVERIFY(window.settings.rememberSettings);
    QCOMPARE(WindowDriver::click(window, QStringLiteral("rememberCheckBox")), QString());
    QVERIFY(!window.settings.rememberSettings);
    QCOMPARE(WindowDriver::click(window, QStringLiteral("rememberCheckBox")), QString());
    QVERIFY(window.settings.rememberSettings);
    QVERIFY(!QFile::exists(settingsTxt));
}

void TestServerSelection::statusAreaShowsTheInstalledVersion_data()
{
    QTest::addColumn<QStringList>("installed");
    QTest::addColumn<QString>("version");
    QTest::addColumn<QString>("colour");
    QTest::newRow("none installed: the offered version in red")
        << QStringList() << QStringLiteral("2.0") << QStringLiteral("red");
    QTest::newRow("an older one installed: that in orange")
        << QStringList{QStringLiteral("1.9")} << QStringLiteral("1.9") << QStringLiteral("orange");
    QTest::newRow("a newer one installed: that in orange")
        << QStringList{QStringLiteral("2.0"), QStringLiteral("2.1")} << QStringLiteral("2.1")
        << QStringLiteral("orange");
    QTest::newRow("the offered one installed: that in green")
        << QStringList{QStringLiteral("2.0"), QStringLiteral("1.9")} << QStringLiteral("2.0")
        << QStringLiteral("green");
}

void TestServerSelection::statusAreaShowsTheInstalledVersion()
{
    QFETCH(QStringList, installed);
    QFETCH(QString, version);
    QFETCH(QString, colour);
    World world;
    world.publish({entry(alpha, official), entry(alpha, beta)});
    for (const QString &name : installed) {
        ScratchFolder::makeFolder(QStringLiteral("Alpha/Beta/") + name);
    }
    OpenLauncher launcher;
    QVERIFY(launcher.open());
    testform &window = launcher.window;
    QCOMPARE(WindowDriver::click(window, *columnsOf(window).value(0).lower), QString());
    QCOMPARE(window.ui->labelClient->text(), QStringLiteral("BETA"));
    QCOMPARE(window.ui->labelClientVersion->text(), QStringLiteral("(%1)").arg(version));
    QCOMPARE(window.ui->labelClientVersion->styleSheet(),
             QStringLiteral("color: %1; background-color: rgba(0,0,0,0);").arg(colour));
    QCOMPARE(window.ui->labelServer->styleSheet(),
             QStringLiteral("background-color: rgba(0,0,0,0);"));

    // The buttons follow the same version.
    QCOMPARE(window.ui->btnDownload->isVisible(), colour == QStringLiteral("red"));
    QCOMPARE(window.ui->btnUpdate->isVisible(), colour == QStringLiteral("orange"));
    QCOMPARE(window.ui->btnPlay->isVisible(), colour == QStringLiteral("green"));
    QCOMPARE(window.ui->btnPlay_2->isVisible(), colour == QStringLiteral("orange"));
}

void TestServerSelection::selectionTidiesTheWindow()
{
    World world;
    world.publish({entry(alpha, official)});
    OpenLauncher launcher;
    QVERIFY(launcher.open());
    testform &window = launcher.window;
    window.setMenuState(1);
    window.ui->downloadProgressText->setText(QStringLiteral("an older download"));
    QVERIFY(window.ui->contentNews->isVisibleTo(&window));

    QCOMPARE(WindowDriver::click(window, *columnsOf(window).value(0).upper), QString());
    QCOMPARE(window.menuState, 0);
    QVERIFY(window.ui->contentHome->isVisible());
    QVERIFY(!window.ui->contentNews->isVisible());
    QCOMPARE(window.ui->downloadProgressText->text(), QString());
}

void TestServerSelection::selectServerShowsThePanelAgain()
{
    World world;
    const QString bravo = QStringLiteral("Bravo");
    world.publish({entry(alpha, official), entry(bravo, official)});
    OpenLauncher launcher;
    QVERIFY(launcher.open());
    testform &window = launcher.window;
    const QList<Column> columns = columnsOf(window);
    // Behind the panel the button is out of reach.
    QVERIFY(!WindowDriver::click(window, QStringLiteral("btnSelectServer")).isEmpty());
    QCOMPARE(WindowDriver::click(window, *columns[0].upper), QString());
    QVERIFY(!window.ui->serverButtonsGroup->isVisible());
    QCOMPARE(WindowDriver::click(window, QStringLiteral("btnSelectServer")), QString());
    QVERIFY(window.ui->serverButtonsGroup->isVisible());
    // The selection stands until another is made.
    QCOMPARE(window.selectedClientInfo.server, alpha);
    QCOMPARE(WindowDriver::click(window, *columns[1].upper), QString());
    QCOMPARE(window.selectedClientInfo.server, bravo);
    QCOMPARE(ScratchFolder::read(settingsTxt), QByteArray("Bravo|Official|true|"));
}

void TestServerSelection::rememberedSelectionIsApplied_data()
{
    QTest::addColumn<QByteArray>("settings");
    QTest::addColumn<bool>("applied");
    QTest::newRow("a choice that is offered") << QByteArray("Alpha|Official|true|") << true;
    QTest::newRow("a choice of another kind than the two")
        << QByteArray("Alpha|Nightly|true|code") << true;
    QTest::newRow("a choice not to be remembered") << QByteArray("Alpha|Official|false|") << false;
    QTest::newRow("no server") << QByteArray("|Official|true|") << false;
    QTest::newRow("no client") << QByteArray("Alpha||true|") << false;
    QTest::newRow("nothing") << QByteArray("||true|") << false;
    QTest::newRow("an unknown server") << QByteArray("Gone|Official|true|") << false;
    QTest::newRow("a kind that the server does not offer")
        << QByteArray("Alpha|Beta|true|") << false;
    QTest::newRow("a kind that only another server offers")
        << QByteArray("Bravo|Official|true|") << false;
    QTest::newRow("a name in another case") << QByteArray("alpha|Official|true|") << false;
}

void TestServerSelection::rememberedSelectionIsApplied()
{
    QFETCH(QByteArray, settings);
    QFETCH(bool, applied);
    World world;
    // An entry of no name and one of no kind: an empty memory must not find them.
    world.publish({entry(alpha, official), entry(alpha, QStringLiteral("Nightly")),
                   entry(QStringLiteral("Bravo"), beta), entry(QString(), official),
                   entry(alpha, QStringLiteral(""))});
    ScratchFolder::write(settingsTxt, settings);
    OpenLauncher launcher;
    QVERIFY(launcher.open());
    const testform &window = launcher.window;
    QVERIFY(!window.ui->labelConnecting->isVisible());
    QCOMPARE(window.ui->serverButtonsGroup->isVisible(), !applied);
    QCOMPARE(window.selectedClientInfo.server, applied ? alpha : QString());
    QCOMPARE(ScratchFolder::read(settingsTxt), settings);
    // Asking for an unknown choice adds nothing to the table.
    QCOMPARE(window.clientInfos.size(), 3);
    QCOMPARE(window.clientInfos.value(alpha).size(), 3);
    QCOMPARE(window.clientInfos.value(QStringLiteral("Bravo")).size(), 1);
    QCOMPARE(columnsOf(window).size(), 3);
}

void TestServerSelection::unusableKeysSelectAnEmptyEntry_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<QByteArray>("settings");
    QTest::newRow("an unknown server")
        << QStringLiteral("Gone|Beta") << QByteArray("Gone|Beta|true|");
    QTest::newRow("an unknown kind")
        << QStringLiteral("Alpha|Beta") << QByteArray("Alpha|Beta|true|");
    QTest::newRow("a key without a bar") << QStringLiteral("Alpha") << QByteArray("Alpha||true|");
    QTest::newRow("an empty key") << QString() << QByteArray("||true|");
}

void TestServerSelection::unusableKeysSelectAnEmptyEntry()
{
    QFETCH(QString, key);
    QFETCH(QByteArray, settings);
    World world;
    world.publish({entry(alpha, official)});
    OpenLauncher launcher;
    QVERIFY(launcher.open());
    testform &window = launcher.window;
    paint(window.ui->labelServer, blue);
    const QStringList outside = world.folder.treeOutside();
    window.onServerSelect(key);
    QCOMPARE(window.selectedClientInfo.server, QString());
    QCOMPARE(window.selectedClientInfo.version, QString());
    QCOMPARE(ScratchFolder::read(settingsTxt), settings);
    QCOMPARE(window.clientInfos[alpha][official].version, QStringLiteral("2.0"));
    // No server is selected, and so none is shown.
    QVERIFY(showsColour(window.ui->labelServer, blue));
    QCOMPARE(world.folder.treeOutside(), outside);
}

void TestServerSelection::logoIsShownOnButtonAndLabel()
{
    World world;
    // Green on the left, blue on the right: scaling may neither crop nor smooth.
    QImage logo(320, 150, QImage::Format_RGB32);
    logo.fill(green);
    QPainter(&logo).fillRect(160, 0, 160, 150, QColor(blue));
    world.server.serve(QStringLiteral("Alpha.png"), Documents::png(logo));
    world.publish({entry(alpha, official)});
    OpenLauncher launcher;
    QVERIFY(launcher.open());
    testform &window = launcher.window;
    QTRY_VERIFY(allLogosArrived(window));
    const QPixmap *original = window.serverButtons[alpha]->getPixmap();
    QCOMPARE(original, window.serverButtons[alpha]->getImageDownloader()->getOriginalPixmap());
    QCOMPARE(original->size(), QSize(320, 150));

    const Column column = columnsOf(window).value(0);
    const QImage icon = column.logo->icon().pixmap(QSize(438, 205)).toImage();
    QCOMPARE(icon.size(), QSize(438, 205));
    QCOMPARE(icon.pixel(0, 0), green);
    QCOMPARE(icon.pixel(218, 100), green);
    QCOMPARE(icon.pixel(219, 100), blue);
    QCOMPARE(icon.pixel(437, 204), blue);

    QCOMPARE(WindowDriver::click(window, *column.upper), QString());
    const QImage shown = pictureOn(window.ui->labelServer);
    QCOMPARE(shown.size(), QSize(144, 67));
    QCOMPARE(shown.pixel(71, 33), green);
    QCOMPARE(shown.pixel(72, 33), blue);
    QCOMPARE(shown.pixel(143, 66), blue);
}

void TestServerSelection::logoIsFetchedAndCachedUnderTheServersName()
{
    World world;
    const QString name = QString::fromUtf8("Two w\xC3\xB6rds");
    world.server.serve(name + QStringLiteral(".png"), Documents::png(32, 15, green));
    world.publish({entry(name, official)});
    OpenLauncher launcher;
    QVERIFY(launcher.open());
    QTRY_VERIFY(allLogosArrived(launcher.window));
    QCOMPARE(world.server.requests(name + QStringLiteral(".png")), 1);
    QThreadPool::globalInstance()->waitForDone();
    const QImage cached(name + QStringLiteral(".png"));
    QCOMPARE(cached.size(), QSize(32, 15));
    QCOMPARE(cached.pixel(0, 0), green);
}

void TestServerSelection::lateLogoAppearsWhenItArrives()
{
    World world;
    const QString logo = QStringLiteral("Alpha.png");
    world.server.serveHeld(logo, Documents::png(32, 15, green));
    world.publish({entry(alpha, official)});
    OpenLauncher launcher;
    QVERIFY(launcher.open());
    testform &window = launcher.window;
    const Column column = columnsOf(window).value(0);
    QCOMPARE(window.serverButtons[alpha]->getPixmap(), nullptr);
    QCOMPARE(WindowDriver::click(window, *column.upper), QString());
    QCOMPARE(window.serverButtons[alpha]->getPixmap(), nullptr);
    QVERIFY(pictureOn(window.ui->labelServer).isNull());

    // A picture of an earlier selection would stay.
    paint(window.ui->labelServer, blue);
    QCOMPARE(WindowDriver::click(window, QStringLiteral("btnSelectServer")), QString());
    QCOMPARE(WindowDriver::click(window, *column.upper), QString());
    QVERIFY(showsColour(window.ui->labelServer, blue));

    world.server.release(logo);
    QTRY_VERIFY(window.serverButtons[alpha]->getPixmap() != nullptr);
    QVERIFY(!column.logo->icon().isNull());
    QVERIFY(showsColour(window.ui->labelServer, green));
    QCOMPARE(window.serverButtons[alpha]->targetLabel, nullptr);
}

// It was chosen, but then another one was.
void TestServerSelection::lateLogoOfAnEarlierChoiceStaysAway()
{
    World world;
    const QString bravo = QStringLiteral("Bravo");
    const QString charlie = QStringLiteral("Charlie");
    world.server.serveHeld(QStringLiteral("Alpha.png"), Documents::png(32, 15, red));
    world.server.serveHeld(QStringLiteral("Bravo.png"), Documents::png(32, 15, green));
    world.server.serve(QStringLiteral("Charlie.png"), Documents::png(32, 15, blue));
    world.publish({entry(alpha, official), entry(bravo, official), entry(charlie, official)});
    OpenLauncher launcher;
    QVERIFY(launcher.open());
    testform &window = launcher.window;
    const auto &servers = window.serverButtons;
    QTRY_VERIFY(servers[charlie]->getPixmap() != nullptr);
    const QList<Column> columns = columnsOf(window);
    const auto choose = [&window, &columns](int column) {
        window.on_btnSelectServer_clicked();
        return WindowDriver::click(window, *columns[column].upper);
    };
    QCOMPARE(choose(0), QString());
    QCOMPARE(choose(1), QString());
    world.server.release(QStringLiteral("Alpha.png"));
    QTRY_VERIFY(servers[alpha]->getPixmap() != nullptr);
    QVERIFY(pictureOn(window.ui->labelServer).isNull());

    world.server.release(QStringLiteral("Bravo.png"));
    QTRY_VERIFY(servers[bravo]->getPixmap() != nullptr);
    QVERIFY(showsColour(window.ui->labelServer, green));

    // What was shown once comes at once.
    QCOMPARE(choose(2), QString());
    QVERIFY(showsColour(window.ui->labelServer, blue));
}

void TestServerSelection::lateLogoThatFailsTakesNoPlace_data()
{
    QTest::addColumn<bool>("cached");
    QTest::addColumn<bool>("anotherMeanwhile");
    QTest::newRow("the cached one's") << true << false;
    QTest::newRow("that of a server chosen before") << false << false;
    QTest::newRow("that of a server chosen since") << false << true;
}

void TestServerSelection::lateLogoThatFailsTakesNoPlace()
{
    QFETCH(bool, cached);
    QFETCH(bool, anotherMeanwhile);
    World world;
    const QString logo = QStringLiteral("Alpha.png");
    world.server.serveHeld(logo, QByteArray("no picture"));
    world.server.serve(QStringLiteral("Bravo.png"), Documents::png(32, 15, blue));
    world.publish({entry(alpha, official), entry(QStringLiteral("Bravo"), official)});
    if (cached) {
        ScratchFolder::write(logo, Documents::png(8, 8, red));
    }
    OpenLauncher launcher;
    QVERIFY(launcher.open());
    testform &window = launcher.window;
    QTRY_VERIFY(window.serverButtons[QStringLiteral("Bravo")]->getPixmap() != nullptr);
    window.onServerSelect(QStringLiteral("Bravo|Official"));
    window.onServerSelect(QStringLiteral("Alpha|Official"));
    if (anotherMeanwhile) {
        window.onServerSelect(QStringLiteral("Bravo|Official"));
    }
    world.server.release(logo);
    QTRY_VERIFY(window.serverButtons[alpha]->getImageDownloader()->isDownloaded);
    QVERIFY(window.serverButtons[alpha]->getPixmap()->isNull());
    QVERIFY(showsColour(window.ui->labelServer, cached ? red : blue));
}

void TestServerSelection::cachedLogoIsShownUntilTheDownloadArrives()
{
    World world;
    const QString logo = QStringLiteral("Alpha.png");
    world.server.serveHeld(logo, Documents::png(32, 15, green));
    world.publish({entry(alpha, official)});
    ScratchFolder::write(logo, Documents::png(8, 8, red));
    OpenLauncher launcher;
    QVERIFY(launcher.open());
    testform &window = launcher.window;
    const Column column = columnsOf(window).value(0);
    QVERIFY(column.logo->icon().isNull());
    QCOMPARE(WindowDriver::click(window, *column.upper), QString());
    QVERIFY(showsColour(window.ui->labelServer, red));
    QVERIFY(window.serverButtons[alpha]->getPixmap() != nullptr);
    QVERIFY(!column.logo->icon().isNull());

    world.server.release(logo);
    QTRY_COMPARE(window.serverButtons[alpha]->getPixmap()->size(), QSize(32, 15));
    QVERIFY(showsColour(window.ui->labelServer, green));
}

void TestServerSelection::logoThatWaitsForItsTurnIsShown_data()
{
    QTest::addColumn<bool>("cachedIsShown");
    QTest::newRow("over a cache file") << false;
    QTest::newRow("over a cached logo that was shown before") << true;
}

// The bytes are there; only the picture of another is loaded first.
void TestServerSelection::logoThatWaitsForItsTurnIsShown()
{
    QFETCH(bool, cachedIsShown);
    World world;
    const QString logo = QStringLiteral("Alpha.png");
    world.server.serveHeld(logo, Documents::png(32, 15, green));
    world.publish({entry(alpha, official)});
    ScratchFolder::write(logo, Documents::png(8, 8, red));
    OpenLauncher launcher;
    QVERIFY(launcher.open());
    testform &window = launcher.window;
    const QString key = alpha + QLatin1Char('|') + official;
    if (cachedIsShown) {
        window.onServerSelect(key);
        QVERIFY(showsColour(window.ui->labelServer, red));
    }
    ImageDownloader *downloader = window.serverButtons[alpha]->getImageDownloader();
    QSignalSpy loaded(downloader, &ImageDownloader::loadedImage);
    bool waited = false;
    bool shown = false;
    connect(downloader->fd, &FileDownloader::downloaded, this, [&] {
        waited = loaded.isEmpty();
        window.onServerSelect(key);
        shown = showsColour(window.ui->labelServer, green);
    });
    // Keeps the turns taken: each asks for the next.
    auto busy = std::make_unique<QObject>();
    const std::function<void()> work = [&busy, &work] { OnePerTurn::take(busy.get(), work); };
    work();
    world.server.release(logo);
    QTRY_COMPARE(loaded.count(), 1);
    busy.reset();
    QVERIFY(waited);
    QVERIFY(shown);
    // Its turn comes as well, and changes nothing.
    bool turnCame = false;
    OnePerTurn::take(this, [&turnCame] { turnCame = true; });
    QTRY_VERIFY(turnCame);
    QCOMPARE(loaded.count(), 1);
    QThreadPool::globalInstance()->waitForDone();
    QCOMPARE(ScratchFolder::read(logo), Documents::png(32, 15, green));
}

void TestServerSelection::failedLogo_data()
{
    QTest::addColumn<int>("status");
    QTest::addColumn<QByteArray>("body");
    QTest::newRow("not found") << 404 << QByteArray();
    QTest::newRow("not found, with a page") << 404 << QByteArray("<html>no</html>");
    QTest::newRow("bytes that are no picture") << 200 << QByteArray("no picture");
    QTest::newRow("half a picture's head") << 200 << Documents::png(32, 15, green).left(20);
    QTest::newRow("nothing") << 200 << QByteArray();
}

void TestServerSelection::failedLogo()
{
    QFETCH(int, status);
    QFETCH(QByteArray, body);
    World world;
    const QString logo = QStringLiteral("Alpha.png");
    world.server.serve(logo, body, status);
    world.publish({entry(alpha, official)});
    ScratchFolder::write(logo, Documents::png(8, 8, red));
    OpenLauncher launcher;
    QVERIFY(launcher.open());
    testform &window = launcher.window;
    QTRY_VERIFY(window.serverButtons[alpha]->getPixmap() != nullptr);
    QVERIFY(window.serverButtons[alpha]->getPixmap()->isNull());

    // Blank and flat, in its place.
    const Column column = columnsOf(window).value(0);
    QVERIFY(column.logo->icon().isNull());
    QVERIFY(column.logo->isFlat());
    QVERIFY(column.logo->isVisible());
    QCOMPARE(column.logo->iconSize(), QSize(438, 205));

    // The cache file of an earlier run is lost.
    QThreadPool::globalInstance()->waitForDone();
    QVERIFY(QFile::exists(logo));
    QCOMPARE(QFileInfo(logo).size(), qint64(0));

    // A selection shows the empty picture, and does not look for a file again.
    ScratchFolder::write(logo, Documents::png(8, 8, red));
    paint(window.ui->labelServer, blue);
    QCOMPARE(WindowDriver::click(window, *column.upper), QString());
    QVERIFY(pictureOn(window.ui->labelServer).isNull());
}

void TestServerSelection::targetLabelReceivesTheNextPicture()
{
    World world;
    const QString logo = QStringLiteral("Alpha.png");
    world.server.serveHeld(logo, Documents::png(32, 15, green));
    world.publish({entry(alpha, official)});
    OpenLauncher launcher;
    QVERIFY(launcher.open());
    testform &window = launcher.window;
    ServerButton *server = window.serverButtons[alpha];
    QCOMPARE(server->targetLabel, nullptr);
    QLabel target;
    target.resize(50, 20);
    server->targetLabel = &target;
    world.server.release(logo);
    QTRY_VERIFY(server->getPixmap() != nullptr);
    QVERIFY(showsColour(&target, green));
    QCOMPARE(server->targetLabel, nullptr);

    // Only the next one.
    ScratchFolder::write(logo, Documents::png(8, 8, red));
    server->load(true);
    QCOMPARE(server->getPixmap()->size(), QSize(8, 8));
    QVERIFY(showsColour(&target, green));
}

void TestServerSelection::cacheFileIsReadOnlyOnDemand()
{
    const World world;
    {
        ServerButton server(alpha, QString::fromLatin1(TestSettings::nobodyListens), QSize(40, 20));
        server.getImageDownloader()->setParent(&server);
        QCOMPARE(server.getPixmap(), nullptr);
        QVERIFY(server.getButton()->isFlat());
        QCOMPARE(server.getButton()->parent(), nullptr);
        // Without a file nothing is announced.
        server.load(true);
        QCOMPARE(server.getPixmap(), nullptr);
        QVERIFY(server.getButton()->icon().isNull());

        ScratchFolder::write(QStringLiteral("Alpha.png"), Documents::png(8, 8, red));
        QCOMPARE(server.getPixmap(), nullptr);
        server.load(true);
        QVERIFY(server.getPixmap() != nullptr);
        QCOMPARE(server.getPixmap()->size(), QSize(8, 8));
        QCOMPARE(server.getButton()->iconSize(), QSize(40, 20));
        QCOMPARE(server.getButton()->icon().availableSizes(), QList<QSize>{QSize(40, 20)});
    }
    QCOMPARE(ScratchFolder::tree(), QStringList{QStringLiteral("Alpha.png")});
}

QTEST_MAIN(TestServerSelection)
#include "tst_serverselection.moc"
