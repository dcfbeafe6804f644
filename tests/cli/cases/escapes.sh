# SPDX-License-Identifier: MIT
# Any setup escape can be sent.
photo=$SAMPLES/photo.png
raxel-export --dry-run --set 9=142 --set 10=153 "$photo"
raxel-export --dry-run --set 9=142 -m rgb "$photo"
raxel-export --dry-run --set 18=3 --set 11=300 --set 12=150 --set 25=7 "$photo"
raxel-export --dry-run --set 19=3 --set 13=2.5 --set 14=1 "$photo"
raxel-export --dry-run --set 1=104 --set 25=7 "$photo" # nothing is said about the mode
code raxel-export --set 16=0 "$photo" out.tif
code raxel-export --set 9=139 "$photo" out.tif
code raxel-export --set 40=1 "$photo" out.tif
code raxel-export --set 10=lzw "$photo" out.tif
code raxel-export --set 81=1 "$photo" out.tif
code raxel-export --set 13=22.5 "$photo" out.tif
# User data is a word without a sign; all else is whole numbers with one.
code raxel-export --dry-run --set 25=4294967295 "$photo"
code raxel-export --dry-run --set 25=4294967296 "$photo"
code raxel-export --dry-run --set 10=4294967295 "$photo"
