// The two tabs, the carousel of slides and the tiles: showing them and opening their pages.

#include "base/console.h"
#include "base/labeltext.h"
#include "ui_testform.h"
#include "window/testform.h"

#include <QDesktopServices>
#include <QUrl>

#include <algorithm>
#include <iterator>

namespace
{
News boundTo(QLabel *image, QLabel *title, QLabel *subtitle)
{
    News item;
    item.imageLabel = image;
    item.labelTitle = title;
    item.labelSubtitle = subtitle;
    return item;
}

void setLabelsVisible(const News &item, bool visible)
{
    item.labelTitle->setVisible(visible);
    item.labelSubtitle->setVisible(visible);
    item.imageLabel->setVisible(visible);
}

// A button without letters of its own is called what its labels say; before the document arrived,
// what it is.
void nameAfter(QWidget *button, const News &item, const QString &otherwise)
{
    const QString title = spokenText(item.title);
    button->setAccessibleName(title.trimmed().isEmpty() ? otherwise : title);
    button->setAccessibleDescription(spokenText(item.description));
}

// In the user's own browser; an empty or unusable address opens nothing.
void openPage(const QString &address)
{
    QDesktopServices::openUrl(QUrl(address, QUrl::TolerantMode));
}
} // namespace

void testform::initNewsGui()
{
    static_assert(DocumentLimits::slides == 3, "each slide has its own labels in the form");
    homeNews[0] = boundTo(ui->homeNewsImageBackground, ui->homeNewsTitle, ui->homeNewsDescription);
    homeNews[1] =
        boundTo(ui->homeNewsImageBackground2, ui->homeNewsTitle2, ui->homeNewsDescription2);
    homeNews[2] =
        boundTo(ui->homeNewsImageBackground3, ui->homeNewsTitle3, ui->homeNewsDescription3);
    for (int i = 0; i < numSlides; ++i) {
        setLabelsVisible(homeNews[i], i == 0);
    }

    news[IMAGE_NEWS_BIG] = boundTo(ui->newsBigBackground, ui->titleNewsBig, ui->subtitleNewsBig);
    news[IMAGE_NEWS_MEDIUM_1] =
        boundTo(ui->newsMedium1Background, ui->titleNewsMedium1, ui->subtitleNewsMedium1);
    news[IMAGE_NEWS_MEDIUM_2] =
        boundTo(ui->newsMedium2Background, ui->titleNewsMedium2, ui->subtitleNewsMedium2);
    news[IMAGE_NEWS_SMALL_1] =
        boundTo(ui->newsSmall1Background, ui->titleNewsSmall1, ui->subtitleNewsSmall1);
    news[IMAGE_NEWS_SMALL_2] =
        boundTo(ui->newsSmall2Background, ui->titleNewsSmall2, ui->subtitleNewsSmall2);
    news[IMAGE_NEWS_SMALL_3] =
        boundTo(ui->newsSmall3Background, ui->titleNewsSmall3, ui->subtitleNewsSmall3);
}

void testform::loadNews(bool isBuffer)
{
    Console::out(QStringLiteral("loading news. with buffer:%1\n").arg(isBuffer ? 1 : 0));
    for (News &item : homeNews) {
        item.loadNews(isBuffer);
    }
    for (News &item : news) {
        item.loadNews(isBuffer);
    }
    nameNews();
}

void testform::nameNews()
{
    QWidget *const tiles[] = {ui->btnNewsBig,    ui->btnNewsMedium1, ui->btnNewsMedium2,
                              ui->btnNewsSmall1, ui->btnNewsSmall2,  ui->btnNewsSmall3};
    static_assert(std::size(tiles) == DocumentLimits::tiles, "each tile has its own button");
    for (int i = 0; i < numNews; ++i) {
        nameAfter(tiles[i], news[i], tr("News %1").arg(i + 1));
    }
    nameSlide();
}

void testform::nameSlide()
{
    const int shown = std::max(slideState, 0);
    nameAfter(ui->btnHomeNews, homeNews[shown], tr("Slide %1").arg(shown + 1));
}

void testform::setMenuState(int ms)
{
    if (ms == menuState) {
        return;
    }
    menuState = ms;
    for (int i = 0; i < numButtons; ++i) {
        const bool active = i == ms;
        activeButtons[i]->setVisible(active);
        passiveButtons[i]->setVisible(!active);
        contents[i]->setVisible(active);
    }
}

void testform::setSlideState(int s)
{
    // The unwrapped index is compared, so that one full turn applies the visibility again.
    if (s == slideState) {
        return;
    }
    slideState = (s % numSlides + numSlides) % numSlides;
    for (int i = 0; i < numSlides; ++i) {
        const bool active = i == slideState;
        activeSlides[i]->setVisible(active);
        passiveSlides[i]->setVisible(!active);
        setLabelsVisible(homeNews[i], active);
    }
    nameSlide();
}

void testform::on_btnHome_2_clicked()
{
    setMenuState(0);
}

void testform::on_btnNews_2_clicked()
{
    setMenuState(1);
}

void testform::on_btnRight_clicked()
{
    setSlideState(slideState + 1);
}

void testform::on_btnLeft_clicked()
{
    setSlideState(slideState - 1);
}

void testform::on_btnHomeNews_clicked()
{
    openPage(homeNews[slideState].newsUrl);
}

void testform::on_btnNewsBig_clicked()
{
    openPage(news[IMAGE_NEWS_BIG].newsUrl);
}

void testform::on_btnNewsMedium1_clicked()
{
    openPage(news[IMAGE_NEWS_MEDIUM_1].newsUrl);
}

void testform::on_btnNewsMedium2_clicked()
{
    openPage(news[IMAGE_NEWS_MEDIUM_2].newsUrl);
}

void testform::on_btnNewsSmall1_clicked()
{
    openPage(news[IMAGE_NEWS_SMALL_1].newsUrl);
}

void testform::on_btnNewsSmall2_clicked()
{
    openPage(news[IMAGE_NEWS_SMALL_2].newsUrl);
}

void testform::on_btnNewsSmall3_clicked()
{
    openPage(news[IMAGE_NEWS_SMALL_3].newsUrl);
}

void testform::on_btnFacebook_clicked()
{
    openPage(urlFacebook);
}

void testform::on_btnDiscord_clicked()
{
    openPage(urlDiscord);
}
