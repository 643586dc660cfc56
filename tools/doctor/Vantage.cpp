#include "Vantage.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "../common/Dependencies.h"
#include "../common/Host.h"
#include "../common/ModuleImage.h"
#include "../common/System.h"
#include "../common/Utf8.h"
#include "platform/Platform.h"

namespace Halvorix::Doctor {

namespace {

namespace fs = std::filesystem;

Vantage vantage;

// A library may be there under its versioned name alone.
fs::path LibraryIn(fs::path const& folder)
{
    std::string const name = Tools::Utf8(Platform::LibraryFileName());
    std::error_code unknown;
    if (fs::is_regular_file(folder / fs::u8path(name), unknown))
        return folder / fs::u8path(name);
    std::vector<fs::path> versioned;
    for (fs::directory_iterator entry(folder, unknown), end; !unknown && entry != end;
         entry.increment(unknown))
        if (Tools::Utf8(entry->path().filename()).rfind(name + ".", 0) == 0 &&
            entry->is_regular_file(unknown))
            versioned.push_back(entry->path());
    auto const first = std::min_element(versioned.begin(), versioned.end());
    return first == versioned.end() ? fs::path() : *first;
}

std::vector<fs::path> LibraryFolders(fs::path const& executable, bool isThisProgram)
{
    if (isThisProgram)
        return Tools::ThisProgramAsHost().libraryFolders;
    std::vector<fs::path> folders{executable.parent_path()};
    if (std::optional<std::string> const content = Tools::ReadWhole(executable))
        for (fs::path const& folder :
             Tools::DependencyFolders(Tools::ReadModuleImage(*content), executable, executable,
                                      executable.parent_path()))
            folders.push_back(folder);
    return folders;
}

} // namespace

void SetVantage(Vantage newVantage) { vantage = std::move(newVantage); }

Vantage const& CurrentVantage() { return vantage; }

Vantage FindVantage(fs::path const& executable, fs::path const& library)
{
    Vantage found;
    bool const isThisProgram = executable.empty();
    found.executable = Tools::ExecutableAsRun(
        isThisProgram ? Tools::FromWide(Platform::ExecutableFile()) : executable);
    if (!library.empty()) {
        found.library = Tools::ModuleAsLoaded(library);
        return found;
    }
    for (fs::path const& folder : LibraryFolders(found.executable, isThisProgram)) {
        fs::path const file = LibraryIn(folder);
        if (!file.empty()) {
            found.library = Tools::ModuleAsLoaded(file);
            break;
        }
    }
    return found;
}

} // namespace Halvorix::Doctor
