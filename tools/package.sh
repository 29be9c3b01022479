#!/bin/sh
# Builds the Debian packages: tools/package.sh
# They are in build/package: qoro-ad, the libraries, and the libraries' development files.
set -eu
cd "$(dirname "$0")/.."
[ -f build/package/build.ninja ] || cmake --preset package
cmake --build build/package
rm -f build/package/*.deb
(cd build/package && cpack -G DEB >cpack.log 2>&1) || {
    cat build/package/cpack.log >&2
    exit 1
}
ls build/package/*.deb
