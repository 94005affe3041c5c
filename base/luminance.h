#pragma once

// How bright a colour is to the eye, from 0 for black to 1 for white; its parts go to 255. What
// WCAG 2.1 calls relative luminance.
double luminance(int red, int green, int blue);
