# Toolchain file for the Windows program: MinGW-w64 with posix threads, and the toolkit that
# packaging/windows/build-qt.sh installs. EMBERWAKE_WINDOWS_QT names another folder of the toolkit,
# as a cache variable or in the environment. EMBERWAKE_WINDOWS_LIBZIP does so for the extractor's
# libraries, which packaging/windows/build-libzip.sh builds.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)

set(CMAKE_C_COMPILER x86_64-w64-mingw32-gcc-posix)
set(CMAKE_CXX_COMPILER x86_64-w64-mingw32-g++-posix)
set(CMAKE_RC_COMPILER x86_64-w64-mingw32-windres)

if(NOT EMBERWAKE_WINDOWS_QT)
  if(DEFINED ENV{EMBERWAKE_WINDOWS_QT})
    set(EMBERWAKE_WINDOWS_QT "$ENV{EMBERWAKE_WINDOWS_QT}")
  else()
    set(EMBERWAKE_WINDOWS_QT /opt/qt5-mingw-w64)
  endif()
endif()
set(EMBERWAKE_WINDOWS_QT "${EMBERWAKE_WINDOWS_QT}" CACHE PATH "Folder of the toolkit for Windows")
if(NOT EMBERWAKE_WINDOWS_LIBZIP)
  if(DEFINED ENV{EMBERWAKE_WINDOWS_LIBZIP})
    set(EMBERWAKE_WINDOWS_LIBZIP "$ENV{EMBERWAKE_WINDOWS_LIBZIP}")
  else()
    get_filename_component(EMBERWAKE_WINDOWS_LIBZIP
      "${CMAKE_CURRENT_LIST_DIR}/../build/windows-libzip" ABSOLUTE)
  endif()
endif()
set(EMBERWAKE_WINDOWS_LIBZIP "${EMBERWAKE_WINDOWS_LIBZIP}" CACHE PATH
  "Folder of the extractor's libraries for Windows")
# The compiler is tried in projects of its own, which have to see the same folders.
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES EMBERWAKE_WINDOWS_QT EMBERWAKE_WINDOWS_LIBZIP)

# Programs come from this machine; headers, libraries and packages never do.
set(CMAKE_FIND_ROOT_PATH
  "${EMBERWAKE_WINDOWS_QT}" "${EMBERWAKE_WINDOWS_LIBZIP}" /usr/x86_64-w64-mingw32)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
