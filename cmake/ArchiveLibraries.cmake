# What the extractor stands on: libzip decrypts, libdeflate inflates and sums, zlib inflates what is
# too large for the memory. Debian's packages: libzip-dev libdeflate-dev zlib1g-dev. For Windows they
# are static and lie in a folder of CMAKE_FIND_ROOT_PATH.
add_library(archive_libraries INTERFACE)
foreach(each "LIBZIP zip.h zip" "LIBDEFLATE libdeflate.h deflate" "ZLIB_OF_ARCHIVES zlib.h z")
  separate_arguments(each)
  list(GET each 0 variable)
  list(GET each 1 header)
  list(GET each 2 library)
  find_path(${variable}_INCLUDE ${header})
  if(WIN32)
    find_library(${variable}_LIBRARY NAMES lib${library}.a ${library} lib${library}static)
  else()
    find_library(${variable}_LIBRARY ${library})
  endif()
  if(NOT ${variable}_INCLUDE OR NOT ${variable}_LIBRARY)
    message(FATAL_ERROR
      "The extractor needs ${header} and its library, and they are not to be found. On Debian: "
      "apt install libzip-dev libdeflate-dev zlib1g-dev. For Windows: "
      "packaging/windows/build-libzip.sh builds them. Without them the launcher alone can be built: "
      "-DEMBERWAKE_EXTRACTOR=OFF")
  endif()
  target_include_directories(archive_libraries SYSTEM INTERFACE ${${variable}_INCLUDE})
  target_link_libraries(archive_libraries INTERFACE ${${variable}_LIBRARY})
endforeach()
if(WIN32)
  target_compile_definitions(archive_libraries INTERFACE ZIP_STATIC)
  # They are built with guards of their stack, whose library must not become one more DLL.
  target_link_libraries(archive_libraries INTERFACE bcrypt advapi32 -l:libssp.a)
endif()
