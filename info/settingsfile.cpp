// The settings file, in the working directory beside the launcher.

#include "base/pathsafety.h"
#include "info/settings.h"
#include "ui_testform.h"
#include "window/testform.h"

#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <QTextStream>

namespace
{
// In bytes: far more than any launcher wrote. What is larger, or no file at all (a reader would
// wait for ever at a pipe), is not ours.
constexpr qint64 largestSettings = 1024 * 1024;

bool isSettingsFile(const QString &fileName)
{
    const QFileInfo info(fileName);
    return info.isFile() && info.size() <= largestSettings;
}
} // namespace

void testform::loadSettings()
{
    QFile file(DIR_SETTINGS);
    if (!isSettingsFile(DIR_SETTINGS) || !file.open(QIODevice::ReadOnly | QIODevice::Text)) {
        return;
    }
    settings = parseSettings(QTextStream(&file).readAll());
    ui->rememberCheckBox->setChecked(settings.rememberSettings);
}

void testform::writeSettings()
{
    QByteArray line;
    QTextStream stream(&line, QIODevice::WriteOnly);
    stream << formatSettings(settings);
    stream.flush();
    // What could not be read again must not replace what can.
    if (line.size() > largestSettings) {
        return;
    }
    // Replaced as a whole: emptied first, it would be read as "do not remember" after a kill or on
    // a full disk, and the code would be gone.
    QSaveFile file(DIR_SETTINGS);
    if (!isFileOrFree(DIR_SETTINGS) || !file.open(QIODevice::WriteOnly)) {
        return;
    }
    (void)file.write(line);
    // What cannot be written leaves the file as it was. On a full disk that shows when the buffer
    // is emptied, which commit() would not look at.
    if (!file.flush()) {
        file.cancelWriting();
    }
    (void)file.commit();
}
