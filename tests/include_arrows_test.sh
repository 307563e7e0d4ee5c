#!/bin/bash
# Proves the arrows of the house: what each folder may include. Usage: include_arrows_test.sh ROOT
cd "$1" || exit 2
status=0

# forbid PATTERN ALLOWED FOLDER…: what matches PATTERN there must also match ALLOWED.
forbid() {
    local pattern=$1 allowed=$2 files
    shift 2
    files=$(find "$@" -name '*.h' -o -name '*.cpp')
    [[ -n $files ]] || { echo "no files in $*"; exit 2; }
    grep -HnE "$pattern" $files | grep -vE ":($allowed)" && status=1
}

include='^ *# *include'
modules='hardware_info|rgbleds|shell|radiokey|zigbee'
platform='<(binder|utils|cutils|android|com/tarq/[A-Za-z]+)/\w+\.h>|<radiokey/radiokey\.h>'
standard='<(sys/|linux/)?[a-z0-9_]+(\.h)?>'  # tinyxml2 as well
device=$(ls -d common daemon hardware_info rgbleds shell radiokey zigbee 2>/dev/null)

# A module sees itself, common/, the interfaces and the platform; the daemon starts the modules.
for folder in $device; do
    own="\"($folder|common)/"
    [[ $folder == daemon ]] && own="\"($modules)/[a-z_]+_module\.h"
    forbid "$include" "#include ($own|$platform|$standard)" "$folder"
done
# What the device's build does not have, and what would make two programs of one source.
never='^ *# *(if|ifdef|ifndef)\b|<(filesystem|charconv)>|std::(filesystem|from_chars|to_chars)\b'
forbid "$never" nothing $device
# What lies in a running board is known without anything else of the tree.
forbid "$include (\"|<com/tarq|<binder)" '#include "host/run/' host/run
# The platform knows no module; it gives common/ and libradiokey their host half.
forbid "$include (\"|<com/tarq)" \
    '#include "(host/(platform|run)/|common/|radiokey/radiokey\.h")' host/platform
# The virtual board and the daemon meet in files, a pty and a socket.
forbid "$include (\"|<com/tarq|<binder)" '#include "host/(board|run)/' host/board
# The tools talk to both. Of the daemon they know the readers of files, of the board the two
# libraries that say what its records mean: what the LEDs show, and the frames of the serial line.
readers='hardware_info/(text|peripheral_table)|rgbleds/(effect_file|led_attributes)|common/device_file'
records='host/board/(leds/led_(driver|effect)|coprocessor/(ash_frame|ezsp))'
forbid "$include \"" "#include \"(tools/tarqctl/|host/run/|($readers|$records)\.h\")" tools
exit $status
