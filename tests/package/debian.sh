#!/bin/sh
# Builds the Debian packages, and installs, runs and removes them in a bare Debian of their own: debian.sh
# Status 77 where such a system cannot be made: without root, debootstrap or Debian's servers.
set -eu
cd "$(dirname "$0")/../.."
skip()
{
    echo "debian: skipped: $1"
    exit 77
}
fail()
{
    echo "debian: $1" >&2
    exit 1
}
[ "$(id -u)" -eq 0 ] || skip "needs root"
command -v debootstrap >/dev/null || skip "debootstrap is not installed"
release=bookworm
# Debian's servers as this machine names them: "ADDRESS SUITE", one a line.
# shellcheck disable=SC2016 # apt-get expands them
servers=$(apt-get indextargets --format '$(SITE) $(CODENAME)' 'Created-By: Packages' | grep " $release" | sort -u)
mirror=$(echo "$servers" | sed -n "s/ $release\$//p" | head -n 1)
[ -n "$mirror" ] || skip "apt-get knows no server of $release"

tools/package.sh >/dev/null
root=$(mktemp -d)
chmod 755 "$root"
trap 'umount "$root/proc" 2>/dev/null || true; rm -rf --one-file-system "$root"' EXIT
debootstrap --variant=minbase "$release" "$root" "$mirror" >"$root.log" 2>&1 || {
    tail -n 3 "$root.log"
    rm -f "$root.log"
    skip "no bare system could be made"
}
rm -f "$root.log"
echo "$servers" | sed 's/^/deb /; s/$/ main/' >"$root/etc/apt/sources.list"
apt-config dump | grep -E '^Acquire::https?::Proxy ' >"$root/etc/apt/apt.conf.d/proxy" || true
for file in /etc/resolv.conf /etc/hosts; do
    cp "$file" "$root$file"
done
mkdir "$root/packages"
cp build/package/*.deb "$root/packages/"
cp examples/simulator/first-session.json "$root/packages/"
mount -t proc proc "$root/proc" 2>/dev/null || true

inside()
{
    chroot "$root" env DEBIAN_FRONTEND=noninteractive LC_ALL=C.UTF-8 PATH=/usr/sbin:/usr/bin:/sbin:/bin "$@"
}
inside apt-get update -qq
inside sh -c 'apt-get install -qq -y --no-install-recommends /packages/*.deb' >"$root/install.log" 2>&1 || {
    tail -n 20 "$root/install.log" >&2
    fail "the packages do not install"
}
packages=$(cd "$root/packages" && for file in *.deb; do dpkg-deb -f "$file" Package; done)
[ "$(echo "$packages" | wc -l)" -eq 3 ] || fail "expected three packages, got $packages"
# shellcheck disable=SC2086 # a list of names
files=$(inside dpkg -L $packages | sort -u | while read -r file; do
    [ -d "$root$file" ] || echo "$file"
done)

inside qoro-ad --version | grep -q '^qoro-ad [0-9]' || fail "--version"
inside qoro-ad simulate /packages/first-session.json --summary | grep -q "^Summary" || fail "simulate"
inside qoro-ad play /packages/none.json >"$root/play.log" 2>&1 && fail "play has found an ad"
grep -q '^qoro-ad: /packages/none.json' "$root/play.log" || fail "play: $(cat "$root/play.log")"
for file in usr/share/man/man1/qoro-ad.1 usr/share/bash-completion/completions/qoro-ad \
    usr/share/zsh/vendor-completions/_qoro-ad usr/share/fish/vendor_completions.d/qoro-ad.fish usr/include/qoro/qoro.h; do
    echo "$files" | grep -qE "^/$file(\.gz)?$" || fail "not installed: $file"
done
inside sh -c 'ldconfig -p | grep -q libqoro-video-ad-desktop.so.0' || fail "the loader does not find the library"
missing=$(inside sh -c 'ldd /usr/bin/qoro-ad /usr/lib/*/libqoro-video-ad*.so.0 | grep "not found"' || true)
[ -z "$missing" ] || fail "missing libraries: $missing"

# shellcheck disable=SC2086 # a list of names
inside apt-get purge -qq -y $packages >"$root/purge.log" 2>&1 || fail "$(tail -n 5 "$root/purge.log")"
left=$(echo "$files" | while read -r file; do [ ! -e "$root$file" ] || echo "$file"; done)
[ -z "$left" ] || fail "left behind: $left"
echo "installed, run and removed: $(echo "$packages" | tr '\n' ' ')"
