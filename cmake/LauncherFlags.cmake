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
  $<$<CXX_COMPILER_ID:GNU,Clang>:-Wall;-Wextra;-Wpedantic;-Wshadow;-Wconversion;-Werror>
)
