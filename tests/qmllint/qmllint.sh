#!/usr/bin/env bash
# qmllint.sh QMLLINT IMPORT-PATHS FILE...: fails when qmllint finds fault with one of the files.
# IMPORT-PATHS are separated by colons; Qt's own comes first. What qmllint prints decides, since it
# neither fails for every fault nor prints only faults.
set -uo pipefail
qmllint=$1
IFS=: read -ra paths <<<"$2"
shift 2

# Qt Quick brings QtQml into every file, which qmllint does not know.
options=("${paths[@]/#/-I}" "-i${paths[0]}/QtQml/plugins.qmltypes")

# Where it does not see enough: the members of a `var` or of a type behind a qualifier, and in Qt's
# own types what is attached or inherited from a class without a name in QML. Ours are described in
# full.
blind='^Warning: (Type "[^"]*" of member|Type of property|Property "[^"]*" not found on type "([^k]|k[^o]|ko[^:]))'

result=0
for file in "$@"; do
    # Nothing describes what a test program registers for its own QML files.
    unqualified=--check-unqualified
    grep -qE '^import (Korvel\.[A-Za-z.]*\.Tests|Gallery) ' "$file" && unqualified=
    output=$("$qmllint" $unqualified "${options[@]}" "$file" 2>&1)
    status=$?
    faults=$(grep -iE '^warning: |^.*:[0-9]+ : ' <<<"$output" | grep -vE "$blind")
    if [ -z "$output" ] && [ $status -ne 0 ]; then
        faults="qmllint ends with $status"
    fi
    if [ -n "$faults" ]; then
        printf '%s\n%s\n\n' "$file" "$faults"
        result=1
    fi
done
exit $result
