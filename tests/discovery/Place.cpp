#include "discovery/Place.h"

#include <algorithm>
#include <exception>
#include <fstream>
#include <map>
#include <optional>

#include <gtest/gtest.h>
#include <json/value.h>

#include "discovery/SharedPathResolver.h"
#include "framework/System.h"
#include "platform/FakeSystem.h"
#include "support/TextConversion.h"

namespace Rig {

namespace {

namespace fs = std::filesystem;
using namespace Halvorix;
using SSOServices::SharedPathResolver;
using SSOServices::SSOPathResolver;
using SSOServices::Utf8ToWide;
using SSOServices::WideToUtf8;
using Answer = std::optional<std::string>;

std::string Replaced(std::string text, std::string const& from, std::string const& to)
{
    for (std::size_t at = text.find(from); at != std::string::npos;
         at = text.find(from, at + to.size()))
        text.replace(at, from.size(), to);
    return text;
}

// The current directory is one of the tree's.
fs::path Below(std::string const& relative) { return ".." / fs::u8path(relative); }

Answer AnswerOf(SharedPathResolver& resolver, std::string const& question,
                std::string const& argument)
{
    static std::map<std::string, std::wstring (SSOPathResolver::*)()> const getters = {
        {"GetSSOServerAppPath", &SSOPathResolver::GetSSOServerAppPath},
        {"GetSSOServerAppExeDirPath", &SSOPathResolver::GetSSOServerAppExeDirPath},
        {"GetSSOServerAppExeFile", &SSOPathResolver::GetSSOServerAppExeFile},
        {"GetSSOClientPluginModule", &SSOPathResolver::GetSSOClientPluginModule},
        {"GetOpenSslModule", &SSOPathResolver::GetOpenSslModule},
        {"GetSSOClientConfigFile", &SSOPathResolver::GetSSOClientConfigFile}};
    if (auto const getter = getters.find(question); getter != getters.end())
        return WideToUtf8(resolver.Ask(getter->second));
    if (question == "GetSSOClientConfigFileOverride")
        return WideToUtf8(resolver.Ask(&SSOPathResolver::GetSSOClientConfigFileOverride));
    if (question == "GetSSOServerName")
        return resolver.Ask(&SSOPathResolver::GetSSOServerName);
    if (question == "GetSSOServerProcessName")
        return resolver.Ask(&SSOPathResolver::GetSSOServerProcessName);
    std::wstring wide = Utf8ToWide(argument);
    if (question == "ExpandPathVariables") {
        resolver.Ask([&](SSOPathResolver& asked) { asked.ExpandPathVariables(wide); });
        return WideToUtf8(wide);
    }
    if (question == "SetSSOClientConfigFileOverride")
        return resolver.SetSSOClientConfigFileOverride(wide), Answer();
    std::size_t const split = argument.find('>');
    if (question == "Copy") {
        fs::path const to = Below(argument.substr(split + 1));
        fs::remove(to); // GCC's library for Windows overwrites none
        return fs::copy_file(Below(argument.substr(0, split)), to), Answer();
    }
    if (question == "Remove")
        return fs::remove_all(Below(argument)), Answer();
    return "no such question: " + question;
}

Answer TryAnswer(SharedPathResolver& resolver, std::string const& question,
                 std::string const& argument)
{
    try {
        return AnswerOf(resolver, question, argument);
    } catch (Json::LogicError const& error) {
        return std::string("Json::LogicError: ") + error.what();
    } catch (Json::Exception const& error) {
        return std::string("Json::Exception: ") + error.what();
    } catch (std::exception const& error) {
        return std::string("std::exception: ") + error.what();
    }
}

/// The system as a process in the tree sees it.
void PretendToRunIn(Place const& place, fs::path const& library)
{
    fakeSystem = {};
    fakeSystem.executable = Utf8ToWide(place.Text("app/host.exe"));
    fakeSystem.library = Utf8ToWide(library.generic_u8string());
    fakeSystem.leadingSlashIsRoot = !IsWindows();
    fakeSystem.openings = {{Platform::LocationView::Own, 2}};
}

char const* const LibraryFile = "HxSSOServices.dll";

} // namespace

// What System.h asks of the system, as the fake one answers.
bool IsWindows() { return Platform::AreFileNamesWide(); }
std::string ModuleName(std::string const& name) { return name + (IsWindows() ? ".dll" : ".so"); }
std::string SystemErrorText(unsigned long code) { return "error " + std::to_string(code); }

Place::Place() : Place("tree") {}

Place::Place(std::string const& folderName)
    : root(fs::temp_directory_path() /
           ("hxsso-place-" + std::to_string(reinterpret_cast<std::uintptr_t>(this)) + "-" +
            testing::UnitTest::GetInstance()->current_test_info()->name()) /
           fs::u8path(folderName))
{
    for (char const* folder : {"app", "lib", "server", "work"})
        Folder(folder);
    File("lib/" + std::string(LibraryFile), "");
}

Place::~Place()
{
    std::error_code ignored;
    fs::remove_all(root.parent_path(), ignored);
}

fs::path Place::Path(std::string const& relative) const { return root / fs::u8path(relative); }

std::string Place::Text(std::string const& relative) const
{
    return Path(relative).generic_u8string();
}

Place& Place::File(std::string const& relative, std::string const& content)
{
    fs::create_directories(Path(relative).parent_path());
    std::ofstream(Path(relative), std::ios::binary) << content;
    return *this;
}

Place& Place::Folder(std::string const& relative)
{
    fs::create_directories(Path(relative));
    return *this;
}

Place& Place::Remove(std::string const& relative)
{
    fs::remove_all(Path(relative));
    return *this;
}

Place& Place::ClientConfig(std::string const& content, std::string const& folder)
{
    return File(folder + "/SSOClient.config", Replaced(content, "{root}", root.generic_u8string()));
}

Place& Place::Compatibility(std::string const& content, std::string const& folder)
{
    return File(folder + "/SSOVersionCompatibility.config",
                Replaced(content, "{root}", root.generic_u8string()));
}

Place& Place::ServerApp(std::string const& folder)
{
    return File(folder + "/HxSSO.exe", "placeholder");
}

Place& Place::LibraryBesideExecutable()
{
    fs::rename(Path("lib") / LibraryFile, Path("app") / LibraryFile);
    return *this;
}

int Found::Logged(LogMessage const& line) const
{
    return static_cast<int>(std::count(lines.begin(), lines.end(), line));
}

Found Ask(Place const& place, std::vector<std::string> const& questions)
{
    std::string const root = place.Path("app").parent_path().generic_u8string();
    fs::path const beside = place.Path("app") / LibraryFile;
    PretendToRunIn(place, fs::exists(beside) ? beside : place.Path("lib") / LibraryFile);
    Found found;
    SharedPathResolver resolver(
        {"10", "22", "00", "1800"}, [&](std::wstring const& text, Log::LogLevel level) {
            found.lines.push_back(
                {static_cast<int>(level), Replaced(WideToUtf8(text), root, "{root}")});
        });
    fs::path const before = fs::current_path();
    fs::current_path(place.Path("work"));
    for (std::string const& question : questions) {
        std::string const text = Replaced(question, "{root}", root);
        std::size_t const split = std::min(text.find('='), text.size());
        if (Answer const answer = TryAnswer(resolver, text.substr(0, split),
                                            text.substr(std::min(split + 1, text.size()))))
            found.answers.push_back(Replaced(*answer, root, "{root}"));
    }
    fs::current_path(before);
    return found;
}

} // namespace Rig
