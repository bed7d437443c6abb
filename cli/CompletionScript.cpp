#include "cli/CompletionScript.h"

#include "workflow/RuleFindings.h"

#include <algorithm>
#include <array>
#include <set>
#include <utility>
#include <vector>

#include <CLI/CLI.hpp>

// All three scripts work the same way. Tables map a line "COMMAND OPTION" or "COMMAND NUMBER", the number of
// an argument, to its possible values. One pass over the words before the cursor finds the command, the
// option whose value is being typed, and the number of the argument.

namespace quorvane::cli {

namespace {

// The possible values of an option or argument: "files", "folders", "tags", "processes", "programs", "paths",
// "words" followed by the words, or empty for unknown ones.
using Values = std::string;

constexpr std::array<std::pair<std::string_view, std::string_view>, 22> valuesByName{{
    {"--root", "folders"},
    {"--target", "folders"},
    {"--tag", "tags"},
    {"--set-tag", "tags"},
    {"--prune-tag", "tags"},
    {"--process", "processes"},
    {"PROCESS", "processes"},
    {"--program", "programs"},
    {"OLD", "programs"},
    {"NEW", "files"},
    {"--path", "paths"},
    {"--sort",
        "words policyClass policyType path processName tag constraint operations flags created sequence "
        "system"},
    {"FILE", "files"},
    {"OUT", "files"},
    {"OUT.html", "files"},
    {"--output", "files"},
    {"-o", "files"},
    {"BASE", "files"},
    {"OURS", "files"},
    {"THEIRS", "files"},
    {"A", "files"},
    {"B", "files"},
}};

std::string kindWords()
{
    std::string words = "words all";
    for (const workflow::FindingKind kind : workflow::allFindingKinds)
        words.append(" ").append(findingName(kind));
    return words;
}

// The set of allowed values, from the parser's type name: "{a,b}".
std::optional<Values> valuesOfSet(const std::string& typeName)
{
    const std::size_t begin = typeName.find('{');
    const std::size_t end = typeName.find('}', begin);
    if (begin == std::string::npos || end == std::string::npos)
        return std::nullopt;
    std::string words = typeName.substr(begin + 1, end - begin - 1);
    std::replace(words.begin(), words.end(), ',', ' ');
    return "words " + words;
}

Values valuesOf(const std::string& command, const CLI::Option& option, const std::string& name)
{
    if (const auto words = valuesOfSet(option.get_type_name()))
        return *words;
    if (name == "--only" || name == "--skip" || name == "--finding")
        return kindWords();
    if (name == "PATH")
        return command == "codesign" || command == "digest" ? "files" : "paths";
    const auto* found = std::find_if(
        valuesByName.begin(), valuesByName.end(), [&name](const auto& entry) { return entry.first == name; });
    return found == valuesByName.end() ? Values() : Values(found->second);
}

struct OptionFacts {
    std::vector<std::string> names; // "--json"; "-o"
    std::string help;
    bool takesValue = false;
    Values values;
};

struct CommandFacts {
    std::string name; // empty for the program itself
    std::string help;
    std::vector<OptionFacts> options;
    std::vector<Values> arguments;
    bool lastRepeats = false; // the last argument repeats
};

std::vector<std::string> namesOf(const CLI::Option& option)
{
    std::vector<std::string> names;
    for (const std::string& name : option.get_lnames())
        names.push_back("--" + name);
    for (const std::string& name : option.get_snames())
        names.push_back("-" + name);
    return names;
}

bool isShown(const CLI::Option& option)
{
    return !option.get_group().empty();
}

void addOptions(CommandFacts& facts, const CLI::App& app)
{
    for (const CLI::Option* option : app.get_options()) {
        if (!isShown(*option))
            continue;
        if (option->get_positional()) {
            facts.arguments.push_back(valuesOf(facts.name, *option, option->get_name(true)));
            facts.lastRepeats = option->get_items_expected_max() > 1;
            continue;
        }
        const auto names = namesOf(*option);
        const bool takesValue = option->get_items_expected_max() > 0;
        facts.options.push_back({names, option->get_description(), takesValue,
            takesValue ? valuesOf(facts.name, *option, names.front()) : Values()});
    }
}

std::vector<const CLI::App*> shownCommands(const CLI::App& app)
{
    return app.get_subcommands([](const CLI::App* command) { return !command->get_group().empty(); });
}

// The program itself, then its commands. Subcommands of a command are words before its arguments.
std::vector<CommandFacts> factsOf(const CLI::App& program)
{
    std::vector<CommandFacts> facts{{"", program.get_description(), {}, {}, false}};
    addOptions(facts.front(), program);
    for (const CLI::App* command : shownCommands(program)) {
        CommandFacts one{command->get_name(), command->get_description(), {}, {}, false};
        std::string words;
        for (const CLI::App* nested : shownCommands(*command)) {
            words += " " + nested->get_name();
            addOptions(one, *nested);
        }
        if (!words.empty())
            one.arguments.insert(one.arguments.begin(), "words" + words);
        addOptions(one, *command);
        facts.push_back(std::move(one));
    }
    return facts;
}

// A text in single quotes, for Bourne-like shells.
std::string shellQuoted(std::string_view text)
{
    std::string answer = "'";
    for (const char c : text)
        answer.append(c == '\'' ? "'\\''" : std::string(1, c));
    return answer + "'";
}

// The first line of a help text, since a menu has room for no more.
std::string firstLine(const std::string& text)
{
    return text.substr(0, text.find('\n'));
}

std::set<std::string> optionsWithValue(const std::vector<CommandFacts>& commands)
{
    std::set<std::string> names;
    for (const CommandFacts& command : commands) {
        for (const OptionFacts& option : command.options) {
            if (option.takesValue)
                names.insert(option.names.begin(), option.names.end());
        }
    }
    return names;
}

std::string joined(const std::set<std::string>& words, std::string_view between)
{
    std::string text;
    for (const std::string& word : words)
        text.append(text.empty() ? "" : between).append(word);
    return text;
}

// The tables common to bash and zsh, as shell functions that print them.
std::string shellTables(const std::vector<CommandFacts>& commands)
{
    std::string takesValue = "_quorvanectl_takes_value()\n{\n    case $1 in\n    "
        + joined(optionsWithValue(commands), "|") + ") return 0 ;;\n    esac\n    return 1\n}\n\n";
    std::string options = "_quorvanectl_options()\n{\n    case $1 in\n";
    std::string values = "_quorvanectl_values()\n{\n    case \"$1 $2\" in\n";
    for (const CommandFacts& command : commands) {
        std::string names;
        for (const OptionFacts& option : command.options) {
            std::string patterns;
            for (const std::string& name : option.names) {
                names += "        echo " + shellQuoted(name + ":" + firstLine(option.help)) + "\n";
                // The program's own options may also follow a command.
                patterns.append(patterns.empty() ? "" : "|")
                    .append(
                        command.name.empty() ? "*' " + name + "'" : shellQuoted(command.name + " " + name));
            }
            if (option.takesValue)
                values += "    " + patterns + ") echo " + shellQuoted(option.values) + " ;;\n";
        }
        options += "    " + shellQuoted(command.name) + ")\n" + names + "        ;;\n";
        for (std::size_t number = 0; number < command.arguments.size(); ++number) {
            const bool repeats = command.lastRepeats && number + 1 == command.arguments.size();
            values += "    " + shellQuoted(command.name + " " + (repeats ? "" : std::to_string(number)))
                + (repeats ? "[0-9]*" : "") + ") echo " + shellQuoted(command.arguments[number]) + " ;;\n";
        }
    }
    std::string names = "_quorvanectl_commands()\n{\n";
    for (const CommandFacts& command : commands) {
        if (!command.name.empty())
            names += "    echo " + shellQuoted(command.name + ":" + firstLine(command.help)) + "\n";
    }
    return takesValue + options + "    esac\n}\n\n" + values + "    esac\n}\n\n" + names + "}\n\n";
}

constexpr std::string_view bashBody = R"sh(_quorvanectl()
{
    local program=$1 current=$2 command= option= number=0 word place values line name root=()
    local -i i
    [[ $current == = ]] && current=
    for ((i = 1; i < COMP_CWORD; ++i)); do
        word=${COMP_WORDS[i]}
        if [[ $word == = ]]; then
            continue # "--option=value" is three words
        elif [[ -n $option ]]; then
            [[ $option == --root ]] && root=(--root "$(_quorvanectl_unquoted "$word")")
            option=
        elif [[ $word == -* ]]; then
            _quorvanectl_takes_value "$word" && option=$word
        elif [[ -z $command ]]; then
            command=$word
        else
            number=$((number + 1))
        fi
    done
    COMPREPLY=()
    if [[ -n $option ]]; then
        place=$option
    elif [[ $current == -* ]]; then
        _quorvanectl_offer "$current" < <(_quorvanectl_options "$command"; _quorvanectl_options '') names
        return
    elif [[ -z $command ]]; then
        _quorvanectl_offer "$current" < <(_quorvanectl_commands) names
        return
    else
        place=$number
    fi
    values=$(_quorvanectl_values "$command" "$place")
    case $values in
    files|folders)
        compopt -o filenames 2>/dev/null
        name=$(_quorvanectl_unquoted "$current")
        [[ $values == files ]] && values=-f || values=-d
        while IFS= read -r line; do
            COMPREPLY+=("$line")
        done < <(compgen "$values" -- "$name")
        ;;
    words\ *)
        _quorvanectl_offer "$current" < <(printf '%s\n' ${values#words })
        ;;
    ?*)
        _quorvanectl_offer "$current" < <("$program" "${root[@]}" completion bash --values "$values" 2>/dev/null)
        ;;
    esac
}

# What was typed, without the marks that keep it together.
_quorvanectl_unquoted()
{
    local text=$1
    case $text in
    \"*|\'*) printf '%s' "${text:1}" ;;
    *) printf '%s' "${text//\\/}" ;;
    esac
}

# Offers the lines of standard input that begin with what was typed; of names, what stands before the colon.
_quorvanectl_offer()
{
    local typed line
    typed=$(_quorvanectl_unquoted "$1")
    while IFS= read -r line; do
        [[ $2 == names ]] && line=${line%%:*}
        [[ -n $line && $line == "$typed"* ]] || continue
        case $1 in
        \"*|\'*) COMPREPLY+=("$line") ;;
        *) COMPREPLY+=("$(printf '%q' "$line")") ;;
        esac
    done
}

complete -F _quorvanectl quorvanectl
)sh";

constexpr std::string_view zshBody = R"sh(_quorvanectl()
{
    local program=${words[1]} command= option= word place values
    local -a root offered
    local -i number=0 i
    for ((i = 2; i < CURRENT; ++i)); do
        word=${(Q)words[i]}
        if [[ -n $option ]]; then
            [[ $option == --root ]] && root=(--root $word)
            option=
        elif [[ $word == --*=* ]]; then
            [[ $word == --root=* ]] && root=(--root ${word#*=})
        elif [[ $word == -* ]]; then
            _quorvanectl_takes_value $word && option=$word
        elif [[ -z $command ]]; then
            command=$word
        else
            number+=1
        fi
    done
    if [[ -z $option && $PREFIX == --*=* ]]; then
        option=${PREFIX%%=*}
        compset -P '*='
    fi
    if [[ -n $option ]]; then
        place=$option
    elif [[ $PREFIX == -* ]]; then
        offered=(${(f)"$(_quorvanectl_options "$command"; _quorvanectl_options '')"})
        _describe -o option offered
        return
    elif [[ -z $command ]]; then
        offered=(${(f)"$(_quorvanectl_commands)"})
        _describe command offered
        return
    else
        place=$number
    fi
    values=$(_quorvanectl_values "$command" "$place")
    case $values in
    files) _files ;;
    folders) _files -/ ;;
    words\ *) compadd -- ${=values#words } ;;
    ?*) compadd -- ${(f)"$($program $root completion zsh --values $values 2>/dev/null)"} ;;
    esac
}

if [[ ${funcstack[1]} == _quorvanectl ]]; then
    _quorvanectl "$@"
else
    compdef _quorvanectl quorvanectl
fi
)sh";

// A text in single quotes, for fish.
std::string fishQuoted(std::string_view text)
{
    std::string answer = "'";
    for (const char c : text)
        answer.append(c == '\'' || c == '\\' ? "\\" : "").append(1, c);
    return answer + "'";
}

constexpr std::string_view fishBody = R"sh(
# The command, the option whose value is being typed and the number of the argument, one a line.
function __quorvanectl_state
    set -l command
    set -l option
    set -l number 0
    set -l words (commandline -opc)
    for word in $words[2..]
        if test -n "$option"
            set option
        else if string match -q -- '--*=*' $word
            continue
        else if string match -q -- '-*' $word
            contains -- $word $__quorvanectl_takes_value; and set option $word
        else if test -z "$command"
            set command $word
        else
            set number (math $number + 1)
        end
    end
    printf '%s\n' "$command" "$option" $number
end

function __quorvanectl_at --argument-names command number
    set -l state (__quorvanectl_state)
    test "$state[1]" = "$command" -a -z "$state[2]"; or return 1
    test -z "$number" -o "$state[3]" = "$number"
end

function __quorvanectl_root
    set -l words (commandline -opc)
    for i in (seq 2 (count $words))
        string match -q -- '--root=*' $words[$i]; and echo $words[$i]
        test "$words[$i]" = --root; and test $i -lt (count $words); and echo --root=$words[(math $i + 1)]
    end
end

function __quorvanectl_values --argument-names kind
    set -l program (commandline -opc)[1]
    $program (__quorvanectl_root) completion fish --values $kind 2>/dev/null
end

complete -c quorvanectl -f
)sh";

std::string fishValues(const Values& values)
{
    if (values == "files")
        return " -F";
    if (values == "folders")
        return " -x -a '(__fish_complete_directories)'";
    if (values.starts_with("words "))
        return " -x -a " + fishQuoted(values.substr(6));
    return values.empty() ? " -x" : " -x -a '(__quorvanectl_values " + values + ")'";
}

std::string fishOption(const CommandFacts& command, const OptionFacts& option)
{
    std::string line = "complete -c quorvanectl";
    if (!command.name.empty())
        line += " -n '__fish_seen_subcommand_from " + command.name + "'";
    for (const std::string& name : option.names)
        line += name.starts_with("--") ? " -l " + name.substr(2) : " -s " + name.substr(1);
    if (option.takesValue)
        line += " -r" + fishValues(option.values);
    return line + " -d " + fishQuoted(firstLine(option.help)) + "\n";
}

std::string fishScript(const std::vector<CommandFacts>& commands)
{
    std::string script = "set -g __quorvanectl_takes_value " + joined(optionsWithValue(commands), " ") + "\n";
    script += fishBody;
    for (const CommandFacts& command : commands) {
        if (!command.name.empty())
            script += "complete -c quorvanectl -n '__quorvanectl_at \"\"' -a " + command.name + " -d "
                + fishQuoted(firstLine(command.help)) + "\n";
        for (const OptionFacts& option : command.options)
            script += fishOption(command, option);
        for (std::size_t number = 0; number < command.arguments.size(); ++number) {
            const bool repeats = command.lastRepeats && number + 1 == command.arguments.size();
            if (!command.arguments[number].empty())
                script += "complete -c quorvanectl -n '__quorvanectl_at " + command.name
                    + (repeats ? "" : " " + std::to_string(number)) + "'"
                    + fishValues(command.arguments[number]) + "\n";
        }
    }
    return script;
}

} // namespace

std::optional<std::string> completionScript(const CLI::App& program, std::string_view shell)
{
    const std::vector<CommandFacts> commands = factsOf(program);
    const std::string title = "# Completion of quorvanectl, printed by \"quorvanectl completion "
        + std::string(shell) + "\".\n\n";
    if (shell == "bash")
        return title + shellTables(commands) + std::string(bashBody);
    if (shell == "zsh")
        return "#compdef quorvanectl\n" + title + shellTables(commands) + std::string(zshBody);
    return shell == "fish" ? std::optional(title + fishScript(commands)) : std::nullopt;
}

} // namespace quorvane::cli
