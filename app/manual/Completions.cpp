#include "app/manual/Completions.h"

#include "app/manual/Words.h"

#include <algorithm>

namespace qoro
{

namespace
{

std::string joined(const std::vector<std::string>& words, const std::string& between)
{
    std::string text;
    for (const std::string& word : words)
        text += (text.empty() ? "" : between) + word;
    return text;
}

std::vector<std::string> subcommands_of(const CLI::App& app)
{
    std::vector<std::string> names;
    for (const CLI::App* command : app.get_subcommands([](const CLI::App*) { return true; }))
        names.push_back(command->get_name());
    return names;
}

/// For a text in single quotes of a shell.
std::string quoted(const std::string& text)
{
    std::string result = "'";
    for (const char c : text)
        result += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return result + "'";
}

std::string replaced(std::string text, const std::string& part, const std::string& by)
{
    for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + by.size()))
        text.replace(at, part.size(), by);
    return text;
}

// --------------------------------------------------------------------------------------------------------------- bash

/// What completes a value, as a command of bash; empty for a value that is free.
std::string bash_value(const CLI::Option& option)
{
    const ValueWords value = value_of(option);
    if (!value.choices.empty())
        return "COMPREPLY=($(compgen -W \"" + joined(value.choices, " ") + "\" -- \"$word\"))";
    if (value.is_folder)
        return "compopt -o filenames; COMPREPLY=($(compgen -d -- \"$word\"))";
    if (value.is_file)
        return "compopt -o filenames; COMPREPLY=($(compgen -f -- \"$word\"))";
    return ":";
}

/// Cases of the options with a value, of one command.
std::string bash_values(const CommandWords& command)
{
    std::string text;
    for (const CLI::Option* option : options_of(*command.app))
        if (!is_switch(*option))
            text += "    \"" + command.path + '/' + joined(names_of(*option), "\" | \"" + command.path + '/') +
                    "\")\n" + "        " + bash_value(*option) + "\n        return ;;\n";
    return text;
}

/// The case of the words that a command accepts: its options behind a dash, else its commands or files.
std::string bash_words(const CommandWords& command)
{
    const std::vector<std::string> commands = subcommands_of(*command.app);
    std::vector<std::string> options;
    for (const CLI::Option* option : options_of(*command.app))
        for (const std::string& name : names_of(*option))
            options.push_back(name);
    const auto offer = [](const std::vector<std::string>& words) {
        return "COMPREPLY=($(compgen -W \"" + joined(words, " ") + "\" -- \"$word\"))\n";
    };
    std::string text =
        "    \"" + command.path + "\")\n        if [[ $word == -* ]]; then\n            " + offer(options);
    const auto arguments = arguments_of(*command.app);
    if (!commands.empty())
        text += "        else\n            " + offer(commands);
    else if (std::ranges::any_of(arguments, [](const CLI::Option* argument) { return value_of(*argument).is_file; }))
        text += "        else\n            compopt -o filenames; COMPREPLY=($(compgen -f -- \"$word\"))\n";
    return text + "        fi ;;\n";
}

// ---------------------------------------------------------------------------------------------------------------- zsh

/// For a description inside an argument of _arguments.
std::string zsh_text(const std::string& text)
{
    return replaced(replaced(replaced(replaced(text, "\\", "\\\\"), "[", "\\["), "]", "\\]"), ":", "\\:");
}

/// ":NAME:ACTION" for a value.
std::string zsh_value(const CLI::Option& option)
{
    const ValueWords value = value_of(option);
    std::string action;
    if (!value.choices.empty())
        action = "(" + joined(value.choices, " ") + ")";
    else if (value.is_folder)
        action = "_files -/";
    else if (value.is_file)
        action = "_files";
    return ":" + zsh_text(option.get_type_name()) + ":" + action;
}

std::string zsh_function_name(const std::string& path)
{
    return "_qoro_ad" + (path.empty() ? "" : "_" + replaced(path, " ", "_"));
}

std::string zsh_function(const CommandWords& command)
{
    std::string text = zsh_function_name(command.path) + "() {\n    local context state state_descr line\n" +
                       "    typeset -A opt_args\n    _arguments -C";
    for (const CLI::Option* option : options_of(*command.app))
        for (const std::string& name : names_of(*option))
            text += " \\\n        " + quoted(name + "[" + zsh_text(option->get_description()) + "]" +
                                             (is_switch(*option) ? "" : zsh_value(*option)));
    const std::vector<std::string> commands = subcommands_of(*command.app);
    for (const CLI::Option* argument : arguments_of(*command.app))
        text += " \\\n        " + quoted("*" + zsh_value(*argument));
    if (!commands.empty())
        text +=
            " \\\n        " + quoted("1:command:(" + joined(commands, " ") + ")") + " \\\n        '*::argument:->rest'";
    text += "\n";
    if (!commands.empty()) {
        text += "    [[ $state == rest ]] || return\n    case $line[1] in\n";
        for (const std::string& name : commands)
            text += "    " + name + ") " + zsh_function_name(command.path.empty() ? name : command.path + ' ' + name) +
                    " ;;\n";
        text += "    esac\n";
    }
    return text + "}\n\n";
}

// --------------------------------------------------------------------------------------------------------------- fish

/// For a text in single quotes of fish.
std::string fish_quoted(const std::string& text)
{
    return "'" + replaced(replaced(text, "\\", "\\\\"), "'", "\\'") + "'";
}

/// The condition under which the completions of a command apply.
std::string fish_condition(const CommandWords& command)
{
    if (command.path.empty())
        return " -n __fish_use_subcommand";
    const std::vector<std::string> inner = subcommands_of(*command.app);
    const std::size_t blank = command.path.rfind(' ');
    std::string text = "__fish_seen_subcommand_from " + command.path.substr(blank == std::string::npos ? 0 : blank + 1);
    if (blank != std::string::npos)
        text = "__fish_seen_subcommand_from " + command.path.substr(0, blank) + "; and " + text;
    if (!inner.empty())
        text += "; and not __fish_seen_subcommand_from " + joined(inner, " ");
    return " -n " + fish_quoted(text);
}

std::string fish_value(const ValueWords& value)
{
    if (!value.choices.empty())
        return " -x -a " + fish_quoted(joined(value.choices, " "));
    if (value.is_folder)
        return " -x -a '(__fish_complete_directories)'";
    return value.is_file ? " -r -F" : " -x";
}

std::string fish_lines(const CommandWords& command)
{
    const std::string beginning = "complete -c qoro-ad" + fish_condition(command);
    std::string text;
    for (const CLI::App* inner : command.app->get_subcommands([](const CLI::App*) { return true; }))
        text += beginning + " -f -a " + inner->get_name() + " -d " + fish_quoted(inner->get_description()) + '\n';
    for (const CLI::Option* option : options_of(*command.app)) {
        text += beginning;
        for (const std::string& name : option->get_snames())
            text += " -s " + name;
        for (const std::string& name : option->get_lnames())
            text += " -l " + name;
        text += (is_switch(*option) ? "" : fish_value(value_of(*option))) + " -d " +
                fish_quoted(option->get_description()) + '\n';
    }
    const auto arguments = arguments_of(*command.app);
    if (std::ranges::none_of(arguments, [](const CLI::Option* argument) { return value_of(*argument).is_file; }))
        text += beginning + " -f\n";
    return text;
}

} // namespace

std::string bash_completion(const CLI::App& program)
{
    const std::vector<CommandWords> commands = commands_of(program);
    std::string paths;
    std::string values;
    std::string words;
    for (const CommandWords& command : commands) {
        if (!command.path.empty())
            paths += (paths.empty() ? "" : " | ") + ("\"" + command.path + "\"");
        values += bash_values(command);
        words += bash_words(command);
    }
    return "# Completions of qoro-ad for bash.\n"
           "_qoro_ad()\n{\n"
           "    local word=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]} command=\"\" longer one\n"
           "    for one in \"${COMP_WORDS[@]:1:COMP_CWORD-1}\"; do\n"
           "        longer=${command:+$command }$one\n"
           "        case $longer in\n"
           "        " +
           paths +
           ") command=$longer ;;\n"
           "        esac\n"
           "    done\n"
           "    COMPREPLY=()\n"
           "    case $command/$previous in\n" +
           values + "    esac\n    case $command in\n" + words + "    esac\n}\ncomplete -F _qoro_ad qoro-ad\n";
}

std::string zsh_completion(const CLI::App& program)
{
    std::string text = "#compdef qoro-ad\n# Completions of qoro-ad for zsh.\n\n";
    for (const CommandWords& command : commands_of(program))
        text += zsh_function(command);
    return text + "_qoro_ad \"$@\"\n";
}

std::string fish_completion(const CLI::App& program)
{
    std::string text = "# Completions of qoro-ad for fish.\n";
    for (const CommandWords& command : commands_of(program))
        text += fish_lines(command);
    return text;
}

} // namespace qoro
