#pragma once

#include "check/finding.h"

#include <QString>
#include <QStringList>

// What the program is asked to do.
struct CommandLine {
    QString document; // a file's name, an address, or "-" for the standard input
    QString previous;
    QString base;
    QString code;
    QString authority;
    bool json = false;
    bool deep = false;
    QStringList ignored; // ids of findings that are not told
    Finding::Severity failOn = Finding::Warning;
    int timeout = 30; // seconds without a byte after which a fetch is given up

    QString help;  // to be printed instead, when not empty; so is the version
    QString wrong; // why this cannot be done, when not empty
};

// That of the whole project.
QString programVersion();

CommandLine parseCommandLine(const QStringList &arguments);
