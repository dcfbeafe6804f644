# SPDX-License-Identifier: MIT
# Turns the headers' comments into those that Doxygen reads, and leaves everything else as it is: the file's first
# comment describes the file, one in front of a declaration that declaration, one behind a member that member.
# Indented lines are tables and drawings, which stay as they are. Lines keep their numbers.

function escaped(text) {
  gsub(/[\\@<>#%&"$~]/, "\\\\&", text)
  gsub(/::/, "\\::", text)
  return text
}

FNR == 1 { first = 1; table = 0 }

/^\/\/ -+/ { print ""; table = 0; next }  # the title of a part

/^ *\/\/( |$)/ && (/^\/\// || !trailing) {
  match($0, /^ */)
  margin = substr($0, 1, RLENGTH)
  text = substr($0, RLENGTH + 4)
  mark = first ? "/** @file " : "/// "
  if (first) mark = "/// @file\n/// "
  if (text ~ /^  /) {
    print margin "///" (table ? "     " : "\n" margin "///     ") text
    table = 1
  } else {
    print margin (first ? "/// @file\n" : "") (table ? "///\n" margin : "") "/// " escaped(text)
    table = 0
  }
  first = 0
  trailing = 0
  next
}

{ table = 0; if ($0 !~ /^ *$/) first = 0 }

# Behind a member, and going on below.
/[;,({].*  \/\/ / || /^  *[A-Z_a-z0-9]+( = [^,]*)?  \/\/ / {
  at = index($0, "  // ")
  print substr($0, 1, at - 1) "  ///< " escaped(substr($0, at + 5))
  trailing = 1
  next
}
trailing && /^ +\/\/ / {
  sub(/^ +\/\/ /, "")
  print "  ///< " escaped($0)
  next
}
{ trailing = 0; print }
