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
