#include "../../include/WebServicesUIManager.h"
#include "Forward.h"

namespace Halvorix::WebServicesUI {

using namespace SSOServices;

bool WebServicesAutomation::Login(wchar_t const* first, wchar_t const* second, bool flag)
{
    return AskUI(false, [&](auto& ui) { return ui.Login(first, second, flag); });
}

bool WebServicesAutomation::Login(wchar_t const* first, wchar_t const* second, bool flag,
                                  bool secondFlag, std::wstring& text)
{
    return AskUI(false, [&](auto& ui) { return ui.Login(first, second, flag, secondFlag, text); });
}

} // namespace Halvorix::WebServicesUI
