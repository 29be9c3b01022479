#!/bin/sh
# Runs clang-tidy on the C++ files that differ from the main branch, and fails if it finds something:
# tools/check_tidy.sh [BUILD-FOLDER]
# On the main branch itself, the files that differ from its last commit but one. QORO_TIDY=all checks all files. Exits
# with 77 if there is no commit to compare with. Reads the compile commands of the build folder, default build/debug.
set -eu
cd "$(dirname "$0")/.."
build=${1-build/debug}
git()
{
    # The checkout may belong to another user, as in a container.
    command git -c safe.directory='*' "$@"
}

# base: prints the commit to compare the working tree with
base()
{
    for branch in origin/main main; do
        fork=$(git merge-base HEAD "$branch" 2>/dev/null) || continue
        [ "$fork" = "$(git rev-parse HEAD)" ] || {
            echo "$fork"
            return
        }
    done
    git rev-parse --verify --quiet 'HEAD~1'
}

scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
tools/compile_commands.py "$build/compile_commands.json" "$scratch/compile_commands.json"
# The headers, and the sources that the build compiles: clang-tidy takes a header's options from a source near it.
sed -n "s|^ *\"file\": \"$PWD/\(.*\)\",\{0,1\}\$|\1|p" "$scratch/compile_commands.json" | sort -u >"$scratch/compiled"
{
    tools/list_files.sh '*.h'
    tools/list_files.sh '*.cpp' | comm -12 - "$scratch/compiled"
} | sort -u >"$scratch/known"
if [ "${QORO_TIDY-}" = all ]; then
    cp "$scratch/known" "$scratch/files"
else
    from=$(base 2>/dev/null) || {
        echo "check_tidy: no earlier commit to compare with; \"./test lint\" checks all files"
        exit 77
    }
    {
        git diff --name-only "$from"
        git ls-files --others --exclude-standard
    } | sort -u | comm -12 - "$scratch/known" >"$scratch/files"
fi
echo "check_tidy: $(wc -l <"$scratch/files") files"
# Each file by itself: no findings in the headers that it includes.
# shellcheck disable=SC2016 # $1 and $2 are the inner shell's
xargs -r -n 1 -P "$(nproc)" sh -c '
    findings=$(clang-tidy --quiet --header-filter="^$" -p "$1" "$2" 2>&1) || {
        echo "$findings" | grep -v "^[0-9]* warnings\? \(and [0-9]* errors\? \)\?\(generated\|treated\)"
        exit 1
    }' check_tidy "$scratch" <"$scratch/files" >&2
