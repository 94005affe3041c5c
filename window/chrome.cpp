// The frameless window's own title-bar buttons.

#include "window/testform.h"

void testform::on_btnFullscreen_clicked()
{
    isMax = !isMax;
    if (isMax) {
        w_before_full = width();
        h_before_full = height();
        x_before_full = x();
        y_before_full = y();
        showFullScreen();
    } else {
        resize(w_before_full, h_before_full);
        move(x_before_full, y_before_full);
    }
}

void testform::on_btnMinimize_clicked()
{
    if (isMinimized()) {
        showNormal();
    } else {
        showMinimized();
    }
}
