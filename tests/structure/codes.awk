# Prints every line on which an escape, a mode, a compression, an opcode, a state, a word of a record or a
# result stands as a bare number, where include/raxel has a name for it. Numbers that are no code are data:
# a bitmap mode of 220, say, which tests use because it does not exist.
#
# A number counts by its company: 303 is a result where a result is compared, and a pixel elsewhere.

# The code of a line: without comments, and with the text taken out of strings.
function code(line) {
  gsub(/"([^"\\]|\\.)*"/, "\"\"", line)
  sub(/\/\/.*/, "", line)
  gsub(/\/\*[^*]*\*\//, "", line)
  return line
}

# Whether `pattern` stands in `text` as a whole word or number.
function holds(text, pattern) { return text ~ "(^|[^0-9A-Za-z_.-])(" pattern ")u?([^0-9A-Za-z_.]|$)" }

# Whether the record field or variable `name` is set to, or compared with, one of `numbers`.
function meets(text, name, numbers) {
  return text ~ name "\\)?( (=|==|!=) |, )(" numbers ")u?([^0-9A-Za-z_.]|$)"
}

function report(what) {
  print FILENAME ":" FNR ": " what ": " $0
  bad = 1
}

/^ *([0-9A-F][0-9A-F] +)+;/ { next }  # a line of a dump, with its remark

{
  line = code($0)
  ++seen

  modes = "21[5-9]|22[12]"
  compressions = "22[4-7]|229|230"
  if (meets(line, "nBitmapMode", modes) || meets(line, "nCompressionMode", compressions) ||
      meets(line, "nColorMode", "10[3-7]") || meets(line, "nSizeMode", "60[0-3]") ||
      meets(line, "nResolutionMode", "30[7-9]|310") || holds(line, "77[12]") && line ~ /[lL]ayout/)
    report("a setting")
  if (FILENAME !~ /\/color\// &&
      (line ~ "[{](" modes "), (" modes ")[,}]" || line ~ "[{](" compressions "), (" compressions ")[,}]"))
    report("settings")
  if (line ~ "case (" modes "|" compressions "):") report("a setting")
  if (line ~ /(Mode|Modes|MODE)[A-Za-z0-9]* = 1?[0-9][0-9][;,]/ && holds(line, "14[0-6]")) report("a setting")

  if (line ~ /scapeSetup\)?\([A-Za-z_.]*, [0-9]/ || line ~ /escape(_setup)?\(([a-z]+, )?[0-9]/) report("an escape")

  if (meets(line, "nCompression", "[1-5]|32773") || holds(line, "32773")) report("a TIFF compression")
  if (meets(line, "nPhotometric", "[1-3]")) report("a photometric interpretation")
  if (meets(line, "nState", "1|2|4|8|16")) report("a driver state")

  if (line ~ /(send|recordOf|function)\([1-9]/ || holds(line, "1033|1034|1314|2310|3842|3843") ||
      line ~ /[oO]pcode/ && holds(line, "518|519|520|521|765|767"))
    report("an opcode")
  if (line ~ /dd_entry32\)?\([a-z0-9]+, (0|2|0xFFF[DEF]|-[123]),/ || line ~ /dd_entry\)?\((0xFFF[DEF]|-[123]),/)
    report("an operation of an entry")

  if (line ~ /(^|[^A-Za-z])(status|status_|init|start|exportRecord|export_record)\[[0-9]+\]/ &&
      line !~ /HostWord [a-z]+\[/)
    report("a word of a record")

  if (line ~ /EXPECT|ASSERT|==|!=|return|push/ && holds(line, "303|901|-6[23]")) report("a result")
  if (line ~ /(OutputPicture|renderMetafile|initdvr|termdvr|initialise|WriteCellBits|CompressAndWrite|push_er|dd_entry32)\(/ &&
      holds(line, "22|27|300") && line ~ /(, |== |\()(22|27|300)\)/)
    report("a result")
}

END { exit bad || seen == 0 }
