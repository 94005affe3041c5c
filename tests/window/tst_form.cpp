#include "support/relation.h"
#include "ui_testform.h"
#include "window/formtable.h"

#include <QAbstractButton>
#include <QFrame>
#include <QGroupBox>
#include <QLabel>
#include <QMap>
#include <QTest>

// The form as setupUi() leaves it, against a table of its own.
class TestForm : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void window();
    void keepsAnObjectName();
    void widgets_data();
    void widgets();
    void nothingElse();
    void stacking_data();
    void stacking();
    void transparentAreasReceiveTheClicks_data();
    void transparentAreasReceiveTheClicks();
    void details();
    void focusPolicies_data();
    void focusPolicies();
    void nothingHiddenOrDisabled();
    void minimumSizeIsKept();
    void sharedRectangles_data();
    void sharedRectangles();
    void tilesClipTheirStrips_data();
    void tilesClipTheirStrips();
    void titleStripAndPagesOverlap();

private:
    template<class T>
    T *find(const char *name) const
    {
        return m_window->findChild<T *>(QLatin1String(name));
    }
    static QString textOf(const QWidget *widget);

    std::unique_ptr<QMainWindow> m_window;
    Ui::testform m_ui{};
};

void TestForm::init()
{
    m_window = std::make_unique<QMainWindow>();
    m_ui.setupUi(m_window.get());
}

void TestForm::cleanup()
{
    m_window.reset();
}

QString TestForm::textOf(const QWidget *widget)
{
    if (const auto *label = qobject_cast<const QLabel *>(widget)) {
        return label->text();
    }
    if (const auto *button = qobject_cast<const QAbstractButton *>(widget)) {
        return button->text();
    }
    if (const auto *group = qobject_cast<const QGroupBox *>(widget)) {
        return group->title();
    }
    return {};
}

void TestForm::window()
{
    QCOMPARE(m_window->objectName(), QStringLiteral("testform"));
    QCOMPARE(m_window->size(), QSize(974, 571));
    QCOMPARE(m_window->minimumSize(), QSize(487, 286));
    QCOMPARE(m_window->maximumSize(), QSize(99999, 99999));
    const QSizePolicy policy = m_window->sizePolicy();
    QCOMPARE(policy.horizontalPolicy(), QSizePolicy::Preferred);
    QCOMPARE(policy.verticalPolicy(), QSizePolicy::Preferred);
    QCOMPARE(policy.horizontalStretch(), 0);
    QCOMPARE(policy.verticalStretch(), 0);
    QCOMPARE(policy.hasHeightForWidth(), QMainWindow().sizePolicy().hasHeightForWidth());
    QCOMPARE(m_window->styleSheet(), QString());
    QCOMPARE(m_window->windowTitle(), QStringLiteral("Emberwake Launcher"));
    QCOMPARE(m_window->centralWidget(), m_ui.mainwindow);
    QCOMPARE(m_ui.mainwindow->sizePolicy().horizontalPolicy(), QSizePolicy::Preferred);
    QCOMPARE(m_ui.mainwindow->sizePolicy().verticalPolicy(), QSizePolicy::Preferred);
    QCOMPARE(m_ui.mainwindow->styleSheet(), QString());
}

void TestForm::keepsAnObjectName()
{
    QMainWindow named;
    named.setObjectName(QStringLiteral("mine"));
    Ui::testform form;
    form.setupUi(&named);
    QCOMPARE(named.objectName(), QStringLiteral("mine"));
}

void TestForm::widgets_data()
{
    QTest::addColumn<int>("index");
    for (std::size_t i = 0; i < std::size(FormTable::rows); ++i) {
        QTest::newRow(FormTable::rows[i].name) << static_cast<int>(i);
    }
}

void TestForm::widgets()
{
    QFETCH(int, index);
    const FormTable::Row &row = FormTable::rows[index];
    const auto *widget = find<QWidget>(row.name);
    QVERIFY(widget != nullptr);
    QCOMPARE(widget->metaObject()->className(), row.className);
    QCOMPARE(widget->parentWidget()->objectName(), QLatin1String(row.parent));
    if (QLatin1String(row.name) != QLatin1String("mainwindow")) { // laid out by the window
        QCOMPARE(widget->geometry(), row.geometry);
    }
    QCOMPARE(textOf(widget), QLatin1String(row.text));
    QCOMPARE(widget->styleSheet(), QLatin1String(FormTable::sheets[row.sheet]));

    const bool ownPointer = widget->testAttribute(Qt::WA_SetCursor);
    QCOMPARE(ownPointer, row.pointer != FormTable::Pointer::Arrow);
    if (ownPointer) {
        QCOMPARE(widget->cursor().shape(), row.pointer == FormTable::Pointer::Hand
                                               ? Qt::PointingHandCursor
                                               : Qt::OpenHandCursor);
    }

    const QFont font = widget->font();
    const QFont ordinary = m_window->font();
    switch (row.font) {
    case FormTable::Font::Default:
        QCOMPARE(font.family(), ordinary.family());
        QCOMPARE(font.pointSize(), ordinary.pointSize());
        QCOMPARE(font.weight(), 50);
        QVERIFY(!font.underline());
        break;
    case FormTable::Font::Lato:
        QCOMPARE(font.family(), QStringLiteral("Lato"));
        QCOMPARE(font.weight(), 50);
        QVERIFY(!font.italic());
        QCOMPARE(font.pointSize(), ordinary.pointSize());
        break;
    case FormTable::Font::Bold:
        QCOMPARE(font.family(), ordinary.family());
        QCOMPARE(font.pointSize(), ordinary.pointSize());
        QCOMPARE(font.weight(), 75);
        break;
    case FormTable::Font::Points8:
    case FormTable::Font::Points8Bold:
        QCOMPARE(font.pointSize(), 8);
        QCOMPARE(font.weight(), row.font == FormTable::Font::Points8 ? 50 : 75);
        break;
    case FormTable::Font::Points12:
        QCOMPARE(font.pointSize(), 12);
        break;
    case FormTable::Font::Points20:
        QCOMPARE(font.pointSize(), 20);
        break;
    }
}

void TestForm::nothingElse()
{
    QStringList expected;
    for (const FormTable::Row &row : FormTable::rows) {
        expected << QLatin1String(row.name);
    }
    QStringList found;
    const auto all = m_window->findChildren<QWidget *>();
    for (const QWidget *widget : all) {
        // The toolkit names its own helpers "qt_...".
        if (!widget->objectName().startsWith(QStringLiteral("qt_"))) {
            found << widget->objectName();
        }
    }
    expected.sort();
    found.sort();
    QCOMPARE(found, expected);
}

void TestForm::stacking_data()
{
    QTest::addColumn<QString>("order");
    const QMap<QString, const char *> raised{
        {QStringLiteral("_menubar"),
         "btnNewsGroupActive btnHomeGroupActive btnHomeGroup btnNewsGroup btnClose_ "
         "btnFullscreen_ btnMinimize_ btnClose btnFullscreen btnMinimize btnSelectServer "
         "labelClient labelClientVersion labelServer"},
        {QStringLiteral("newsBig"), "newsBigBackground downSection subtitleNewsBig titleNewsBig"},
        {QStringLiteral("newsMedium2"),
         "newsMedium2Background downSection_3 subtitleNewsMedium2 titleNewsMedium2"},
        {QStringLiteral("homeNewsImage"),
         "homeNewsImageBackground3 homeNewsImageBackground2 homeNewsImageBackground"},
        {QStringLiteral("contents"), "contentHome contentNews"},
        {QStringLiteral("mainwindow"), "backgroundImage _menubar contents serverButtonsGroup"},
    };
    QMap<QString, QStringList> orders;
    for (const FormTable::Row &row : FormTable::rows) {
        orders[QLatin1String(row.parent)] << QLatin1String(row.name);
    }
    orders.remove(QStringLiteral("testform"));
    for (auto order = orders.cbegin(); order != orders.cend(); ++order) {
        const char *explicitly = raised.value(order.key(), nullptr);
        QTest::newRow(qPrintable(order.key()))
            << (explicitly != nullptr ? QString::fromLatin1(explicitly)
                                      : order.value().join(QLatin1Char(' ')));
    }
}

// Children stand in their parent's list from the lowest to the topmost.
void TestForm::stacking()
{
    QFETCH(QString, order);
    QStringList found;
    const QObjectList children = find<QWidget>(QTest::currentDataTag())->children();
    for (const QObject *child : children) {
        if (child->isWidgetType()) {
            found << child->objectName();
        }
    }
    QCOMPARE(found.join(QLatin1Char(' ')), order);
}

void TestForm::transparentAreasReceiveTheClicks_data()
{
    QTest::addColumn<QString>("page"); // shown alone, as the window does
    QTest::newRow("btnClose") << QStringLiteral("contentHome");
    QTest::newRow("btnFullscreen") << QStringLiteral("contentHome");
    QTest::newRow("btnMinimize") << QStringLiteral("contentHome");
    QTest::newRow("btnHomeNews") << QStringLiteral("contentHome");
    for (const char *tile : {"btnNewsBig", "btnNewsMedium1", "btnNewsMedium2", "btnNewsSmall1",
                             "btnNewsSmall2", "btnNewsSmall3"}) {
        QTest::newRow(tile) << QStringLiteral("contentNews");
    }
}

void TestForm::transparentAreasReceiveTheClicks()
{
    QFETCH(QString, page);
    m_ui.serverButtonsGroup->hide();
    m_ui.contentHome->setVisible(page == QStringLiteral("contentHome"));
    m_ui.contentNews->setVisible(page == QStringLiteral("contentNews"));
    m_window->show();
    const auto *area = find<QWidget>(QTest::currentDataTag());
    const QWidget *hit = m_window->childAt(area->mapTo(m_window.get(), area->rect().center()));
    QVERIFY(hit != nullptr);
    QCOMPARE(hit->objectName(), area->objectName());
}

void TestForm::details()
{
    for (const QFrame *line : {m_ui.lineNews, m_ui.lineHome}) {
        QCOMPARE(line->frameShape(), QFrame::HLine);
        QCOMPARE(line->frameShadow(), QFrame::Sunken);
        QCOMPARE(line->lineWidth(), 0);
        QCOMPARE(line->sizePolicy().horizontalPolicy(), QSizePolicy::Fixed);
        QCOMPARE(line->sizePolicy().verticalPolicy(), QSizePolicy::Fixed);
    }
    QCOMPARE(m_ui.labelClient->alignment(), Qt::AlignRight | Qt::AlignVCenter);
    QCOMPARE(m_ui.labelClientVersion->alignment(), Qt::AlignLeft | Qt::AlignVCenter);
    QCOMPARE(m_ui.labelServer->alignment(), Qt::AlignCenter);
    QCOMPARE(m_ui.labelConnecting->alignment(), Qt::AlignCenter);
    for (const QLabel *text :
         {m_ui.homeNewsDescription, m_ui.homeNewsDescription2, m_ui.homeNewsDescription3}) {
        QCOMPARE(text->alignment(), Qt::AlignLeft | Qt::AlignTop);
        QCOMPARE(text->textFormat(), Qt::AutoText);
        QVERIFY(text->wordWrap());
    }
    for (const QLabel *label :
         {m_ui.subtitleNewsBig, m_ui.subtitleNewsMedium1, m_ui.subtitleNewsMedium2,
          m_ui.titleNewsSmall1, m_ui.titleNewsSmall2, m_ui.titleNewsSmall3}) {
        QVERIFY(!label->acceptDrops());
    }
    for (const QPushButton *button :
         {m_ui.btnDownload, m_ui.btnPlay, m_ui.btnUpdate, m_ui.btnPlay_2}) {
        QCOMPARE(button->iconSize(), QSize(177, 62));
        QVERIFY(!button->isFlat());
    }
    for (const QWidget *plain :
         {static_cast<QWidget *>(m_ui._menubar), static_cast<QWidget *>(m_ui.newsBig),
          static_cast<QWidget *>(m_ui.homeNewsImage), static_cast<QWidget *>(m_ui.labelClient),
          static_cast<QWidget *>(m_ui.labelClientVersion)}) {
        QVERIFY(!plain->autoFillBackground());
    }
    QCOMPARE(m_ui.labelClient->layoutDirection(), Qt::LeftToRight);
    QCOMPARE(m_ui.labelClientVersion->layoutDirection(), Qt::LeftToRight);
    QCOMPARE(m_ui.downloadProgressBar->value(), 24);
    QCOMPARE(m_ui.downloadProgressBar->minimum(), 0);
    QCOMPARE(m_ui.downloadProgressBar->maximum(), 100);
    QVERIFY(!m_ui.downloadProgressBar->isTextVisible());
    QVERIFY(m_ui.rememberCheckBox->isChecked());
}

void TestForm::focusPolicies_data()
{
    QTest::addColumn<int>("policy");
    for (const char *name : {"btnFullscreen_", "btnMinimize_", "btnFullscreen", "btnMinimize"}) {
        QTest::newRow(name) << int(Qt::NoFocus);
    }
    for (const char *name : {"btnClose_", "btnClose", "btnPlay", "btnNewsBig", "btnCloseIntro"}) {
        QTest::newRow(name) << int(Qt::StrongFocus);
    }
}

void TestForm::focusPolicies()
{
    QFETCH(int, policy);
    QCOMPARE(int(find<QWidget>(QTest::currentDataTag())->focusPolicy()), policy);
}

void TestForm::nothingHiddenOrDisabled()
{
    const auto all = m_window->findChildren<QWidget *>();
    for (const QWidget *widget : all) {
        QVERIFY2(!widget->testAttribute(Qt::WA_WState_ExplicitShowHide),
                 qPrintable(widget->objectName()));
        QVERIFY2(widget->isEnabled(), qPrintable(widget->objectName()));
    }
}

void TestForm::minimumSizeIsKept()
{
    m_window->resize(300, 200);
    QCOMPARE(m_window->size(), QSize(487, 286));
    m_window->resize(5000, 4000);
    QCOMPARE(m_window->size(), QSize(5000, 4000));
}

void TestForm::sharedRectangles_data()
{
    QTest::addColumn<QStringList>("names");
    const auto row = [](const char *name, const char *names) {
        QTest::newRow(name) << QString::fromLatin1(names).split(QLatin1Char(' '));
    };
    row("HOME tab", "btnHomeGroupActive btnHomeGroup");
    row("NEWS tab", "btnNewsGroupActive btnNewsGroup");
    row("slide titles", "homeNewsTitle homeNewsTitle2 homeNewsTitle3");
    row("slide texts", "homeNewsDescription homeNewsDescription2 homeNewsDescription3");
    row("slide pictures",
        "homeNewsImageBackground homeNewsImageBackground2 homeNewsImageBackground3");
    row("action buttons", "btnDownload btnPlay btnUpdate");
}

void TestForm::sharedRectangles()
{
    QFETCH(QStringList, names);
    const QRect first = m_window->findChild<QWidget *>(names.constFirst())->geometry();
    for (const QString &name : names) {
        QCOMPARE(m_window->findChild<QWidget *>(name)->geometry(), first);
    }
}

void TestForm::tilesClipTheirStrips_data()
{
    QTest::addColumn<QString>("tile");
    QTest::newRow("downSection_2") << QStringLiteral("newsMedium1");
    QTest::newRow("downSection_3") << QStringLiteral("newsMedium2");
    QTest::newRow("titleNewsMedium1") << QStringLiteral("newsMedium1");
    QTest::newRow("subtitleNewsSmall1") << QStringLiteral("newsSmall1");
    QTest::newRow("titleNewsSmall3") << QStringLiteral("newsSmall3");
}

void TestForm::tilesClipTheirStrips()
{
    QFETCH(QString, tile);
    m_ui.contentHome->hide();
    m_window->show();
    const auto *strip = find<QWidget>(QTest::currentDataTag());
    const int tileWidth = m_window->findChild<QWidget *>(tile)->width();
    VERIFY_RELATION(strip->geometry().right(), >, tileWidth);
    VERIFY_RELATION(strip->x() + strip->visibleRegion().boundingRect().right(), <, tileWidth);
}

void TestForm::titleStripAndPagesOverlap()
{
    const QRect both = m_ui._menubar->geometry() & m_ui.contents->geometry();
    QCOMPARE(both, QRect(0, 63, 971, 22));
    const QObjectList siblings = m_ui.mainwindow->children();
    VERIFY_RELATION(siblings.indexOf(m_ui.contents), >, siblings.indexOf(m_ui._menubar));
}

QTEST_MAIN(TestForm)
#include "tst_form.moc"
