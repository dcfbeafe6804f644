# SPDX-License-Identifier: MIT
raxel-export --list
raxel-export --list --json
raxel-export --version
