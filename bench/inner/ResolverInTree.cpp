#include "inner/ResolverInTree.h"

#include <fstream>
#include <stdexcept>

#include "framework/System.h"
#include "support/LibraryIdentity.h"

using namespace Halvorix::SSOServices;

namespace Bench {

namespace {

std::filesystem::path NewFolder()
{
    static int number = 0;
    std::filesystem::path const folder = ThisFolder() / ("bench-tree-" + std::to_string(++number));
    std::filesystem::remove_all(folder);
    std::filesystem::create_directories(folder);
    return folder;
}

void Write(std::filesystem::path const& file, std::string const& content)
{
    std::ofstream(file, std::ios::binary) << content;
}

Version OwnVersion()
{
    Version version;
    ParseVersion(version, LibraryVersion);
    return version;
}

} // namespace

ResolverInTree::ResolverInTree(std::string const& compatibility)
    : root(NewFolder()), resolver(OwnVersion(), nullptr)
{
    Write(root / "HxSSO.exe", "");
    Write(root / "SSOVersionCompatibility.config", compatibility);
    Write(root / "SSOClient.config",
          R"({"ssoServer": {"searchPaths": "%ExePath%/)" + root.filename().string() + "\"}}");
    resolver.SetSSOClientConfigFileOverride((root / "SSOClient.config").wstring());
    if (resolver.GetSSOServerAppPath().empty())
        throw std::runtime_error("the server application is not found");
}

ResolverInTree::~ResolverInTree() { std::filesystem::remove_all(root); }

} // namespace Bench
