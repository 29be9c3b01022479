#!/bin/sh
# Draws where the ad's controls are: in each arrangement (docs/controls.svg), and the bottom bar of an ad that fills the
# screen (docs/full.svg).
# Builds the simulator's package and examples/screen, which draws the view tree of each ad below into a PNG; the names
# are added at the frames that `qoro-ad simulate` reports for the same second. Run it after changing a layout, and
# commit the output. Needs what ./test needs, and libcairo2-dev.
set -eu
cd "$(dirname "$0")/.."
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
build=build/draw
cmake -S . -B "$build/package" -G Ninja -DCMAKE_BUILD_TYPE=Release -DCMAKE_CXX_COMPILER_LAUNCHER=ccache \
    -DQORO_DESKTOP=OFF -DQORO_TESTS=OFF -DQORO_BENCH=OFF --log-level=NOTICE
cmake --build "$build/package"
cmake --install "$build/package" --prefix "$work/installed" >/dev/null
cmake -S examples/screen -B "$build/screen" -G Ninja -DCMAKE_BUILD_TYPE=Release \
    -DCMAKE_PREFIX_PATH="$work/installed" --log-level=NOTICE
cmake --build "$build/screen"
python3 tools/draw_controls.py "$build/package/app/qoro-ad" "$build/screen/screen" "$work" >"$work/controls.svg"
python3 tools/draw_full.py "$build/package/app/qoro-ad" "$build/screen/screen" "$work" >"$work/full.svg"
mv "$work/controls.svg" "$work/full.svg" docs/
