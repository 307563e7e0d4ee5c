#!/bin/bash
# scripts/run with the real board and daemon. Usage: scripts_test.sh ROOT
set -uo pipefail
run=$1/scripts/run
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
mkdir "$work/boards"
export TMPDIR=$work/boards  # also tells what belongs to this test from all other processes
unset TARQ_BOARD TARQ_LOG
failures=0

same() { # WHAT EXPECTED ACTUAL
    [[ $2 == "$3" ]] && return
    printf 'FAILED: %s\n  expected: %s\n  actual:   %s\n' "$1" "$2" "$3"
    failures=$((failures + 1))
}

processes() { env -u TMPDIR grep -lzsx "TMPDIR=$TMPDIR" /proc/[0-9]*/environ; }

no_process_left() { # AFTER WHAT
    local deadline=$((SECONDS + 20))
    while [[ $(processes) ]] && ((SECONDS < deadline)); do sleep 0.02; done
    same "processes left after $1" "" "$(processes)"
}
nothing_left() {
    same "files left after $1" "" "$(find "$TMPDIR" -mindepth 1)"
    no_process_left "$1"
}

# Starts a command that writes to its fifo once it runs, in a process group of its own.
mkfifo "$work/up"
start() {
    env --default-signal=INT setsid "$run" "$@" >"$work/out" 2>"$work/errors" &
    started=$!
    read -r -t 60 up <"$work/up" || same "start of $*" up "$(cat "$work/errors")"
}
finish() { # EXPECTED STATUS of what was started
    wait "$started"
    same "status" "$1" $?
}

# ---- a command's input, output and status are its own ----

output=$("$run" bash -c 'cat; echo "${TARQ_BOARD%.*}"; exit 7' <<<"input" 2>/dev/null)
same "status" 7 $?
same "output" "input"$'\n'"$TMPDIR/tarqd-$UID/demo_panel" "$output"
nothing_left "a failing command"

output=$("$run" tarqctl shell 'echo hi; echo $((6 * 7))' 2>/dev/null)
same "status of tarqctl" 0 $?
same "output of the daemon's command" $'hi\n42' "$output"
nothing_left "a command"

"$run" no_such_command 2>/dev/null
same "status of a missing command" 127 $?
nothing_left "a missing command"

# ---- it ends in order, whatever ends it ----

for signal in INT:130 TERM:143 HUP:129; do
    start bash -c "echo up >'$work/up'; exec sleep 1000"
    kill -"${signal%:*}" -- "-$started"
    finish "${signal#*:}"
    nothing_left "$signal to the group"

    start tarqctl shell "echo up >'$work/up'; sleep 1000"
    kill -"${signal%:*}" "$started"
    finish "${signal#*:}"
    nothing_left "$signal during a command of the daemon"
done

start tarqctl shell "echo up >'$work/up'; sleep 1000"
kill -KILL "$started"
finish 137 2>/dev/null
no_process_left "kill -9"
"$run" true 2>/dev/null
nothing_left "the next start"

# ---- several at once, each with its board ----

start bash -c "echo \$TARQ_BOARD >'$work/up'; read <'$work/up'"
board=$up
[[ $("$run" bash -c 'echo $TARQ_BOARD' 2>/dev/null) != "$board" ]]
same "two boards with two directories" 0 $?
same "board of the first" "demo_panel" "$(TARQ_BOARD=$board "$1/build/dev/bin/tarqctl" getprop ro.product.name)"
echo >"$work/up"
finish 0
nothing_left "two at once"

# ---- what cannot be is said, with status 2 ----

refused() { # WORDS TMPDIR ARGUMENT…
    local words=$1 output
    output=$(TMPDIR=$2 "$run" "${@:3}" 2>&1)
    same "status of scripts/run ${*:3}" 2 $?
    [[ $output == *"$words"* ]] || same "scripts/run ${*:3}" "$words" "$output"
}
long=$work/$(printf 'x%.0s' {1..100})
mkdir "$long"
refused "at most 91 characters" "$long" true
ln -s /tmp "$work/tarqd-$UID"
refused "is no directory of yours" "$work" true
refused "there are: demo_panel" "$TMPDIR" --board no_such_board true
refused "usage: scripts/run" "$TMPDIR" --no-such-option
nothing_left "refusals"

# ---- packages are missing, and there is no network ----

mkdir "$work/bin"
fake() { # NAME BODY
    printf '#!/bin/sh\n%s\n' "$2" >"$work/bin/$1"
    chmod +x "$work/bin/$1"
}
fake dpkg-query "exit 1"
fake apt-get "echo \"\$*\" >>'$work/apt'; exit 100"
fake sudo 'shift; exec "$@"'
PATH=$work/bin:$PATH
refused "apt-get failed; what is missing: apt-get install g++ cmake" "$TMPDIR" true
same "what was asked of apt-get" "update" "$(grep -ow 'update\|install' "$work/apt")"

exit $((failures > 0))
