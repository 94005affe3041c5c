#pragma once

#include <QByteArray>
#include <QTemporaryFile>

// Catches what this process writes to standard output and standard error as long as it lives. Made
// inside a test function: the test log itself goes to standard output between them.
class ConsoleCapture
{
public:
    ConsoleCapture();
    ~ConsoleCapture();
    ConsoleCapture(const ConsoleCapture &) = delete;
    ConsoleCapture &operator=(const ConsoleCapture &) = delete;

    // Everything so far.
    QByteArray out();
    QByteArray err();

private:
    QTemporaryFile m_out;
    QTemporaryFile m_err;
    int m_savedOut;
    int m_savedErr;
};
