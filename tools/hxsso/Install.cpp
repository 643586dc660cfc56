// Makes the sign-on folder known on the whole machine, and undoes that.

#include <filesystem>

#include "common/Utf8.h"
#include "hxsso/Commands.h"
#include "hxsso/Location.h"
#include "hxsso/PluginTexts.h"
#include "hxsso/System.h"

namespace Halvorix::HxSSO {

namespace {

namespace fs = std::filesystem;

fs::path SignOnFolder(Options const& options)
{
    fs::path const named = fs::u8path(options.Value("--folder"));
    fs::path folder = fs::absolute(named.empty() ? ProgramFile().parent_path() : named);
    folder = folder.lexically_normal();
    // Named with a slash at its end, or without one.
    return folder.has_filename() ? folder : folder.parent_path();
}

Answer NotAllowed(std::string const& what, std::string const& reason)
{
    return Failed(Status::Failed, what + ": " + reason,
                  "run it as an administrator of this machine");
}

Answer Install(fs::path const& folder, std::optional<std::string> const& before)
{
    for (char const* const file : {"HxSSO.exe", "SSOVersionCompatibility.config"}) {
        std::error_code unknown;
        if (!fs::exists(folder / file, unknown))
            return Failed(Status::WrongUse,
                          Tools::Utf8(folder) + " is no sign-on folder: it has no " + file,
                          "name the folder by --folder");
    }
    std::string reason;
    if (!WriteLocation(folder, reason))
        return NotAllowed(PlaceOfLocation() + " cannot be written", reason);
    Answer answer;
    answer.text = "Wrote " + PlaceOfLocation() + ": " + folder.u8string() + '\n' +
                  (before ? "Before it was: " + *before + '\n' : "") +
                  "To undo it: hxsso install --system --remove --folder " + folder.u8string() +
                  '\n';
    return answer;
}

Answer Remove(fs::path const& folder, std::optional<std::string> const& before)
{
    if (!before) {
        Answer answer;
        answer.text = "Nothing to do: there is not " + PlaceOfLocation() + '\n';
        return answer;
    }
    if (fs::u8path(*before).lexically_normal() != folder)
        return Failed(Status::WrongUse, PlaceOfLocation() + " names another folder: " + *before,
                      "name that one by --folder if it is meant");
    std::string const place = PlaceOfLocation();
    std::string reason;
    if (!RemoveLocation(reason))
        return NotAllowed(place + " cannot be removed", reason);
    Answer answer;
    answer.text = "Removed " + place + ", which was: " + *before + '\n';
    return answer;
}

} // namespace

Answer InstallForAll(Options const& options)
{
    fs::path const folder = SignOnFolder(options);
    std::optional<std::string> const before = ReadLocation();
    Answer answer = options.Has("--remove") ? Remove(folder, before) : Install(folder, before);
    if (answer.status == Status::Done) {
        answer.result["place"] = PlaceOfLocation();
        answer.result["before"] = before ? Json::Value(*before) : Json::Value();
        std::optional<std::string> const now = ReadLocation();
        answer.result["now"] = now ? Json::Value(*now) : Json::Value();
    }
    return answer;
}

} // namespace Halvorix::HxSSO
