# SPDX-License-Identifier: MIT
# What a manifest's line tells of a job.
cp "$SAMPLES/chart4.png" "$SAMPLES/ramp.png" .
printf '[m]\nDriver=RAXEL.1\nCompression Mode=225\n' >p.ini
raxel-export --manifest all.jsonl --profile p.ini --section m --no-sync --set 9=146 --set 10=153 --pages chart4.png ramp.png out.tif
raxel-export --manifest all.jsonl chart4.png single.tif
python3 - <<'END'
import json
for line in open("all.jsonl"):
    line = json.loads(line)
    for name in ("seconds", "sha256", "sourceTime"):
        line.pop(name, None)
    print(json.dumps(line))
END
# A disk that takes the picture, and not its line. The manifest is as long as a file may be.
printf 'P4\n8 2\n\1\2' >small.pbm
raxel-export --manifest one.jsonl small.pbm small.tif
printf '%-1023s\n' "$(cat one.jsonl)" >full.jsonl
rm small.tif
(ulimit -f 1 && code raxel-export --manifest full.jsonl small.pbm small.tif)
ls small.tif
wc -c <full.jsonl
code raxel-export --manifest one.jsonl missing.png missing.tif
