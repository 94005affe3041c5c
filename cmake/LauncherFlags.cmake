# One target with the flags of all our own code; every own target links it privately, so that they
# reach our files and nobody else's.
add_library(launcher_flags INTERFACE)
target_compile_definitions(launcher_flags INTERFACE
  # Every conversion between bytes and text stands in the code: the document is UTF-8, files use
  # the local 8-bit encoding, and one title takes a detour through Latin-1.
  QT_NO_CAST_FROM_ASCII
  QT_NO_CAST_TO_ASCII
  QT_NO_CAST_FROM_BYTEARRAY
  QT_NO_URL_CAST_FROM_STRING
  QT_DEPRECATED_WARNINGS
)
target_compile_options(launcher_flags INTERFACE
  $<$<CXX_COMPILER_ID:GNU,Clang>:-Wall;-Wextra;-Wpedantic;-Wshadow;-Wconversion>
)

# The same program from the same sources, on whatever day and in whatever folder it is built. (A debugger
# elsewhere wants the folders.)
if(WIN32)
  target_compile_options(launcher_flags INTERFACE
    "-ffile-prefix-map=${PROJECT_SOURCE_DIR}=." "-ffile-prefix-map=${PROJECT_BINARY_DIR}=build")
  target_link_options(launcher_flags INTERFACE -Wl,--no-insert-timestamp)
endif()

# For those who work on this code: the presets and the scripts that run the tests switch it on. Who
# only builds it, or includes it in a project of theirs, is not stopped by a warning. Another
# compiler warns of other things, so it counts only with those that the code was written with.
option(EMBERWAKE_WARNINGS_AS_ERRORS "Stop at a warning in our own code" OFF)
set(emberwake_warning_flags "")
if(EMBERWAKE_WARNINGS_AS_ERRORS)
  string(REGEX MATCH "^[0-9]+" emberwake_compiler "${CMAKE_CXX_COMPILER_VERSION}")
  if("${CMAKE_CXX_COMPILER_ID} ${emberwake_compiler}" MATCHES "^(GNU 12|Clang 14)$")
    set(emberwake_warning_flags -Werror)
    target_compile_options(launcher_flags INTERFACE ${emberwake_warning_flags})
  else()
    message(STATUS "Warnings stay warnings: they are judged by GCC 12 and Clang 14, and this is "
      "${CMAKE_CXX_COMPILER_ID} ${CMAKE_CXX_COMPILER_VERSION}")
  endif()
endif()
