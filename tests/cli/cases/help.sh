raxel-export --help
raxel-export -h | head -3
