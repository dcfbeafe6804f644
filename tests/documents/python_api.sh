#!/bin/sh
# SPDX-License-Identifier: MIT
# python_api.sh SOURCE FOLDER LIBRARY: the reference of the Python package is made without a warning in
# FOLDER/python, with every name that the package exports.
set -eu
[ -x /usr/bin/sphinx-build ] || { echo "python3-sphinx is not installed"; exit 77; }
library=$(realpath "$3")
mkdir -p "$2"
rm -rf "$2/python" "$2/doctrees"
PYTHONDONTWRITEBYTECODE=1 RAXEL_HOST_LIBRARY=$library \
  /usr/bin/sphinx-build -q -E -W --keep-going -d "$2/doctrees" "$1/docs/api/python" "$2/python"
names=$(sed -n '/^__all__ = \[/,/^\]/s/^ *"\(.*\)",$/\1/p' "$1/python/raxel/__init__.py")
for name in $names export_folder:dask; do
  case $name in *:*) module=raxel.${name#*:} name=${name%:*} ;; *) module=raxel ;; esac
  grep -q "id=\"$module\.$name\"" "$2/python/index.html" || { echo "$module.$name is not in the reference"; exit 1; }
done
