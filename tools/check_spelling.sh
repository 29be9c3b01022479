#!/bin/sh
# Fails if a source has a common misspelling, and prints the location. tools/spelling.txt lists the words that are kept.
set -eu
cd "$(dirname "$0")/.."
tools/list_files.sh '*.cpp' '*.h' '*.md' '*.sh' '*.py' '*.js' '*.html' '*.cmake' '*CMakeLists.txt' '*.json' '*.dot' \
    play test .ci/run | xargs codespell --regex "[A-Z]?[a-z]+(?:'[a-z]+)?|[A-Z]{2,}(?![a-z])" --ignore-words tools/spelling.txt || {
    echo "check_spelling: correct the words above, or list them in tools/spelling.txt with the reason" >&2
    exit 1
}
