#pragma once

// The toolkit scales the window by the density of the screen it stands on, and makes pictures for
// that screen's pixels. To be called before the application object is made.
namespace ScreenScaling
{
void letToolkitScale();
} // namespace ScreenScaling
