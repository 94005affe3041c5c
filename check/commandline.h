#pragma once

#include <QString>
#include <QStringList>

// What the program is asked to do.
struct CommandLine {
    QString document; // a file's name or an address
    QString previous;
    QString base;
    QString code;
    QString authority;
    bool json = false;
    bool deep = false;
    int timeout = 30; // seconds without a byte after which a fetch is given up

    QString help;  // to be printed instead, when not empty
    QString wrong; // why this cannot be done, when not empty
};

CommandLine parseCommandLine(const QStringList &arguments);
