#include "doctor/TextOddities.h"

#include <algorithm>

#include "common/System.h"
#include "discovery/PathText.h"
#include "doctor/FileFlaw.h"
#include "doctor/Text.h"
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

    void Add(char const* code, std::string const& text, std::string const& remedy)
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
                "write each backslash of a path twice, or write forward slashes; if there is no "
                "backslash, remove " +
                    std::string(escape.name).replace(0, 1, "the"));
            return;
        }
    }

    // As an editor of the other system writes it.
    void FindLineEnd(std::string const& value)
    {
        if (value.back() == '\r')
            Add("control-character", "ends in a carriage return, which counts as part of the path",
                "end its line with a line feed alone");
    }

    bool FindBlank(std::string const& value)
    {
        bool const isAtEnd = EndsInBlank(value);
        bool const isFound = isAtEnd || BeginsWithBlank(value);
        if (isFound)
            Add("blank-at-end",
                std::string(isAtEnd ? "ends in" : "begins with") + " a blank: \"" + value + "\"",
                "remove the blank");
        return isFound;
    }

    // Either is taken as it stands.
    bool FindQuotes(std::string const& value, char const* part)
    {
        bool const isFound = !value.empty() && (value.front() == '"' || value.back() == '"' ||
                                                (value.front() == '\'' && value.back() == '\''));
        if (isFound)
            Add("quoted-path",
                std::string("has quotation marks, which count as part of the ") + part + ": " +
                    value,
                "remove the quotation marks within the text");
        return isFound;
    }

    // Where one path seems to end and another one to begin.
    bool FindComma(std::string const& value)
    {
        std::size_t const comma = value.find(',');
        std::size_t const next =
            comma == std::string::npos ? comma : value.find_first_not_of(' ', comma + 1);
        if (next == std::string::npos)
            return false;
        bool const isPath = value[next] == '%' || value[next] == '/' || value[next] == '\\' ||
                            value.compare(next + 1, 1, ":") == 0;
        if (isPath)
            Add("comma-in-path",
                "is one path to the library, with a comma in it: \"" + value + "\"",
                "write a semicolon between them if two paths are meant");
        return isPath;
    }

    bool FindLonePercent(std::string const& value)
    {
        bool const isFound = !value.empty() && value.front() == '%' && value.rfind('%') == 0;
        if (isFound)
            Add("lone-percent",
                "begins a variable that has no second percent sign: \"" + value + "\"",
                "write a variable between two percent signs, such as %ExePath%");
        return isFound;
    }

    void FindVariable(std::string const& value)
    {
        std::vector<std::string> const found = VariablesIn(Wide(value));
        if (std::any_of(found.begin(), found.end(), IsPathVariable))
            Add("variable-in-name",
                "has a variable, which stays as text in a name: \"" + value + "\"",
                "write the name of the file alone, and its folder where folders are named");
    }

    void FindWholePath(std::string const& value)
    {
        std::wstring const wide = Wide(value);
        if (value.back() == '/' || value.back() == '\\')
            Add("slash-at-end", "ends in a slash, as no file's name does: \"" + value + "\"",
                "remove the slash");
        else if (value.find_first_of("/\\") != std::string::npos &&
                 (value.front() == '/' || value.front() == '\\' ||
                  Tools::FromWide(wide).is_absolute()))
            Add("path-in-name", "is a whole path where a name belongs: \"" + value + "\"",
                "write the name of the file alone, and its folder where folders are named");
    }

    /// @param isFurther  another one stands before it in the list
    void FindRelative(std::string const& value, bool isFurther)
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
                isFurther
                    ? "write the whole path, or begin it with a variable such as %ExePath%; a "
                      "semicolon always begins another path"
                    : "write the whole path, or begin it with a variable such as %ExePath%");
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
    if (kind == TextKind::Location)
        finder.FindLineEnd(value);
    else
        finder.FindEscape(value);
    if (kind == TextKind::Name) {
        // The OpenSSL module's name alone is expanded with its path.
        if (key != "openssl.moduleName")
            finder.FindVariable(value);
        if (!finder.FindBlank(value) && !finder.FindQuotes(value, "name"))
            finder.FindWholePath(value);
        return;
    }
    std::vector<std::wstring> paths = kind == TextKind::PathList ? SSOServices::SplitPathList(read)
                                                                 : std::vector<std::wstring>{read};
    SSOServices::RemoveDuplicatePaths(paths);
    for (std::size_t i = 0; i < paths.size(); ++i) {
        std::string const path = Shown(paths[i]);
        if (!finder.FindBlank(path) && !finder.FindQuotes(path, "path") &&
            !finder.FindLonePercent(path) &&
            !(kind == TextKind::PathList && finder.FindComma(path)))
            finder.FindRelative(path, i > 0);
    }
}

} // namespace Halvorix::Doctor
