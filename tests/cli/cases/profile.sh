# SPDX-License-Identifier: MIT
# Settings of a profile, and options that go before them.
cat >own.ini <<'END'
[RAXEL]
~Mode=fax
[fax]
Driver=RAXEL.1
Bitmap Mode=215
Compression Mode=230
Resolution Mode=310
X Resolution=200
Y Resolution=100
[photo]
Driver=RAXEL.1
Bitmap Mode=221
Compression Mode=227
Size Mode=603
Width=2.00
Height=1.5
[empty]
Bitmap Mode=215
END
photo=$SAMPLES/photo.png
raxel-export --dry-run --profile own.ini "$photo"
raxel-export --dry-run --profile own.ini --section photo "$photo"
raxel-export --dry-run --profile own.ini --section photo -m grey16 --dpi 72 "$photo"
raxel-export --dry-run --profile own.ini --section fax -m auto -c none "$photo"
mkdir ini && mv own.ini ini/
INIDIR=ini raxel-export --dry-run --profile own.ini "$photo"
# A profile that nobody named is used, but not without a word.
INIDIR=ini raxel-export --dry-run "$photo"
mv ini/own.ini ini/raxel.ini
INIDIR=ini raxel-export --dry-run "$photo"
INIDIR=ini raxel-export --dry-run -q -m auto -c none "$photo"
mv ini/raxel.ini ini/own.ini
code raxel-export --profile missing.ini "$photo" out.tif
code raxel-export --profile ini/own.ini --section empty "$photo" out.tif
code raxel-export --profile ini/own.ini --section nowhere "$photo" out.tif
