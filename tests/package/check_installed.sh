#!/bin/sh
# Checks what the package installs: check_installed.sh PREFIX LIBDIR
# The libraries have a version and export names of this project only; headers of internal folders are not installed.
set -eu
prefix=$1
libraries=$prefix/$2
status=0
complain()
{
    echo "check_installed: $1" >&2
    status=1
}
for library in "$libraries"/libqoro-*.so; do
    name=$(basename "$library")
    soname=$(readelf -d "$library" | sed -n 's/.*SONAME.*\[\(.*\)\]/\1/p')
    [ "$soname" = "$name.0" ] || complain "$name: expected the name $name.0, got $soname"
    # Mangled names begin with the namespace, behind the prefix of tables, thunks and guards.
    names=$(nm -D --defined-only "$library" | awk '$2 != "A" { print $3 }' | sed 's/@.*//')
    [ "$(echo "$names" | wc -l)" -gt 20 ] || complain "$name: expected exported names, got $(echo "$names" | wc -l)"
    others=$(echo "$names" | grep -vE '^_Z(T[ISVT]|TC|Th[n0-9]*_|Tv[n0-9_]*_|GV|GVZ|Z)?N?K?N?K?4qoro' || true)
    [ -z "$others" ] || complain "$name: exports $(echo "$others" | c++filt | head -n 3)"
done
[ "$(find "$libraries" -name 'libqoro-*.so.0' | wc -l)" -ge 1 ] || complain "$libraries: no libqoro-*.so.0"
internal=$(find "$prefix/include" -path '*detail*' -o -name 'Steps.h' -o -name 'Session.h')
[ -z "$internal" ] || complain "installed: $internal"
exit $status
