#!/usr/bin/env bash
# Draws the pictures of share/icons that the program embeds from scorvane.svg. Needs rsvg-convert (librsvg2-bin).
set -euo pipefail
cd "$(dirname "$0")/../share/icons"
for size in 16 24 32 48 64 128 256; do
  rsvg-convert --width "$size" --height "$size" --output "scorvane-$size.png" scorvane.svg
done
