#include "Manual.h"

#include <cctype>
#include <cstring>

#include "ManualText.h"
#include "OptionTable.h"

namespace {

bool _HasLetter(const TOptionRow& row) { return row.Code < 256; }

// "-o, --output NAME"
std::string _Usage(const TOptionRow& row) {
  std::string text;
  if (_HasLetter(row)) {
    text += {'-', static_cast<char>(row.Code), ',', ' '};
  }
  text.append("--").append(row.Name);
  if (row.Argument != nullptr && row.Argument[0] == '[') {
    text.append("[=").append(row.Argument + 1);
  } else if (row.Argument != nullptr) {
    text.append(" ").append(row.Argument);
  }
  return text;
}

std::string _BriefLine(const TOptionRow& row) {
  constexpr std::size_t kColumn = 26;
  std::string line = _HasLetter(row) ? "  " : "      ";
  line += _Usage(row);
  line += line.size() + 2 > kColumn ? "\n" + std::string(kColumn, ' ')
                                    : std::string(kColumn - line.size(), ' ');
  return line + row.Brief + "\n";
}

// Words broken into lines of at most 79 characters, each behind `indent` blanks.
std::string _Wrap(const std::string& text, std::size_t indent) {
  constexpr std::size_t kWidth = 79;
  std::string out;
  std::string line;
  std::size_t at = 0;
  while (at < text.size()) {
    std::size_t end = text.find_first_of(" \n", at);
    end = end == std::string::npos ? text.size() : end;
    const std::string word = text.substr(at, end - at);
    if (!line.empty() && line.size() + 1 + word.size() > kWidth) {
      out.append(line).append("\n");
      line.clear();
    }
    line.append(line.empty() ? indent : 1, ' ').append(word);
    at = end + 1;
  }
  return line.empty() ? out : out + line + "\n";
}

std::string _GroupText(const TOptionGroup& group) {
  std::string text = std::string(group.Title) + ":\n\n";
  for (const TOptionRow& row : group.Rows) {
    text.append(_HasLetter(row) ? "  " : "      ").append(_Usage(row)).append("\n");
    text.append(_Wrap(row.Text, 10));
  }
  return text;
}

// Text as troff has it: backslashes and hyphens are to be seen as they are, and no line may begin
// with a control character.
std::string _Troff(const std::string& text) {
  std::string out;
  for (const char c : text) {
    if (c == '\\') {
      out += "\\e";
    } else if (c == '-') {
      out += "\\-";
    } else if ((c == '.' || c == '\'') && (out.empty() || out.back() == '\n')) {
      out.append("\\&").append(1, c);
    } else {
      out += c;
    }
  }
  return out;
}

// A line that begins with "= " is a heading, one with "- " an entry whose text follows, one with
// two blanks is shown as it stands; the others make paragraphs.
std::string _TroffText(const char* text) {
  std::string out;
  std::string rest = text;
  while (!rest.empty()) {
    const std::size_t end = rest.find('\n');
    const std::string line = rest.substr(0, end);
    rest = end == std::string::npos ? "" : rest.substr(end + 1);
    if (line.rfind("= ", 0) == 0) {
      out.append(".SH ").append(_Troff(line.substr(2))).append("\n");
    } else if (line.rfind("- ", 0) == 0) {
      out.append(".TP\n.B ").append(_Troff(line.substr(2))).append("\n");
    } else if (line.rfind("  ", 0) == 0) {
      out.append(".br\n.RS 4\n.nf\n").append(_Troff(line.substr(2))).append("\n.fi\n.RE\n");
    } else if (line.empty()) {
      out += ".PP\n";
    } else {
      out.append(_Troff(line)).append("\n");
    }
  }
  return out;
}

// What completes the argument of an option.
std::string _CompletionCase(const TOptionRow& row) {
  std::string text = "    --";
  text += row.Name;
  if (_HasLetter(row)) {
    text.append("|-").append(1, static_cast<char>(row.Code));
  }
  text += ")\n";
  if (row.Words[0] == '@') {
    text += "      compopt -o filenames\n"
            "      mapfile -t COMPREPLY < <(compgen -f -- \"$word\")\n";
  } else {
    text.append("      mapfile -t COMPREPLY < <(compgen -W '").append(row.Words);
    text += "' -- \"$word\")\n";
  }
  return text + "      return ;;\n";
}

} // namespace

std::string HelpText(const std::string& group) {
  std::string text;
  if (group.empty()) {
    text = kHelpHead;
    for (const TOptionGroup& rows : OptionGroups()) {
      for (const TOptionRow& row : rows.Rows) {
        text += row.Common ? _BriefLine(row) : "";
      }
    }
    return text + kHelpFoot;
  }
  for (const TOptionGroup& rows : OptionGroups()) {
    if (group == rows.Name || group == "all") {
      text.append(text.empty() ? "" : "\n").append(_GroupText(rows));
    }
  }
  return text;
}

std::string ManualPage() {
  std::string text = ".TH ZXRENDER 1 \"\" \"zxrender " ZX_RENDER_VERSION "\" \"User Commands\"\n";
  text += _TroffText(kManualHead);
  text += ".SH OPTIONS\n";
  for (const TOptionGroup& group : OptionGroups()) {
    text.append(".SS ").append(_Troff(group.Title)).append("\n");
    for (const TOptionRow& row : group.Rows) {
      text.append(".TP\n.B ").append(_Troff(_Usage(row))).append("\n");
      text.append(_Troff(row.Text)).append("\n");
    }
  }
  return text + _TroffText(kManualFoot);
}

std::string BashCompletion() {
  std::string names;
  std::string cases;
  for (const TOptionGroup& group : OptionGroups()) {
    for (const TOptionRow& row : group.Rows) {
      names.append(names.empty() ? "--" : " --").append(row.Name);
      if (row.Argument != nullptr && row.Argument[0] != '[') {
        cases += _CompletionCase(row);
      }
    }
  }
  return "# bash completion for zxrender\n"
         "_zxrender() {\n"
         "  local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD - 1]}\n"
         "  COMPREPLY=()\n"
         "  case $before in\n" +
         cases +
         "  esac\n"
         "  if [[ $word == -* ]]; then\n"
         "    mapfile -t COMPREPLY < <(compgen -W '" +
         names +
         "' -- \"$word\")\n"
         "  else\n"
         "    compopt -o filenames\n"
         "    mapfile -t COMPREPLY < <(compgen -f -- \"$word\")\n"
         "  fi\n"
         "}\n"
         "complete -F _zxrender zxrender\n";
}
