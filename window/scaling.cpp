// Proportional scaling: the design geometry is recorded once, and every widget, picture and font is
// set from it at each new size.

#include "fetch/imagedownloader.h"
#include "info/serverbutton.h"
#include "window/designscale.h"
#include "window/mysizegrip.h"
#include "window/testform.h"

#include <QLabel>
#include <QPushButton>

#include <algorithm>

namespace
{
// Looked up exactly: a subclass does not count.
bool isExactly(const QWidget *widget, const char *className)
{
    return qstrcmp(widget->metaObject()->className(), className) == 0;
}
} // namespace

void testform::recordDesignGeometry()
{
    W = width();
    prevWidth = W;
    W_MIN = 487;
    H = height();
    prevHeight = H;
    RATIO = static_cast<float>(W) / static_cast<float>(H);
    H_MIN = static_cast<int>(static_cast<float>(W_MIN) / RATIO);
    prepWidgets(this);

    const auto widgets = findChildren<QWidget *>();
    for (const QWidget *widget : widgets) {
        const QString name = widget->objectName();
        widths[name] = widget->width();
        heights[name] = widget->height();
        xs[name] = widget->x();
        ys[name] = widget->y();
        if (DesignScale::hasFont(widget->styleSheet())) {
            fontSizes[name] = DesignScale::fontSize(widget->styleSheet());
        }
    }
}

void testform::prepWidgets(QWidget *widget)
{
    const auto prepare = [widget] {
        widget->setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Preferred);
        widget->setMinimumSize(0, 0);
        widget->setMaximumSize(99999, 99999);
    };
    prepare();
    // kept: once more on the widget itself for each descendant. The descendants keep the policies
    // and limits of the form, such as the fixed size of the lines under the tabs.
    const auto descendants = widget->findChildren<QWidget *>();
    std::for_each(descendants.begin(), descendants.end(),
                  [&prepare](const QWidget *) { prepare(); });
    setMinimumSize(W_MIN, H_MIN);
}

void testform::customResize(int w, int h)
{
    const QSize target = w == 0 || h == 0 ? size() : QSize(w, h);
    const QSize previous(prevWidth, prevHeight);
    if (target == previous) {
        return;
    }
    const float ratio = DesignScale::ratio({W, H}, previous, target);
    const auto widgets = findChildren<QWidget *>();
    for (QWidget *widget : widgets) {
        // The main window lays out its central widget itself.
        if (widget->objectName() != QLatin1String("mainwindow") &&
            widget != static_cast<QWidget *>(sizeGrip)) {
            scaleWidget(widget, ratio);
        }
    }
    prevWidth = DesignScale::scaledWindowSide(W, ratio);
    prevHeight = DesignScale::scaledWindowSide(H, ratio);
    resize(prevWidth, prevHeight);
    placeServerColumnsAnew();
}

// Looking a name up enters it: widgets made at run time, such as the server columns, have no design
// geometry and end at nothing until their layout places them again, after customResize().
void testform::scaleWidget(QWidget *widget, float ratio)
{
    const QString name = widget->objectName();
    const QSize size(DesignScale::scaled(widths[name], ratio),
                     DesignScale::scaled(heights[name], ratio));
    if (isExactly(widget, "QLabel")) {
        scaleNewsPicture(static_cast<QLabel *>(widget), size);
    } else if (isExactly(widget, "QPushButton")) {
        auto *button = static_cast<QPushButton *>(widget);
        if (button->iconSize().width() != 0) {
            button->setIconSize(size);
        }
    }
    const QString sheet = widget->styleSheet();
    if (DesignScale::hasFont(sheet)) {
        const QString scaledSheet =
            DesignScale::withFontSize(sheet, DesignScale::scaledFontSize(fontSizes[name], ratio));
        // Setting a sheet is by far the dearest step here, and many sizes share a font size.
        if (scaledSheet != sheet) {
            widget->setStyleSheet(scaledSheet);
        }
    }
    widget->resize(size);
    widget->move(DesignScale::scaled(xs[name], ratio), DesignScale::scaled(ys[name], ratio));
}

// Always from the unscaled picture: scaling what the label shows would lose detail at every step.
// A label of no news item keeps its picture as it is.
void testform::scaleNewsPicture(QLabel *label, QSize size)
{
    // An empty picture would look like none at the next step, and the news would be lost.
    if (label->pixmap(Qt::ReturnByValue).isNull() || size.isEmpty()) {
        return;
    }
    const News *item = newsItemOf(label);
    const QPixmap *original = item != nullptr ? item->getOriginalPixmap() : nullptr;
    if (original != nullptr) {
        label->setPixmap(scaledToSize(*original, size, label->devicePixelRatioF()));
    }
}

// The window is on a screen of another density: the same places, with other pixels in them.
void testform::remakePictures()
{
    const auto labels = findChildren<QLabel *>();
    for (QLabel *label : labels) {
        scaleNewsPicture(label, label->size());
    }
    for (ServerButton *server : qAsConst(serverButtons)) {
        server->remakeIcon();
    }
    remakeServerLogo();
}

// The item that shows its picture on this label, slides first; null for none.
const News *testform::newsItemOf(const QLabel *label) const
{
    const auto shows = [label](const News &item) { return item.imageLabel == label; };
    const News *const slide = std::find_if(homeNews, homeNews + numSlides, shows);
    if (slide != homeNews + numSlides) {
        return slide;
    }
    const News *const tile = std::find_if(news, news + numNews, shows);
    return tile != news + numNews ? tile : nullptr;
}
