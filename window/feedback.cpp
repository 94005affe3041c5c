// Hover and press feedback of the watched buttons.

#include "ui_testform.h"
#include "window/qgraphicsgloweffect.h"
#include "window/testform.h"

#include <QEvent>
#include <QGraphicsOpacityEffect>

#include <algorithm>
#include <array>

namespace
{
enum class WhileDisabled { React, Spare };

// What one watched button does to which widget.
struct Feedback {
    QWidget *button;
    QWidget *glowing;               // on entering
    std::array<QWidget *, 2> clear; // on leaving, in this order; the second may be null
    QWidget *dimmed;                // on pressing, until the release
    WhileDisabled whileDisabled;    // whether entering and pressing count then
};

Feedback onItself(QWidget *button, WhileDisabled whileDisabled = WhileDisabled::React)
{
    return {button, button, {button, nullptr}, button, whileDisabled};
}

// The click area is transparent: its picture shows the feedback.
Feedback onPicture(QWidget *area, QWidget *picture)
{
    return {area, picture, {picture, nullptr}, picture, WhileDisabled::React};
}

Feedback onTile(QWidget *tile, QWidget *glowing, QWidget *title, QWidget *subtitle)
{
    return {tile, glowing, {title, subtitle}, tile, WhileDisabled::React};
}

// kept: the differences between rows. Large and medium tiles light their subtitle, small ones their
// title; a press dims the transparent area, not the labels; only Play and Update are spared while
// disabled.
std::array<Feedback, testform::watchedButtons> feedbackTable(const Ui::testform &ui)
{
    return {{
        onItself(ui.btnFacebook),
        onItself(ui.btnDiscord),
        onItself(ui.btnPlay, WhileDisabled::Spare),
        onItself(ui.btnPlay_2),
        onItself(ui.btnDownload),
        onItself(ui.btnUpdate, WhileDisabled::Spare),
        onItself(ui.btnNews),
        onItself(ui.btnHome),
        onItself(ui.btnNews_2),
        onItself(ui.btnHome_2),
        onTile(ui.btnNewsBig, ui.subtitleNewsBig, ui.titleNewsBig, ui.subtitleNewsBig),
        onTile(ui.btnNewsMedium1, ui.subtitleNewsMedium1, ui.titleNewsMedium1,
               ui.subtitleNewsMedium1),
        onTile(ui.btnNewsMedium2, ui.subtitleNewsMedium2, ui.titleNewsMedium2,
               ui.subtitleNewsMedium2),
        onTile(ui.btnNewsSmall1, ui.titleNewsSmall1, ui.titleNewsSmall1, ui.subtitleNewsSmall1),
        onTile(ui.btnNewsSmall2, ui.titleNewsSmall2, ui.titleNewsSmall2, ui.subtitleNewsSmall2),
        onTile(ui.btnNewsSmall3, ui.titleNewsSmall3, ui.titleNewsSmall3, ui.subtitleNewsSmall3),
        onItself(ui.btnRight),
        onItself(ui.btnLeft),
        onPicture(ui.btnClose, ui.btnClose_),
        onPicture(ui.btnFullscreen, ui.btnFullscreen_),
        onPicture(ui.btnMinimize, ui.btnMinimize_),
        onItself(ui.btnSelectServer),
    }};
}

bool reacts(const Feedback &feedback)
{
    return feedback.button->isEnabled() || feedback.whileDisabled == WhileDisabled::React;
}

// The widget owns the effect; setting another one, or none, destroys it.
void light(QWidget *widget)
{
    auto *glow = new QGraphicsGlowEffect;
    glow->setStrength(1);
    glow->setBlurRadius(4.0);
    widget->setGraphicsEffect(glow);
}

void dim(QWidget *widget)
{
    auto *opacity = new QGraphicsOpacityEffect;
    opacity->setOpacity(0.85);
    widget->setGraphicsEffect(opacity);
}

void clear(QWidget *widget)
{
    if (widget != nullptr) {
        widget->setGraphicsEffect(nullptr);
    }
}
} // namespace

void testform::watchButtons()
{
    int i = 0;
    for (const Feedback &feedback : feedbackTable(*ui)) {
        btn_list[i] = feedback.button;
        btn_list[i]->installEventFilter(this);
        ++i;
    }
}

bool testform::eventFilter(QObject *obj, QEvent *event)
{
    QObject **const end = btn_list + numButtonsList;
    QObject **const watched = std::find(btn_list, end, obj);
    if (watched != end) {
        const Feedback feedback = feedbackTable(*ui)[static_cast<std::size_t>(watched - btn_list)];
        switch (event->type()) {
        case QEvent::Enter:
            if (reacts(feedback)) {
                light(feedback.glowing);
            }
            break;
        case QEvent::Leave:
            clear(feedback.clear[0]);
            clear(feedback.clear[1]);
            break;
        case QEvent::MouseButtonPress:
            if (reacts(feedback)) {
                dim(feedback.dimmed);
            }
            break;
        case QEvent::MouseButtonRelease:
            clear(feedback.dimmed);
            break;
        default:
            break;
        }
    }
    return QMainWindow::eventFilter(obj, event);
}
