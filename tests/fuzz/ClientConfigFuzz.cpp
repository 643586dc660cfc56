// The client configuration file, through the real load of a file on disk.
//
// Property: the texts of the file come out as its rules tell, defaults filled
// in, with exactly the log lines of a load; or the load ends in the JSON
// library's exception, and then never tries again. A second object reads the same.

#include <algorithm>
#include <optional>
#include <string>
#include <vector>

#include <boost/algorithm/string/join.hpp>
#include <boost/system/system_error.hpp>
#include <json/reader.h>
#include <json/value.h>

#include "discovery/ModuleFiles.h"
#include "discovery/PathText.h"
#include "discovery/SSOPathResolver.h"
#include "fuzz/JsonMaker.h"
#include "fuzz/Property.h"
#include "fuzz/ScratchFolder.h"
#include "fuzz/TextReference.h"
#include "host/SSOClientManager.h"
#include "support/LibraryIdentity.h"

using namespace Halvorix::SSOServices;
using namespace Fuzz;

namespace {

constexpr char const* ConfigFile = "SSOClient.config";
std::wstring const LocationRead = L"8 Getting HxSSO path from registry: ";
std::wstring const LocationMissing =
    L"8 Unable to get HxSSO path from registry, failed with error: ";

class Loader {
public:
    explicit Loader(std::wstring const& file)
        : resolver({"10", "22", "00", "1800"},
                   [this](std::wstring line, Halvorix::Log::LogLevel level) {
                       lines.push_back(std::to_wstring(static_cast<int>(level)) + L' ' + line);
                   })
    {
        resolver.SetSSOClientConfigFileOverride(file);
    }

    /// What a question answers, or how it ended.
    template <class Answer>
    std::wstring Ask(Answer (SSOPathResolver::*question)())
    {
        try {
            return (resolver.*question)();
        } catch (Json::Exception const& error) {
            return L"JSON: " + Reference::Widen(error.what());
        } catch (boost::system::system_error const&) {
            return L"path";
        }
    }

    SSOPathResolver resolver;
    std::vector<std::wstring> lines;
};

/// The file by its rules.
struct Expected {
    explicit Expected(std::string const& text)
    {
        try {
            Read(text);
        } catch (Json::Exception const& error) {
            exception = L"JSON: " + Reference::Widen(error.what());
            return;
        }
        if (app.empty() && exe.empty())
            app = exe = L"HxSSO.exe";
        if (app.empty())
            app = exe;
        if (exe.empty())
            exe = app;
        if (server.empty())
            server = "Halvorix.SSO.DefaultServer-v2";
        if (process.empty())
            process = server;
    }

    void Read(std::string const& text)
    {
        Json::Value root;
        if (!Json::Reader().parse(text, root))
            return;
        Json::Value& group = root["ssoServer"];
        auto const wide = [](Json::Value const& value) {
            return Reference::Widen(value.asString());
        };
        app = wide(group["appName"]);
        exe = wide(group["exeName"]);
        process = group["processName"].asString();
        server = group["serverName"].asString();
        wide(group["bundleId"]);
        wide(group["VersionCompatibilityConfigfilePath"]);
        paths = wide(group["searchPaths"]);
        readsRegistry = true;
        Json::Value& openssl = root["openssl"];
        module = wide(openssl["moduleName"]);
        modulePath = wide(openssl["modulePath"]);
        good = true;
    }

    bool good = false;
    bool readsRegistry = false;
    std::wstring exception;
    std::wstring app, exe, paths, module, modulePath;
    std::string process, server;
};

/// Whether the system may refuse a name made of this text.
bool MayBeRefused(std::wstring const& text)
{
    return text.size() > 200 || std::any_of(text.begin(), text.end(), [](wchar_t unit) {
               return unit >= 0xD800 && unit <= 0xDFFF;
           });
}

/// What the search for the server application shows of paths without variables.
std::wstring ShownPaths(std::wstring const& paths, std::optional<std::wstring> const& location)
{
    std::vector<std::wstring> entries;
    if (!paths.empty())
        entries.emplace_back();
    for (wchar_t const unit : paths) {
        if (unit == L';')
            entries.emplace_back();
        else
            entries.back() += unit;
    }
    if (location)
        entries.push_back(*location);
    std::vector<std::wstring> shown{L"%SSOServicesModulePath%", GetExecutableDirPath()};
    for (std::wstring const& entry : entries) {
        std::wstring const path = NormalizePath(entry);
        if (std::find(shown.begin(), shown.end(), path) == shown.end())
            shown.push_back(path);
    }
    return boost::algorithm::join(shown, L"\n");
}

void CheckLines(Expected const& expected, std::wstring const& file, Loader const& loader,
                std::wstring const& answer)
{
    std::vector<std::wstring> lines{L"8 Client config file override set to " + file,
                                    L"8 Found client config file override at " + file,
                                    L"8 Loading client config file " + file};
    std::vector<std::wstring> actual = loader.lines;
    Holds(actual.size() >= lines.size(), "a load has its lines", actual);
    std::optional<std::wstring> location;
    if (expected.readsRegistry) {
        // An installation on this machine may have left something there, or half.
        std::wstring const line = actual.size() > lines.size() ? actual[lines.size()] : L"";
        bool const isRead = line.rfind(LocationRead, 0) == 0;
        if (isRead)
            location = line.substr(LocationRead.size());
        if (isRead || line.rfind(LocationMissing, 0) == 0)
            lines.push_back(line);
    } else if (expected.exception.empty()) {
        lines.push_back(L"2 Failed to load client config file " + file + L". Invalid file format.");
    }
    if (expected.exception.empty()) {
        std::wstring const searched =
            expected.app + L" in the following paths:\n" + ShownPaths(expected.paths, location);
        if ((expected.paths + location.value_or(L"")).find(L'%') == std::wstring::npos) {
            lines.push_back(L"8 Searching for SSO server app " + searched);
        } else if (actual.size() > lines.size()) {
            std::wstring const& line = actual[lines.size()];
            Holds(line.rfind(L"8 Searching for SSO server app " + expected.app + L" in ", 0) == 0,
                  "the server application is searched", line);
            lines.push_back(line);
        }
        // Missing, found, or found in the current directory, which has no name.
        if (answer != L"path" && actual.size() > lines.size()) {
            std::wstring const missing =
                L"2 Failed to find" + lines.back().substr(std::wstring(L"8 Searching for").size());
            std::wstring const& line = actual[lines.size()];
            bool const isFound = line.rfind(L"8 Found SSO server app at ", 0) == 0;
            lines.push_back(isFound ? line : missing);
        }
    }
    Same("the lines of a load", lines, actual);
}

void CheckServer(Expected const& expected, std::wstring const& file)
{
    Loader loader(file);
    std::wstring const answer = loader.Ask(&SSOPathResolver::GetSSOServerAppPath);
    if (!expected.exception.empty())
        Same("the exception of a load", expected.exception, answer);
    else if (answer == L"path")
        Holds(MayBeRefused(expected.app) || MayBeRefused(expected.paths),
              "only what the system refuses fails", expected.app, expected.paths);
    CheckLines(expected, file, loader, answer);
    // The names are kept as far as they were read before an exception.
    if (expected.exception.empty()) {
        Same("the server's name", expected.server, loader.resolver.GetSSOServerName());
        Same("the process's name", expected.process, loader.resolver.GetSSOServerProcessName());
    } else {
        std::wstring const again = loader.Ask(&SSOPathResolver::GetSSOServerAppPath);
        Holds(again.rfind(L"JSON", 0) != 0, "a load is never tried again", again);
    }
    if (expected.exception.empty() && answer != L"path" && !answer.empty()) {
        std::wstring const exeFile = loader.Ask(&SSOPathResolver::GetSSOServerAppExeFile);
        if (exeFile != L"path") {
            Same("the executable's file", NormalizePath(JoinPath(answer, expected.exe)), exeFile);
            Same("the line of a hit", L"8 Found SSO server app at " + exeFile, loader.lines.back());
        }
    }
    loader.resolver.SetSSOClientConfigFileOverride(L"other");
    Same("an override is too late",
         L"2 Failed to set client config file override other since client config file " + file +
             L" is already loaded",
         loader.lines.back());

    Loader second(file);
    Same("a second object answers the same", answer,
         second.Ask(&SSOPathResolver::GetSSOServerAppPath));
    Same("a second object's server name", loader.resolver.GetSSOServerName(),
         second.resolver.GetSSOServerName());
    Same("a second object's process name", loader.resolver.GetSSOServerProcessName(),
         second.resolver.GetSSOServerProcessName());
    loader.lines.resize(std::min(loader.lines.size(), second.lines.size()));
    Same("a second object's lines", loader.lines, second.lines);
}

void CheckOpenSsl(Expected const& expected, std::wstring const& file)
{
    Loader loader(file);
    std::wstring const answer = loader.Ask(&SSOPathResolver::GetOpenSslModule);
    if (!expected.exception.empty()) {
        Same("the exception of a load", expected.exception, answer);
        return;
    }
    std::wstring const asked = L"8 Searching for openssl override in client config file " + file;
    bool const isAsked =
        std::find(loader.lines.begin(), loader.lines.end(), asked) != loader.lines.end();
    Same("a good file is asked for an override", expected.good, isAsked);
    if (!expected.good || expected.module.empty() || expected.modulePath.empty() ||
        answer == L"path")
        return;
    std::wstring path = NormalizePath(JoinPath(expected.modulePath, expected.module));
    loader.resolver.ExpandPathVariables(path);
    Same("the override's path", path, answer);
    Holds(!loader.lines.empty() && std::find(loader.lines.begin(), loader.lines.end(),
                                             L"8 Found openssl override in client config file "
                                             L"10.22.00.1800 and using it: " +
                                                 answer) != loader.lines.end(),
          "the override is told", loader.lines);
}

std::vector<std::string> const Texts = {"HxSSO.exe",
                                        "",
                                        "App.exe",
                                        "bin/App",
                                        "%ExePath%",
                                        "%ExePath%/..;%exepath%\\\\;C:/;/",
                                        "%SSOServerAppPath%",
                                        "%SSOServerAppExeFile%;%nothing%",
                                        ";;a;a/;b\\",
                                        ".",
                                        "present",
                                        "SSOClient.config",
                                        "\xC3\xA4\xE2\x82\xAC",
                                        "\xED\xA0\x80",
                                        "Server-v3"};

Json::Value Make(JsonMaker& maker)
{
    Json::Value root;
    if (maker.Seldom())
        return maker.Odd();
    if (maker.Seldom()) {
        root["ssoServer"] = maker.Odd();
    } else {
        for (char const* key : {"appName", "exeName", "processName", "serverName", "bundleId",
                                "VersionCompatibilityConfigfilePath", "searchPaths"})
            maker.SetText(root["ssoServer"], key);
    }
    if (maker.Seldom()) {
        root["openssl"] = maker.Odd();
    } else {
        maker.SetText(root["openssl"], "moduleName");
        maker.SetText(root["openssl"], "modulePath");
    }
    return root;
}

} // namespace

int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    static ScratchFolder const folder;
    static bool const prepared = [] {
        SSOClientManager::GetInstance(); // sets the locale by which paths are converted
        folder.Write("present", "");
        return true;
    }();
    Holds(prepared, "the folder is there");

    std::string const text = Document(data, size, Texts, Make);
    folder.Write(ConfigFile, text);
    std::wstring const file = folder.File(ConfigFile);
    Expected const expected(text);
    CheckServer(expected, file);
    CheckOpenSsl(expected, file);
    return 0;
}
