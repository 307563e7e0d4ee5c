#!/bin/bash
# Who may talk to a board of root's, tried as other users. Usage: shared_board_test.sh ROOT
set -uo pipefail
((UID == 0)) || { echo "needs root to be other users"; exit 77; }
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cp "$1/build/dev/bin/tarqctl" "$work"
chmod 755 "$work"
export TMPDIR=$work
unset TARQ_BOARD TARQ_LOG
failures=0

# ask ROOT UID STATUS WORDS [OPTION]: what that user hears when it has the daemon run a command.
ask() {
    local output
    output=$("$1/scripts/run" ${5:+"$5"} setpriv --reuid "$2" --regid "$2" --clear-groups \
        "$work/tarqctl" shell 'echo served; id -u' 2>&1)
    local status=$?
    [[ $status == "$3" && $output == *"$4"* ]] && return
    printf 'FAILED: uid %s %s\n  expected: %s %s\n  actual: %s %s\n' \
        "$2" "${5-}" "$3" "$4" "$status" "$output"
    failures=$((failures + 1))
}
ask "$1" 1000 0 $'served\n0' --shared
ask "$1" 2000 1 "uid 2000 is neither root nor system" --shared
ask "$1" 1000 2 "Permission denied" # the same user, a board that is not shared

# Who may send keys past the board: its owner alone, also where the daemon is everybody's.
for uid in 0 1000; do
    "$1/scripts/run" --shared setpriv --reuid $uid --clear-groups sh -c 'ls "$TARQ_BOARD/run/rf/state"'
    status[uid]=$?
done >/dev/null 2>&1
[[ ${status[0]} == 0 && ${status[1000]} == 2 ]] || {
    echo "FAILED: ls of the receiver's sockets ends with ${status[*]} for uids 0 and 1000"
    failures=$((failures + 1))
}

exit $((failures > 0))
