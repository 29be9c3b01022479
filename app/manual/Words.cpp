#include "app/manual/Words.h"

#include <algorithm>
#include <cctype>

namespace qoro
{

namespace
{

void collect(const CLI::App& app, const std::string& path, std::vector<CommandWords>& commands)
{
    commands.push_back({path, &app});
    for (const CLI::App* command : app.get_subcommands([](const CLI::App*) { return true; }))
        collect(*command, path.empty() ? command->get_name() : path + ' ' + command->get_name(), commands);
}

/// Choices are in lower case, the names of values in upper case.
bool is_choice(const std::string& word)
{
    return !word.empty() && std::ranges::all_of(word, [](unsigned char c) { return std::islower(c) || c == '-'; });
}

} // namespace

std::vector<CommandWords> commands_of(const CLI::App& program)
{
    std::vector<CommandWords> commands;
    collect(program, "", commands);
    return commands;
}

ValueWords value_of(const CLI::Option& option)
{
    ValueWords value;
    const std::string type = option.get_type_name();
    value.is_folder = type == "DIR";
    value.is_file = type == "FILE" || type.ends_with(".json");
    std::size_t start = 0;
    while (start <= type.size()) {
        const std::size_t end = std::min(type.find('|', start), type.size());
        if (const std::string word = type.substr(start, end - start); is_choice(word))
            value.choices.push_back(word);
        start = end + 1;
    }
    return value;
}

bool is_switch(const CLI::Option& option)
{
    return option.get_items_expected_max() == 0;
}

std::vector<const CLI::Option*> options_of(const CLI::App& command)
{
    std::vector<const CLI::Option*> options;
    for (const CLI::App* around = &command; around; around = around->get_parent()) {
        // The program's own options are not accepted behind a command.
        if (around != &command && !around->get_parent())
            break;
        for (const CLI::Option* option : around->get_options())
            if (!option->get_positional() && std::ranges::none_of(options, [&](const CLI::Option* known) {
                    return known->get_single_name() == option->get_single_name();
                }))
                options.push_back(option);
    }
    return options;
}

std::vector<const CLI::Option*> arguments_of(const CLI::App& command)
{
    return command.get_options([](const CLI::Option* option) { return option->get_positional(); });
}

std::vector<std::string> names_of(const CLI::Option& option)
{
    std::vector<std::string> names;
    for (const std::string& name : option.get_snames())
        names.push_back("-" + name);
    for (const std::string& name : option.get_lnames())
        names.push_back("--" + name);
    return names;
}

} // namespace qoro
