// Hosts that do one thing again and again, and say now and then what the system
// counts for them.

#include <chrono>
#include <map>

#include <NetworkCookie.h>
#include <OAuth2Token.h>
#include <SSOClientPrivate.h>
#include <SSOServicesPrivate.h>
#include <WebServicesManager.h>
#include <WebServicesUIManager.h>
#include "framework/HostProgram.h"
#include "framework/Usage.h"
#include "lifetime/LongRun.h"

using namespace Halvorix::WebServices;
using Halvorix::SSOServices::SSOClientPrivate;
using Halvorix::WebServicesUI::WebServicesUIManager;

namespace {

bool AsksWhetherLoggedIn() { return WebServicesManager::GetInstance()->IsLoggedIn(); }

bool ReadsAText()
{
    wchar_t text[64];
    return WebServicesManager::GetInstance()->GetUserId(text, 64) > 0;
}

bool GetsAToken()
{
    OAuth2TokenSpec const spec(OAuth2TokenTypeDefault, L"user:profile data:read");
    OAuth2Token token;
    return WebServicesManager::GetInstance()->GetOAuth2AccessToken(spec, token, nullptr, false) &&
           token.IsValid();
}

bool SendsAndReceivesCookies()
{
    NetworkCookie cookie;
    cookie.SetName("name");
    cookie.SetDomain(L"domain.example");
    NetworkCookieJar jar;
    jar.AddCookie(cookie);
    jar.AddCookie(cookie);
    wchar_t url[64] = {};
    WebServicesManager* const manager = WebServicesManager::GetInstance();
    return manager->CompleteLogin(jar) && manager->InitiateLogout(url, 64, jar, nullptr) &&
           jar.GetCookieCount() == 1;
}

bool ExpandsAPath()
{
    std::wstring path = L"%ExePath%/%SSOServerAppPath%/file";
    return SSOClientPrivate::ExpandPathVariables(path) && !path.empty();
}

bool AsksWithoutAPlugin() { return !WebServicesManager::GetInstance()->IsLoggedIn(); }

bool AsksForAPluginInVain() { return SSOClientPrivate::GetSSOClientPluginModule().empty(); }

bool AsksForAServerInVain() { return SSOClientPrivate::GetSSOServerAppPath().empty(); }

bool BeginsAndEnds()
{
    return WebServicesManager::Initialize(true) && WebServicesManager::Uninitialize() &&
           !WebServicesManager::IsInitialized();
}

bool LoadsAnew()
{
    return WebServicesUIManager::Initialize(true) &&
           WebServicesUIManager::GetInstance()->IsLoggedIn() &&
           WebServicesUIManager::Uninitialize() && !WebServicesManager::IsInitialized();
}

using Kind = bool (*)();

Kind KindNamed(std::string const& name)
{
    std::map<std::string, Kind> const kinds{
        {"AsksWhetherLoggedIn", AsksWhetherLoggedIn},
        {"ReadsAText", ReadsAText},
        {"GetsAToken", GetsAToken},
        {"SendsAndReceivesCookies", SendsAndReceivesCookies},
        {"ExpandsAPath", ExpandsAPath},
        {"AsksForAPluginInVain", AsksForAPluginInVain},
        {"AsksForAServerInVain", AsksForAServerInVain},
        {"AsksWithoutAPlugin", AsksWithoutAPlugin},
        {"BeginsAndEnds", BeginsAndEnds},
        {"LoadsAnew", LoadsAnew},
    };
    return kinds.at(name);
}

bool NeedsAnInstance(std::string const& name)
{
    return name != "BeginsAndEnds" && name != "LoadsAnew";
}

int Repeat(Kind kind, int count)
{
    int failures = 0;
    for (int i = 0; i < count; ++i)
        failures += kind() ? 0 : 1;
    return failures;
}

HOST_PROGRAM(RunsLong)
{
    Kind const kind = KindNamed(arguments[0]);
    int const calls = std::stoi(arguments[1]);
    int const segments = Rig::Samples - 1;
    if (NeedsAnInstance(arguments[0]))
        WebServicesManager::Initialize();
    int failures = Repeat(kind, std::stoi(arguments[2])); // until caches are full
    Json::Value samples(Json::arrayValue);
    auto const sample = [&samples] {
        Rig::Usage const usage = Rig::CurrentUsage();
        Json::Value numbers(Json::arrayValue);
        numbers.append(Json::UInt64{usage.memory});
        numbers.append(usage.handles);
        numbers.append(usage.threads);
        samples.append(numbers);
    };
    sample();
    samples.clear(); // the first one itself takes memory
    auto const begin = std::chrono::steady_clock::now();
    sample();
    for (int i = 0; i < segments; ++i) {
        failures += Repeat(kind, calls / segments);
        sample();
    }
    std::chrono::nanoseconds const taken = std::chrono::steady_clock::now() - begin;
    report("failures", failures);
    report("calls", calls / segments * segments);
    report("nanoseconds", static_cast<long long>(taken.count()));
    report.Add("samples", samples);
}

} // namespace
