// hxsso: signs a user in once, for every program and every shell.

#include <exception>
#include <filesystem>
#include <sstream>

#include "hxsso/Commands.h"
#include "hxsso/SignOn.h"
#include "hxsso/System.h"

namespace Halvorix::HxSSO {

/// The text of --help, made of hxsso.txt as the man page is.
extern char const* const Usage;

namespace {

struct Entry {
    char const* name;
    Answer (*run)(Options const&);
};

constexpr Entry Entries[] = {
    {"login", Login},           {"logout", Logout},       {"status", TellStatus},
    {"whoami", WhoAmI},         {"servers", ListServers}, {"configure", Configure},
    {"install", InstallForAll},
};

std::string Absolute(std::string const& path)
{
    return std::filesystem::absolute(std::filesystem::u8path(path)).u8string();
}

/// Of folders with semicolons between them. Those that begin with a variable stay.
std::string AllAbsolute(std::string const& paths)
{
    std::istringstream parts(paths);
    std::string all;
    for (std::string part; std::getline(parts, part, ';');)
        all += (all.empty() ? "" : ";") + (part.empty() || part[0] == '%' ? part : Absolute(part));
    return all;
}

/// Paths as the user means them, before this process goes elsewhere.
void MakeAbsolute(Options& options)
{
    if (options.Has("--folder"))
        options.given["--folder"] = Absolute(options.Value("--folder"));
    for (std::size_t i = 1; i < options.rest.size(); ++i) {
        std::string const& name = options.rest[i - 1];
        std::string& value = options.rest[i];
        if (name == "--search")
            value = AllAbsolute(value);
        else if ((name == "--config" || name == "--library") && !value.empty())
            value = Absolute(value);
    }
}

int RunCommand(Options options)
{
    MakeAbsolute(options);
    BeginLibrary();
    if (options.command == "doctor")
        return RunDoctor(options);
    if (options.command == "token")
        return TellToken(options);
    for (Entry const& entry : Entries)
        if (options.command == entry.name)
            return Tell(options.command, entry.run(options), options.Has("--json"));
    return static_cast<int>(Status::WrongUse);
}

int Run(Options const& options)
{
    Answer answer;
    if (!options.misuse.empty()) {
        TellError(Failed(Status::WrongUse, options.misuse + "; hxsso --help tells how to use it"));
        return static_cast<int>(Status::WrongUse);
    }
    if (!options.help && !options.version)
        return RunCommand(options);
    answer.text = options.help ? Usage : "hxsso " HXSSO_VERSION "\n";
    return Tell({}, answer, false);
}

} // namespace

} // namespace Halvorix::HxSSO

int main(int count, char** arguments)
{
    namespace HxSSO = Halvorix::HxSSO;
    try {
        return HxSSO::Run(HxSSO::ReadOptions(HxSSO::BeginProgram(count, arguments)));
    } catch (std::exception const& exception) {
        HxSSO::TellError(HxSSO::Failed(HxSSO::Status::Failed, exception.what(),
                                       "run 'hxsso doctor', which tells of damaged files"));
        return static_cast<int>(HxSSO::Status::Failed);
    }
}
