#include "faults/allocation/LentPlugin.h"

#include <cstring>
#include <vector>

#include <SSOClientPrivate.h>
#include <WebServicesConfiguration.h>
#include <plugin/Defaults.h>
#include "host/SSOClientManager.h"
#include "platform/Platform.h"
#include "support/LogSink.h"
#include "support/TextConversion.h"

namespace Faults {

using namespace Halvorix;
using namespace Halvorix::SSOServices;
using Halvorix::WebServices::WebServicesConfiguration;

namespace {

int factoryCalls = 0;
int lines = 0;
char const* givenText = nullptr;
bool succeeds = true;

// Of the calls that did not succeed: the plugin's own.
std::vector<std::unique_ptr<char[]>>& KeptTexts()
{
    static std::vector<std::unique_ptr<char[]>> texts;
    return texts;
}

char* NewGivenText()
{
    if (givenText == nullptr)
        return nullptr;
    char* const copy = new char[std::strlen(givenText) + 1];
    if (!succeeds)
        KeptTexts().emplace_back(copy);
    return std::strcpy(copy, givenText);
}

class Client : public SSOClientDefaults {
public:
    using SSOClientDefaults::GetOAuth2AccessToken;

    WebServicesConfiguration const& GetConfiguration() override { return configuration; }

    bool GetOAuth2AccessToken(char const*, char*& token, BufferTransformCallback, bool) override
    {
        token = NewGivenText();
        return succeeds;
    }
    bool InitiateLogout(wchar_t*, int, char*& jar, BufferTransformCallback) override
    {
        jar = NewGivenText();
        return succeeds;
    }
    bool CompleteLogin(char const*) override { return true; }
    using SSOClientDefaults::CompleteLogin;

private:
    WebServicesConfiguration configuration;
};

class ServerManager : public SSOServerManagerDefaults {
public:
    std::wstring GetSSOServerAppFile() override { return L"a file name that needs memory"; }
};

class Logger : public ILogger {
public:
    void WriteLine(wchar_t const*, Log::LogLevel) override { ++lines; }
};

template <class Interface, class Implementation>
std::shared_ptr<Interface> TheOne()
{
    static auto const one = std::make_shared<Implementation>();
    return one;
}

class LogManager : public ISSOLogManager {
public:
    std::shared_ptr<ILogger> GetLogger(std::wstring) override { return TheOne<ILogger, Logger>(); }
};

class Factory : public ISSOClientFactory {
public:
    std::shared_ptr<ISSOLogManager> GetSSOLogManager() override
    {
        return TheOne<ISSOLogManager, LogManager>();
    }
    std::shared_ptr<ISSOClientModule> GetSSOClientModule() override
    {
        return TheOne<ISSOClientModule, SSOClientModuleDefaults>();
    }
    std::shared_ptr<ISSOClient> GetSSOClient() override { return TheOne<ISSOClient, Client>(); }
    std::shared_ptr<ISSOClientUI> GetSSOClientUI() override { return nullptr; }
    std::shared_ptr<ISSOClientPrivate> GetSSOClientPrivate() override { return nullptr; }
    std::shared_ptr<ISSOServerManager> GetSSOServerManager() override
    {
        return TheOne<ISSOServerManager, ServerManager>();
    }
};

std::shared_ptr<ISSOClientFactory> Lend()
{
    ++factoryCalls;
    return TheOne<ISSOClientFactory, Factory>();
}

using Lender = std::shared_ptr<ISSOClientFactory> (*)();

void LendTo(std::wstring const& module)
{
    Platform::ModuleHandle const handle = Platform::LoadModule(module);
    auto const lend =
        reinterpret_cast<void (*)(Lender)>(Platform::FindProcedure(handle, "LendFactory"));
    lend(&Lend);
}

} // namespace

LentPlugin::LentPlugin()
{
    std::filesystem::path const folder = Rig::ThisExecutable().parent_path();
    std::string const module = Rig::ModuleName("BorrowingPlugin");
    std::string compatibility = Rig::CompatibilityFor("BorrowingPlugin");
    std::string const placeOfPlugin = "%SSOServerAppPath%/plugin";
    compatibility.replace(compatibility.find(placeOfPlugin), placeOfPlugin.size(),
                          folder.generic_u8string());
    installation.ServerApp()
        .Compatibility(compatibility)
        .ClientConfig(
            R"({"ssoServer": {"searchPaths": "{root}/server;%ExePath%", "serverName": "Server"}})");
    installation.File("server/openssl/" + Rig::ModuleName("openssl"), "placeholder");
    LendTo(Utf8ToWide((folder / module).generic_u8string()));
    givenText = nullptr;
    succeeds = true;
    Reset();
}

LentPlugin::~LentPlugin() { Reset(); }

std::wstring LentPlugin::ConfigFile() const
{
    return Utf8ToWide(installation.Text("app/SSOClient.config"));
}

int LentPlugin::FactoryCalls() { return factoryCalls; }

int LentPlugin::Lines() { return lines; }

void LentPlugin::GiveText(char const* text, bool doesSucceed)
{
    givenText = text;
    succeeds = doesSucceed;
    KeptTexts().reserve(8); // not while blocks are counted
}

void LentPlugin::RenewManager() const
{
    Reset();
    // Without the locale, which takes longer than all the rest.
    SSOClientManager::Publish(std::make_shared<SSOClientManager>());
    SSOClientPrivate::SetSSOClientConfigFileOverride(ConfigFile());
}

void LentPlugin::Reset()
{
    SSOClientManager::ReleaseInstance();
    InstallLogger(nullptr);
    TakeEarlyLog();
    factoryCalls = 0;
    lines = 0;
}

} // namespace Faults
