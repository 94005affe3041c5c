# shellcheck shell=bash
# Sourced by the checks: prints our own C++ files below the given folders, those that git does not
# know yet included.
own_files() {
  git ls-files --cached --others --exclude-standard -- "$@" | sort -u
}
