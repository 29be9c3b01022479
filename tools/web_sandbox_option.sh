#!/bin/sh
# Prints --no-web-sandbox where the page's sandbox (bubblewrap) can't run, as in most containers; otherwise nothing.
if ! bwrap --unshare-all --ro-bind / / --dev /dev --proc /proc true 2>/dev/null; then
    echo "--no-web-sandbox"
fi
