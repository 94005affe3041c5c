#pragma once

#include <QString>

// Formats download progress: as a bar on the console and as a short text for the window.
class TextProgressBar
{
public:
    TextProgressBar() = default;

    // Ends the console line and forgets the progress; the message stays.
    void clear();
    // Draws the bar anew on the console line.
    void update();
    // Text shown behind the bar (the speed).
    void setMessage(const QString &newMessage);
    // The window's text: percentage and message, or the moving bar while the size is unknown.
    QString getMessage() const;
    // Bytes received and bytes expected; an expectation of 0 or less means unknown.
    void setStatus(qint64 newValue, qint64 newMaximum);
    // Percentage, rounded down; 0 while the size is unknown.
    int getProgress() const;

private:
    QString movingBar() const;

    QString message;
    qint64 value = 0;
    qint64 maximum = -1;
    int iteration = 0; // redraws since the last clear; drives the moving bar
};
