#!/usr/bin/env bash
# usage: run.sh BUILD SOURCE: installs BUILD to a scratch prefix, builds the README's example against it from SOURCE, and
# runs both the example and the installed program in a scratch home.
set -euo pipefail
build=$1 source=$2
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

cmake --install "$build" --prefix "$scratch/prefix" >"$scratch/log"
cmake -S "$source/tests/package" -B "$scratch/build" -G Ninja -DCMAKE_PREFIX_PATH="$scratch/prefix" \
    -DREADME="$source/README.md" >>"$scratch/log" || { cat "$scratch/log"; exit 1; }
cmake --build "$scratch/build" >>"$scratch/log" || { cat "$scratch/log"; exit 1; }

export HOME=$scratch/home TZ=UTC
logs=$HOME/.claude/projects/app
mkdir -p "$logs"
now=$(date -u +%Y-%m-%dT%H:%M:%SZ)
printf '%s\n' "{\"type\":\"assistant\",\"requestId\":\"r\",\"timestamp\":\"$now\",\"message\":{\"id\":\"m\",\"model\":\"claude-opus-4-8\",\"usage\":{\"input_tokens\":1000000,\"output_tokens\":0}}}" >"$logs/s.jsonl"

# Prices are found beside the installed program only; the example is not installed, so it is told by a link.
ln -s "$scratch/prefix/share/quorvane/Quorvane_QuorvaneCore.bundle" "$scratch/build/Quorvane_QuorvaneCore.bundle"
spent=$("$scratch/build/example")
[ "$spent" = 5.00 ] || { echo "the example says $spent"; exit 1; }
(cd / && "$scratch/prefix/bin/quorvane" summary) | grep -q 'claude-opus-4-8 .*\$5.00' ||
    { echo "the installed program does not show the call"; exit 1; }
mv "$scratch/prefix" "$scratch/moved"
"$scratch/moved/bin/quorvane" prices claude-opus-4-8 | grep -q 25.00 || { echo "no prices after a move"; exit 1; }
echo "package: the example and the installed program agree"
