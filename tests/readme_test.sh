#!/bin/bash
# Carries out what README.md and docs/ show: each "$ scripts/run …" prints what stands below it, and
# exits with 0 or with the N of "# exit N" behind it. Of standard error only what is refused counts,
# not what is waited for, and not the hint, which names a directory. Usage: readme_test.sh ROOT
set -uo pipefail
cd "$1" || exit 2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
chmod 755 "$work"  # another user's program has to get to its board
mkdir "$work/boards"
export TMPDIR=$work/boards
unset TARQ_BOARD TARQ_LOG
commands=0
failures=0

check() { # COMMAND EXPECTED
    [[ $1 == scripts/run* ]] || return 0
    commands=$((commands + 1))
    local exit_code=0 actual status
    [[ $1 =~ \#\ exit\ ([0-9]+)$ ]] && exit_code=${BASH_REMATCH[1]}
    actual=$(bash -c "$1" 2>"$work/errors" </dev/null; echo "exit $?")
    status=${actual##*exit }
    actual=$(grep -h '^tarqctl: ' "$work/errors" | grep -v '^tarqctl: up: waiting'; printf %s "${actual%exit *}")
    [[ $status == "$exit_code" && $actual == "$2" ]] && return
    printf 'FAILED: %s\n' "$1"
    diff <(echo "$2") <(echo "$actual") && echo "exit $status instead of $exit_code"
    cat "$work/errors"
    failures=$((failures + 1))
}

block=
command=
expected=
while IFS= read -r line; do
    if [[ $line == '```'* || $line == '$ '* ]]; then
        while [[ $expected == *$'\n' ]]; do expected=${expected%$'\n'}; done
        check "$command" "$expected"
        command=
        expected=
    fi
    case $line in
        '```'*) [[ $block ]] && block= || block=yes ;;
        '$ '*) command=${block:+${line#'$ '}} ;;
        *) expected+=$line$'\n' ;;
    esac
done < <(cat README.md docs/*.md)
((commands > 0)) || { echo "no command is shown"; exit 1; }
exit $((failures > 0))
