#include "../PluginFile.h"

namespace Halvorix::Doctor {

namespace fs = std::filesystem;

// A name with a slash is opened as it stands.
fs::path FileThatLoads(fs::path const& plugin, fs::path const&)
{
    return fs::absolute(plugin).lexically_normal();
}

} // namespace Halvorix::Doctor
