#include <WebServicesUIManager.h>
#include "api/Plugin.h"

namespace Halvorix::WebServicesUI {

using namespace SSOServices;

bool WebServicesAutomation::Login(wchar_t const* first, wchar_t const* second, bool flag)
{
    auto const ui = Plugin<ISSOClientUI>();
    return ui ? ui->Login(first, second, flag) : false;
}

bool WebServicesAutomation::Login(wchar_t const* first, wchar_t const* second, bool flag,
                                  bool secondFlag, std::wstring& text)
{
    auto const ui = Plugin<ISSOClientUI>();
    return ui ? ui->Login(first, second, flag, secondFlag, text) : false;
}

} // namespace Halvorix::WebServicesUI
