#!/bin/sh
# Fails where a text that is marked for translation is missing, unfinished or fuzzy in a language, or where a language
# has one that nobody shows any more, and names it.
set -eu
cd "$(dirname "$0")/.."
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
tools/list_texts.sh "$scratch/texts.pot"
for language in po/*.po; do
    msgfmt --check --output-file=/dev/null "$language"
    msgcmp "$language" "$scratch/texts.pot"
    # The other way round: the template needs translations for that.
    msgen "$scratch/texts.pot" -o "$scratch/texts.po"
    msgcmp "$scratch/texts.po" "$language"
done
