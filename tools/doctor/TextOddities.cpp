#include "TextOddities.h"

#include <algorithm>

#include "../common/System.h"
#include "Text.h"
#include "discovery/PathText.h"
#include "platform/Platform.h"
#include "support/TextConversion.h"

namespace Halvorix::Doctor {

namespace {

struct Escape {
    char unit;
    char const* name;
    char const* spelling;
};

constexpr Escape Escapes[] = {
    {'\t', "a tab", "\\t"},       {'\n', "a line feed", "\\n"}, {'\r', "a carriage return", "\\r"},
    {'\b', "a backspace", "\\b"}, {'\f', "a form feed", "\\f"},
};

class Finder {
public:
    Finder(std::string const& aKey, Position anAt, std::vector<Oddity>& all)
        : key(aKey), at(anAt), oddities(all)
    {
    }

    void Add(char const* code, std::string const& text, char const* remedy)
    {
        oddities.push_back({at, key, code, Tools::Presentable(text), remedy, false, {}});
    }

    void FindEscape(std::string const& value)
    {
        for (Escape const& escape : Escapes) {
            if (value.find(escape.unit) == std::string::npos)
                continue;
            Add("control-character",
                std::string("holds ") + escape.name + ": in JSON, " + escape.spelling +
                    " is an escape",
                "write each backslash of a path twice, or write forward slashes");
            return;
        }
    }

    bool FindBlank(std::string const& value)
    {
        bool const isFound = !value.empty() && (value.front() == ' ' || value.back() == ' ');
        if (isFound)
            Add("blank-at-end",
                std::string(value.back() == ' ' ? "ends in" : "begins with") + " a blank: \"" +
                    value + "\"",
                "remove the blank");
        return isFound;
    }

    void FindRelative(std::string const& value)
    {
        if (value.empty()) {
            Add("relative-path", "has an empty entry, which means the current directory",
                "remove the empty entry and its semicolon");
            return;
        }
        // A variable that has no value is told of where it is missing.
        if (value.front() == '%')
            return;
        std::wstring const wide = Wide(value);
        std::wstring const normal = SSOServices::NormalizePath(wide);
        std::size_t const slashes = std::min(wide.find_first_not_of(L"/\\"), wide.size());
        if (slashes == wide.size())
            return; // what comes of nothing but slashes is told of the entry
        if (slashes > (Platform::LeadingSlashIsRoot() ? 1U : 0U))
            Add("leading-slashes",
                "begins with what the library takes away: \"" + value + "\" reads as \"" +
                    Shown(normal) + "\"",
                "name a share by its drive letter, or by the folder on which it is mounted");
        else if (!Tools::FromWide(normal).is_absolute())
            Add("relative-path",
                "is relative: \"" + value + "\" is looked for from the current directory",
                "write the whole path, or begin it with a variable such as %ExePath%");
    }

private:
    std::string const& key;
    Position at;
    std::vector<Oddity>& oddities;
};

} // namespace

void FindTextOddities(std::string const& value, TextKind kind, std::string const& key, Position at,
                      std::vector<Oddity>& oddities)
{
    Finder finder(key, at, oddities);
    if (kind == TextKind::Narrow || value.empty())
        return;
    std::wstring const read = SSOServices::Utf8ToWide(value);
    if (read.empty()) {
        finder.Add("not-utf8", "is not UTF-8 and reads as empty", "save the file as UTF-8");
        return;
    }
    if (read != Wide(value))
        finder.Add("beyond-16-bits",
                   "has a character beyond U+FFFF, which the library drops: it reads as \"" +
                       Shown(read) + "\"",
                   "rename the folder or file without that character");
    if (kind == TextKind::Wide)
        return;
    finder.FindEscape(value);
    if (kind == TextKind::Name) {
        finder.FindBlank(value);
        return;
    }
    std::vector<std::wstring> paths = kind == TextKind::PathList ? SSOServices::SplitPathList(read)
                                                                 : std::vector<std::wstring>{read};
    SSOServices::RemoveDuplicatePaths(paths);
    for (std::wstring const& path : paths) {
        if (!finder.FindBlank(Shown(path)))
            finder.FindRelative(Shown(path));
    }
}

} // namespace Halvorix::Doctor
