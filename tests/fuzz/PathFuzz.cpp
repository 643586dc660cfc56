// Path variables and the normal form.
//
// Property: expanding agrees with the regular expression that defines it; the
// normal form agrees with its steps taken one character at a time, and has
// itself as normal form; lists are cut, expanded and freed of duplicates entry
// by entry; and the resolver expands every text whatever.

#include <algorithm>
#include <regex>
#include <string>
#include <vector>

#include <boost/algorithm/string/join.hpp>
#include <boost/filesystem/path.hpp>

#include "discovery/PathText.h"
#include "discovery/PathVariables.h"
#include "discovery/SSOPathResolver.h"
#include "fuzz/Property.h"
#include "fuzz/TextReference.h"
#include "platform/Platform.h"

using namespace Halvorix::SSOServices;
using namespace Fuzz;

namespace {

// Beyond it the expression takes its time, and more of the stack than there is.
constexpr std::size_t LongestForExpression = 300;

bool LookUp(std::wstring const& name, std::wstring& value)
{
    if (name == L"root")
        value = L"C:\\";
    else if (name == L"share")
        value = L"\\\\server\\share\\";
    else if (name == L"nested")
        value = L"%root%/%";
    else if (name == L"nothing")
        value = L"";
    else if (name.size() % 3 == 1)
        value = L'<' + name + L"/>";
    else
        return false;
    return true;
}

int ExpandByExpression(std::wstring& text)
{
    std::wregex const variable(L"%.*?%");
    std::wstring remainder = text;
    std::wstring result;
    std::wstring suffix;
    int count = 0;
    std::wsmatch match;
    while (std::regex_search(remainder, match, variable)) {
        result += match.prefix();
        std::wstring const whole = match.str();
        std::wstring value;
        bool const known = LookUp(whole.substr(1, whole.size() - 2), value);
        result += known ? value : whole;
        suffix = match.suffix();
        remainder = std::wstring(suffix);
        ++count;
    }
    result += suffix;
    if (count > 0)
        text = result;
    return count;
}

bool IsRoot(std::wstring const& text)
{
    if (Halvorix::Platform::LeadingSlashIsRoot())
        return text == L"/";
    return text == boost::filesystem::path(text).root_path().generic_wstring();
}

std::wstring NormalizeByStep(std::wstring text)
{
    for (wchar_t& unit : text)
        if (unit == L'\\')
            unit = L'/';
    bool const isRooted = !text.empty() && text.front() == L'/';
    while (!text.empty() && text.front() == L'/')
        text.erase(0, 1);
    if (isRooted && Halvorix::Platform::LeadingSlashIsRoot())
        text.insert(0, 1, L'/');
    while (!text.empty() && text.back() == L'/' && !IsRoot(text))
        text.pop_back();
    for (std::size_t i = 1; i < text.size();)
        if (text[i] == L'/' && text[i - 1] == L'/')
            text.erase(i, 1);
        else
            ++i;
    return text;
}

void CheckForm(std::wstring const& text)
{
    std::wstring const normal = NormalizePath(text);
    if (text.size() <= 2000)
        Same("the normal form", NormalizeByStep(text), normal);
    Same("the normal form of the normal form", normal, NormalizePath(normal));
    Holds(normal.find(L'\\') == std::wstring::npos, "no backslash", normal);
    Holds(normal.find(L"//") == std::wstring::npos, "no doubled slash", normal);
}

void CheckExpansion(std::wstring const& text)
{
    std::wstring expanded = text;
    int const count = ExpandVariables(expanded, LookUp);
    if (text.size() <= LongestForExpression) {
        std::wstring byExpression = text;
        Same("how many variables", ExpandByExpression(byExpression), count);
        Same("the expanded text", byExpression, expanded);
    }
    Holds(count > 0 || expanded == text, "a text without variables stays", text, expanded);

    std::wstring path = text;
    Same("how many variables in a path", count, ExpandPath(path, LookUp));
    Same("the path", NormalizePath(expanded), path);
}

void CheckList(std::wstring const& text)
{
    std::vector<std::wstring> paths = SplitPathList(text);
    Same("a list cut and joined", text, boost::algorithm::join(paths, L";"));
    Holds(text.empty() ? paths.empty()
                       : paths.size() == 1 + static_cast<std::size_t>(
                                                 std::count(text.begin(), text.end(), L';')),
          "each separator cuts", paths);
    std::vector<std::wstring> expected;
    for (std::wstring path : paths) {
        ExpandPath(path, LookUp);
        expected.push_back(path);
    }
    ExpandPathList(paths, LookUp);
    Same("the paths of a list", expected, paths);

    std::vector<std::wstring> once;
    for (std::wstring const& path : paths)
        if (std::find(once.begin(), once.end(), path) == once.end())
            once.push_back(path);
    RemoveDuplicatePaths(paths);
    Same("the paths without duplicates", once, paths);
}

} // namespace

int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    std::string const bytes = AsText(data, size);
    std::wstring text = Reference::Widen(bytes);
    if (text.empty())
        text.assign(data, data + size); // no UTF-8: each byte a unit
    CheckForm(text);
    CheckExpansion(text);
    CheckList(text);

    SSOPathResolver resolver({}, {});
    std::wstring path = text;
    Same("every text expands", true, resolver.ExpandPathVariables(path));
    Same("an expanded path has the normal form", NormalizePath(path), path);
    return 0;
}
