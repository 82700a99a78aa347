#!/usr/bin/env bash
# Draws the README's pictures anew from the sample: before and after, and a low and a high value of each parameter side by
# side. Needs python3-pil. The picture of the dialog is a screenshot.
set -eu
cd "$(dirname "$(realpath "$0")")"
made=$(mktemp -d)
trap 'rm -rf "$made"' EXIT

# smoothed NAME THRESHOLD SOFTNESS BIAS
smoothed() {
    ../smooth --settings "$made/settings" --threshold "$2" --softness "$3" --bias "$4" sample.png "$made/$1.png"
}
smoothed usual 10 70 0
smoothed tolerant 200 70 0
smoothed hard 10 15 0
smoothed soft 10 100 0
smoothed bent 10 100 100

/usr/bin/python3 magnify.py sample.png "$made/usual.png" before_after.png
/usr/bin/python3 magnify.py "$made/usual.png" "$made/tolerant.png" threshold.png 104,88,66,34
/usr/bin/python3 magnify.py "$made/hard.png" "$made/soft.png" softness.png 10,158,66,32
/usr/bin/python3 magnify.py "$made/soft.png" "$made/bent.png" bias.png 238,88,66,34
