/* Put in front of every source file of the extractor: inside the program all text is UTF-8, and
 * the system is asked by its UTF-16 functions only.
 *
 * The original asks the functions of the ANSI code page: a letter that the player's code page
 * lacks becomes "#U0416" in an entry's name, and "?" in the folder to unpack into, which then
 * cannot be made at all. */
#ifndef EMBERWAKE_UTF8_FILES_H
#define EMBERWAKE_UTF8_FILES_H

/* Everything that declares one of the names below comes before they are redefined. */
#ifndef WIN32_LEAN_AND_MEAN
#define WIN32_LEAN_AND_MEAN
#endif
#include <direct.h>
#include <fcntl.h>
#include <io.h>
#include <limits.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <sys/types.h>
#include <unistd.h>
#include <windows.h>

/* In bytes of UTF-8, of which a letter takes up to three. The C library's 260 count letters, and
 * also leave out the long paths that the manifest switches on. */
#undef PATH_MAX
#define PATH_MAX 4096

FILE *utf8_fopen(const char *path, const char *mode);
int utf8_open(const char *path, int flags, ...);
int utf8_access(const char *path, int mode);
int utf8_chmod(const char *path, int mode);
int utf8_mkdir(const char *path);
int utf8_rmdir(const char *path);
int utf8_rename(const char *from, const char *to);
int utf8_unlink(const char *path);
int utf8_stat(const char *path, struct _stat64 *result);
HANDLE utf8_CreateFile(const char *path, DWORD access, DWORD share, SECURITY_ATTRIBUTES *security,
                       DWORD creation, DWORD flags, HANDLE model);
DWORD utf8_GetFileAttributes(const char *path);
BOOL utf8_SetFileAttributes(const char *path, DWORD attributes);
DWORD utf8_GetFullPathName(const char *path, DWORD size, char *result, char **name);
HANDLE utf8_FindFirstFile(const char *pattern, WIN32_FIND_DATAA *found);
BOOL utf8_FindNextFile(HANDLE search, WIN32_FIND_DATAA *found);
void utf8_to_code_page(unsigned code_page, const char *text, char *result);
void name_to_utf8(char *name, int from_oem);

/* For types of the same name the preprocessor sees no parenthesis, and leaves them alone. */
#define fopen(path, mode) utf8_fopen(path, mode)
#define open(path, ...) utf8_open(path, __VA_ARGS__)
#define access(path, mode) utf8_access(path, mode)
#define chmod(path, mode) utf8_chmod(path, mode)
#define mkdir(path) utf8_mkdir(path)
#define rmdir(path) utf8_rmdir(path)
#define rename(from, to) utf8_rename(from, to)
#define unlink(path) utf8_unlink(path)
/* What "_stati64" stands for in the C library's headers. */
#define _stat64(path, result) utf8_stat(path, result)
#define CreateFileA(...) utf8_CreateFile(__VA_ARGS__)
#define GetFileAttributesA(path) utf8_GetFileAttributes(path)
#define SetFileAttributesA(path, attributes) utf8_SetFileAttributes(path, attributes)
#define GetFullPathNameA(...) utf8_GetFullPathName(__VA_ARGS__)
#define FindFirstFileA(pattern, found) utf8_FindFirstFile(pattern, found)
#define FindNextFileA(search, found) utf8_FindNextFile(search, found)

/* The two conversions the original has between its own text and others. The first serves messages
 * to the console and passwords, the second only passwords: an archive's password may have been
 * typed in UTF-8, in the OEM or in the ANSI code page, and all three are tried. */
#undef AnsiToOem
#undef OemToAnsi
#define AnsiToOem(text, result) utf8_to_code_page(CP_OEMCP, text, result)
#define OemToAnsi(text, result) utf8_to_code_page(CP_ACP, text, result)

/* The name of an entry that does not say it is UTF-8. The condition is the original's: these
 * systems' archivers write names in the OEM code page. */
#define Ext_ASCII_TO_Native(string, hostnum, hostver, isuxatt, islochdr)                           \
    name_to_utf8((string), ((hostnum) == FS_FAT_ &&                                                \
                            !(((islochdr) || (isuxatt)) &&                                         \
                              ((hostver) == 25 || (hostver) == 26 || (hostver) == 40))) ||         \
                               (hostnum) == FS_HPFS_ ||                                            \
                               ((hostnum) == FS_NTFS_ && (hostver) == 50))

#endif
