// The settings file, in the working directory beside the launcher.

#include "info/settings.h"
#include "ui_testform.h"
#include "window/testform.h"

#include <QFile>
#include <QTextStream>

void testform::loadSettings()
{
    QFile file(DIR_SETTINGS);
    if (!file.exists() || !file.open(QIODevice::ReadOnly | QIODevice::Text)) {
        return;
    }
    settings = parseSettings(QTextStream(&file).readAll());
    ui->rememberCheckBox->setChecked(settings.rememberSettings);
}

void testform::writeSettings()
{
    QFile file(DIR_SETTINGS);
    if (!file.open(QIODevice::ReadWrite)) {
        return;
    }
    // A shorter line must leave nothing of a longer one behind.
    file.resize(0);
    QTextStream(&file) << formatSettings(settings);
}
