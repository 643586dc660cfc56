#include "../System.h"

#include <dlfcn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>

#include "support/TextConversion.h"

namespace Halvorix::Tools {

namespace {

std::string Replaced(std::string text, std::string const& what, std::string const& by)
{
    for (std::size_t at = 0; (at = text.find(what, at)) != std::string::npos; at += by.size())
        text.replace(at, what.size(), by);
    return text;
}

} // namespace

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

// A newer run path is for the module's own imports; where it is missing, the
// older one counts.
std::vector<std::filesystem::path> DependencyFolders(ModuleImage const& image,
                                                     std::filesystem::path const& file,
                                                     std::filesystem::path const&,
                                                     std::filesystem::path const&)
{
    std::string const origin = file.parent_path().string();
    std::string path = image.runPath.empty() ? image.inheritedRunPath : image.runPath;
    path = Replaced(Replaced(path, "${ORIGIN}", "$ORIGIN"), "$ORIGIN", origin);
    std::vector<std::filesystem::path> folders;
    while (!path.empty()) {
        std::size_t const end = path.find(':');
        if (end != 0)
            folders.emplace_back(path.substr(0, end));
        path.erase(0, end == std::string::npos ? end : end + 1);
    }
    return folders;
}

// In a process of its own, so that nothing of it runs in this one.
bool IsFoundBySystem(std::string const& name)
{
    pid_t const child = ::fork();
    if (child == 0)
        ::_exit(::dlopen(name.c_str(), RTLD_LAZY | RTLD_LOCAL) == nullptr ? 1 : 0);
    int status = 1;
    return child > 0 && ::waitpid(child, &status, 0) == child && WIFEXITED(status) &&
           WEXITSTATUS(status) == 0;
}

// The system follows all links before it runs a program; the loader spells a
// folder in its own way, which the library straightens out.
std::filesystem::path ExecutableAsRun(std::filesystem::path const& file)
{
    std::error_code unknown;
    std::filesystem::path const followed = std::filesystem::canonical(file, unknown);
    return unknown ? std::filesystem::absolute(file).lexically_normal() : followed;
}

std::filesystem::path ModuleAsLoaded(std::filesystem::path const& file)
{
    std::filesystem::path const absolute = std::filesystem::absolute(file).lexically_normal();
    return ExecutableAsRun(absolute.parent_path()) / absolute.filename();
}

bool BeginTerminal() { return ::isatty(STDOUT_FILENO) != 0 && std::getenv("NO_COLOR") == nullptr; }

char const* HintForDependencyBeside()
{
    return "it lies beside the module, whose run path does not name that folder ($ORIGIN)";
}

} // namespace Halvorix::Tools
