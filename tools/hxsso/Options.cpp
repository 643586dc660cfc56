#include "hxsso/Options.h"

#include <algorithm>

namespace Halvorix::HxSSO {

namespace {

struct Command {
    char const* name;
    std::vector<char const*> flags;
    std::vector<char const*> withValue;
    std::vector<char const*> required;
};

std::vector<Command> const& Commands()
{
    static std::vector<Command> const commands{
        {"login", {"--json", "--no-browser", "--device"}, {"--server", "--hint"}, {}},
        {"logout", {"--json"}, {"--server"}, {}},
        {"status", {"--json"}, {"--server"}, {}},
        {"whoami", {"--json"}, {"--server"}, {}},
        {"token", {"--json", "--header", "--show"}, {"--server", "--scope", "--min-valid"}, {}},
        {"servers", {"--json"}, {}, {}},
        {"doctor", {}, {}, {}},
        {"configure",
         {"--json"},
         {"--issuer", "--client-id", "--scopes", "--redirect-ports", "--name", "--folder"},
         {"--issuer", "--client-id"}},
        {"install", {"--json", "--system", "--remove"}, {"--folder"}, {"--system"}},
    };
    return commands;
}

bool IsOneOf(std::vector<char const*> const& names, std::string const& name)
{
    return std::find(names.begin(), names.end(), name) != names.end();
}

void ReadOne(Options& options, Command const& command, std::vector<std::string> const& arguments,
             std::size_t& at)
{
    std::string const& name = arguments[at];
    bool const takesValue = IsOneOf(command.withValue, name);
    if (name == "--help")
        options.help = true;
    else if (!takesValue && !IsOneOf(command.flags, name))
        options.misuse = options.command + " does not know '" + name + "'";
    else if (options.Has(name.c_str()))
        options.misuse = name + " is given twice";
    else if (!takesValue)
        options.given[name];
    else if (at + 1 == arguments.size() || arguments[at + 1].empty())
        options.misuse = name + " needs a value";
    else
        options.given[name] = arguments[++at];
}

} // namespace

std::string Options::Value(char const* option) const
{
    auto const found = given.find(option);
    return found == given.end() ? std::string() : found->second;
}

Options ReadOptions(std::vector<std::string> const& arguments)
{
    Options options;
    if (arguments.empty()) {
        options.misuse = "name a command";
        return options;
    }
    options.command = arguments[0];
    options.help = options.command == "--help";
    options.version = options.command == "--version";
    if (options.help || options.version) {
        if (arguments.size() > 1)
            options.misuse = options.command + " stands alone";
        return options;
    }
    auto const command =
        std::find_if(Commands().begin(), Commands().end(),
                     [&](Command const& one) { return one.name == options.command; });
    if (command == Commands().end()) {
        options.misuse = "there is no command '" + options.command + "'";
        return options;
    }
    if (options.command == "doctor") {
        options.rest.assign(arguments.begin() + 1, arguments.end());
        return options;
    }
    for (std::size_t at = 1; at < arguments.size() && options.misuse.empty(); ++at)
        ReadOne(options, *command, arguments, at);
    for (char const* const name : command->required)
        if (options.misuse.empty() && !options.help && !options.Has(name))
            options.misuse = options.command + " needs " + name;
    return options;
}

} // namespace Halvorix::HxSSO
