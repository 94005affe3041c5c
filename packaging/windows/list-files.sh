#!/usr/bin/env bash
# Writes the list of a folder's files into it (package-files.txt, which is a file of the package and
# names itself), and the macros by which the installer unpacks them and goes through their names:
#
#   packaging/windows/list-files.sh FOLDER FILES.NSH
#
# In one order on every file system, so that the installer is the same one everywhere.
set -euo pipefail

if [ "$#" -ne 2 ]; then
  echo 'usage: list-files.sh FOLDER FILES.NSH' >&2
  exit 64
fi
folder=$(realpath "$1")
export LC_ALL=C
list=$folder/package-files.txt
touch "$list"
files=$(cd "$folder" && find . -type f -printf '%P\n' | sort)
folders=$(cd "$folder" && find . -mindepth 1 -type d -printf '%P\n' | sort -r)
# The installer reads it byte by byte.
if grep -q '[^ -~]' <<< "$files"; then
  echo "list-files.sh: a file in $folder has a name of other letters than ASCII's" >&2
  exit 1
fi
# With the slashes and line ends of Windows.
printf '%s\n' "${files//\//\\}" | sed 's/$/\r/' > "$list"

# shellcheck disable=SC2016 # ${STAGE} is a definition of the installer
{
  awk '{ if (length > longest) longest = length } END { print "!define LONGEST_FILE " longest }' <<< "$files"
  echo '!macro installFiles'
  last=none
  while read -r file; do
    case $file in
      */*) below=/${file%/*} ;;
      *) below= ;;
    esac
    if [ "$below" != "$last" ]; then
      printf 'SetOutPath "${STAGE}\\new%s"\n' "${below//\//\\}"
      last=$below
    fi
    printf 'File "%s"\n' "$folder/$file"
  done <<< "$files"
  echo '!macroend'
  echo '!macro packageFiles action'
  sed 's|/|\\|g; s|.*|!insertmacro ${action} "&"|' <<< "$files"
  echo '!macroend'
  echo '!macro packageFolders action'
  [ -z "$folders" ] || sed 's|/|\\|g; s|.*|!insertmacro ${action} "&"|' <<< "$folders"
  echo '!macroend'
} > "$2"
