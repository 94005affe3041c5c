#!/usr/bin/env bash
# Proves that the commit gives the same packages on two machines: installs the distribution twice, builds
# and packs in both, in folders with different names and with a year between their clocks, and compares.
#
#   packaging/windows/prove-reproducible.sh [FOLDER]      where it works; default: a scratch folder
#
# As root, with the machine's own package sources; half an hour on two cores and 5 GB of disk. The
# toolkit is the one in /opt/qt5-mingw-w64 or EMBERWAKE_WINDOWS_QT in both. The working tree's
# committed state is built. A FOLDER that is given stays.
set -euo pipefail

root=$(cd -- "$(dirname -- "${BASH_SOURCE[0]}")/../.." && pwd)
qt=${EMBERWAKE_WINDOWS_QT:-/opt/qt5-mingw-w64}
if [ "$(id -u)" -ne 0 ]; then
  echo 'prove-reproducible.sh: installing a system needs root' >&2
  exit 1
fi
"$root/scripts/install-packages.sh" source
# shellcheck source=../../scripts/install-packages.sh
. "$root/scripts/install-packages.sh"
install_packages debootstrap

mounted=()
finish() {
  local each
  for each in "${mounted[@]}"; do
    umount "$each" || true
  done
  [ "$keep" = yes ] || rm -rf --one-file-system "$work"
}
keep=no
if [ -n "${1:-}" ]; then
  keep=yes
  mkdir -p "$1"
  work=$(realpath "$1")
else
  work=$(mktemp -d "${TMPDIR:-/tmp}/prove-reproducible.XXXXXX")
fi
trap finish EXIT
date=$(git -C "$root" log -1 --format=%ct)
# shellcheck disable=SC1091 # the distribution's description of itself
suite=$(. /etc/os-release && echo "$VERSION_CODENAME")
# shellcheck disable=SC2016 # apt-get's own variable
mirror=$(apt-get indextargets --format '$(SITE)' "Codename: $suite" 'Created-By: Packages' | head -n 1)

# build NAME FOLDER CLOCK: a system of its own, with the packages in NAME.packages afterwards.
build() {
  local system=$work/$1 folder=$2 clock=$3
  echo "== $1: installing a system"
  debootstrap --variant=minbase --include=ca-certificates,git,faketime "$suite" "$system" "$mirror" > "$work/$1.log"
  rm -f "$system/etc/apt/sources.list"
  cp -rL /etc/apt/{sources.list,sources.list.d,apt.conf.d,trusted.gpg.d,keyrings} "$system/etc/apt/" 2> /dev/null || true
  cp -rL /usr/share/keyrings/. "$system/usr/share/keyrings/"
  cp -L /etc/resolv.conf /etc/hosts "$system/etc/"
  mount -t proc proc "$system/proc"
  mounted=("$system/proc" "${mounted[@]}")
  mkdir -p "$system$folder" "$system/opt/toolkit"
  git -C "$root" archive HEAD | tar -xf - -C "$system$folder"
  cp -a "$qt/." "$system/opt/toolkit/"
  local inside=(chroot "$system" env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin LC_ALL=C.UTF-8
    EMBERWAKE_WINDOWS_QT=/opt/toolkit "SOURCE_DATE_EPOCH=$date"
    # The clock is another one; the dates that files were given are read as they are.
    NO_FAKE_STAT=1)
  echo "== $1: what the programs are built from"
  # At the real time: package sources expire.
  "${inside[@]}" "$folder/scripts/install-packages.sh" windows source >> "$work/$1.log" 2>&1
  # A toolkit that was built elsewhere does not bring its authors and terms along.
  [ -f "$qt/licenses/copyright" ] ||
    "${inside[@]}" apt-get -q -y install --no-install-recommends libqt5core5a >> "$work/$1.log" 2>&1
  "${inside[@]}" "$folder/packaging/windows/build-libzip.sh" >> "$work/$1.log" 2>&1
  echo "== $1: packing in $folder, at $clock"
  "${inside[@]}" faketime -f "$clock" "$folder/packaging/windows/package.sh" >> "$work/$1.log" 2>&1
  cp -r "$system$folder/build/packages" "$work/$1.packages"
}
build first /build/launcher +0d
build second '/srv/a studio/Источники/of the launcher' +365d
(cd "$work/first.packages" && sha256sum -- *)
diff -r "$work/first.packages" "$work/second.packages"
echo 'Both systems made the same packages.'
