#include "Dependencies.h"

#include <fstream>
#include <set>

#include "System.h"
#include "Utf8.h"
#include "platform/Platform.h"

namespace Halvorix::Tools {

namespace {

namespace fs = std::filesystem;

bool IsLibrary(std::string const& name)
{
    std::string const library = Utf8(Platform::LibraryFileName());
    return name == library || name.rfind(library + ".", 0) == 0;
}

class Search {
public:
    Search(fs::path const& pluginFile, ModuleImage const& ownImage, Host const& aHost)
        : plugin(pluginFile), own(ownImage), host(aHost)
    {
    }

    void Follow(fs::path const& file, ModuleImage const& image)
    {
        for (std::string const& name : image.imports)
            if (seen.insert(name).second)
                Find(name, file, image);
    }

    Dependencies found;

private:
    void Find(std::string const& name, fs::path const& file, ModuleImage const& image)
    {
        std::string hint;
        fs::path const wanted = fs::u8path(name);
        if (!Platform::LoadedModuleFile(Wide(wanted)).empty()) {
            found.inProcess.push_back(name);
            return;
        }
        for (fs::path const& folder : DependencyFolders(image, file, plugin, host.folder)) {
            if (Take(folder / wanted, hint)) {
                found.inFolders.push_back(name);
                if (folder == host.folder && folder != here)
                    found.ofHost.push_back(folder / wanted);
                return;
            }
        }
        // The loader of Windows stops at the first file of the name.
        bool const isStopped = !hint.empty() && own.format == ImageFormat::Pe;
        if (!isStopped && IsFoundBySystem(name)) {
            found.ofSystem.push_back(name);
            return;
        }
        if (IsLibrary(name)) {
            for (fs::path const& folder : host.libraryFolders) {
                if (Take(folder / wanted, hint)) {
                    found.library = folder / wanted;
                    return;
                }
            }
        }
        std::error_code unknown;
        if (hint.empty() && fs::exists(file.parent_path() / wanted, unknown))
            hint = HintForDependencyBeside();
        found.missing.push_back({name, Utf8(file.filename()), hint});
    }

    // Whether this is the file, with all that it needs in turn.
    bool Take(fs::path const& file, std::string& hint)
    {
        std::optional<std::string> const content = ReadWhole(file);
        if (!content)
            return false;
        ModuleImage const image = ReadModuleImage(*content);
        if (image.format != own.format || image.machine != own.machine) {
            hint = image.format == own.format
                       ? "the one in " + Utf8(file.parent_path()) + " is for " + image.machine
                       : "the one in " + Utf8(file.parent_path()) + " is no module";
            return false;
        }
        Follow(file, image);
        return true;
    }

    fs::path const& plugin;
    ModuleImage const& own;
    Host const& host;
    fs::path const here = FromWide(Platform::ExecutableFile()).parent_path();
    std::set<std::string> seen;
};

} // namespace

Dependencies FindDependencies(fs::path const& plugin, ModuleImage const& image,
                              ModuleImage const& own, Host const& host)
{
    Search search(plugin, own, host);
    search.Follow(plugin, image);
    return std::move(search.found);
}

std::optional<std::string> ReadWhole(fs::path const& file)
{
    std::error_code unknown;
    if (!fs::is_regular_file(file, unknown))
        return std::nullopt;
    std::ifstream stream(file, std::ios::binary | std::ios::ate);
    std::streamoff const size = stream.tellg();
    if (size < 0)
        return std::nullopt;
    std::string content(static_cast<std::size_t>(size), '\0');
    stream.seekg(0);
    stream.read(content.data(), size);
    if (stream.gcount() != size)
        return std::nullopt;
    return content;
}

} // namespace Halvorix::Tools
