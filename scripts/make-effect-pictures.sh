#!/bin/bash
# Makes the pictures of docs/stack-format.md: each is the photograph that its caption begins with,
# through the JSON block above it. Needs the tool as its argument.
set -eu

tool=$(realpath "${1:?Usage: $0 TOOL}")
repository=$(realpath "$(dirname "$0")/..")
stack=$(mktemp)
trap 'rm -f "$stack"' EXIT

mkdir -p "$repository/docs/effects"
json='' inside=''
while IFS= read -r line; do
    case $line in
        '```json')
            inside=yes json=''
            ;;
        '```'*)
            inside=''
            ;;
        '!['*': '*'](effects/'*)
            photograph=${line#![} photograph=${photograph%%:*}
            picture=${line##*(} picture=${picture%%)*}
            [[ $line == *': as it is]'* ]] && json='[]'
            printf '%s' "$json" > "$stack"
            "$tool" --strict --effects="$stack" --max-size=480x2000 --quality=68 --keep=none \
                --source="$repository/examples/photographs/${photograph,,}.jpg" \
                --target="$repository/docs/$picture"
            ;;
        *)
            [[ -z $inside ]] || json+=$line$'\n'
            ;;
    esac
done < "$repository/docs/stack-format.md"
