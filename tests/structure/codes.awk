# SPDX-License-Identifier: MIT
# Prints every line on which an escape, a mode, a compression, an opcode, a state, an operation, a word of a
# record or a result stands as a bare number, where include/raxel has a name for it. Numbers that are no
# code are data: a bitmap mode of 220, say, which tests use because it does not exist.
#
# Numbers that hardly stand for anything else count wherever they are; others by their company: 144 is a mode
# where a mode is meant, and a length elsewhere.

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
function meets(text, name, numbers,    between) {
  between = text ~ /(EXPECT|ASSERT)_/ ? " (=|==|!=) |, ?|\\{" : " (=|==|!=) |\\{"
  return text ~ "(^|[^0-9A-Za-z_])(" name ")\\)?(" between ")(" numbers ")u?([^0-9A-Za-z_.]|$)"
}

# Whether one of `names` is called with one of `numbers` as the last argument.
function ends(text, names, numbers) {
  return text ~ "(^|[^0-9A-Za-z_])(" names ")\\([^,]*, [^,]*, ?(" numbers ")u?\\)"
}

# Whether a line is a row of many numbers: pixels, levels, colours.
function isRowOfNumbers(text) { return gsub(/[0-9]+/, "", text) >= 9 }

function report(what) {
  print FILENAME ":" FNR ": " what ": " $0
  bad = 1
}

FNR == 1 { inTable = 0 }
FILENAME ~ /opcode_table_test/ && /^const Expected kExpected\[\] = \{/ { inTable = 1 }
inTable { if (/^};/) inTable = 0; next }  # the second copy of a table of numbers

/^ *([0-9A-F][0-9A-F] +)+;/ { next }  # a line of a dump, with its remark

{
  line = code($0)
  ++seen

  asked = "14[0-6]"
  modes = "21[5-9]|22[12]"
  compressions = "22[4-7]|229|230"
  escapes = "1|9|1[0-4]|1[6-9]|2[56]|5[67]|81"
  opcodes = "1033|1034|1314|2310|3842|3843"
  if (FILENAME !~ /\/color\// && !isRowOfNumbers(line) && line !~ /(row|pixels|out|ByteAt)(\[|\()[0-9]+|hreshold|[lL]evel/ &&
      holds(line, modes "|" compressions "|77[12]"))
    report("a setting")
  if (meets(line, "[A-Za-z_]*[mM]ode", asked "|30[7-9]|310|60[0-3]") ||
      meets(line, "nColorMode|[A-Za-z]*[cC]olors", "10[1-7]") || line ~ /[mM]odes?(\[[0-9]*\])? ?= ?\{?14[0-6]/ ||
      meets(line, "n(Size|Resolution)Mode", "[1-9][0-9]*"))
    report("a setting")
  if (meets(line, "[A-Za-z_]*[cC]ompress(ion)?(Mode)?", "[1-9]|15[0-5]|32773") || holds(line, "32773") ||
      line ~ /CompressAndWrite\(.*, ([2-5]|32773)\)/ || line ~ /[cC]ompress\(([a-z]+, )?(15[0-5]|[1-9])[,)]/)
    report("a compression")
  if (meets(line, "nPhotometric", "[1-3]") || meets(line, "k(Rgb|Palette|Map|BlackIsZero)", "[1-3]") ||
      line ~ /enum Photometric/)
    report("a photometric interpretation")
  tags = "254|25[7-9]|262|266|27[01347-9]|28[2-4]|29[2367]|30[56]|315|317|32[02-5]|33[89]|700|33432|34665|34675|34853"
  if (FILENAME ~ /^host\// && FILENAME !~ /finish\/tags\.h$/ && (meets(line, "k[A-Z][A-Za-z]*", tags) ||
      line ~ "^ *\\{(" tags "), \"" || line ~ "(tag|Tag|value|number)\\(?( ==)? ?(" tags ")[^0-9]"))
    report("a tag")

  if (line ~ "scape(Setup|_setup)?\\)?\\(([A-Za-z_.]+(\\(\\))?, )?(" escapes ")[,)]" ||
      meets(line, "[A-Za-z_]*[eE]scape", escapes))
    report("an escape")

  if (meets(line, "nState", "1|2|4|8|16")) report("a driver state")
  if (line ~ /(send|recordOf|function|Record|getfunc|InquireSupport)\([1-9]/ || holds(line, opcodes) ||
      line ~ /([oO]pcode|OP_|Record|record)/ && holds(line, "518|519|520|521|765|767"))
    report("an opcode")
  if (line ~ /put<int32_t>\(record, 16, -[56]\)/) report("a primitive")
  if (line ~ /([pP]rimitive|PRIMITIVE|d_gdp|InqGDPSupport)[^A-Za-z]*-[56]([^0-9]|$)/) report("a primitive")
  if (line ~ /RasterWriteCellData\(.*, [0-3]\)/ || meets(line, "nKind", "[1-9]"))
    report("a kind of pixels")

  if (line ~ /dd_entry32\)?\([a-zA-Z0-9]+, ([0-2]|0xFFF[DEF]|-[123]),/ || line ~ /dd_entry\)?\((0xFFF[DEF]|-[123]),/)
    report("an operation of an entry")
  if (line ~ /(Draw[A-Z][A-Za-z]*|[dD]raw)\([0-3],/) report("an operation of a draw procedure")
  if (line ~ /(^|[^A-Za-z_])op (==|!=) [0-7]/ || line ~ /_EQ\([^()]*\.op, [0-7]/) report("an operation")
  if (line ~ /([^A-Za-z][pP]rocedure|[pP]roc)(\(\)\))?\(([A-Za-z_.]+(\(\))?, )?[1-7],/ || ends(line, "kvlSeek|unxSeek|seek", "[0-2]") ||
      ends(line, "kvlOpen", "0x[0-9A-F]+|[0-9]+") || line ~ /kvlSetLineFormat\([^,]*, [0-2]\)/ ||
      line ~ /whence (=|==|!=) [0-2]([^0-9]|$)/)
    report("an operation of a stream")
  if (holds(line, "100[1-9]") && line ~ /[oO]rdinal|ORDINAL|table\[\]|fltLoad/) report("an ordinal")

  if (line ~ /(^|[^A-Za-z])([a-zA-Z_]*[sS]tatus[a-zA-Z]*_?|init|start|export(_r|R)ecord)\[[0-9]+\]/ &&
      line !~ /(HostWord|uint8_t) [a-zA-Z]+\[/)
    report("a word of a record")

  if (holds(line, "303|901") || line ~ /EXPECT|ASSERT|==|!=|return|push/ && holds(line, "-6[23]"))
    report("a result")
  if (line ~ /return (22|27|300);/ || meets(line, "[a-zA-Z_]*([cC]ode|[rR]esult)", "22|27|300") ||
      line ~ /\), (22|27|300)\)/ && line ~ /(OutputPicture|renderMetafile|initdvr|termdvr|initialise|WriteCellBits|ExportCellData|CompressAndWrite|push_er|dd_entry32)\(/ ||
      line ~ /(OutputPicture|renderMetafile|initdvr|termdvr|initialise|WriteCellBits|ExportCellData|push_er|dd_entry32)\(.*\) (==|!=) (22|27|300)/)
    report("a result")
}

# In a switch over codes every case is one, whatever its number.
line ~ /switch \(.*([oO]p|operation|whence|[sS]tate|[mM]ode|[cC]ompression|code|escape|reason)( & 0xFFFF)?\)+ *\{/ {
  match($0, /^ */)
  indent = RLENGTH
  inSwitch = 1
}
inSwitch && line ~ /^ *case -?[0-9]+:/ { report("a code") }
inSwitch && line ~ /^ *}/ { match($0, /^ */); if (RLENGTH <= indent) inSwitch = 0 }
FNR == 1 { inSwitch = 0 }

END { exit bad || seen == 0 }
