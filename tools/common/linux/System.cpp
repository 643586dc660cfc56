#include "common/System.h"

#include <dlfcn.h>
#include <unistd.h>

#include "common/Utf8.h"
#include "support/TextConversion.h"

namespace Halvorix::Tools {

std::vector<std::filesystem::path> BeginProgram(int count, char** arguments)
{
    if (count < 1)
        return {};
    return {arguments + 1, arguments + count};
}

std::wstring Wide(std::filesystem::path const& path)
{
    return SSOServices::Utf8ToWide(path.generic_u8string());
}

std::filesystem::path FromWide(std::wstring const& text)
{
    return std::filesystem::u8path(SSOServices::WideToUtf8(text));
}

std::filesystem::path AsOpened(std::filesystem::path const& file)
{
    namespace fs = std::filesystem;
    std::error_code unknown;
    fs::path whole = fs::absolute(file, unknown);
    if (unknown)
        whole = file; // the current directory is gone
    fs::path opened;
    for (fs::path const& part : whole) {
        bool const leadsUp = part == ".." && opened.filename() != "..";
        if (leadsUp && fs::is_directory(fs::symlink_status(opened, unknown)))
            opened = opened.parent_path();
        else if (part != ".")
            opened /= part;
    }
    return opened;
}

// The system follows all links before it runs a program; the loader spells a
// folder in its own way, which the library straightens out.
std::filesystem::path ExecutableAsRun(std::filesystem::path const& file)
{
    std::error_code unknown;
    std::filesystem::path const followed = std::filesystem::canonical(file, unknown);
    return unknown ? AsOpened(file) : followed;
}

std::filesystem::path ModuleAsLoaded(std::filesystem::path const& file)
{
    std::filesystem::path const absolute = AsOpened(file);
    return ExecutableAsRun(absolute.parent_path()) / absolute.filename();
}

std::wstring AsToldToLibrary(std::wstring const& path) { return path; }

void ServeSymbols(std::filesystem::path const& module)
{
    ::dlopen(module.c_str(), RTLD_NOW | RTLD_NOLOAD | RTLD_GLOBAL);
}

// There a program's own folder counts for nothing.
void SearchAsIn(std::filesystem::path const&) {}

std::string NameOfLocation() { return "the file Location of the server application"; }

// What is left of libX.so.1.2.3.4 once all links are followed.
std::string FileVersionOf(std::filesystem::path const& file)
{
    std::error_code unknown;
    std::string const name = Utf8(std::filesystem::canonical(file, unknown).filename());
    std::string const mark = ".so.";
    std::size_t const at = name.find(mark);
    if (unknown || at == std::string::npos)
        return {};
    std::string const version = name.substr(at + mark.size());
    // A sole number is that of the interface.
    return version.find('.') == std::string::npos ? std::string() : version;
}

} // namespace Halvorix::Tools
