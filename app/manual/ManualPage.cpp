#include "app/manual/ManualPage.h"

#include "app/manual/Words.h"

#include <cctype>

namespace qoro
{

namespace
{

/// Text for troff: a backslash or a dash is printed as it is, and no line starts with a control character.
std::string escaped(const std::string& text)
{
    std::string result;
    for (const char c : text) {
        const bool starts_line = result.empty() || result.back() == '\n';
        if (starts_line && (c == '.' || c == '\''))
            result += "\\&";
        if (c == '\\')
            result += "\\e";
        else if (c == '-')
            result += "\\-";
        else
            result += c;
    }
    return result;
}

std::string sentence(const std::string& text)
{
    return text.empty() || text.ends_with('.') ? text : text + '.';
}

/// "--for SECONDS"; the names are bold, the value's is italic.
std::string headline(const CLI::Option& option)
{
    std::string line;
    for (const std::string& name : names_of(option))
        line += (line.empty() ? "" : ", ") + ("\\fB" + escaped(name) + "\\fR");
    if (!is_switch(option))
        line += " \\fI" + escaped(option.get_type_name()) + "\\fR";
    return line;
}

std::string arguments(const CLI::App& command)
{
    std::string words;
    for (const CLI::Option* argument : arguments_of(command)) {
        const std::string name = "\\fI" + escaped(argument->get_type_name()) + "\\fR";
        const std::string repeated = argument->get_items_expected_max() > 1 ? name + "..." : name;
        words += ' ' + (argument->get_required() ? repeated : "[" + repeated + "]");
    }
    return words;
}

std::string options(const CLI::App& command)
{
    std::string text;
    for (const CLI::Option* argument : arguments_of(command))
        text += ".TP\n\\fI" + escaped(argument->get_type_name()) + "\\fR\n" +
                escaped(sentence(argument->get_description())) + '\n';
    for (const CLI::Option* option : command.get_options())
        if (!option->get_positional())
            text += ".TP\n" + headline(*option) + '\n' + escaped(sentence(option->get_description())) + '\n';
    return text;
}

} // namespace

std::string manual_page(const CLI::App& program, const std::string& version)
{
    const std::vector<CommandWords> commands = commands_of(program);
    std::string page = ".TH QORO\\-AD 1 \"\" \"qoro\\-ad " + escaped(version) + "\" \"User Commands\"\n";
    page += ".SH NAME\nqoro\\-ad \\- play and simulate full\\-screen video ads\n.SH SYNOPSIS\n";
    for (const CommandWords& command : commands)
        if (command.app->get_require_subcommand_min() == 0)
            page += "\\fBqoro\\-ad " + escaped(command.path) + "\\fR [\\fIOPTION\\fR]..." + arguments(*command.app) +
                    "\n.br\n";
    page += "\\fBqoro\\-ad\\fR \\fB\\-\\-help\\fR | \\fB\\-\\-version\\fR\n";
    page += ".SH DESCRIPTION\n" + escaped(program.get_description()) + "\n.SH OPTIONS\n" + options(program);
    page += ".SH COMMANDS\n";
    for (const CommandWords& command : commands) {
        if (command.path.empty())
            continue;
        page += ".SS qoro\\-ad " + escaped(command.path) + '\n';
        page += escaped(sentence(command.app->get_description())) + '\n' + options(*command.app);
        if (const std::string footer = command.app->get_footer(); !footer.empty())
            page += ".PP\n.nf\n" + escaped(footer) + (footer.ends_with('\n') ? "" : "\n") + ".fi\n";
    }
    return page;
}

} // namespace qoro
