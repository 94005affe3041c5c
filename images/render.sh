#!/usr/bin/env bash
# Renders every picture of the launcher and of the demo world from images/sources/.
#
#   images/render.sh              render the committed SVG files
#   images/render.sh --generate   write the SVG files anew first (the scripts of drawing/)
#
# Needs rsvg-convert and a Python 3 with PIL (PYTHON=... selects another one); --generate needs
# fontTools, fc-match and the Lato font as well.
# The same sources give the same bytes every time.
set -euo pipefail

cd "$(dirname "${BASH_SOURCE[0]}")"
python="${PYTHON:-/usr/bin/python3}"

if [[ "${1:-}" == "--generate" ]]; then
    "$python" -B drawing/launcher.py
    "$python" -B drawing/world.py
    "$python" -B drawing/kit.py > drawn-with.txt
fi

tmp="$(mktemp -d)"
trap 'rm -rf "$tmp"' EXIT

rendered=()
render() {  # source, output, zoom
    mkdir -p "$(dirname "$2")"
    rsvg-convert --zoom "$3" --format png --output "$2" "$1"
    rendered+=("$2")
}

# The launcher: at twice the design size, so that a full screen is sharp. Every start decodes all
# pictures of the form, seen or not, and pays for each pixel: the tiles' placeholders, which news
# replace, and the dark picture under the panel are content with less. The toolkit draws what a sheet calls
# "image" at most in the size that it has: these stop growing where their pixels end.
zoom() {  # name
    case "$1" in
        newsBig | newsMedium* | newsSmall* | servers_nobutton_dark) echo 1 ;;
        leftArrow | rightArrow | facebook | discord) echo 4 ;;
        *) echo 2 ;;
    esac
}
for svg in sources/*.svg sources/new_buttons/*.svg; do
    name="${svg#sources/}"
    name="${name%.svg}"
    [[ "$name" == clienticon* ]] || render "$svg" "$name.png" "$(zoom "$name")"
done

# The demo world: the sources have the final size.
for svg in sources/demo/*.svg sources/demo/news/*.svg; do
    name="${svg#sources/demo/}"
    render "$svg" "../demo/world/${name%.svg}.png" 1
done

"$python" -B drawing/finish.py shrink "${rendered[@]}"
# For the same reason 256 colours each, but for the window's own picture: its wide gradients would
# show it. The demo world's news do without the other colours too, as an operator's may.
"$python" -B drawing/finish.py palette servers_nobutton_dark.png newsBig.png newsMedium[12].png \
    newsSmall[123].png new_buttons/*.png \
    {left,right}Arrow.png facebook.png discord.png ../demo/world/news/*.png
"$python" -B drawing/finish.py simple ./*.png new_buttons/*.png

# The program icon; the two smallest sizes have a simpler drawing.
frames=()
for size in 16 24 32 48 64 128 256; do
    svg=sources/clienticon.svg
    (( size > 24 )) || svg=sources/clienticon_small.svg
    rsvg-convert --width "$size" --height "$size" --format png --output "$tmp/$size.png" "$svg"
    frames+=("$tmp/$size.png")
done
"$python" -B drawing/finish.py icon clienticon.ico "${frames[@]}"

# The same bytes come from the same renderer only, as the drawings do from the same font and programs:
# the check of the pictures asks which they were.
{
    echo "$(rsvg-convert --version), $(uname -m)"
    "$python" -c 'import PIL; from PIL import features; print("Pillow", PIL.__version__, *(part + " " + str(features.version(part)) for part in ("zlib", "libimagequant")))'
} > rendered-with.txt
