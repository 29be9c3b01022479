#!/bin/sh
# Fails where the kit's script library breaks a rule of kit/script/.eslintrc.json, and names the place.
set -eu
cd "$(dirname "$0")/.."
# Debian's modules, for a node that is not Debian's.
NODE_PATH=/usr/share/nodejs${NODE_PATH:+:$NODE_PATH} eslint --max-warnings 0 --format unix kit/script
