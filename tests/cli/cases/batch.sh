# SPDX-License-Identifier: MIT
# Several inputs into a folder: one that fails does not keep the others from being written.
mkdir to
cp "$SAMPLES/chart4.png" "$SAMPLES/chart8.png" "$SAMPLES/ramp.png" .
echo broken >broken.png
for jobs in 1 3; do
  code raxel-export -j $jobs -c lzw -d to chart4.png broken.png chart8.png ramp.png 2>said
  sort said >&2  # several at work say it in any order
  ls -A to
  rm to/*
done
raxel-export -j 2 --json -d to chart4.png broken.png | sed 's/"seconds":{[^}]*}/"seconds":{}/'
# A folder that is missing is made, when the one above it is there.
code raxel-export --dry-run -d made chart4.png
ls -d made
code raxel-export -d made/ chart4.png ramp.png
ls -A made
code raxel-export -d missing/made chart4.png ramp.png
code raxel-export --json -d chart4.png/made ramp.png
# Reports of any length: this one is longer than a pipe holds.
long=$(printf 'a%.0s' {1..40000})
timeout 100 raxel-export -q --json -j 2 -d to "$long" chart4.png >long.json 2>long.err
echo "exit $?, $(($(wc -c <long.json) / 40000)) times the name, $(wc -l <long.json) lines"
ls -A to
# A caller that does not want to know how its children end does not keep the command from knowing of its own.
careless='import os, signal, sys; signal.signal(signal.SIGCHLD, signal.SIG_IGN); os.execvp(sys.argv[1], sys.argv[1:])'
code python3 -c "$careless" raxel-export -q -j 2 -d to chart4.png broken.png
