#include "api/MemberWalk.h"

#include <memory>

#include <SSOServerManager.h>
#include <plugin/Defaults.h>

using namespace Halvorix::SSOServices;
using Halvorix::WebServices::IRsaCryptor;
using Halvorix::WebServices::RsaCryptorDefaults;

namespace MemberWalk {

namespace {

using std::chrono::milliseconds;

// Only handed on: nobody asks it.
std::shared_ptr<IRsaCryptor> const& Cryptor()
{
    static std::shared_ptr<IRsaCryptor> const cryptor = std::make_shared<RsaCryptorDefaults>();
    return cryptor;
}

Member FileGetter(std::string const& name, int (*getter)(wchar_t*, int))
{
    std::string const operation = "ISSOServerManager::" + name;
    std::string const length = std::to_string(operation.size());
    return {
        "SSOServerManager::" + name + "(wchar_t*, int)",
        [getter] {
            Room<wchar_t> whole(61);
            Room<wchar_t> part(11);
            Room<wchar_t> none(0);
            int const length = getter(nullptr, 0);
            int const same = getter(nullptr, -1);
            int const stored = getter(whole.Data(), whole.Capacity());
            int const cut = getter(part.Data(), part.Capacity());
            int const zero = getter(none.Data(), 0);
            int const negative = getter(none.Data(), -1);
            return Told(length, same, stored, whole, cut, part, zero, negative, none);
        },
        "0, 0, 0, untouched, 0, untouched, 0, 0, untouched",
        length + ", " + length + ", " + Filled(operation) + ", " + Filled("ISSOServer") +
            ", 0, 0, untouched",
        // Asked each time, for the length alone too.
        std::vector<std::string>(6, operation + "()"),
    };
}

} // namespace

std::vector<Member> ServerMembers()
{
    return {
        FileGetter("GetSSOServerAppFile", SSOServerManager::GetSSOServerAppFile),
        FileGetter("GetSSOServerAppExeFile", SSOServerManager::GetSSOServerAppExeFile),
        {"SSOServerManager::StartSSOServerProcess(std::chrono::milliseconds, long long&)",
         [] {
             long long id = -42;
             bool const answer = SSOServerManager::StartSSOServerProcess(milliseconds(-11), id);
             return Told(answer, id);
         },
         "false, -42",
         "true, 6000000002",
         {"ISSOServerManager::StartSSOServerProcess(-11, -42)"}},
        {"SSOServerManager::IsSSOServerProcessRunning()",
         [] { return Told(SSOServerManager::IsSSOServerProcessRunning()); },
         "false",
         "true",
         {"ISSOServerManager::IsSSOServerProcessRunning()"}},
        {"SSOServerManager::IsSSOServerProcessRunning(long long&)",
         [] {
             long long id = -43;
             bool const answer = SSOServerManager::IsSSOServerProcessRunning(id);
             return Told(answer, id);
         },
         "false, -43",
         "true, 6000000003",
         {"ISSOServerManager::IsSSOServerProcessRunning()"}},
        {"SSOServerManager::IsSSOServerProcessReady()",
         [] { return Told(SSOServerManager::IsSSOServerProcessReady()); },
         "false",
         "true",
         {"ISSOServerManager::IsSSOServerProcessReady()"}},
        {"SSOServerManager::QuitSSOServerProcess(std::chrono::milliseconds)",
         [] { return Told(SSOServerManager::QuitSSOServerProcess(milliseconds::min())); },
         "false",
         "true",
         {"ISSOServerManager::QuitSSOServerProcess(-9223372036854775808)"}},
        {"SSOServerManager::QuitAllSSOServerProcesses(std::chrono::milliseconds)",
         [] { return Told(SSOServerManager::QuitAllSSOServerProcesses(milliseconds::max())); },
         "false",
         "true",
         {"ISSOServerManager::QuitAllSSOServerProcesses(9223372036854775807)"}},
        // A plugin keeps one of the owners that are counted here.
        {"SSOServicesManager::SetRsaCryptor(std::shared_ptr<IRsaCryptor>)",
         [] {
             AddressOf("cryptor", Cryptor().get());
             SSOServicesManager::SetRsaCryptor(Cryptor());
             return Told(Cryptor().use_count());
         },
         "1",
         "2",
         {"ISSOClientModule::SetRsaCryptor({cryptor})"}},
        {"SSOServicesManager::GetRsaCryptor()",
         [] {
             std::shared_ptr<IRsaCryptor> const cryptor = SSOServicesManager::GetRsaCryptor();
             return Told(cryptor == nullptr, cryptor == Cryptor(), Cryptor().use_count());
         },
         "true, false, 1",
         "false, true, 3",
         {"ISSOClientModule::GetRsaCryptor()"}},
    };
}

} // namespace MemberWalk
