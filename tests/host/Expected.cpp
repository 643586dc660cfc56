#include "host/Expected.h"

#include <sstream>

namespace Rig {

std::vector<LogMessage> LinesOfGoodLoad()
{
    std::string const compatibility = "{root}/server/SSOVersionCompatibility.config";
    std::string const plugin = "{root}/server/plugin/" + ModuleName("RecordingPlugin");
    std::string const version = "HxSSOServices version 10.22.00.1800";
    return {
        {Info, Banner()},
        {Info, "Searching for client config file SSOClient.config in the following paths:\n"
               "{root}/app\n{root}/lib"},
        {Info, "Found client config file at {root}/app/SSOClient.config"},
        {Info, "Loading client config file {root}/app/SSOClient.config"},
        {Info, "Unable to get HxSSO path from registry, failed with error: " + SystemErrorText(2)},
        {Info, "Searching for SSO server app HxSSO.exe in the following paths:\n"
               "{root}/lib\n{root}/app\n{root}/server"},
        {Info, "Found SSO server app at {root}/server/HxSSO.exe"},
        {Info, "Searching for version compatibility file SSOVersionCompatibility.config in the "
               "following paths:\n{root}/server"},
        {Info, "Found version compatibility file at " + compatibility},
        {Info, "Searching for compatible client plugin version for " + version +
                   " in version compatibility file " + compatibility},
        {Info, "Found compatible client plugin for " + version +
                   " in version compatibility file: " + plugin},
        {Info, "Dynamically loading client plugin module " + plugin},
        {Info, "Successfully loaded client plugin module " + plugin},
        {Info, "Getting factory proc from client plugin module " + plugin},
        {Info, "Getting factory from client plugin module " + plugin},
        {Info, "Searching for openssl override in client config file {root}/app/SSOClient.config"},
        {Info, "No openssl override specified in client config file {root}/app/SSOClient.config"},
        {Info, "Searching for compatible openssl version for " + version +
                   " in version compatibility file " + compatibility},
        {Info, "Found compatible openssl version for " + version +
                   " in version compatibility file: {root}/server/openssl/" +
                   ModuleName("openssl")},
    };
}

std::vector<std::string> AsConsoleLines(std::vector<LogMessage> const& lines)
{
    std::vector<std::string> console;
    for (LogMessage const& line : lines) {
        std::istringstream stream(line.text + "\n");
        for (std::string part; std::getline(stream, part);) {
            if (!part.empty() && part.back() == '\r')
                part.pop_back();
            console.push_back(part);
        }
    }
    return console;
}

} // namespace Rig
