/*
 * For the tests of the installer: a program that runs, or holds a file open, until it is told to
 * end.
 *
 *   test-program.exe MARK [FILE]
 *
 * makes the file MARK when it has begun, and ends with 0 when that is gone. FILE is held so that
 * nobody else may write or remove it. The command line is in the system's 8-bit encoding.
 */
#include <windows.h>

int main(int argc, char **argv)
{
    HANDLE held = INVALID_HANDLE_VALUE;
    HANDLE mark;
    /* In milliseconds; more than any test takes. */
    int left = 300000;
    const int step = 20;

    if (argc < 2) {
        return 64;
    }
    if (argc > 2) {
        held = CreateFileA(argv[2], GENERIC_READ, FILE_SHARE_READ, NULL, OPEN_EXISTING, 0, NULL);
        if (held == INVALID_HANDLE_VALUE) {
            return 1;
        }
    }
    mark = CreateFileA(argv[1], GENERIC_WRITE, 0, NULL, CREATE_ALWAYS, 0, NULL);
    if (mark == INVALID_HANDLE_VALUE) {
        return 1;
    }
    CloseHandle(mark);
    for (; left > 0 && GetFileAttributesA(argv[1]) != INVALID_FILE_ATTRIBUTES; left -= step) {
        Sleep(step);
    }
    return 0;
}
