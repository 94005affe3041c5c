#!/usr/bin/env bash
# The form's letters are the same with the system's font and with the one beside the program:
#
#   same-letters.sh LETTERS RUNNER...      the program of letters.cpp, and what runs it on a display
#
# The program is started where the system has the font, where it has none, and where nobody has it.
# The last one's letters have to differ: they show that the font was really taken away.
set -euo pipefail
program=$1
shift
# Windows finds this machine's files there.
drive=
[[ $program != *.exe ]] || drive=Z:
fonts=/usr/share/fonts/truetype/lato
scratch=$(mktemp -d /tmp/letters.XXXXXX)
trap 'rm -rf "$scratch"' EXIT

# All fonts of this machine but one, by folders: Wine reads whole folders, whatever is rejected.
mkdir "$scratch/others"
for folder in /usr/share/fonts/truetype/*; do
  [ "$folder" = "$fonts" ] || ln -s "$folder" "$scratch/others/"
done
cat > "$scratch/fonts.conf" <<XML
<?xml version="1.0"?>
<!DOCTYPE fontconfig SYSTEM "fonts.dtd">
<fontconfig>
  <dir>$scratch/others</dir>
  <cachedir>$scratch/cache</cachedir>
  <include ignore_missing="yes">/etc/fonts/conf.d</include>
</fontconfig>
XML

# letters_of NAME: the program in a folder of its own, its pictures in another.
letters_of() {
  mkdir -p "$scratch/$1"
  cp "$program" "$scratch/program-$1/"
  "${runner[@]}" "$scratch/program-$1/${program##*/}" "$drive$scratch/$1"
}
runner=("$@")
mkdir -p "$scratch"/program-{system,shipped,none} "$scratch/program-shipped/fonts"
cp "$fonts"/Lato-{Regular,Bold}.ttf "$scratch/program-shipped/fonts/"
letters_of system
export FONTCONFIG_FILE=$scratch/fonts.conf
# A Windows that was set up before remembers where the fonts were.
unset EMBERWAKE_WINE_TEMPLATE
letters_of shipped
letters_of none

failed=0
for picture in strip title description; do
  if ! cmp "$scratch/system/$picture.png" "$scratch/shipped/$picture.png"; then
    echo "$picture: the font beside the program gives other letters"
    failed=1
  fi
  if cmp -s "$scratch/system/$picture.png" "$scratch/none/$picture.png"; then
    echo "$picture: the system still has the font, so this test shows nothing"
    failed=1
  fi
done
if [ "$failed" -ne 0 ] && [ -n "${KEEP_LETTERS:-}" ]; then
  cp -r "$scratch/." "$KEEP_LETTERS"
fi
exit "$failed"
