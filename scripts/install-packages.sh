#!/usr/bin/env bash
# Installs the Debian packages that a command of this project needs and the
# machine lacks.
#
#   scripts/install-packages.sh GROUP...      groups: build operator test demo fuzz bench coverage
#                                              source windows windows-test
#
# Ends with 0 when everything is there, with 1 and a message that names the
# package when something cannot be had. Other scripts may source this file and
# call install_packages with names of packages of their own.

# What the program is built from.
build_packages=(
  cmake ninja-build g++ qtbase5-dev qtbase5-dev-tools libzip-dev libdeflate-dev zlib1g-dev
)
# What operators pack archives with, and try their world with.
operator_packages=(
  zip python3
)
# What the demo shows and drives it with.
demo_packages=(
  zip python3 python3-pil xvfb x11-utils xdotool openbox fonts-lato
  xdg-utils file procps
)
# What the tests and checks run.
test_packages=(
  libcpp-httplib-dev xvfb x11-utils xdotool openbox clang-format clang-tidy
  clazy clang unzip zip python3 python3-pil python3-fonttools fonts-lato librsvg2-bin
  shellcheck
  xdg-utils file procps ca-certificates git libssl-dev openssl x11-apps python3-xlib
  fontconfig util-linux mount mypy man-db
  at-spi2-core dbus-daemon gir1.2-atspi-2.0 python3-gi
  python3-jsonschema nginx apache2-bin
)

# What the fuzz targets are built by.
fuzz_packages=(
  clang
)
# What the benchmarks are built with, run on and measure against.
bench_packages=(
  libcpp-httplib-dev libssl-dev python3 python3-pil xvfb fonts-lato nginx curl unzip binutils
  valgrind
)
# What tells which lines the tests reach.
coverage_packages=(
  gcovr
)
# What unpacks the distribution's source packages.
source_packages=(
  ca-certificates patch xz-utils
)
# What the Windows program is built from and packed with.
windows_packages=(
  cmake ninja-build g++ make g++-mingw-w64-x86-64-posix librsvg2-bin python3 perl
  nsis zip unzip file libz-mingw-w64-dev osslsigncode util-linux fonts-lato
)
# What its tests run on.
windows_test_packages=(
  wine64 xvfb x11-utils xdotool openbox unzip zip python3 python3-pil fonts-lato openssl
  procps libzip-dev
)

# Succeeds when the package is installed and configured.
package_is_installed() {
  [ "$(dpkg-query --show --showformat='${db:Status-Status}' "$1" 2>/dev/null)" = installed ]
}

# Runs a command with the rights to install packages.
as_root() {
  if [ "$(id -u)" -eq 0 ]; then
    env DEBIAN_FRONTEND=noninteractive "$@"
  else
    # The variable stands behind sudo, which would not let it through.
    sudo env DEBIAN_FRONTEND=noninteractive "$@"
  fi
}

# install_packages PACKAGE...: installs those that are missing. Returns 1, after
# a message, when one cannot be had.
install_packages() {
  local package
  local -a missing=() unknown=()

  if ! command -v apt-get > /dev/null || ! command -v dpkg-query > /dev/null; then
    echo "This needs a Debian system (12 or newer): apt-get and dpkg-query are not here." >&2
    echo "Packages asked for: $*" >&2
    return 1
  fi

  for package in "$@"; do
    package_is_installed "$package" || missing+=("$package")
  done
  [ "${#missing[@]}" -gt 0 ] || return 0

  echo "Missing packages: ${missing[*]}"
  if [ "$(id -u)" -ne 0 ] && ! command -v sudo > /dev/null; then
    echo "They can be installed by root only, and there is no sudo here. As root, run:" >&2
    echo "  apt-get update && apt-get install --no-install-recommends ${missing[*]}" >&2
    return 1
  fi

  echo "Refreshing the list of packages ..."
  # Another program may hold the lock for a while, as the updates at boot do.
  if ! as_root apt-get -q -o DPkg::Lock::Timeout=120 update; then
    # Not the end: the list that is there already may do.
    echo "The list of packages could not be refreshed; going on with the one that is here." >&2
  fi

  # apt-get would refuse all of them because of one, and name only the first.
  for package in "${missing[@]}"; do
    # All of it is read: under pipefail a writer that is cut off would count as a failure.
    if ! LC_ALL=C apt-cache policy "$package" | grep '^  Candidate: [^(]' > /dev/null; then
      unknown+=("$package")
    fi
  done
  if [ "${#unknown[@]}" -gt 0 ]; then
    echo "These packages cannot be had from this machine's package sources: ${unknown[*]}" >&2
    return 1
  fi

  echo "Installing: ${missing[*]}"
  # Nothing that is installed here is meant to run as a service: where the machine has no policy of
  # its own, there is one for the meantime that starts none.
  local policy=/usr/sbin/policy-rc.d own_policy=no status=0
  if [ ! -e "$policy" ]; then
    printf '#!/bin/sh\nexit 101\n' | as_root tee "$policy" > /dev/null
    as_root chmod 755 "$policy"
    own_policy=yes
  fi
  as_root apt-get -q -y -o DPkg::Lock::Timeout=120 install --no-install-recommends "${missing[@]}" || status=$?
  if [ "$own_policy" = yes ]; then
    as_root rm -f "$policy"
  fi
  if [ "$status" -ne 0 ]; then
    return "$status"
  fi

  # Asked anew, whatever apt-get said: this is what counts.
  unknown=()
  for package in "${missing[@]}"; do
    package_is_installed "$package" || unknown+=("$package")
  done
  if [ "${#unknown[@]}" -gt 0 ]; then
    echo "These packages could not be installed: ${unknown[*]}" >&2
    return 1
  fi
}

install_groups() {
  local group
  local -a packages=()

  for group in "$@"; do
    case $group in
      build) packages+=("${build_packages[@]}") ;;
      operator) packages+=("${operator_packages[@]}") ;;
      test) packages+=("${test_packages[@]}") ;;
      demo) packages+=("${demo_packages[@]}") ;;
      fuzz) packages+=("${fuzz_packages[@]}") ;;
      coverage) packages+=("${coverage_packages[@]}") ;;
      bench) packages+=("${bench_packages[@]}") ;;
      source) packages+=("${source_packages[@]}") ;;
      windows) packages+=("${windows_packages[@]}") ;;
      windows-test) packages+=("${windows_test_packages[@]}") ;;
      *)
        echo "install-packages.sh: no such group: $group (build, operator, test, demo, fuzz, bench, coverage, source, windows, windows-test)" >&2
        return 64
        ;;
    esac
  done
  if [ "${#packages[@]}" -eq 0 ]; then
    echo "usage: scripts/install-packages.sh GROUP...   (build, operator, test, demo, fuzz, bench, coverage, source, windows, windows-test)" >&2
    return 64
  fi

  # Two groups may name the same package.
  mapfile -t packages < <(printf '%s\n' "${packages[@]}" | sort -u)
  install_packages "${packages[@]}"
}

# Only when run, not when sourced.
if [ "${BASH_SOURCE[0]}" = "$0" ]; then
  install_groups "$@"
fi
