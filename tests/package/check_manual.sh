#!/bin/sh
# Checks the installed manual page and completions: check_manual.sh PREFIX
# They name every command and option of the program, and the programs that read them accept them.
set -eu
prefix=$1
program=$prefix/bin/qoro-ad
page=$prefix/share/man/man1/qoro-ad.1
bash_file=$prefix/share/bash-completion/completions/qoro-ad
zsh_file=$(find "$prefix/share/zsh" -name _qoro-ad)
fish_file=$prefix/share/fish/vendor_completions.d/qoro-ad.fish
status=0
complain()
{
    echo "check_manual: $1" >&2
    status=1
}

# Every option that the help names.
"$program" --help >/dev/null
commands="play cache simulate check"
for command in "" $commands "cache list" "cache prefetch" "cache empty"; do
    # shellcheck disable=SC2086 # words of a command
    for option in $("$program" $command --help | grep -oE '^ +(-h,)?--[a-z-]+' | sed 's/.*--//'); do
        sed 's/\\-/-/g' "$page" | grep -q -- "--$option" || complain "the manual page lacks --$option"
        grep -q -- "--$option" "$bash_file" || complain "bash: no --$option"
        grep -q -- "--$option" "$zsh_file" || complain "zsh: no --$option"
        grep -q -- "-l $option" "$fish_file" || complain "fish: no --$option"
    done
done

home=$(cd ~ && pwd)
for file in "$page" "$bash_file" "$zsh_file" "$fish_file"; do
    [ ${#home} -lt 4 ] || ! grep -q -- "$home" "$file" || complain "$file: names the home folder of the build"
done
grep -q -- "'--summary\[[^]]*\]'" "$zsh_file" || complain "zsh: --summary takes a value"

# The words that a command line ends with, completed by bash. The last is the one to complete.
completed()
{
    bash -c 'source "$1"; shift; COMP_WORDS=("$@"); COMP_CWORD=$(($# - 1)); _qoro_ad 2>/dev/null; echo "${COMPREPLY[@]}"' \
        bash "$bash_file" "$@"
}
expect()
{
    expected=$1
    shift
    got=$(completed "$@")
    [ "$got" = "$expected" ] || complain "bash: $*: expected $expected, got $got"
}
bash -n "$bash_file" || complain "bash: a fault in its syntax"
expect "simulate" qoro-ad si
expect "list prefetch empty" qoro-ad cache ""
expect "prefetch" qoro-ad cache p
expect "--summary" qoro-ad simulate --su
expect "--jsonl" qoro-ad simulate --summary --js
expect "json text" qoro-ad simulate --format ""
expect "landscape-left landscape-right" qoro-ad play --orientation land
expect "--limit" qoro-ad cache --dir /tmp prefetch --l
expect "--dir" qoro-ad cache list --d
case $(bash -c 'source "$1"; complete -p qoro-ad' bash "$bash_file") in
*_qoro_ad*) ;;
*) complain "bash: the completion is not registered" ;;
esac

if command -v man >/dev/null; then
    faults=$(LC_ALL=C.UTF-8 MANWIDTH=80 man --warnings -l "$page" 2>&1 >/dev/null)
    [ -z "$faults" ] || complain "man: $faults"
    LC_ALL=C.UTF-8 man -l "$page" | col -b | grep -q 'qoro-ad cache prefetch' || complain "man: no command"
fi
if command -v mandoc >/dev/null; then
    mandoc -T lint -W error "$page" || complain "mandoc has objections"
fi
if command -v zsh >/dev/null; then
    zsh -n "$zsh_file" || complain "zsh: a fault in its syntax"
fi
if command -v fish >/dev/null; then
    HOME=/nonexistent fish -n "$fish_file" || complain "fish: a fault in its syntax"
    got=$(HOME=$(mktemp -d) fish -N -c "source $fish_file; complete -C 'qoro-ad cache p'" | cut -f 1)
    [ "$got" = prefetch ] || complain "fish: qoro-ad cache p: expected prefetch, got $got"
    got=$(HOME=$(mktemp -d) fish -N -c "source $fish_file; complete -C 'qoro-ad simulate --format '" | cut -f 1 | tr '\n' ' ')
    [ "$got" = "json text " ] || complain "fish: --format: expected json text, got $got"
fi
exit $status
