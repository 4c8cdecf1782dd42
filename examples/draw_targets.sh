#!/bin/sh
# Draws three boards with different grid spacings and an assembly of five patterns. Writes each of them as PDF and as
# JSON to the folder targets/.
set -e
mkdir -p targets
for spacing in 10 20 40; do
  draw_pattern flexible --size 15x9 --grid-spacing "$spacing" \
    -o "targets/board-$spacing.pdf" -o "targets/board-$spacing.json"
done
draw_pattern assembly --patterns 5 --grid-spacing 20 -o targets/cube.pdf -o targets/cube.json
