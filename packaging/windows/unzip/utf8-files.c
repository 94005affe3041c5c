/* See utf8-files.h. This file alone is compiled without it in front. */
#include "utf8-files.h"

#include <errno.h>
#include <stdarg.h>

#undef fopen
#undef open
#undef access
#undef chmod
#undef mkdir
#undef rmdir
#undef rename
#undef unlink
#undef _stat64
#undef CreateFileA
#undef GetFileAttributesA
#undef SetFileAttributesA
#undef GetFullPathNameA
#undef FindFirstFileA
#undef FindNextFileA

/* unzip.c's own, renamed by the build. */
int unzip_main(int argc, char **argv);

/* Long enough for every path that gets this far, and for the root the system puts before it. */
enum { wide_size = PATH_MAX + 1024 };
typedef struct {
    wchar_t text[wide_size];
} wide_path;

/* A path that is not UTF-8 is refused: replacing what is wrong could lead two entries to one file.
 */
static const wchar_t *wide(const char *path, wide_path *buffer)
{
    if (MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, path, -1, buffer->text, wide_size) > 0)
        return buffer->text;
    errno = ENOENT;
    SetLastError(ERROR_INVALID_NAME);
    return NULL;
}

static char *narrow(const wchar_t *text)
{
    const int size = WideCharToMultiByte(CP_UTF8, 0, text, -1, NULL, 0, NULL, NULL);
    char *result = size > 0 ? malloc((size_t)size) : NULL;
    if (result == NULL ||
        WideCharToMultiByte(CP_UTF8, 0, text, -1, result, size, NULL, NULL) == 0) {
        fputs("unzip: out of memory\n", stderr);
        exit(4);
    }
    return result;
}

FILE *utf8_fopen(const char *path, const char *mode)
{
    wide_path path_buffer, mode_buffer;
    const wchar_t *wide_name = wide(path, &path_buffer);
    const wchar_t *wide_mode = wide(mode, &mode_buffer);
    return wide_name && wide_mode ? _wfopen(wide_name, wide_mode) : NULL;
}

int utf8_open(const char *path, int flags, ...)
{
    wide_path buffer;
    const wchar_t *wide_name = wide(path, &buffer);
    int mode = 0;
    if (flags & O_CREAT) {
        va_list arguments;
        va_start(arguments, flags);
        mode = va_arg(arguments, int);
        va_end(arguments);
    }
    return wide_name ? _wopen(wide_name, flags, mode) : -1;
}

int utf8_access(const char *path, int mode)
{
    wide_path buffer;
    const wchar_t *wide_name = wide(path, &buffer);
    return wide_name ? _waccess(wide_name, mode) : -1;
}

int utf8_chmod(const char *path, int mode)
{
    wide_path buffer;
    const wchar_t *wide_name = wide(path, &buffer);
    return wide_name ? _wchmod(wide_name, mode) : -1;
}

int utf8_mkdir(const char *path)
{
    wide_path buffer;
    const wchar_t *wide_name = wide(path, &buffer);
    return wide_name ? _wmkdir(wide_name) : -1;
}

int utf8_rmdir(const char *path)
{
    wide_path buffer;
    const wchar_t *wide_name = wide(path, &buffer);
    return wide_name ? _wrmdir(wide_name) : -1;
}

int utf8_rename(const char *from, const char *to)
{
    wide_path from_buffer, to_buffer;
    const wchar_t *wide_from = wide(from, &from_buffer);
    const wchar_t *wide_to = wide(to, &to_buffer);
    return wide_from && wide_to ? _wrename(wide_from, wide_to) : -1;
}

int utf8_unlink(const char *path)
{
    wide_path buffer;
    const wchar_t *wide_name = wide(path, &buffer);
    return wide_name ? _wunlink(wide_name) : -1;
}

int utf8_stat(const char *path, struct _stat64 *result)
{
    wide_path buffer;
    const wchar_t *wide_name = wide(path, &buffer);
    return wide_name ? _wstat64(wide_name, result) : -1;
}

HANDLE utf8_CreateFile(const char *path, DWORD access, DWORD share, SECURITY_ATTRIBUTES *security,
                       DWORD creation, DWORD flags, HANDLE model)
{
    wide_path buffer;
    const wchar_t *wide_name = wide(path, &buffer);
    return wide_name ? CreateFileW(wide_name, access, share, security, creation, flags, model)
                     : INVALID_HANDLE_VALUE;
}

DWORD utf8_GetFileAttributes(const char *path)
{
    wide_path buffer;
    const wchar_t *wide_name = wide(path, &buffer);
    return wide_name ? GetFileAttributesW(wide_name) : INVALID_FILE_ATTRIBUTES;
}

BOOL utf8_SetFileAttributes(const char *path, DWORD attributes)
{
    wide_path buffer;
    const wchar_t *wide_name = wide(path, &buffer);
    return wide_name ? SetFileAttributesW(wide_name, attributes) : FALSE;
}

/* Callers look at the drive only: what does not fit their buffer is cut off, so that a long path
 * has a drive as well. */
DWORD utf8_GetFullPathName(const char *path, DWORD size, char *result, char **name)
{
    wide_path buffer, full;
    const wchar_t *wide_name = wide(path, &buffer);
    const DWORD length = wide_name ? GetFullPathNameW(wide_name, wide_size, full.text, NULL) : 0;
    if (length == 0 || length >= wide_size || size == 0)
        return 0;
    char *text = narrow(full.text);
    strncpy(result, text, size - 1);
    result[size - 1] = '\0';
    free(text);
    *name = result;
    return (DWORD)strlen(result);
}

/* Fills in what is used of a found file: its name. False when it does not fit. */
static BOOL take_found(const WIN32_FIND_DATAW *wide_found, WIN32_FIND_DATAA *found)
{
    char *name = narrow(wide_found->cFileName);
    const BOOL fits = strlen(name) < sizeof found->cFileName;
    memset(found, 0, sizeof *found);
    found->dwFileAttributes = wide_found->dwFileAttributes;
    if (fits)
        strcpy(found->cFileName, name);
    free(name);
    return fits;
}

HANDLE utf8_FindFirstFile(const char *pattern, WIN32_FIND_DATAA *found)
{
    wide_path buffer;
    WIN32_FIND_DATAW wide_found;
    const wchar_t *wide_name = wide(pattern, &buffer);
    HANDLE search = wide_name ? FindFirstFileW(wide_name, &wide_found) : INVALID_HANDLE_VALUE;
    if (search != INVALID_HANDLE_VALUE && !take_found(&wide_found, found) &&
        !utf8_FindNextFile(search, found)) {
        FindClose(search);
        search = INVALID_HANDLE_VALUE;
    }
    return search;
}

BOOL utf8_FindNextFile(HANDLE search, WIN32_FIND_DATAA *found)
{
    WIN32_FIND_DATAW wide_found;
    while (FindNextFileW(search, &wide_found)) {
        if (take_found(&wide_found, found))
            return TRUE;
    }
    return FALSE;
}

/* The result has room for as many bytes as the text, which is always enough: no code page needs
 * more bytes for a letter than UTF-8 does. Both may be the same buffer. */
void utf8_to_code_page(unsigned code_page, const char *text, char *result)
{
    const size_t size = strlen(text) + 1;
    wchar_t *letters = malloc(size * sizeof *letters);
    char *converted = malloc(size);
    if (letters && converted && size <= INT_MAX &&
        MultiByteToWideChar(CP_UTF8, 0, text, -1, letters, (int)size) > 0 &&
        WideCharToMultiByte(code_page, 0, letters, -1, converted, (int)size, NULL, NULL) > 0)
        strcpy(result, converted);
    else if (result != text)
        strcpy(result, text);
    free(letters);
    free(converted);
}

/* In place, in a buffer of at least PATH_MAX bytes. A name that is UTF-8 already, although nothing
 * says so, stays as it is: many archivers write such names. So does one whose conversion would not
 * fit; its file cannot be made then. */
void name_to_utf8(char *name, int from_oem)
{
    wide_path letters;
    char converted[PATH_MAX];
    if (MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, name, -1, NULL, 0) > 0)
        return;
    if (MultiByteToWideChar(from_oem ? CP_OEMCP : CP_ACP, 0, name, -1, letters.text, wide_size) >
            0 &&
        WideCharToMultiByte(CP_UTF8, 0, letters.text, -1, converted, sizeof converted, NULL, NULL) >
            0)
        strcpy(name, converted);
}

int wmain(int argc, wchar_t **argv)
{
    char **arguments = calloc((size_t)argc + 1, sizeof *arguments);
    if (arguments == NULL)
        return 4;
    for (int i = 0; i < argc; ++i)
        arguments[i] = narrow(argv[i]);
    return unzip_main(argc, arguments);
}
