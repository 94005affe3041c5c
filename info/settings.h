#pragma once

#include <QString>

// What the launcher remembers between runs.
struct Settings {
    Settings() = default;
    Settings(QString theServer, QString theClient, bool remember, QString theAuth = {});

    // For diagnostics: the four fields joined by ", ".
    QString toString() const;

    QString server;               // last chosen server
    QString client;               // last chosen client kind
    QString auth;                 // custom authentication code, as typed
    bool rememberSettings = true; // apply the choice at start without showing the panel
};

// Reads the one line of settings.txt: server|client|rememberSettings|auth. Missing fields read as
// empty, so the flag as false.
Settings parseSettings(const QString &text);

// The one line of settings.txt, with the same fields in the same order, without a line end.
QString formatSettings(const Settings &settings);
