#!/usr/bin/env bash
# Makes the README's pictures from those that the headless demo left in build/demo/: the window cut
# out of the virtual screen. Run scripts/demo.sh --headless first.
set -euo pipefail
cd "$(dirname "$0")/.."
mkdir -p docs/images
/usr/bin/python3 - <<'END'
from PIL import Image, ImageChops

for stop, name in (("03-download-under-way", "home"), ("06-news", "news"), ("01-servers", "servers")):
    screen = Image.open(f"build/demo/{stop}.png").convert("RGB")
    # The screen behind the window is plain black, the window never is.
    box = ImageChops.difference(screen, Image.new("RGB", screen.size)).getbbox()
    picture = screen.crop(box)
    if picture.size != (974, 571):
        raise SystemExit(f"{stop}: the window is {picture.size}, not 974 x 571")
    picture.save(f"docs/images/{name}.png", optimize=True)
END
