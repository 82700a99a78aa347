#!/usr/bin/env bash
# Redraws the pictures of the README and the users' guide from the sample: before and after, and each value low, medium and
# high. Needs python3-pil and fonts-dejavu-core. The picture of the dialog is a screenshot.
set -eu
cd "$(dirname "$(realpath "$0")")"
made=$(mktemp -d)
trap 'rm -rf "$made"' EXIT

# smoothed PICTURE NAME THRESHOLD SOFTNESS BIAS
smoothed() {
    ../smooth --settings "$made/settings" --threshold "$3" --softness "$4" --bias "$5" "$1" "$made/$2.png"
}
# Grain shows the effect of the threshold: at 0 all of it counts as edges.
/usr/bin/python3 add_grain.py sample.png "$made/grained.png"
for threshold in 0 10 200; do smoothed "$made/grained.png" "threshold$threshold" $threshold 70 0; done
for softness in 10 70 100; do smoothed sample.png "softness$softness" 10 $softness 0; done
for bias in 0 50 100; do smoothed sample.png "bias$bias" 10 100 $bias; done

# A slope and a disc of the drawing, a piece of lettering, lines of the fan.
/usr/bin/python3 magnify.py before_after.png 34,50,66,34 10,158,66,32 238,88,66,34 -- sample.png "$made/softness70.png"

# strip NAME LABEL PART LOW MIDDLE HIGH
strip() {
    local columns=() value
    for value in "${@:4}"; do columns+=("$made/$1$value.png=$2 $value"); done
    /usr/bin/python3 magnify.py "$1.png" "$3" -- "${columns[@]}"
}
strip threshold "color threshold" 96,104,46,34 0 10 200
strip softness softness 184,14,46,34 10 70 100
strip bias bias 200,80,46,34 0 50 100
