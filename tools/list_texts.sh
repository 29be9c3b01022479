#!/bin/sh
# Writes the template of all texts marked for translation: tools/list_texts.sh FILE.pot
# Start a new language with "msginit -i FILE.pot -o po/LANGUAGE.po"; update an existing one with "msgmerge -U
# po/LANGUAGE.po FILE.pot".
set -eu
cd "$(dirname "$0")/.."
find Base app desktop kit platform -name '*.cpp' -o -name '*.h' | LC_ALL=C sort |
    xgettext --language=C++ --from-code=UTF-8 --keyword --keyword=translatable --keyword=translatable_count:1,2 \
        --sort-by-file --add-location=file --no-wrap --package-name=qoro-video-ad --files-from=- --output="$1"
