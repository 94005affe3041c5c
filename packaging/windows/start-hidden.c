/* For the tests: starts a program as the launcher's process class does, from a window program that
 * has no console: CREATE_NO_WINDOW, pipes or files for the three standard handles, and an input
 * that is at its end.
 *
 *   start-hidden.exe OUTPUT-FILE SECONDS PROGRAM [ARGUMENT...]
 *
 * The seconds may have a fraction. Ends as the program does; with 111 when it had to be ended after
 * the time; with 112 when it could not be started. With OUTPUT-FILE alone it writes there the
 * number of the ANSI code page. */
#include <stdio.h>
#include <wchar.h>
#include <windows.h>

/* Behind what the command line has already, as programs take it apart again: backslashes count
 * twice in front of a quotation mark. */
static void append(wchar_t *command, const wchar_t *argument)
{
    wchar_t *end = command + wcslen(command);
    size_t backslashes = 0;
    if (end != command)
        *end++ = L' ';
    *end++ = L'"';
    for (; *argument != L'\0'; ++argument) {
        if (*argument == L'"') {
            for (++backslashes; backslashes > 0; --backslashes)
                *end++ = L'\\';
        }
        backslashes = *argument == L'\\' ? backslashes + 1 : 0;
        *end++ = *argument;
    }
    for (; backslashes > 0; --backslashes)
        *end++ = L'\\';
    *end++ = L'"';
    *end = L'\0';
}

int wmain(int argc, wchar_t **argv)
{
    if (argc == 2) {
        FILE *output = _wfopen(argv[1], L"w");
        if (output == NULL)
            return 112;
        fprintf(output, "%u\n", GetACP());
        return fclose(output) == 0 ? 0 : 112;
    }
    if (argc < 4)
        return 112;

    static wchar_t command[32768];
    for (int i = 3; i < argc; ++i) {
        if (wcslen(command) + 2 * wcslen(argv[i]) + 4 > sizeof command / sizeof *command)
            return 112;
        append(command, argv[i]);
    }

    SECURITY_ATTRIBUTES inherited = {sizeof inherited, NULL, TRUE};
    HANDLE input, write_end;
    /* Shared with the program of the call before, whose handle may live a moment longer. */
    HANDLE output = CreateFileW(argv[1], GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                &inherited, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, NULL);
    if (output == INVALID_HANDLE_VALUE || !CreatePipe(&input, &write_end, &inherited, 0))
        return 112;
    CloseHandle(write_end);

    STARTUPINFOW startup = {0};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdInput = input;
    startup.hStdOutput = output;
    startup.hStdError = output;
    PROCESS_INFORMATION process;
    const DWORD flags = (GetConsoleWindow() ? 0 : CREATE_NO_WINDOW) | CREATE_UNICODE_ENVIRONMENT;
    if (!CreateProcessW(NULL, command, NULL, NULL, TRUE, flags, NULL, NULL, &startup, &process))
        return 112;
    if (WaitForSingleObject(process.hProcess, (DWORD)(wcstod(argv[2], NULL) * 1000)) !=
        WAIT_OBJECT_0) {
        TerminateProcess(process.hProcess, 111);
        WaitForSingleObject(process.hProcess, 10000);
    }
    DWORD result = 112;
    GetExitCodeProcess(process.hProcess, &result);
    return (int)result;
}
