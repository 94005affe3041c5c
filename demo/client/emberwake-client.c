/* The sample game of the demo world for Windows: like the shell script beside it, it leaves a mark
   that tells a person or a test that it really started, and opens a small window.

   Which server, client and version it is stands behind the program itself, where make_world.py
   appends it, so that one compiled program serves every archive. */
#include <stdio.h>
#include <string.h>
#include <wchar.h>
#include <windows.h>

#define LEAVE 1

static const char told_start[] = "\n-- emberwake client --\n";
static char told[512];
static char program[64];
static WCHAR window_text[1024];

/* The last bytes of the program file, from behind the line that starts them. */
static BOOL read_told(const WCHAR *path)
{
    char tail[sizeof told];
    DWORD got = 0;
    HANDLE file = CreateFileW(path, GENERIC_READ, FILE_SHARE_READ, NULL, OPEN_EXISTING, 0, NULL);
    if (file == INVALID_HANDLE_VALUE) {
        return FALSE;
    }
    SetFilePointer(file, -(LONG)(sizeof tail - 1), NULL, FILE_END);
    ReadFile(file, tail, sizeof tail - 1, &got, NULL);
    CloseHandle(file);
    /* The start line is looked for from the back: the program holds it as a literal as well, and
       there may be zero bytes before it. */
    const DWORD length = sizeof told_start - 1;
    for (DWORD at = got < length ? 0 : got - length + 1; at-- > 0;) {
        if (memcmp(tail + at, told_start, length) == 0) {
            const DWORD begin = at + length;
            memcpy(told, tail + begin, got - begin);
            told[got - begin] = '\0';
            return TRUE;
        }
    }
    return FALSE;
}

static BOOL leave_mark(const WCHAR *path)
{
    WCHAR mark[1024];
    WCHAR unfinished[1024];
    char text[1024];
    DWORD written = 0;
    const WCHAR *name = wcsrchr(path, L'\\');
    const int folder = name == NULL ? 0 : (int)(name - path) + 1;
    _snwprintf(mark, 1023, L"%.*lsstarted.txt", folder, path);
    _snwprintf(unfinished, 1023, L"%.*lsstarted.txt.part", folder, path);
    mark[1023] = unfinished[1023] = L'\0';

    /* Its own file name, not something it was told: two programs of one client differ in nothing
     * else. */
    WideCharToMultiByte(CP_UTF8, 0, path + folder, -1, program, sizeof program - 1, NULL, NULL);
    const int length = snprintf(text, sizeof text, "%sprogram: %s\nprocess: %lu\n", told, program,
                                GetCurrentProcessId());

    HANDLE file =
        CreateFileW(unfinished, GENERIC_WRITE, 0, NULL, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, NULL);
    if (file == INVALID_HANDLE_VALUE) {
        return FALSE;
    }
    const BOOL whole =
        WriteFile(file, text, (DWORD)length, &written, NULL) && written == (DWORD)length;
    CloseHandle(file);
    /* Written under another name first: nobody ever reads half a mark. */
    return whole && MoveFileExW(unfinished, mark, MOVEFILE_REPLACE_EXISTING);
}

static LRESULT CALLBACK answer(HWND window, UINT message, WPARAM word, LPARAM value)
{
    switch (message) {
    case WM_PAINT: {
        PAINTSTRUCT paint;
        RECT area;
        HDC context = BeginPaint(window, &paint);
        GetClientRect(window, &area);
        InflateRect(&area, -24, -24);
        SetBkMode(context, TRANSPARENT);
        SetTextColor(context, RGB(0xe8, 0xd8, 0xb0));
        DrawTextW(context, window_text, -1, &area, DT_LEFT | DT_NOPREFIX | DT_WORDBREAK);
        EndPaint(window, &paint);
        return 0;
    }
    case WM_COMMAND:
        if (LOWORD(word) == LEAVE) {
            DestroyWindow(window);
        }
        return 0;
    case WM_DESTROY:
        PostQuitMessage(0);
        return 0;
    default:
        return DefWindowProcW(window, message, word, value);
    }
}

int WINAPI wWinMain(HINSTANCE instance, HINSTANCE previous, PWSTR arguments, int show)
{
    (void)previous;
    (void)arguments;
    WCHAR path[1024];
    const DWORD length = GetModuleFileNameW(NULL, path, 1024);
    if (length == 0 || length >= 1000 || !read_told(path) || !leave_mark(path)) {
        return 1;
    }
    _snwprintf(window_text, 1023,
               L"E M B E R W A K E\n\n%hs%hs\n\nThis is the sample client of the demo world.\n"
               L"The launcher downloaded, unpacked and started it.",
               told, program);

    WNDCLASSW kind = {0};
    kind.lpfnWndProc = answer;
    kind.hInstance = instance;
    kind.hCursor = LoadCursorW(NULL, (LPCWSTR)IDC_ARROW);
    kind.hbrBackground = CreateSolidBrush(RGB(0x14, 0x18, 0x1f));
    kind.lpszClassName = L"emberwake-sample-client";
    RegisterClassW(&kind);
    HWND window =
        CreateWindowW(kind.lpszClassName, L"Emberwake", WS_CAPTION | WS_SYSMENU | WS_VISIBLE, 440,
                      260, 420, 280, NULL, NULL, instance, NULL);
    RECT area;
    GetClientRect(window, &area);
    /* In the lower left corner, as in the script's window. */
    CreateWindowW(L"BUTTON", L"Leave the game", WS_CHILD | WS_VISIBLE, 12, area.bottom - 40, 130,
                  28, window, (HMENU)(INT_PTR)LEAVE, instance, NULL);
    ShowWindow(window, show);

    MSG message;
    while (GetMessageW(&message, NULL, 0, 0) > 0) {
        TranslateMessage(&message);
        DispatchMessageW(&message);
    }
    return 0;
}
