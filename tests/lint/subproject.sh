#!/usr/bin/env bash
# The project works inside another one's build, and its tests stay out of it: subproject.sh CMAKE
set -euo pipefail
cmake=$1
source_folder=$PWD
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

cat >"$scratch/CMakeLists.txt" <<END
cmake_minimum_required(VERSION 3.18)
project(Outer LANGUAGES CXX)
include(CTest)
add_subdirectory("$source_folder" launcher)
add_executable(outer outer.cpp)
target_link_libraries(outer PRIVATE launcher)
END
cat >"$scratch/outer.cpp" <<'END'
#include "info/settings.h"
#include "window/testform.h"
int main() { return testform::LAUNCHER_VERSION; }
END
"$cmake" -S "$scratch" -B "$scratch/build" -G Ninja
# Planned, not built: the build itself is the same as the one that runs this check.
"$cmake" --build "$scratch/build" --target outer -- -n >"$scratch/plan"
grep -q 'info/settings.cpp' "$scratch/plan"
if grep -rq 'tst_' "$scratch/build/build.ninja"; then
  echo "the tests came along into the other project"
  exit 1
fi
if ! grep -q -- '-Wextra' "$scratch/build/build.ninja" || grep -q -- '-Werror' "$scratch/build/build.ninja"; then
  echo "warnings of ours must not stop the other project's build"
  exit 1
fi
if grep -rn 'CMAKE_SOURCE_DIR' --include=CMakeLists.txt --include='*.cmake' \
  CMakeLists.txt cmake tests; then
  echo "CMAKE_SOURCE_DIR is the other project's folder there"
  exit 1
fi
