#include "manual/completion.h"

#include "manual/appwords.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <sstream>

namespace manual {

namespace {

// NAME stands for the program's name as a shell function has it, PROGRAM for the name itself.
constexpr const char* completer = R"bash(_NAME() {
  local current=${COMP_WORDS[COMP_CWORD]} command='' option='' place=1 word i action
  for ((i = 1; i < COMP_CWORD; i++)); do
    word=${COMP_WORDS[i]}
    if [[ $word == = ]]; then
      continue
    elif [[ -n $option ]]; then
      option=
    elif [[ $word == -* ]]; then
      if _NAME_value "$command" "$word" >/dev/null; then option=$word; fi
    elif [[ " $(_NAME_commands "$command") " == *" $word "* ]]; then
      command=${command:+$command }$word
      place=1
    else
      place=$((place + 1))
    fi
  done
  [[ $current != = ]] || current=
  if [[ -n $option ]]; then
    action=$(_NAME_value "$command" "$option")
  elif [[ $current == -* ]]; then
    action=$(_NAME_options "$command")
  else
    action=$(_NAME_value "$command" "$place" || _NAME_commands "$command")
  fi
  case $action in
    file) mapfile -t COMPREPLY < <(compgen -f -- "$current") ;;
    folder) mapfile -t COMPREPLY < <(compgen -d -- "$current") ;;
    *) mapfile -t COMPREPLY < <(compgen -W "$action" -- "$current") ;;
  esac
  case $action in
    file | folder) compopt -o filenames 2>/dev/null ;;
  esac
  return 0
}
complete -F _NAME PROGRAM
)bash";

std::string replaced(std::string text, const std::string& what, const std::string& by) {
    for (std::size_t at = 0; (at = text.find(what, at)) != std::string::npos; at += by.size())
        text.replace(at, what.size(), by);
    return text;
}

bool isWord(const std::string& text) {
    return !text.empty() && std::all_of(text.begin(), text.end(), [](unsigned char letter) {
        return std::islower(letter) != 0 || std::isdigit(letter) != 0 || letter == '-';
    });
}

/// "on|off" to "on off"; names that are no words are left out.
std::string choicesIn(const std::string& name) {
    std::string choices;
    if (name.find('|') == std::string::npos)
        return choices;
    for (const std::string& choice : split(name, "|")) {
        if (isWord(choice))
            choices += (choices.empty() ? "" : " ") + choice;
    }
    return choices;
}

std::string joined(const std::vector<std::string>& words, const char* between) {
    std::string text;
    for (const std::string& word : words)
        text += (text.empty() ? "" : between) + word;
    return text;
}

/// One function for each question that the completer asks, as the cases of its first argument.
class Tables {
public:
    Tables(const ValueCompletions& values) : m_values(values) {}

    void add(const CLI::App& app, const std::string& words) {
        std::vector<std::string> options;
        for (const CLI::Option* option : namedOptions(app)) {
            const std::vector<std::string> names = namesOf(*option);
            options.insert(options.end(), names.begin(), names.end());
            if (const std::string value = valueName(*option); !value.empty())
                addValue(words, names, value);
        }
        addCase(m_optionCases, words, options);
        std::size_t place = 0;
        for (const CLI::Option* argument : positionals(app))
            addValue(words, {std::to_string(++place)}, valueName(*argument));
        std::vector<std::string> commands;
        for (const CLI::App* command : commandsOf(app)) {
            commands.push_back(command->get_name());
            add(*command, words.empty() ? command->get_name() : words + ' ' + command->get_name());
        }
        addCase(m_commandCases, words, commands);
    }

    std::string functions() const {
        return "_NAME_options() {\n  case $1 in\n" + m_optionCases.str() +
               "  esac\n}\n\n_NAME_commands() {\n  case $1 in\n" + m_commandCases.str() +
               "  esac\n}\n\n# Fails where no value is taken.\n_NAME_value() {\n  case $1:$2 in\n" +
               m_valueCases.str() + "    *) return 1 ;;\n  esac\n}\n\n";
    }

private:
    static void addCase(std::ostringstream& cases, const std::string& words,
                        const std::vector<std::string>& answer) {
        if (!answer.empty())
            cases << "    '" << words << "') echo '" << joined(answer, " ") << "' ;;\n";
    }

    void addValue(const std::string& words, const std::vector<std::string>& names, const std::string& value) {
        const auto known = m_values.find(value);
        std::string patterns;
        for (const std::string& name : names) {
            patterns += patterns.empty() ? "'" : " | '";
            patterns += words;
            patterns += ':';
            patterns += name;
            patterns += '\'';
        }
        m_valueCases << "    " << patterns << ") echo '"
                     << (known == m_values.end() ? choicesIn(value) : known->second) << "' ;;\n";
    }

    const ValueCompletions& m_values;
    std::ostringstream m_optionCases;
    std::ostringstream m_commandCases;
    std::ostringstream m_valueCases;
};

} // namespace

std::string bashCompletion(const CLI::App& app, const ValueCompletions& values) {
    Tables tables(values);
    tables.add(app, {});
    const std::string& program = app.get_name();
    std::string name = program;
    std::replace(name.begin(), name.end(), '-', '_');
    const std::string script = "# shellcheck shell=bash\n# Completion of PROGRAM, made of its options.\n\n" +
                               tables.functions() + completer;
    return replaced(replaced(script, "NAME", name), "PROGRAM", program);
}

} // namespace manual
