#include "doctor/PluginFile.h"

#include "common/System.h"

namespace Halvorix::Doctor {

namespace fs = std::filesystem;

// A name with a slash is opened as it stands.
fs::path FileThatLoads(fs::path const& plugin, fs::path const&) { return Tools::AsOpened(plugin); }

} // namespace Halvorix::Doctor
