#!/usr/bin/env bash
# Builds the Windows program and its tests, and runs them on Wine: the same test programs as
# scripts/test.sh, what only Windows can show, the packages, and the road of one launch from the
# unpacked archive. The last line is the summary "N passed, N failed, N skipped".
#
#   scripts/test-windows.sh [CTEST OPTION...]     for example: scripts/test-windows.sh -R chrome
#
# Needs the toolkit for Windows in /opt/qt5-mingw-w64 or in the folder that EMBERWAKE_WINDOWS_QT
# names; packaging/windows/build-qt.sh puts it there.
set -euo pipefail
# Wine's loader keeps the address range around 2 GiB for itself, but where the kernel puts things at
# random it now and then is too late for the one page that every Windows process needs, and starting a
# program fails there with an "internal error". Nothing is put at random below this line.
without_chance=0x0040000
if ((!(0x$(cat /proc/self/personality) & without_chance))) && setarch --addr-no-randomize true 2> /dev/null; then
  exec setarch --addr-no-randomize "$0" "$@"
fi
cd "$(dirname "$0")/.."
# Wine takes the system's 8-bit encoding from here: western Europe's, as most players have it.
export LC_ALL=C.UTF-8

toolkit=${EMBERWAKE_WINDOWS_QT:-/opt/qt5-mingw-w64}
if [ ! -f "$toolkit/lib/cmake/Qt5/Qt5Config.cmake" ]; then
  echo "The toolkit for Windows is not in $toolkit; packaging/windows/build-qt.sh builds it." >&2
  exit 1
fi
. scripts/summary.sh
scripts/install-packages.sh windows windows-test source

build=build/windows-test
tools=build/windows-tools
httplib=build/windows-httplib
jobs=$(nproc)
echo '== Making the tools'
[ -f "$httplib/httplib.h" ] || packaging/windows/fetch-source.sh cpp-httplib "$httplib"
tests/support/build-windows-zip.sh "$tools/zip.exe"
packaging/windows/build-libzip.sh

echo "== Configuring $build"
cmake -S . -B "$build" -G Ninja -DCMAKE_TOOLCHAIN_FILE=cmake/mingw-w64.cmake \
  -DEMBERWAKE_WINDOWS_QT="$toolkit" -DEMBERWAKE_HTTPLIB_SOURCE="$PWD/$httplib" \
  -DCMAKE_BUILD_TYPE=Release -DBUILD_TESTING=ON -DEMBERWAKE_WARNINGS_AS_ERRORS=ON
echo '== Building'
cmake --build "$build" --parallel "$jobs"

echo '== Setting up a Windows'
# In /tmp, where the copies are made: files that nobody changes can be linked then.
template=$(mktemp -d /tmp/emberwake-windows.XXXXXX)
trap 'rm -rf "$template" "$summary_log"' EXIT
export EMBERWAKE_WINE_TEMPLATE=$template/prefix
# Its links into a home must not lead to that of the one who runs this.
mkdir "$template/home"
HOME=$template/home WINEPREFIX=$EMBERWAKE_WINE_TEMPLATE WINEARCH=win64 WINEDEBUG=-all \
  WINEDLLOVERRIDES='mscoree,mshtml=;winedbg.exe,winemenubuilder.exe=d' DISPLAY='' \
  /usr/lib/wine/wine64 wineboot --init > "$template/log" 2>&1
WINEPREFIX=$EMBERWAKE_WINE_TEMPLATE /usr/lib/wine/wineserver64 --wait

# Where Windows looks for libraries and tools, in its own spelling.
windows_path() {
  local folder
  local -a folders=()
  for folder in "$@"; do
    folders+=("Z:$(cd "$folder" && pwd | tr / '\134')")
  done
  (IFS=';' && echo "${folders[*]}")
}
libraries=$(dirname "$(x86_64-w64-mingw32-g++-posix -print-file-name=libstdc++-6.dll)")
WINEPATH=$(windows_path "$toolkit/bin" "$libraries" /usr/x86_64-w64-mingw32/lib "$tools")
QT_PLUGIN_PATH=$(windows_path "$toolkit/plugins")
export WINEPATH QT_PLUGIN_PATH

rm -rf "$build/tests/results"
mkdir -p "$build/tests/results"
test_programs() {
  local status=0
  ctest --test-dir "$build" --parallel "$jobs" --output-on-failure --timeout 1800 \
    --output-junit tests/results/ctest.junit.xml "$@" || status=$?
  /usr/bin/python3 scripts/count_tests.py "$build/tests/results" || status=1
  return "$status"
}

echo '== Testing'
run_counted test_programs "$@"
if [ "$#" -eq 0 ]; then
  # The packages find what they need by themselves, as a player's Windows does.
  unset WINEPATH QT_PLUGIN_PATH
  echo '== Packing'
  packaging/windows/package.sh
  run_counted packaging/windows/test.sh
  echo '== The road of one launch'
  run_as_one scripts/demo-windows.sh
fi
print_summary
