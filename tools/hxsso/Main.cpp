// hxsso: signs a user in once, for every program and every shell.

#include <exception>
#include <filesystem>

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

int RunCommand(Options options)
{
    // As the user means it, before this process goes elsewhere.
    if (options.Has("--folder"))
        options.given["--folder"] =
            std::filesystem::absolute(std::filesystem::u8path(options.Value("--folder")))
                .u8string();
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
