#include <NetworkCookie.h>
#include <WebServicesManager.h>

#include "openid/host/Commands.h"

using namespace Halvorix::WebServices;

namespace {

WebServicesManager& Manager() { return *WebServicesManager::GetInstance(); }

using UserText = int (WebServicesManager::*)(wchar_t*, int) const;

auto UserTextCommand(UserText get)
{
    return [get](Arguments&) {
        return TextOf([&](wchar_t* to, int size) { return (Manager().*get)(to, size); });
    };
}

/// What an InitiateLogin or InitiateLogout left behind.
struct Initiated {
    explicit Initiated(int capacity) : buffer(static_cast<std::size_t>(capacity) + 1, L'?') {}

    Json::Value With(bool result) const
    {
        Json::Value answer;
        answer["result"] = result;
        answer["text"] = buffer[0] == L'?' ? Json::Value() : Json::Value(Utf8(buffer.c_str()));
        return answer;
    }
    template <class Error>
    Json::Value With(bool result, Error error, int value) const
    {
        Json::Value answer = With(result);
        answer["error"] = static_cast<int>(error);
        answer["value"] = value;
        return answer;
    }

    std::wstring buffer;
};

void AddUser(Commands& commands)
{
    commands["GetLoginStateFile"] = UserTextCommand(&WebServicesManager::GetLoginStateFile);
    commands["GetUserNameW"] = UserTextCommand(&WebServicesManager::GetUserNameW);
    commands["GetLoginUserName"] = UserTextCommand(&WebServicesManager::GetLoginUserName);
    commands["GetUserId"] = UserTextCommand(&WebServicesManager::GetUserId);
    commands["GetUserEmail"] = UserTextCommand(&WebServicesManager::GetUserEmail);
    commands["GetUserFirstName"] = UserTextCommand(&WebServicesManager::GetUserFirstName);
    commands["GetUserLastName"] = UserTextCommand(&WebServicesManager::GetUserLastName);
    // A buffer for a single character and its terminator.
    commands["GetUserNameW.cut"] = [](Arguments&) {
        wchar_t buffer[2] = L"?";
        int const stored = Manager().GetUserNameW(buffer, 2);
        return Json::Value(Utf8(std::wstring(buffer, static_cast<std::size_t>(stored))));
    };
    commands["GetUserInfo"] = [](Arguments&) {
        wchar_t* info = nullptr;
        bool const known = Manager().GetUserInfo(info);
        Json::Value text = Taken(info);
        return known ? text : Json::Value(false);
    };
    commands["IsLoggedIn"] = [](Arguments&) { return Manager().IsLoggedIn(); };
    commands["GetLoginExpiryDate"] = [](Arguments&) { return Manager().GetLoginExpiryDate(); };
    commands["IsLoginExpired"] = [](Arguments&) { return Manager().IsLoginExpired(); };
    commands["IsLoginValid"] = [](Arguments&) { return Manager().IsLoginValid(); };
    commands["IsSSOEnabledForAllUsers"] = [](Arguments&) {
        return Manager().IsSSOEnabledForAllUsers();
    };
    commands["GetLdapDomainKey"] = [](Arguments&) {
        return TextOf([](wchar_t* to, int size) { return Manager().GetLdapDomainKey(to, size); });
    };
    commands["GetCloudStorageQuota"] = [](Arguments&) {
        long long used = 1, all = 1;
        return Manager().GetCloudStorageQuota(used, all);
    };
}

} // namespace

void AddLogin(Commands& commands)
{
    AddUser(commands);

    commands["InitiateLogin"] = [](Arguments& in) {
        int const capacity = in.Number();
        Initiated to(capacity);
        return to.With(Manager().InitiateLogin(to.buffer.data(), capacity));
    };
    commands["InitiateLogin.null"] = [](Arguments&) { return Manager().InitiateLogin(nullptr, 0); };
    commands["InitiateLogin.error"] = [](Arguments& in) {
        int const capacity = in.Number();
        Initiated to(capacity);
        LoginError error{};
        int value = -1;
        bool const begun = Manager().InitiateLogin(to.buffer.data(), capacity, error, value);
        return to.With(begun, error, value);
    };
    commands["InitiateLogin.number"] = [](Arguments& in) {
        int const capacity = in.Number();
        Initiated to(capacity);
        LoginError error{};
        int value = -1;
        bool const begun = Manager().InitiateLogin(in.WideRest().c_str(), 7, to.buffer.data(),
                                                   capacity, error, value);
        return to.With(begun, error, value);
    };
    commands["InitiateLogin.device"] = [](Arguments& in) {
        int const capacity = in.Number();
        Initiated to(capacity);
        LoginError error{};
        int value = -1;
        bool const begun = Manager().InitiateLogin(in.WideRest().c_str(), 1, to.buffer.data(),
                                                   capacity, error, value);
        return to.With(begun, error, value);
    };
    commands["InitiateLogin.errorEx"] = [](Arguments& in) {
        int const capacity = in.Number();
        Initiated to(capacity);
        LoginErrorEx error{};
        int value = -1;
        bool const begun = Manager().InitiateLogin(in.WideRest().c_str(), to.buffer.data(),
                                                   capacity, error, value);
        return to.With(begun, error, value);
    };
    commands["CompleteLogin"] = [](Arguments&) { return Manager().CompleteLogin(); };
    commands["CompleteLogin.jar"] = [](Arguments&) {
        NetworkCookie cookie;
        cookie.SetName("session");
        NetworkCookieJar jar;
        jar.AddCookie(cookie);
        return Manager().CompleteLogin(jar);
    };
    commands["RestoreLogin"] = [](Arguments&) { return Manager().RestoreLogin(); };
    commands["Logout"] = [](Arguments&) { return Manager().Logout(); };
    commands["InitiateLogout"] = [](Arguments& in) {
        int const capacity = in.Number();
        Initiated to(capacity);
        NetworkCookieJar jar;
        Json::Value answer =
            to.With(Manager().InitiateLogout(to.buffer.data(), capacity, jar, nullptr));
        answer["cookies"] = jar.GetCookieCount();
        return answer;
    };
    commands["CompleteLogout"] = [](Arguments&) { return Manager().CompleteLogout(); };
}
