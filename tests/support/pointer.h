#pragma once

#include <QPoint>

// The pointer as the display server or Windows moves it, not as the toolkit pretends: for what
// happens before an event reaches the toolkit. Positions are screen pixels.
namespace Pointer
{
// Moves there and waits until it is there. False when that takes too long.
bool moveTo(QPoint place);
// Presses and releases the left button. The events arrive later, through the event loop.
bool press();
bool release();
} // namespace Pointer
