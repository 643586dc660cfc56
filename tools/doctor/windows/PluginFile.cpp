#include "doctor/PluginFile.h"

#include "common/System.h"
#include "common/windows/SearchOrder.h"

namespace Halvorix::Doctor {

namespace fs = std::filesystem;

// A relative one is looked for as any module is, and so not from the current directory: the
// library names a folder for what the plugin needs, which takes that one's place. The first
// of the name is the one, whatever it is.
fs::path FileThatLoads(fs::path const& plugin, fs::path const& program)
{
    fs::path const named = Tools::WithExtension(plugin);
    if (!named.root_path().empty())
        return Tools::AsOpened(named);
    for (Tools::SearchedFolder const& searched :
         Tools::SearchOrder(program.parent_path(), Tools::AsOpened(plugin.parent_path()))) {
        fs::path const file = (searched.folder / named).lexically_normal();
        std::error_code unknown;
        if (fs::exists(file, unknown))
            return file;
    }
    return {};
}

} // namespace Halvorix::Doctor
