// A module that uses the library, or ends the process, while the system's loader is busy
// with it.

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <thread>

#include <NetworkCookie.h>
#include <SSOClientPrivate.h>
#include <SSOServicesPrivate.h>
#include "framework/Variable.h"

namespace {

namespace fs = std::filesystem;

bool UseTheLibrary()
{
    fs::path const inside = fs::u8path(Rig::Variable("HXSSO_MODULE_INSIDE"));
    std::ofstream(inside).close();
    if (Rig::Variable("HXSSO_MODULE_USES") == "exit")
        std::exit(7);
    // For the other thread to begin its call.
    std::this_thread::sleep_for(std::chrono::milliseconds(300));
    Halvorix::WebServices::NetworkCookie cookie;
    bool const answered =
        Rig::Variable("HXSSO_MODULE_USES") == "document"
            ? SSOServicesPrivate::JsonToNetworkCookie("{}", cookie)
            : !Halvorix::SSOServices::SSOClientPrivate::GetSSOClientConfigFile().empty();
    if (answered)
        std::ofstream(inside.parent_path() / "answered").close();
    return answered;
}

[[maybe_unused]] bool const used = UseTheLibrary();

} // namespace
