#include <OAuth2Token.h>
#include <WebServicesUIManager.h>

#include "openid/host/Commands.h"

using namespace Halvorix::WebServicesUI;

namespace {

WebServicesUIManager& Manager() { return *WebServicesUIManager::GetInstance(); }

} // namespace

void AddUI(Commands& commands)
{
    commands["UI.Initialize"] = [](Arguments& in) {
        return WebServicesUIManager::Initialize(in.Flag());
    };
    commands["UI.Uninitialize"] = [](Arguments&) { return WebServicesUIManager::Uninitialize(); };
    commands["UI.IsInitialized"] = [](Arguments&) { return WebServicesUIManager::IsInitialized(); };
    commands["UI.GetCurrentLocale"] = [](Arguments&) {
        return TextOf([](wchar_t* to, int size) { return Manager().GetCurrentLocale(to, size); });
    };
    commands["UI.GetHostApplicationWindow"] = [](Arguments&) {
        return Json::UInt64(Manager().GetHostApplicationWindow());
    };
    commands["UI.SetHostApplicationWindow"] = [](Arguments& in) {
        Manager().SetHostApplicationWindow(static_cast<unsigned long long>(in.Number()));
        return Json::Value();
    };
    commands["UI.Login"] = [](Arguments&) { return Manager().Login(); };
    commands["UI.Login.text"] = [](Arguments& in) {
        return Manager().Login(in.WideRest().c_str());
    };
    commands["UI.Logout"] = [](Arguments&) { return Manager().Logout(); };
    commands["UI.ShowAccountSettings"] = [](Arguments&) { return Manager().ShowAccountSettings(); };
    commands["UI.IsLoginInProgress"] = [](Arguments&) { return Manager().IsLoginInProgress(); };
    commands["UI.IsLoggedIn"] = [](Arguments&) { return Manager().IsLoggedIn(); };
    commands["UI.IsLoginValid"] = [](Arguments&) { return Manager().IsLoginValid(); };
    commands["UI.AddObserver"] = [](Arguments&) {
        Manager().AddObserver(nullptr);
        return Json::Value();
    };
    commands["UI.RemoveObserver"] = [](Arguments&) {
        Manager().RemoveObserver(nullptr);
        return Json::Value();
    };
    commands["Automation.Login"] = [](Arguments& in) {
        std::wstring const user = Wide(in.Word());
        return WebServicesAutomation::Login(user.c_str(), in.WideRest().c_str(), true);
    };
    commands["Automation.Login.text"] = [](Arguments& in) {
        std::wstring const user = Wide(in.Word());
        std::wstring text;
        Json::Value answer;
        answer["result"] =
            WebServicesAutomation::Login(user.c_str(), in.WideRest().c_str(), true, true, text);
        answer["text"] = Utf8(text);
        return answer;
    };
}
