// hxsso-doctor lies beside this program, and looks at it.

#include <algorithm>

#include <SSOClientPrivate.h>

#include "common/Utf8.h"
#include "hxsso/Commands.h"
#include "hxsso/System.h"
#include "hxsso/Text.h"

namespace Halvorix::HxSSO {

int RunDoctor(Options const& options)
{
    std::filesystem::path const doctor = ProgramBeside("hxsso-doctor");
    std::vector<std::string> arguments{"--exe", ProgramFile().u8string()};
    std::string const config =
        ToUtf8(SSOServices::SSOClientPrivate::GetSSOClientConfigFileOverride());
    bool const isNamed =
        std::find(options.rest.begin(), options.rest.end(), "--config") != options.rest.end();
    if (!config.empty() && !isNamed)
        arguments.insert(arguments.end(), {"--config", config});
    arguments.insert(arguments.end(), options.rest.begin(), options.rest.end());
    std::string reason;
    int const status = RunProgram(doctor, arguments, reason);
    if (status >= 0)
        return status;
    TellError(Failed(Status::Failed, Tools::Utf8(doctor) + " cannot be run: " + reason,
                     "install hxsso-doctor beside this program"));
    return static_cast<int>(Status::Failed);
}

} // namespace Halvorix::HxSSO
