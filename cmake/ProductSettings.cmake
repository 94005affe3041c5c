# The product's only build-time settings. At run time there is nothing to set.
set(EMBERWAKE_BASE_URL "https://launcher.emberwake.example/" CACHE STRING
  "Where launcher.xml and the server logos are published; ends in /")
set(EMBERWAKE_WEBSITE_URL "https://www.emberwake.example/" CACHE STRING
  "Page opened when the launcher is outdated")
set(EMBERWAKE_DISCORD_URL "https://discord.example/emberwake" CACHE STRING
  "Page of the chat button")
set(EMBERWAKE_FACEBOOK_URL "https://facebook.example/emberwake" CACHE STRING
  "Page of the community button")

# File names are appended to the base URL directly: without the slash every request would miss.
if(NOT EMBERWAKE_BASE_URL MATCHES "^https?://[^/]+/(.*/)?$")
  message(FATAL_ERROR
    "EMBERWAKE_BASE_URL is \"${EMBERWAKE_BASE_URL}\": it must be an https or http address that "
    "ends in \"/\", for example https://launcher.emberwake.example/")
endif()

# What the files' properties, the packages and the installer show of the operator. The window's own
# texts are fixed, and nothing of the launcher's behaviour depends on these.
set(EMBERWAKE_PRODUCT_NAME "Emberwake Online Launcher" CACHE STRING
  "Product name: file properties, folder of the installation, start menu, list of programs")
set(EMBERWAKE_PRODUCT_VERSION "" CACHE STRING
  "Version of the form 1.2.3; empty: the project's")
set(EMBERWAKE_PRODUCT_PUBLISHER "Emberwake" CACHE STRING "Publisher")
set(EMBERWAKE_PRODUCT_COPYRIGHT "" CACHE STRING "Copyright line of the file properties")
set(EMBERWAKE_PRODUCT_URL "" CACHE STRING
  "Web address in the list of programs; empty: EMBERWAKE_WEBSITE_URL")
set(EMBERWAKE_PRODUCT_ICON "" CACHE FILEPATH
  "Icon of program, installer and uninstaller (.ico), from the project's folder; empty: its own")

set(emberwake_product_version "${EMBERWAKE_PRODUCT_VERSION}")
if(emberwake_product_version STREQUAL "")
  set(emberwake_product_version "${PROJECT_VERSION}")
endif()
set(emberwake_product_url "${EMBERWAKE_PRODUCT_URL}")
if(emberwake_product_url STREQUAL "")
  set(emberwake_product_url "${EMBERWAKE_WEBSITE_URL}")
endif()
set(emberwake_product_icon "${EMBERWAKE_PRODUCT_ICON}")
if(emberwake_product_icon STREQUAL "")
  set(emberwake_product_icon "${PROJECT_SOURCE_DIR}/images/clienticon.ico")
endif()
get_filename_component(emberwake_product_icon "${emberwake_product_icon}" ABSOLUTE
  BASE_DIR "${PROJECT_SOURCE_DIR}")

# The name is that of a folder, of a file and of a key in the registry as well.
if(NOT EMBERWAKE_PRODUCT_NAME MATCHES "^[^]\\/:*?\"<>|;[\n]+$" OR
    EMBERWAKE_PRODUCT_NAME MATCHES "^[ .]|[ .]$")
  message(FATAL_ERROR
    "EMBERWAKE_PRODUCT_NAME is \"${EMBERWAKE_PRODUCT_NAME}\": Windows cannot have a folder of this "
    "name. It must not be empty, hold one of \\ / : * ? \" < > | ; [ ], or begin or end with a blank or "
    "a dot")
endif()
if(NOT emberwake_product_version MATCHES "^([0-9]+)\\.([0-9]+)\\.([0-9]+)$" OR
    CMAKE_MATCH_1 GREATER 65535 OR CMAKE_MATCH_2 GREATER 65535 OR CMAKE_MATCH_3 GREATER 65535)
  message(FATAL_ERROR
    "EMBERWAKE_PRODUCT_VERSION is \"${emberwake_product_version}\": it must be three numbers of up to "
    "65535 with dots between them, for example 1.2.3")
endif()
# The installer's script has no spelling for these that serves everywhere.
foreach(each EMBERWAKE_PRODUCT_NAME EMBERWAKE_PRODUCT_PUBLISHER EMBERWAKE_PRODUCT_COPYRIGHT
    EMBERWAKE_PRODUCT_URL)
  if("${${each}}" MATCHES "[\n`$]")
    message(FATAL_ERROR
      "${each} is \"${${each}}\": it must be one line, without \"`\" and \"$\"")
  endif()
endforeach()
if(NOT emberwake_product_url MATCHES "^https?://[^\" ]+$")
  message(FATAL_ERROR
    "EMBERWAKE_PRODUCT_URL is \"${emberwake_product_url}\": it must be an https or http address")
endif()
set(emberwake_icon_begin "")
if(EXISTS "${emberwake_product_icon}")
  file(READ "${emberwake_product_icon}" emberwake_icon_begin LIMIT 4 HEX)
endif()
if(NOT emberwake_icon_begin STREQUAL "00000100")
  message(FATAL_ERROR
    "EMBERWAKE_PRODUCT_ICON is \"${emberwake_product_icon}\": there is no icon file (.ico)")
endif()
