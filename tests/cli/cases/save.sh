# --save stores the settings of the command line, and no others; --dry-run stores nothing.
printf '[own]\nDriver=RAXEL.1\nBitmap Mode=222\n' >own.ini
photo=$SAMPLES/photo.png
raxel-export --dry-run --save --profile own.ini --section own -m grey16 "$photo"
cat own.ini
raxel-export --save --profile own.ini --section own -m grey16 -c lzw --dpi 200x100 --color-treatment invert "$photo" out.tif
cat own.ini
raxel-export --save --profile own.ini --section own --set 9=143 --set 14=1.5 -c none "$photo" out.tif
cat own.ini
code raxel-export --save --profile own.ini --section own -c g4 "$photo" out.tif
grep Compression own.ini
ls -A
