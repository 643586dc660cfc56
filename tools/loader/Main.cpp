// hxsso-plugin-loader: runs code of a plugin for the other tools, in a process that it
// may end as it likes. The request is one JSON object on the standard input; what comes
// of it goes to the standard output, a line of JSON each.
//
// It is linked as the library is: std::wstring and std::shared_ptr cross the boundary,
// so it has to share the plugin's C++ runtime, which the other tools do not need.

#include <exception>
#include <iostream>
#include <iterator>
#include <string>

#include <json/reader.h>

#include "common/ChildProcess.h"
#include "common/System.h"
#include "loader/Channel.h"
#include "loader/LoadChecks.h"
#include "loader/RealLoad.h"

int main(int count, char** arguments)
{
    using namespace Halvorix;
    try {
        Tools::BeginProgram(count, arguments);
        std::string const text{std::istreambuf_iterator<char>(std::cin),
                               std::istreambuf_iterator<char>()};
        Json::Value request;
        if (!Json::Reader().parse(text, request) || !request.isObject()) {
            std::cerr << "hxsso-plugin-loader: is started by hxsso-doctor and "
                         "hxsso-plugin-check\n";
            return 2;
        }
        PluginLoader::Channel channel;
        if (request.isMember("file"))
            PluginLoader::CheckLoaded(request, channel);
        else
            PluginLoader::LoadByLibrary(request, channel);
    } catch (std::exception const& exception) {
        std::cerr << "hxsso-plugin-loader: " << exception.what() << '\n';
        return 1;
    }
    Tools::EndProcess();
}
