#!/usr/bin/env bash
# Builds the toolkit for Windows (x86_64, MinGW-w64 with posix threads) from the distribution's own
# source package, and installs it in one folder:
#
#   packaging/windows/build-qt.sh [FOLDER]        default: /opt/qt5-mingw-w64
#
# Does nothing when it is there already. A quarter to half an hour on two cores, and 3 GB of disk in
# TMPDIR. The folder is complete or not there at all.
set -euo pipefail

prefix=${1:-/opt/qt5-mingw-w64}
here=$(cd -- "$(dirname -- "${BASH_SOURCE[0]}")" && pwd)
if [ -f "$prefix/lib/cmake/Qt5/Qt5Config.cmake" ]; then
  echo "The toolkit for Windows is there: $prefix"
  exit 0
fi
if [ -e "$prefix" ]; then
  echo "build-qt.sh: $prefix is there, but holds no toolkit; remove it first" >&2
  exit 1
fi
mkdir -p "$(dirname "$prefix")"

"$here/../../scripts/install-packages.sh" windows source

work=$(mktemp -d "${TMPDIR:-/tmp}/build-qt.XXXXXX")
trap 'rm -rf "$work"' EXIT
"$here/fetch-source.sh" qtbase-opensource-src "$work/source"

# These two libraries are named as Windows spells them, where case does not matter.
sed -i 's/-lSecur32/-lsecur32/; s/-lCrypt32/-lcrypt32/' "$work/source/src/network/ssl/ssl.pri"
# The configuration asks git for a version where there is a repository; there is none, and the
# marker makes the build create the headers that a release archive would bring.
mkdir -p "$work/source/.git"

options=(
  -opensource -confirm-license
  -xplatform win32-g++ -device-option CROSS_COMPILE=x86_64-w64-mingw32-
  -prefix "$prefix"
  -release -shared -no-pch -nomake examples -nomake tests
  # The launcher draws by raster, and speaks to no bus.
  -no-opengl -no-feature-vulkan -no-dbus -no-icu
  # Everything else the program needs is inside: no further library to ship.
  -qt-zlib -qt-pcre -qt-libpng -qt-libjpeg -qt-freetype -qt-harfbuzz
  # The system's own encryption, with the system's own certificates.
  -schannel -no-openssl
  -no-sql-sqlite -no-sql-odbc
  # No answer with the player's account to a host that asks who is there.
  -no-feature-sspi
  # Its header is not part of the distribution's source.
  -no-feature-tabletevent
)
# What neither the programs nor their tests use, and what makes the libraries large: every player
# downloads them. Nothing that a document could ask for is here: formats of pictures, kinds of addresses,
# marked-up text.
left_out=(
  # Dialogues and parts of windows that the launcher has none of. Toolbars and tables stay: the style of
  # Windows is not compiled without them.
  calendarwidget datetimeedit colordialog fontdialog fontcombobox filedialog dirmodel fscompleter
  filesystemmodel errormessage progressdialog wizard splashscreen mdiarea dockwidget toolbox
  columnview tablewidget treewidget listwidget datawidgetmapper undoview undogroup undostack
  undocommand commandlinkbutton dial keysequenceedit lcdnumber scroller syntaxhighlighter textbrowser
  # Writing documents, and reading those that are not HTML.
  pdf textodfwriter textmarkdownreader textmarkdownwriter
  # The tables of East Asian encodings (all that is read here is UTF-8, the system knows its own),
  # of kinds of files, of public domains, and of other calendars.
  big_codecs mimetype topleveldomain jalalicalendar islamiccivilcalendar hijricalendar
  # Machines of states, models of tables, and what programs share with each other.
  statemachine concatenatetablesproxymodel identityproxymodel transposeproxymodel sharedmemory
  systemsemaphore
  # Names beyond addresses, pipes, and a cache on the disk.
  dnslookup localserver networkdiskcache
)
for feature in "${left_out[@]}"; do
  options+=("-no-feature-$feature")
done
mkdir "$work/build"
cd "$work/build"
echo 'Configuring the toolkit ...'
"$work/source/configure" "${options[@]}"
echo 'Building the toolkit ...'
make -j"$(nproc)"
echo "Installing the toolkit in $prefix ..."
# First beside the build, so that a broken-off installation leaves nothing that looks complete.
make INSTALL_ROOT="$work/installed" install
mkdir -p "$work/installed$prefix/licenses"
cp "$work/source"/LICENSE.* "$work/installed$prefix/licenses/"
cp "$work/source/SOURCE-PACKAGE" "$work/installed$prefix/licenses/"
printf '%s\n' "${left_out[@]}" > "$work/installed$prefix/licenses/LEFT-OUT"
# The authors and terms of everything inside, the bundled libraries included.
cp "$work/source/debian/copyright" "$work/installed$prefix/licenses/copyright"
mv "$work/installed$prefix" "$prefix"
echo "The toolkit for Windows is installed: $prefix"
echo "Left out of it: ${left_out[*]}"
