#include "window/screenscaling.h"

#include <QGuiApplication>

void ScreenScaling::letToolkitScale()
{
#ifdef Q_OS_WIN
    // There the player chose the number: 125 % are 125 %.
    constexpr auto rounding = Qt::HighDpiScaleFactorRoundingPolicy::PassThrough;
#else
    // Screens of X11 claim odd densities, which nobody chose.
    constexpr auto rounding = Qt::HighDpiScaleFactorRoundingPolicy::Round;
#endif
    QGuiApplication::setHighDpiScaleFactorRoundingPolicy(rounding);
    QGuiApplication::setAttribute(Qt::AA_EnableHighDpiScaling);
    // Icons and arrows from all the pixels that their pictures have.
    QGuiApplication::setAttribute(Qt::AA_UseHighDpiPixmaps);
}
