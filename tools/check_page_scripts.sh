#!/bin/sh
# Fails if a script that a page runs violates its folder's .eslintrc.json, and prints the location.
set -eu
cd "$(dirname "$0")/.."
# Debian's modules, for a node from elsewhere.
export NODE_PATH="/usr/share/nodejs${NODE_PATH:+:$NODE_PATH}"
lint="eslint --max-warnings 0 --format unix"
$lint kit/script
cd workbench/report
# The scripts of a report share their names: only together can a name be unknown, unused or constant.
$lint --rule "no-undef: off" --rule "no-unused-vars: off" --rule "prefer-const: off" .
cat drawing.js lanes.js tables.js page.js ../studio/studio-events.js ../studio/studio.js |
    $lint --stdin --stdin-filename the-scripts-of-report-and-studio.js
