#!/bin/sh
# Renders the demo ad's still pictures from their vector sources: the brand icon and the hidden image.
# In:   examples/demo/artwork/icon.svg, hidden.svg
# Out:  examples/demo/icon.png (120 x 120), examples/demo/hidden.png (800 x 450)
# Needs rsvg-convert (Debian: librsvg2-bin) and Liberation Sans (fonts-liberation).
# Reproducible with the same tool versions. Run it after changing a drawing, and commit the output.
set -eu
cd "$(dirname "$0")/../examples/demo"
for name in icon hidden; do
    rsvg-convert "artwork/$name.svg" -o "$name.png"
done
