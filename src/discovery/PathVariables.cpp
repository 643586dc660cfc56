#include "discovery/PathVariables.h"

#include <cstddef>
#include <utility>

#include "discovery/ModuleFiles.h"
#include "discovery/PathText.h"
#include "platform/Platform.h"

namespace Halvorix::SSOServices {

namespace {

// What the dot of a regular expression does not match, and the percent sign.
// The scan below has the meaning of a search for "%.*?%", in one pass and with
// no recursion, since std::regex exhausts the stack on long texts.
constexpr wchar_t const* LineEndsAndPercent = L"%\n\r\x2028\x2029";

} // namespace

int ExpandVariables(std::wstring& text, VariableLookup const& lookup)
{
    std::wstring result;
    std::size_t copied = 0;
    int count = 0;
    std::size_t open = text.find(L'%');
    while (open != std::wstring::npos) {
        std::size_t const close = text.find_first_of(LineEndsAndPercent, open + 1);
        if (close == std::wstring::npos)
            break;
        if (text[close] != L'%') {
            open = text.find(L'%', close + 1);
            continue;
        }
        if (count == 0)
            result.reserve(text.size());
        result.append(text, copied, open - copied);
        std::wstring value;
        if (lookup(text.substr(open + 1, close - open - 1), value))
            result += value;
        else
            result.append(text, open, close + 1 - open);
        copied = close + 1;
        ++count;
        open = text.find(L'%', copied);
    }
    if (count > 0)
        text = std::move(result.append(text, copied, std::wstring::npos));
    return count;
}

int ExpandPath(std::wstring& text, VariableLookup const& lookup)
{
    int const count = ExpandVariables(text, lookup);
    text = NormalizePath(text);
    return count;
}

void ExpandPathList(std::vector<std::wstring>& paths, VariableLookup const& lookup)
{
    for (std::wstring& path : paths)
        ExpandVariables(path, lookup);
    for (std::wstring& path : paths)
        path = NormalizePath(path);
}

std::wstring GetSystemPathVariable(std::wstring const& name)
{
    if (IsVariableName(name, L"ProgramFiles"))
        return GetKnownFolderPath(Platform::KnownFolder::ProgramFiles);
    if (IsVariableName(name, L"ExePath") || IsVariableName(name, L"AppPath"))
        return GetExecutableDirPath();
    if (IsVariableName(name, L"AppData"))
        return GetKnownFolderPath(Platform::KnownFolder::RoamingAppData);
    if (IsVariableName(name, L"LocalAppData"))
        return GetKnownFolderPath(Platform::KnownFolder::LocalAppData);
    return {};
}

bool IsVariableName(std::wstring const& name, wchar_t const* variable)
{
    return Platform::CompareIgnoringCase(name.c_str(), variable) == 0;
}

} // namespace Halvorix::SSOServices
