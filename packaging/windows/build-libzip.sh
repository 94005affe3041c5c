#!/usr/bin/env bash
# Builds what the extractor for Windows (x86_64) is linked with, as static libraries: libzip and
# libdeflate from the distribution's source packages, and the distribution's own zlib for MinGW-w64
# beside them:
#
#   packaging/windows/build-libzip.sh [FOLDER]        default: build/windows-libzip
#
# Does nothing when they are there and newer than this file. The folder is complete or not there at
# all. In its "licenses" lie the terms, and in SOURCE-PACKAGES there the sources' versions.
set -euo pipefail

here=$(cd -- "$(dirname -- "${BASH_SOURCE[0]}")" && pwd)
prefix=$(realpath -m "${1:-$here/../../build/windows-libzip}")
stamp=$prefix/licenses/SOURCE-PACKAGES
if [ -f "$stamp" ] && [ "$stamp" -nt "$here/build-libzip.sh" ]; then
  echo "The extractor's libraries for Windows are there: $prefix"
  exit 0
fi
if [ -e "$prefix" ] && [ ! -f "$stamp" ]; then
  echo "build-libzip.sh: $prefix is there, but holds no such libraries; remove it first" >&2
  exit 1
fi

"$here/../../scripts/install-packages.sh" windows source
mkdir -p "$(dirname "$prefix")"
# Beside the target, so that the finished folder is moved into place at once.
work=$(mktemp -d "$prefix.build.XXXXXX")
trap 'rm -rf "$work"' EXIT
"$here/fetch-source.sh" libzip "$work/libzip"
"$here/fetch-source.sh" libdeflate "$work/libdeflate"

new=$work/new
mkdir -p "$new"/{include,lib,licenses}

# zlib comes as it is. It is copied because its own folder also has the library that would want a
# DLL, which build systems prefer.
runtime=/usr/x86_64-w64-mingw32
cp "$runtime/include/zlib.h" "$runtime/include/zconf.h" "$new/include/"
cp "$runtime/lib/libz.a" "$new/lib/"

cc=x86_64-w64-mingw32-gcc-posix
flags='-O2 -fstack-protector-strong -D_FORTIFY_SOURCE=2'
# Its sources are named without their folder.
make -C "$work/libdeflate" "CC=$cc" AR=x86_64-w64-mingw32-ar "CFLAGS=$flags" libdeflatestatic.lib
cp "$work/libdeflate/libdeflatestatic.lib" "$new/lib/libdeflate.a"
cp "$work/libdeflate/libdeflate.h" "$new/include/"

# What messages name of the sources is the same wherever they are built. The flags reach a shell, and the
# folder may have blanks.
flags+=" '-ffile-prefix-map=${work//\'/\'\\\'\'}=.'"
options=(
  -DCMAKE_SYSTEM_NAME=Windows -DCMAKE_C_COMPILER="$cc" -DCMAKE_BUILD_TYPE=None "-DCMAKE_C_FLAGS=$flags"
  -DCMAKE_FIND_ROOT_PATH="$new" -DCMAKE_FIND_ROOT_PATH_MODE_PROGRAM=NEVER
  -DCMAKE_FIND_ROOT_PATH_MODE_LIBRARY=ONLY -DCMAKE_FIND_ROOT_PATH_MODE_INCLUDE=ONLY
  -DCMAKE_FIND_ROOT_PATH_MODE_PACKAGE=ONLY -DCMAKE_INSTALL_PREFIX="$work/installed"
  -DBUILD_SHARED_LIBS=OFF -DBUILD_TOOLS=OFF -DBUILD_REGRESS=OFF -DBUILD_EXAMPLES=OFF -DBUILD_DOC=OFF
  # Encryption is the system's own. Archives of games are stored or deflated.
  -DENABLE_WINDOWS_CRYPTO=ON -DENABLE_OPENSSL=OFF -DENABLE_GNUTLS=OFF -DENABLE_MBEDTLS=OFF
  -DENABLE_COMMONCRYPTO=OFF -DENABLE_BZIP2=OFF -DENABLE_LZMA=OFF
)
cmake -S "$work/libzip" -B "$work/libzip/build" -G Ninja "${options[@]}"
cmake --build "$work/libzip/build" --parallel "$(nproc)"
cmake --install "$work/libzip/build"
cp "$work/installed/lib/libzip.a" "$new/lib/"
cp "$work/installed/include/zip.h" "$work/installed/include/zipconf.h" "$new/include/"

# Both hang on what the configuration finds, and a library without them would look just as good until
# the first locked archive, or until the program lacks a DLL.
expect() {
  grep -q "^#define $1" "$2" || {
    echo "build-libzip.sh: libzip was configured without $1" >&2
    exit 1
  }
}
expect HAVE_WINDOWS_CRYPTO "$work/libzip/build/config.h"
expect ZIP_STATIC "$new/include/zipconf.h"

install -m 644 "$work/libzip/LICENSE" "$new/licenses/libzip-license.txt"
install -m 644 "$work/libdeflate/COPYING" "$new/licenses/libdeflate-license.txt"
install -m 644 /usr/share/doc/libz-mingw-w64-dev/copyright "$new/licenses/zlib-copyright.txt"
{
  for package in libzip libdeflate; do
    sed -E "s/^([^ ]+) [^_]+_/\1 /" "$work/$package/SOURCE-PACKAGE"
  done
  # shellcheck disable=SC2016 # dpkg-query's own variables
  dpkg-query --show --showformat='${source:Package} ${source:Version}\n' libz-mingw-w64-dev
} > "$new/licenses/SOURCE-PACKAGES"

rm -rf "$prefix"
mv "$new" "$prefix"
echo "The extractor's libraries for Windows are built: $prefix"
