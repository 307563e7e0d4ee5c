#!/bin/bash
# scripts/run with the real board and daemon. Usage: scripts_test.sh ROOT
set -uo pipefail
run=$1/scripts/run
bin=$1/build/dev/bin
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
same "mode of a board" 700 "$("$run" sh -c 'stat -c %a "$TARQ_BOARD/run"' 2>/dev/null)"

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

# ---- a part that ends or is stopped is named, and holds up nothing ----

signal_parts() { # SIGNAL PROGRAM…: of what was started here
    local process program
    for process in $(processes); do
        process=${process%/environ}
        for program in "${@:2}"; do
            [[ ! $process/exe -ef $bin/$program ]] || kill -"$1" "${process#/proc/}"
        done
    done
}
said() { # WORDS, before the deadline
    local deadline=$((SECONDS + 20))
    until [[ $(<"$work/errors") == *"$1"* ]]; do
        ((SECONDS < deadline)) || { same "what was said" "$1" "$(<"$work/errors")"; return; }
        sleep 0.02
    done
}

start bash -c "echo up >'$work/up'; read <'$work/up'; exit 3"
signal_parts STOP tarqd
signal_parts KILL virtual_board
said "the board ended: signal 9 (Killed)"
echo >"$work/up"
finish 3
said "the daemon is stopped and did not end within 5 s, and is killed"
said "waiting for the daemon to end; Ctrl-C ends all at once"
nothing_left "a stopped part"

start bash -c "trap '' INT; trap 'exit 4' TERM; echo up >'$work/up'; while :; do sleep 0.02; done"
signal_parts STOP tarqd virtual_board
kill -TERM "$started"
said "waiting for the daemon to end; Ctrl-C ends all at once"
while kill -INT "$started" 2>/dev/null; do sleep 0.02; done
finish 4
same "what is said of a quick end" "" "$(grep 'did not end' "$work/errors")"
nothing_left "a second signal"

start bash -c "trap '' INT; sleep 1000 & echo up >'$work/up'; wait"
for _ in {1..50}; do kill -INT -- "-$started" 2>/dev/null || break; sleep 0.1; done
finish 130
nothing_left "Ctrl-C twice at a command that takes none"

env --default-signal=INT setsid "$run" >"$work/out" 2>"$work/errors" &
started=$!
said "Ctrl-C ends it"
signal_parts KILL tarqd
finish 2
said "the daemon ended: signal 9 (Killed)"
nothing_left "a daemon that was killed"

# ---- closed descriptors ----

output=$("$run" sh -c 'tarqctl services >&-; echo $?; tarqctl setprop a.b c >&- <&- 2>&-; echo $?
    tarqctl shell "echo hi" <&- 2>&-' 2>/dev/null <&-)
same "what can be done without descriptors" $'2\n0\nhi' "$output"

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
refused "No such file or directory" "$work/none" true
refused "there are: demo_panel" "$TMPDIR" --board no_such_board true
refused "there is no option --no-such-option" "$TMPDIR" --no-such-option
nothing_left "refusals"

# ---- files that are wrong are named before anything is asked ----

board=$work/board
mkdir -p "$board/vendor/etc/leds"
printf '<hardware>\n <hardwre_info index=3>\n' >"$board/vendor/etc/hardwareInfo.xml"
echo 'vendor.boot.led_effect=/vendor/none.xml' >"$board/build.prop"
output=$("$run" --board "$board" true 2>&1)
same "status with wrong files" 0 $?
for words in "board.xml: there is no such file" "none.xml: No such file or directory; no effect" \
    'hardwareInfo.xml:2: an attribute is not NAME="VALUE", or is there twice: <hardwre_info index=3>'; do
    [[ $output == *"$words"* ]] || same "wrong files" "$words" "$output"
done

echo '<board><leds count="1"/></board>' >"$board/board.xml"
echo >"$board/build.prop"
"$run" --board "$board" true 2>"$work/errors"
said "the board has no /vendor/etc/leds/wave_fast.xml, no effect is played at the start"

# ---- where something is missing or full ----

apart() { unshare -m sh -c "$1 && exec \"\$@\"" sh "${@:2}"; } # MOUNTS COMMAND…
mkdir "$work/small"
if apart true true 2>/dev/null; then
    apart 'mount --bind /dev/null /dev/fuse' "$run" --require-fuse true 2>"$work/errors"
    same "status without FUSE" 2 $?
    said "virtual_board: no FUSE: "
    for size in 12 20 52; do # for folders, for the folder's files, for the properties
        apart "mount -t tmpfs -o size=${size}k none '$work/small'" \
            env TMPDIR="$work/small" "$run" true 2>"$work/errors"
        same "status with $size KiB" 2 $?
        same "causes of it" "1 hint" "$(grep -c 'No space left' "$work/errors") $(sed -n '$s/:.*//p' "$work/errors")"
    done
    apart "mount -t tmpfs -o size=200k none '$work/small'" env TMPDIR="$work/small" "$run" \
        sh -c "cat /dev/zero >'$work/small/x' 2>/dev/null; sleep 2.5" 2>"$work/errors"
    same "what is said of a disk that fills" 1 "$(grep -c 'No space left' "$work/errors")"
fi

# ---- checkouts that cannot be built, or not yet ----

copy=$work/copy
mkdir -p "$copy/build/dev"
cp -r "$1/scripts" "$copy"
ln -s "$copy/scripts/run" "$work/link"
echo "CMAKE_HOME_DIRECTORY:INTERNAL=$1" >"$copy/build/dev/CMakeCache.txt"
flock "$copy/build/dev" sh -c "echo >'$work/up'; read -r go <'$work/up'" &
read -r -t 60 <"$work/up"
"$work/link" true 2>"$work/errors" &
started=$!
said "waiting for another build"
echo go >"$work/up"
finish 2
same "a foreign build, once the other has ended" \
    "scripts/build: waiting for another build in $copy/build/dev
scripts/build: $copy/build was made for $1; remove it: rm -r $copy/build" "$(<"$work/errors")"
wait

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
fake dpkg "echo 'half installed'"
refused "dpkg was interrupted; first: " "$TMPDIR" true
fake apt-get "exec env --default-signal=INT sh -c \
    \"echo up >'$work/up'; read -r go <'$work/up'; echo 'went on' >'$work/apt'\""
start true
kill -INT -- "-$started"
said "packages are being installed; ends after that"
echo go 1<>"$work/up"
finish 130
same "apt-get after Ctrl-C" "went on" "$(<"$work/apt")"

exit $((failures > 0))
