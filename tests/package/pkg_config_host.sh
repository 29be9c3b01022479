#!/bin/sh
# Builds and runs a host whose build uses pkg-config: pkg_config_host.sh PREFIX LIBDIR SOURCE COMPILER FLAGS…
set -eu
libraries=$1/$2 source=$3 compiler=$4
shift 4
PKG_CONFIG_PATH=$libraries/pkgconfig
export PKG_CONFIG_PATH
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
pkg-config --validate qoro-video-ad
[ ! -e "$libraries/pkgconfig/qoro-video-ad-desktop.pc" ] || pkg-config --print-errors --exists qoro-video-ad-desktop
echo "pkg-config: version $(pkg-config --modversion qoro-video-ad)"
# shellcheck disable=SC2046 # lists of options
"$compiler" -std=c++20 "$@" $(pkg-config --cflags qoro-video-ad) "$source" $(pkg-config --libs qoro-video-ad) -o "$scratch/host"
LD_LIBRARY_PATH=$libraries "$scratch/host"
