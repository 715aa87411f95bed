#!/usr/bin/env bash
# Configures and builds one preset: tools/build.sh PRESET [TARGET...]. Quiet when all is well.
set -euo pipefail
cd "$(dirname "$0")/.."
preset=$1
shift
log=$(mktemp)
trap 'rm -f "$log"' EXIT
if ! cmake --preset "$preset" >"$log" 2>&1; then
  cat "$log" >&2
  echo "build: configuring the preset '$preset' failed." >&2
  exit 1
fi
cmake --build --preset "$preset" ${1:+--target "$@"}
