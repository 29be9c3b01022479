#!/bin/sh
# Fails if the kit's script library violates kit/script/.eslintrc.json, and prints the location.
set -eu
cd "$(dirname "$0")/.."
# Debian's modules, for a node from elsewhere.
NODE_PATH=/usr/share/nodejs${NODE_PATH:+:$NODE_PATH} eslint --max-warnings 0 --format unix kit/script
