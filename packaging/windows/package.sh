#!/usr/bin/env bash
# Makes the packages for players on Windows: a zip archive and an installer; and a zip archive of the
# checker for operators.
#
#   packaging/windows/package.sh [--output FOLDER] [--build FOLDER] [-DEMBERWAKE_...=...]...
#                                [--sign-with CERTIFICATE [--key KEY] [--password-file FILE]
#                                 [--timestamp URL]]
#
#   --output FOLDER   where the packages go              default: build/packages
#   --build FOLDER    where the program is built         default: build/windows-release
#   -DNAME=VALUE      a product setting (cmake/ProductSettings.cmake); those not given have their
#                     defaults, whatever the last call was given
#
#   --sign-with CERTIFICATE   signs all programs; a PEM file with its --key, or a PKCS#12 file
#   --password-file FILE      the key's password is its first line; otherwise the password is in
#                             the environment, as EMBERWAKE_SIGN_PASSWORD
#   --timestamp URL           a server of time stamps (RFC 3161): the signatures outlive the
#                             certificate, but are others each time
#
# The toolkit is expected where packaging/windows/build-qt.sh puts it, or in EMBERWAKE_WINDOWS_QT.
set -euo pipefail

root=$(cd -- "$(dirname -- "${BASH_SOURCE[0]}")/../.." && pwd)
here=$root/packaging/windows
output=$root/build/packages
build=$root/build/windows-release
settings=()
certificate=
key=
password_file=
timestamp=
usage() {
  echo 'usage: package.sh [--output FOLDER] [--build FOLDER] [-DEMBERWAKE_...=...]...' >&2
  echo '       [--sign-with CERTIFICATE [--key KEY] [--password-file FILE] [--timestamp URL]]' >&2
  exit 64
}
while [ "$#" -gt 0 ]; do
  case $1 in
    --output) output=${2:-}; shift ;;
    --build) build=${2:-}; shift ;;
    --sign-with) certificate=${2:-}; [ -n "$certificate" ] || usage; shift ;;
    --key) key=${2:-}; [ -n "$key" ] || usage; shift ;;
    --password-file) password_file=${2:-}; [ -n "$password_file" ] || usage; shift ;;
    --timestamp) timestamp=${2:-}; [ -n "$timestamp" ] || usage; shift ;;
    -D?*=*) settings+=("$1") ;;
    *) usage ;;
  esac
  shift || usage
done
if [ -z "$output" ] || [ -z "$build" ]; then usage; fi
[ -n "$certificate" ] || [ -z "$key$password_file$timestamp" ] || usage
for file in "$certificate" "$key" "$password_file"; do
  [ -z "$file" ] || [ -r "$file" ] || { echo "package.sh: $file cannot be read" >&2; exit 1; }
done
mkdir -p "$output" "$build"
output=$(cd "$output" && pwd)
build=$(cd "$build" && pwd)

fail() {
  echo "package.sh: $*" >&2
  exit 1
}

"$root/scripts/install-packages.sh" windows
qt=${EMBERWAKE_WINDOWS_QT:-/opt/qt5-mingw-w64}
[ -f "$qt/lib/cmake/Qt5/Qt5Config.cmake" ] ||
  fail "no toolkit for Windows in $qt; packaging/windows/build-qt.sh makes it"

# One date for everything inside, so that the same commit gives the same packages.
SOURCE_DATE_EPOCH=${SOURCE_DATE_EPOCH:-$(git -C "$root" log -1 --format=%ct 2>/dev/null || date +%s)}
# And one language: zip, for one, stops at letters of a folder's name that its own does not have.
export SOURCE_DATE_EPOCH TZ=UTC LC_ALL=C.UTF-8

"$here/build-libzip.sh"
libzip=$root/build/windows-libzip

echo 'Building the programs ...'
# The settings of the last call are forgotten first: the cache would keep them.
(cd "$root" && cmake --preset windows-release -B "$build" -U 'EMBERWAKE_*_URL' -U 'EMBERWAKE_PRODUCT_*' \
  "-DEMBERWAKE_WINDOWS_LIBZIP=$libzip" "${settings[@]}")
cmake --build "$build" --parallel "$(nproc)" --target emberwake-launcher emberwake-unzip emberwake-check
product() {
  sed -n "s/^$1 //p" "$build/packaging/product.txt"
}
version=$(product version)
[ -n "$version" ] || fail "no version in $build/packaging/product.txt"

umask 022
work=$(mktemp -d "${TMPDIR:-/tmp}/package.XXXXXX")
trap 'rm -rf "$work"' EXIT
name=emberwake-launcher-$version-windows-x86_64
folder=$work/$name
mkdir -p "$folder"/{platforms,styles,imageformats,fonts,licenses}

echo 'Collecting the files ...'
runtime_file() {
  local file
  file=$(x86_64-w64-mingw32-g++-posix -print-file-name="$1")
  # The compiler answers with the bare name when it has none.
  [ "$file" != "$1" ] || file=/usr/x86_64-w64-mingw32/lib/$1
  [ -f "$file" ] || fail "$1 is not there"
  echo "$file"
}
cp "$build/emberwake-launcher.exe" "$build/unzip.exe" "$folder/"
for module in Core Gui Network Widgets; do
  cp "$qt/bin/Qt5$module.dll" "$folder/"
done
# No "bearer" plug-in: it asks the system for the network interfaces every ten seconds, in a window
# that stays open beside an online game. The launcher does not need what it finds.
cp "$qt/plugins/platforms/qwindows.dll" "$folder/platforms/"
cp "$qt/plugins/styles/qwindowsvistastyle.dll" "$folder/styles/"
cp "$qt/plugins/imageformats"/{qgif,qico,qjpeg}.dll "$folder/imageformats/"
for library in libgcc_s_seh-1.dll libstdc++-6.dll libwinpthread-1.dll; do
  cp "$(runtime_file "$library")" "$folder/"
done
# The form's letters, which a player's Windows does not have.
for font in Lato-Regular.ttf Lato-Bold.ttf; do
  install -m 644 "/usr/share/fonts/truetype/lato/$font" "$folder/fonts/" ||
    fail "$font is not there (install fonts-lato)"
done
find "$folder" \( -name '*.exe' -o -name '*.dll' \) -exec x86_64-w64-mingw32-strip {} +
# The installer's making signs as well, so that what to sign with stands in the environment.
if [ -n "$certificate" ]; then
  EMBERWAKE_SIGN_WITH=$(realpath "$certificate")
  EMBERWAKE_SIGN_KEY=${key:+$(realpath "$key")}
  EMBERWAKE_SIGN_PASSWORD_FILE=${password_file:+$(realpath "$password_file")}
  EMBERWAKE_SIGN_TIMESTAMP=$timestamp
  EMBERWAKE_SIGN_NAME=$(product name)
  EMBERWAKE_SIGN_URL=$(product url)
  export EMBERWAKE_SIGN_WITH EMBERWAKE_SIGN_KEY EMBERWAKE_SIGN_PASSWORD_FILE EMBERWAKE_SIGN_TIMESTAMP \
    EMBERWAKE_SIGN_NAME EMBERWAKE_SIGN_URL
  sign=("$here/sign.sh")
else
  sign=(true)
  sed 's/$/\r/' "$here/UNSIGNED.txt" > "$folder/UNSIGNED.txt"
fi
"${sign[@]}" "$folder"/*.exe

echo 'Collecting the licences ...'
licenses=$folder/licenses
copy_license() {
  [ -f "$1" ] || fail "$1 is not there: $3"
  install -m 644 "$1" "$licenses/$2"
}
source_of() {
  # shellcheck disable=SC2016 # dpkg-query's own variables
  dpkg-query --show --showformat='${source:Package} ${source:Version}' "$1"
}
if [ -f "$qt/licenses/SOURCE-PACKAGE" ]; then
  read -r qt_package qt_version < "$qt/licenses/SOURCE-PACKAGE"
  qt_source="$qt_package ${qt_version#"${qt_package}"_}"
else
  # A toolkit that was built elsewhere says it in its description.
  qt_source=$(grep -soE -m1 'qtbase-opensource-src [0-9][^ ]*[0-9]' "$qt/README.txt") ||
    fail "nothing in $qt says which source package the toolkit was built from"
fi
qt_copyright=$qt/licenses/copyright
[ -f "$qt_copyright" ] || qt_copyright=/usr/share/doc/libqt5core5a/copyright
copy_license "$qt/licenses/LICENSE.LGPL3" qt-LGPL-3.txt 'the terms of the toolkit'
copy_license "$qt_copyright" qt-copyright.txt 'the terms of the parts inside the toolkit (install libqt5core5a)'
copy_license /usr/share/common-licenses/GPL-3 GPL-3.txt 'the terms that LGPL 3 and the exception build on'
copy_license /usr/share/doc/gcc-mingw-w64-x86-64-posix-runtime/copyright gcc-copyright.txt \
  "the terms of the compiler's libraries"
copy_license /usr/share/doc/mingw-w64-x86-64-dev/copyright mingw-w64-copyright.txt \
  'the terms of the C and thread libraries'
for library in libzip-license libdeflate-license zlib-copyright; do
  copy_license "$libzip/licenses/$library.txt" "$library.txt" "the terms of a library inside the extractor"
done
copy_license /usr/share/doc/fonts-lato/copyright lato-copyright.txt "the terms of the form's letters"
grep -q '^License: OFL-1.1' "$licenses/lato-copyright.txt" || fail "the font's terms are missing"
for part in zlib pcre2 libpng jpeg freetype harfbuzz md4c double-conversion; do
  grep -qi -- "$part" "$licenses/qt-copyright.txt" || fail "$qt_copyright says nothing of $part"
done
grep -q 'Runtime Library Exception' "$licenses/gcc-copyright.txt" || fail 'the runtime exception is missing'
grep -q 'winpthreads' "$licenses/mingw-w64-copyright.txt" || fail 'the terms of the thread library are missing'
extractor_sources=$(paste -s -d , "$libzip/licenses/SOURCE-PACKAGES" | sed 's/,/, /g')
# The compiler's package repacks the distribution's own compiler, and bears both versions.
gcc_source=$(source_of gcc-mingw-w64-x86-64-posix-runtime)
# shellcheck disable=SC2016 # dpkg-query's own variables
gcc_version=$(dpkg-query --show --showformat='${Version}' gcc-mingw-w64-x86-64-posix-runtime)
gcc_source+=", from gcc-${gcc_version%%.*} ${gcc_version%+"${gcc_source##* }"*}"
# describe_licenses TEMPLATE FOLDER
describe_licenses() {
  sed -e "s|@QT_SOURCE@|$qt_source|" -e "s|@EXTRACTOR_SOURCES@|$extractor_sources|" \
    -e "s|@GCC_SOURCE@|$gcc_source|" \
    -e "s|@MINGW_SOURCE@|$(source_of mingw-w64-x86-64-dev)|" \
    -e "s|@FONT_SOURCE@|$(source_of fonts-lato)|" \
    "$here/$1" > "$2/README.txt"
  ! grep -n '@' "$2/README.txt" || fail "the README.txt of $1 has a gap"
  # Notepad of the older systems knows no other line ends.
  find "$2" -type f -exec sed -i 's/\r$//; s/$/\r/' {} +
}
describe_licenses licenses-README.txt.in "$licenses"

"$here/list-files.sh" "$folder" "$work/files.nsh"
"$here/check-imports.py" "$folder"

echo 'Collecting the checker ...'
checker=emberwake-check-$version-windows-x86_64
"$here/package-checker.sh" "$build/emberwake-check.exe" "$folder" "$work/$checker"
describe_licenses licenses-README-checker.txt.in "$work/$checker/licenses"
"${sign[@]}" "$work/$checker"/*.exe

echo 'Packing ...'
# pack FOLDER: the zip archive of a folder of $work, the same one on whatever machine.
pack() {
  find "$work/$1" -type d -exec chmod 755 {} +
  find "$work/$1" -type f -exec chmod 644 {} +
  find "$work/$1" -exec touch --no-dereference --date="@$SOURCE_DATE_EPOCH" {} +
  rm -f "$output/$1.zip"
  (cd "$work" && find "$1" | LC_ALL=C sort | zip -9 -X -q -@ "$output/$1.zip")
}
pack "$name"
pack "$checker"

# Of the files alone: folders weigh what their file system makes of them.
size=$(find "$folder" -type f -printf '%s\n' | awk '{ sum += $1 } END { print int((sum + 1023) / 1024) }')
installer=$output/emberwake-launcher-$version-setup.exe
rm -f "$installer"
makensis -V2 -WX -INPUTCHARSET UTF8 "-DPRODUCT=$build/packaging/product.nsh" \
  "-DFILES=$work/files.nsh" "-DFILE_LIST=$folder/package-files.txt" \
  "-DSIZE=$size" "-DSIGN=${sign[*]}" "-DUNINSTALLER=$work/uninstall.exe" "-DOUTPUT=$installer" \
  "$here/installer.nsi"
"${sign[@]}" "$installer"

echo 'Writing the bill of materials and the check sums ...'
{
  echo "qt $qt_source"
  # Without the compiler that it repacks.
  echo "gcc ${gcc_source%%,*}"
  echo "mingw $(source_of mingw-w64-x86-64-dev)"
  echo "nsis $(source_of nsis)"
  echo "base-files $(source_of base-files)"
  echo "lato $(source_of fonts-lato)"
  sed 's/^\([^ ]*\)/\1 \1/; s/^libz-mingw-w64 /zlib /' "$libzip/licenses/SOURCE-PACKAGES"
} > "$work/origins"
# bill FOLDER [FILE...]
bill() {
  "$here/bill-of-materials.py" "$1" "$version" "$(product publisher)" "$work/$1" "${@:2}" \
    < "$work/origins" > "$output/$1.cdx.json"
}
bill "$name" "$work/uninstall.exe"
bill "$checker"
packages=("$name.zip" "$(basename "$installer")" "$name.cdx.json" "$checker.zip" "$checker.cdx.json")
(cd "$output" && sha256sum "${packages[@]}" > SHA256SUMS)

for package in "${packages[@]}"; do
  echo "$(stat --format=%s "$output/$package") bytes: $output/$package"
done
