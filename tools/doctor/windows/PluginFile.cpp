#include "../PluginFile.h"

#include "../../common/System.h"

namespace Halvorix::Doctor {

namespace fs = std::filesystem;

// A relative one is looked for from the program's folder on, and not from the current
// directory: the library names a folder for what the plugin needs, which takes the
// current directory's place.
fs::path FileThatLoads(fs::path const& plugin, fs::path const& program)
{
    if (!plugin.root_path().empty())
        return Tools::AsOpened(plugin);
    fs::path const file = (program.parent_path() / plugin).lexically_normal();
    std::error_code unknown;
    return fs::exists(file, unknown) ? file : fs::path();
}

} // namespace Halvorix::Doctor
