// How the writer of .xlsx files opens files on Windows: names are UTF-8, and scratch files lie in the user's folder for
// them whatever script his name is in.
#include <fcntl.h>
#include <io.h>
#include <stdio.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <windows.h>

#define LONGEST 32768

FILE* OpenUtf8(const char* name, const char* mode) {
  wchar_t wideMode[8];
  wchar_t* wideName = malloc(LONGEST * sizeof(wchar_t));
  FILE* file = NULL;
  if (wideName != NULL && MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, name, -1, wideName, LONGEST) != 0 &&
      MultiByteToWideChar(CP_UTF8, 0, mode, -1, wideMode, 8) != 0) {
    file = _wfopen(wideName, wideMode);
  }
  free(wideName);
  return file;
}

// Takes the place of the library's own: an empty file that goes with its stream. Nobody here asks for its name or to keep it.
FILE* tmpfileplus(const char* folder, const char* prefix, char** name, int keep) {
  (void)folder;
  (void)prefix;
  (void)keep;
  wchar_t temporaries[MAX_PATH + 2];
  wchar_t path[MAX_PATH];
  if (name != NULL) *name = NULL;
  const DWORD length = GetTempPathW(MAX_PATH + 1, temporaries);
  if (length == 0 || length > MAX_PATH || GetTempFileNameW(temporaries, L"xls", 0, path) == 0) return NULL;
  const int file = _wopen(path, _O_BINARY | _O_RDWR | _O_TRUNC | _O_TEMPORARY, _S_IREAD | _S_IWRITE);
  if (file == -1) {
    DeleteFileW(path);
    return NULL;
  }
  FILE* stream = _fdopen(file, "w+b");
  if (stream == NULL) _close(file);
  return stream;
}
