#include "tools/help/Completions.h"

#include <algorithm>
#include <array>
#include <functional>
#include <string_view>
#include <utility>

#include "tools/owner/ShellWord.h"

namespace quenlet {
namespace {

// What a value may be, as the scripts read it: "files", "words", a kind of "quenlet complete",
// "= text json" for a choice, or "any".
std::string kindOf(const std::string& placeholder) {
  constexpr std::array<std::pair<std::string_view, const char*>, 10> kinds = {{
      {"FILE", "files"},
      {"PROGRAM", "files"},
      {"DIRECTORY", "files"},
      {"WORD", "words"},
      {"BUNDLE", "bundles"},
      {"CLUSTER", "clusters"},
      {"ACCOUNT", "accounts"},
      {"REJECTION", "rejections"},
      {"DONATION", "donations"},
      {"VALUE", "donations"},
  }};
  const auto* const found = std::find_if(
      kinds.begin(), kinds.end(), [&](const auto& kind) { return kind.first == placeholder; });
  return found == kinds.end() ? "any" : found->second;
}

std::string kindOf(const HelpPage::Option& option) {
  if (!option.takesValue()) return {};
  if (option.choices.empty()) return kindOf(option.placeholder);
  std::string kind = "=";
  for (const std::string& choice : option.choices) kind += " " + choice;
  return kind;
}

// The words below the program that lead to a page: "account add".
std::string pathOf(const HelpPage& page) {
  return page.words.size() == 1 ? std::string() : page.name().substr(page.words.front().size() + 1);
}

void forEachPage(const HelpPage& page, const std::function<void(const HelpPage&)>& visit) {
  visit(page);
  for (const HelpPage& below : page.pages) forEachPage(below, visit);
}

// A shell function that prints, for its first argument, what `printed` says of each page.
std::string table(const std::string& function, const HelpPage& program,
                  const std::function<std::string(const HelpPage&)>& printed) {
  std::string text = function + "() {\n  case $1 in\n";
  forEachPage(program, [&](const HelpPage& page) {
    const std::string line = printed(page);
    if (line.empty()) return;
    text += "    " + shellQuoted(pathOf(page)) + ") printf '%s\\n' " + shellQuoted(line) + " ;;\n";
  });
  return text + "  esac\n}\n";
}

std::string joined(const std::string& all, const std::string& more) {
  return all.empty() ? more : all + " " + more;
}

std::string wordsTable(const HelpPage& program) {
  return table("_quenlet_words", program, [](const HelpPage& page) {
    std::string words;
    for (const HelpPage& below : page.pages) words = joined(words, below.words.back());
    return words;
  });
}

std::string optionsTable(const HelpPage& program) {
  return table("_quenlet_options", program, [](const HelpPage& page) {
    std::string options;
    for (const auto& option : page.options) {
      for (const std::string& name : option.names) options = joined(options, name);
    }
    return options;
  });
}

// For a word and an option of it that takes a value; for a word and nothing, its arguments.
std::string valuesTable(const HelpPage& program) {
  std::string text = "_quenlet_value() {\n  case \"$1 $2\" in\n";
  const auto add = [&](const std::string& what, const std::string& kind) {
    if (!kind.empty())
      text += "    " + shellQuoted(what) + ") printf '%s\\n' " + shellQuoted(kind) + " ;;\n";
  };
  forEachPage(program, [&](const HelpPage& page) {
    for (const auto& option : page.options) {
      for (const std::string& name : option.names) add(pathOf(page) + " " + name, kindOf(option));
    }
    // The last argument takes all that follows.
    if (!page.arguments.empty()) add(pathOf(page) + " ", kindOf(page.arguments.back().name));
  });
  return text + "  esac\n}\n";
}

constexpr char bashFunction[] = R"sh(
_quenlet() {
  local line=${COMP_LINE:0:COMP_POINT} at='' wanted='' cur typed value
  local -a words
  COMPREPLY=()
  read -ra words <<<"$line"
  [[ $line == *[[:blank:]] ]] && words+=('')
  cur=${words[${#words[@]} - 1]}
  _quenlet_place "${words[@]:1:${#words[@]} - 2}"
  if [[ -z $wanted && $cur == --*=* ]]; then
    wanted=$(_quenlet_value "$at" "${cur%%=*}")
    cur=${cur#*=}
  elif [[ -z $wanted && $cur == -* ]]; then
    wanted="= $(_quenlet_options "$at")"
  elif [[ -z $wanted && -n $(_quenlet_words "$at") ]]; then
    wanted="= $(_quenlet_words "$at")"
  elif [[ -z $wanted ]]; then
    wanted=$(_quenlet_value "$at" '')
  fi
  # The shell replaces only what stands behind the last of these.
  typed=''
  [[ $COMP_WORDBREAKS == *:* && $cur == *:* ]] && typed=${cur%"${cur##*:}"}
  case $wanted in
    '' | any) ;;
    files)
      compopt -o filenames 2>/dev/null
      # The shell's own word, in which blanks may be escaped.
      mapfile -t COMPREPLY < <(compgen -f -- "${2-$cur}")
      ;;
    *)
      while IFS=$'\t' read -r value _; do
        printf -v value '%q' "$value"
        [[ $value == "$cur"* ]] && COMPREPLY+=("${value#"$typed"}")
      done < <(_quenlet_list "$wanted")
      ;;
  esac
}
complete -F _quenlet quenlet
)sh";

// Goes through the words before the cursor: sets the caller's `at` to the command's words among
// them, and `wanted` to what the value of a last option is.
constexpr char placeFunction[] = R"sh(_quenlet_place() {
  local word
  for word in "$@"; do
    if [[ -n $wanted ]]; then
      wanted=''
    elif [[ $word == -* ]]; then
      [[ $word == *=* ]] || wanted=$(_quenlet_value "$at" "$word")
    elif [[ " $(_quenlet_words "$at") " == *" $word "* ]]; then
      at+=${at:+ }$word
    fi
  done
}
)sh";

// Values that may be there, one a line, each perhaps with a tab and an explanation behind it.
constexpr char listFunction[] = R"sh(_quenlet_list() {
  case $1 in
    '= '*) printf '%s\n' "${1#= }" | tr ' ' '\n' ;;
    words) _quenlet_words '' | tr ' ' '\n' ;;
    *) command quenlet complete "$1" 2>/dev/null ;;
  esac
}
)sh";

constexpr char zshFunction[] = R"sh(
_quenlet() {
  local at='' wanted='' cur=${words[CURRENT]} value text
  local -a values shown
  _quenlet_place "${(@)words[2,CURRENT-1]}"
  if [[ -z $wanted && $cur == --*=* ]]; then
    wanted=$(_quenlet_value "$at" "${cur%%=*}")
    compset -P '*='
  elif [[ -z $wanted && $cur == -* ]]; then
    wanted="= $(_quenlet_options "$at")"
  elif [[ -z $wanted && -n $(_quenlet_words "$at") ]]; then
    wanted="= $(_quenlet_words "$at")"
  elif [[ -z $wanted ]]; then
    wanted=$(_quenlet_value "$at" '')
  fi
  case $wanted in
    '' | any) return 1 ;;
    files) _files ;;
    *)
      while IFS=$'\t' read -r value text; do
        values+=("$value")
        shown+=("$value${text:+  $text}")
      done < <(_quenlet_list "$wanted")
      compadd -l -d shown -a values
      ;;
  esac
}
_quenlet "$@"
)sh";

// Prints what stands for the values of a kind in a command of fish.
std::string fishArguments(const std::string& kind) {
  if (kind.starts_with("= ")) return " -a " + shellQuoted(kind.substr(2));
  if (kind == "files") return " -F";
  if (kind == "words") return " -a " + shellQuoted("(__quenlet_words)");
  if (kind.empty() || kind == "any") return {};
  return " -a " + shellQuoted("(command quenlet complete " + kind + " 2>/dev/null)");
}

constexpr char fishFunction[] = R"sh(
# Whether the words so far lead to these.
function __quenlet_at
    set -l at
    for word in (commandline -opc)[2..-1]
        set -l next (string join -- ' ' $at $word)
        contains -- $next (__quenlet_paths); and set -a at $word
    end
    test "$at" = "$argv"
end

complete -c quenlet -f
)sh";

// The commands of fish that offer what may follow the words of a page.
std::string fishLines(const HelpPage& page) {
  const std::string at = "complete -c quenlet -n " + shellQuoted("__quenlet_at " + pathOf(page));
  std::string lines;
  for (const HelpPage& below : page.pages) {
    lines +=
        at + " -a " + shellQuoted(below.words.back()) + " -d " + shellQuoted(below.summary) + "\n";
  }
  for (const auto& option : page.options) {
    lines += at;
    for (const std::string& name : option.names) {
      const bool isLong = name.starts_with("--");
      lines += (isLong ? " -l " : " -s ") + name.substr(isLong ? 2 : 1);
    }
    if (option.takesValue()) {
      const std::string kind = kindOf(option);
      lines += (kind == "files" ? " -r" : " -x") + fishArguments(kind);
    }
    lines += " -d " + shellQuoted(option.text) + "\n";
  }
  if (page.arguments.empty()) return lines;
  const std::string values = fishArguments(kindOf(page.arguments.back().name));
  return values.empty() ? lines : lines + at + values + "\n";
}

}  // namespace

std::string Completions::forBash(const HelpPage& program) {
  return "# Completion of quenlet's words, options and values for bash.\n\n" + wordsTable(program) +
         optionsTable(program) + valuesTable(program) + placeFunction + listFunction + bashFunction;
}

std::string Completions::forZsh(const HelpPage& program) {
  return "#compdef quenlet\n# Completion of quenlet's words, options and values.\n\n" +
         wordsTable(program) + optionsTable(program) + valuesTable(program) + placeFunction +
         listFunction + zshFunction;
}

std::string Completions::forFish(const HelpPage& program) {
  std::string paths;
  std::string lines;
  forEachPage(program, [&](const HelpPage& page) {
    if (page.words.size() > 1) paths += " " + shellQuoted(pathOf(page));
    lines += fishLines(page);
  });
  std::string words;
  for (const HelpPage& below : program.pages) words += " " + below.words.back();
  return "# Completion of quenlet's words, options and values for fish.\n\n"
         "function __quenlet_words\n    printf '%s\\n'" +
         words + "\nend\nfunction __quenlet_paths\n    printf '%s\\n'" + paths + "\nend\n" +
         fishFunction + lines;
}

}  // namespace quenlet
