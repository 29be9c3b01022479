#!/bin/sh
# Fails if a text marked for translation is missing, unfinished or fuzzy in a language, or if a language has an obsolete
# text; prints the text.
set -eu
cd "$(dirname "$0")/.."
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
tools/list_texts.sh "$scratch/texts.pot"
for language in po/*.po; do
    msgfmt --check --output-file=/dev/null "$language"
    msgcmp "$language" "$scratch/texts.pot"
    # The reverse check: for it the template must have translations.
    msgen "$scratch/texts.pot" -o "$scratch/texts.po"
    msgcmp "$scratch/texts.po" "$language"
done
