// SPDX-License-Identifier: MIT
#include "command/option_docs.h"

#include "order/option_table.h"

namespace host {
namespace {

// Text with a backslash before each of these characters.
std::string escaped(std::string_view text, std::string_view characters) {
  std::string out;
  for (char c : text) {
    if (characters.find(c) != std::string_view::npos) out += '\\';
    out += c;
  }
  return out;
}

// Inside single quotes of a Bourne shell a quote is written by leaving them.
std::string quoted(const std::string &text) {
  std::string out;
  for (char c : text) out += c == '\'' ? std::string("'\\''") : std::string(1, c);
  return out;
}

std::string longName(const OptionRow &row) {
  return "--" + std::string(row.longName);
}
std::string shortName(const OptionRow &row) {
  return std::string{'-', row.shortName};
}

std::string bashAnswer(const OptionRow &row) {
  switch (row.completes) {
    case Completes::kChoices:
    case Completes::kExamples:
      return "COMPREPLY=($(compgen -W '" + std::string(row.choices) + "' -- \"$cur\"))";
    case Completes::kChoicesOrFile:
      return "mapfile -t COMPREPLY < <(compgen -W '" + std::string(row.choices) + "' -f -- \"$cur\")";
    case Completes::kFile:
      return "mapfile -t COMPREPLY < <(compgen -f -- \"$cur\")";
    case Completes::kFolder:
      return "mapfile -t COMPREPLY < <(compgen -d -- \"$cur\")";
    default:
      return "COMPREPLY=()";
  }
}

std::string zshAction(const OptionRow &row) {
  switch (row.completes) {
    case Completes::kChoices:
    case Completes::kExamples:
      return "(" + std::string(row.choices) + ")";
    case Completes::kChoicesOrFile:
      return "{_alternative \"words\\:word\\:(" + std::string(row.choices) +
             ")\" \"files\\:file\\:_files\"}";
    case Completes::kFile:
      return "_files";
    case Completes::kFolder:
      return "_files -/";
    default:
      return " ";
  }
}

}  // namespace

std::string bashCompletion() {
  std::string cases, all = "--help -h";
  for (const OptionRow &row : kOptions) {
    all += " " + longName(row);
    if (row.shortName) all += " " + shortName(row);
    if (row.argument.empty()) continue;
    cases += "    " + longName(row) + (row.shortName ? "|" + shortName(row) : "") + ") " + bashAnswer(row) +
             "; return ;;\n";
  }
  return "# bash completion for raxel-export\n"
         "_raxel_export() {\n"
         "  local cur=${COMP_WORDS[COMP_CWORD]} prev=${COMP_WORDS[COMP_CWORD-1]}\n"
         "  # --option=value comes as three words.\n"
         "  if [[ $cur == = ]]; then\n"
         "    cur=\n"
         "  elif [[ $prev == = ]]; then\n"
         "    prev=${COMP_WORDS[COMP_CWORD-2]}\n"
         "  fi\n"
         "  case $prev in\n" +
         cases +
         "  esac\n"
         "  if [[ $cur == -?* || $cur == - ]]; then\n"
         "    COMPREPLY=($(compgen -W '" +
         all +
         "' -- \"$cur\"))\n"
         "  else\n"
         "    mapfile -t COMPREPLY < <(compgen -f -- \"$cur\")\n"
         "  fi\n"
         "}\n"
         "complete -o filenames -F _raxel_export raxel-export\n";
}

std::string zshCompletion() {
  std::string out =
      "#compdef raxel-export\n_arguments -s \\\n  '(-h --help)'{-h,--help}'[Print this help and stop]' "
      "\\\n";
  for (const OptionRow &row : kOptions) {
    const std::string help = "[" + quoted(escaped(row.help, "[]:\\")) + "]";
    const std::string value =
        row.argument.empty() ? "" : ":" + escaped(row.argument, "[]:\\") + ":" + zshAction(row);
    const std::string joined = longName(row) + (row.argument.empty() ? "" : "=");  // --option=value as well
    const std::string repeat = row.id == OptionId::kSet ? "*" : "";
    if (row.shortName) {
      out += "  '(" + shortName(row) + " " + longName(row) + ")'{" + shortName(row) + "," + joined + "}'" +
             help + value + "' \\\n";
    } else {
      out += "  '" + repeat + joined + help + value + "' \\\n";
    }
  }
  return out + "  '*:picture:_files'\n";
}

std::string fishCompletion() {
  std::string out =
      "# fish completion for raxel-export\ncomplete -c raxel-export -s h -l help -d 'Print this help and "
      "stop'\n";
  for (const OptionRow &row : kOptions) {
    out += "complete -c raxel-export";
    if (row.shortName) out += std::string(" -s ") + row.shortName;
    out += " -l " + std::string(row.longName);
    switch (row.completes) {
      case Completes::kChoices:
      case Completes::kExamples:
        out += " -x -a '" + std::string(row.choices) + "'";
        break;
      case Completes::kChoicesOrFile:
        out += " -r -F -a '" + std::string(row.choices) + "'";
        break;
      case Completes::kFile:
        out += " -r -F";
        break;
      case Completes::kFolder:
        out += " -x -a '(__fish_complete_directories)'";
        break;
      default:
        out += row.argument.empty() ? "" : " -x";
        break;
    }
    out += " -d '" + escaped(row.help, "'\\") + "'\n";
  }
  return out;
}

std::string manualOptions() {
  std::string out;
  std::string_view group;
  for (const OptionRow &row : kOptions) {
    if (row.group != group) {
      group = row.group;
      out += "## " + std::string(group) + "\n\n";
    }
    out += (row.shortName ? "*" + shortName(row) + "*, " : "") + "*" + longName(row) + "*";
    if (!row.argument.empty()) out += " _" + escaped(row.argument, "_[]") + "_";
    out += "\n\t" + escaped(row.help, "_*#") + ".";
    if (row.completes == Completes::kChoices) out += " One of: " + escaped(row.choices, "_*") + ".";
    out += "\n\n";
  }
  return out + "*-h*, *--help*\n\tPrint a summary of the options and stop.\n";
}

}  // namespace host
