#!/usr/bin/env bash
# Fetches and unpacks the distribution's source package of something, with the distribution's
# patches applied:
#
#   packaging/windows/fetch-source.sh PACKAGE FOLDER
#
# Afterwards FOLDER is the source tree. Source entries are switched on for this one fetch: the
# machine's own package sources and lists stay as they are. Ends with 1 and a message when the
# package cannot be had; FOLDER is not there then.
set -euo pipefail

if [ "$#" -ne 2 ]; then
  echo 'usage: fetch-source.sh PACKAGE FOLDER' >&2
  exit 64
fi
package=$1
# Absolute: some of it is done from other folders.
folder=$(realpath -m "$2")
[ ! -e "$folder" ] || { echo "fetch-source.sh: $folder is there already" >&2; exit 1; }
mkdir -p "$(dirname "$folder")"

"$(dirname "${BASH_SOURCE[0]}")/../../scripts/install-packages.sh" source

# Beside the target, so that the finished tree is moved into place at once.
scratch=$(mktemp -d "$folder.fetch.XXXXXX")
trap 'rm -rf "$scratch"' EXIT
# The downloading part of apt runs as a user of its own, who must get in.
chmod 755 "$scratch"
mkdir -p "$scratch"/{parts,lists/partial,tree}

# The entries of this machine, asked for sources instead of programs. Only those of the
# distribution itself: others need not offer sources.
own=$scratch/parts
for file in /etc/apt/sources.list /etc/apt/sources.list.d/*.list; do
  [ -f "$file" ] || continue
  sed -nE 's/^[[:space:]]*deb[[:space:]](.*debian.*)$/deb-src \1/p' "$file" > "$own/$(basename "$file" .list).list"
done
for file in /etc/apt/sources.list.d/*.sources; do
  if [ -f "$file" ] && grep -qi '^URIs:.*debian' "$file"; then
    sed -E 's/^Types:.*/Types: deb-src/' "$file" > "$own/$(basename "$file")"
  fi
done

options=(
  -q
  -o Dir::Etc::sourcelist=/dev/null
  -o "Dir::Etc::sourceparts=$own"
  -o "Dir::State::lists=$scratch/lists"
  -o "Dir::Cache::srcpkgcache=$scratch/src.bin"
  -o "Dir::Cache::pkgcache=$scratch/pkg.bin"
)
apt-get "${options[@]}" update

# The package's archives with their checksums, from the signed index. They are unpacked here and not
# by "apt-get source", which also wants the description file: a mirror that drops that one (seen
# with a security update) would leave us with a package lacking the update.
mapfile -t files < <(apt-get "${options[@]}" source --print-uris "$package" | grep "^'")
# Every place that any version of the package names: a mirror may hold an archive that several
# versions share in one of its parts only.
mapfile -t places < <(
  apt-cache "${options[@]}" showsrc "$package" | sed -n 's/^Version: //p' | sort -u |
    while read -r version; do
      apt-get "${options[@]}" source --print-uris "$package=$version" | grep "^'" || true
    done
)

# Fetches the file of that name and checksum from the first place that has it.
fetch() {
  local name=$1 checksum=$2 place uri other_name other_checksum
  for place in "${places[@]}"; do
    read -r uri other_name _ other_checksum <<< "$place"
    if [ "$other_name $other_checksum" != "$name $checksum" ]; then continue; fi
    uri=${uri#\'}
    if (cd "$scratch" && /usr/lib/apt/apt-helper "${options[@]}" download-file "${uri%\'}" "$name" "$checksum"); then
      return
    fi
  done
  echo "fetch-source.sh: $name cannot be had from this machine's package sources" >&2
  return 1
}

source_archive=
packaging_archive=
for entry in "${files[@]}"; do
  read -r _ name _ checksum <<< "$entry"
  case $name in
    *.dsc | *.asc) continue ;;
    *.orig.tar.*) source_archive=$name ;;
    *.debian.tar.*) packaging_archive=$name ;;
    *)
      echo "fetch-source.sh: $package has a file of a kind not known here: $name" >&2
      exit 1
      ;;
  esac
  echo "Fetching $name ..."
  fetch "$name" "$checksum"
done
if [ -z "$source_archive" ] || [ -z "$packaging_archive" ]; then
  echo "fetch-source.sh: the source package $package cannot be had from this machine's package sources" >&2
  exit 1
fi

tree=$scratch/tree
tar -xf "$scratch/$source_archive" -C "$tree" --strip-components=1
tar -xf "$scratch/$packaging_archive" -C "$tree"
if [ -f "$tree/debian/patches/series" ]; then
  while read -r patch _; do
    [[ -n $patch && $patch != \#* ]] || continue
    echo "Applying $patch"
    patch -s -p1 -d "$tree" < "$tree/debian/patches/$patch"
  done < "$tree/debian/patches/series"
fi
# Says later which version this is, and where it came from.
echo "$package ${packaging_archive%.debian.tar.*}" > "$tree/SOURCE-PACKAGE"
mv "$tree" "$folder"
