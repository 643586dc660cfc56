#include "support/SystemError.h"

namespace Halvorix::SSOServices {

namespace {

// A dependency of a module is missing: too common to be left without a text.
constexpr Platform::ErrorCode ModuleNotFound = 126;

} // namespace

std::wstring FormatSystemError(Platform::ErrorCode code)
{
    std::wstring text = Platform::ErrorText(code);
    if (text.empty() && code == ModuleNotFound)
        return L"The specified module could not be found.";
    return text;
}

} // namespace Halvorix::SSOServices
