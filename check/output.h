#pragma once

#include <QString>

struct Report;

enum class Colours { None, Terminal };

// What the program prints for people. Each finding has the document's name in front.
QString textOutput(const Report &report, Colours colours);
