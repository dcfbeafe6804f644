# SPDX-License-Identifier: MIT
raxel-export --help
raxel-export -h | sed -n 1,3p
