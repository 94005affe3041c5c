#!/usr/bin/env bash
# Writes the commands by which the installer installs a folder's files and the uninstaller removes them:
#
#   packaging/windows/list-files.sh FOLDER INSTALL.NSH UNINSTALL.NSH
#
# In one order on every file system, so that the installer is the same one everywhere.
set -euo pipefail

if [ "$#" -ne 3 ]; then
  echo 'usage: list-files.sh FOLDER INSTALL.NSH UNINSTALL.NSH' >&2
  exit 64
fi
folder=$(realpath "$1")
export LC_ALL=C

# shellcheck disable=SC2016 # $INSTDIR is a variable of the installer
{
  echo 'SetOutPath "$INSTDIR"'
  (cd "$folder" && find . -type f -printf '%P\n' | sort) | while read -r file; do
    case $file in
      */*) below=/${file%/*} ;;
      *) below= ;;
    esac
    if [ "$below" != "${last-}" ]; then
      printf 'SetOutPath "$INSTDIR%s"\n' "${below//\//\\}"
      last=$below
    fi
    printf 'File "%s"\n' "$folder/$file"
  done
} > "$2"

# The folders go when they are empty then.
# shellcheck disable=SC2016 # $INSTDIR is a variable of the installer
(
  cd "$folder"
  find . -type f -printf 'Delete "$INSTDIR\\%P"\n' | sort
  find . -mindepth 1 -type d -printf 'RMDir "$INSTDIR\\%P"\n' | sort -r
) | tr / '\134' > "$3"
