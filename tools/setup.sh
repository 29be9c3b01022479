#!/bin/sh
# Installs missing Debian packages: tools/setup.sh play | test | browser | bench | fuzz | coverage | mutation | draw
# Prints the packages before it installs them; prints nothing if none is missing. For "browser" also axe-core, from the npm
# registry, into build/browser.
set -eu

build="g++ cmake ninja-build ccache pkg-config git gettext
    nlohmann-json3-dev libcli11-dev libmd-dev libical-dev libpugixml-dev
    libgtk-4-dev libwebkitgtk-6.0-dev libsoup-3.0-dev libpulse-dev
    libgstreamer1.0-dev libgstreamer-plugins-base1.0-dev libavcodec-dev"
run="gstreamer1.0-plugins-base gstreamer1.0-plugins-good gstreamer1.0-plugins-bad gstreamer1.0-libav
    gstreamer1.0-pulseaudio libegl1 libgl1-mesa-dri fonts-liberation bubblewrap xdg-dbus-proxy glib-networking
    xvfb dbus"
test="libgtest-dev libgmock-dev xdotool pulseaudio pulseaudio-utils ffmpeg
    at-spi2-core libatspi2.0-dev locales iproute2 weston zlib1g-dev parallel"
check="clang man-db mandoc zsh fish debootstrap clang-format clang-tidy codespell doxygen eslint python3 shellcheck"
# Large, and for the tests of reports only, which are skipped without it.
browser="chromium firefox-esr python3 python3-websocket fonts-liberation"
fuzz="clang libclang-rt-14-dev zlib1g-dev"
coverage="libgtest-dev libgmock-dev gcovr"
mutation="libgtest-dev libgmock-dev python3-clang-14"
bench="libbenchmark-dev libx11-dev libxext-dev mpv gstreamer1.0-plugins-base-apps gstreamer1.0-x ffmpeg python3 time"
# A nodejs that is not Debian's contains npm and conflicts with Debian's package of it.
command -v npm >/dev/null || bench="$bench nodejs npm" browser="$browser nodejs npm"

case "${1-}" in
play) wanted="$build $run" ;;
test) wanted="$build $run $test $check" ;;
browser) wanted="$browser" ;;
fuzz) wanted="$build $run $fuzz" ;;
coverage) wanted="$build $coverage" ;;
mutation) wanted="$build $mutation" ;;
draw) wanted="graphviz fonts-liberation" ;;
bench) wanted="$build $run $bench" ;;
*)
    echo "usage: tools/setup.sh play | test | browser | bench | fuzz | coverage | mutation | draw" >&2
    exit 2
    ;;
esac

missing=""
for package in $wanted; do
    status=$(dpkg-query -W -f='${db:Status-Status}' "$package" 2>/dev/null || true)
    [ "$status" = installed ] || missing="$missing $package"
done
# Not in Debian: the checker of a page's accessibility, of a fixed version.
install_axe()
{
    cd "$(dirname "$0")/.."
    [ ! -d build/browser/node_modules/axe-core ] || return 0
    echo "Installing from npm: axe-core"
    npm install --silent --no-save --no-package-lock --prefix build/browser axe-core@4.14.1
}
if [ -z "$missing" ]; then
    [ "$1" != browser ] || install_axe
    exit 0
fi

echo "Installing from Debian:$missing"
root=""
if [ "$(id -u)" -ne 0 ]; then
    command -v sudo >/dev/null || {
        echo "setup: these packages need root or sudo to install:$missing" >&2
        exit 1
    }
    root="sudo"
fi
$root apt-get update -q
# shellcheck disable=SC2086 # a list of words
$root env DEBIAN_FRONTEND=noninteractive apt-get install -q -y --no-install-recommends $missing
[ "$1" != browser ] || install_axe
