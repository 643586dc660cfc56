#include "doctor/FileFlaw.h"

#include <algorithm>
#include <iterator>
#include <string_view>
#include <system_error>
#include <utility>

#include "common/Files.h"
#include "common/Utf8.h"
#include "doctor/Text.h"

namespace Halvorix::Doctor {

namespace {

namespace fs = std::filesystem;

constexpr char const* Additions[] = {".txt", ".exe", ".dll", ".so", ".json"};

constexpr std::string_view Blanks[] = {" ", "\xC2\xA0"}; // the second breaks no line

bool HasAtBeginning(std::string const& text, std::string_view beginning)
{
    return text.compare(0, beginning.size(), beginning) == 0;
}

bool HasAtEnd(std::string const& text, std::string_view end)
{
    return text.size() >= end.size() &&
           text.compare(text.size() - end.size(), end.size(), end) == 0;
}

std::string WithoutBlanks(std::string text)
{
    for (std::string_view const blank : Blanks) {
        while (HasAtBeginning(text, blank))
            text.erase(0, blank.size());
        while (HasAtEnd(text, blank))
            text.erase(text.size() - blank.size());
    }
    return text;
}

bool IsSimilar(std::string const& found, std::string const& name)
{
    std::string const wanted = Lower(WithoutBlanks(name));
    std::string const other = Lower(WithoutBlanks(found));
    return found != name &&
           (other == wanted ||
            std::any_of(std::begin(Additions), std::end(Additions),
                        [&](char const* addition) { return other == wanted + addition; }));
}

} // namespace

bool BeginsWithBlank(std::string const& text)
{
    return std::any_of(std::begin(Blanks), std::end(Blanks),
                       [&text](std::string_view blank) { return HasAtBeginning(text, blank); });
}

bool EndsInBlank(std::string const& text)
{
    return std::any_of(std::begin(Blanks), std::end(Blanks),
                       [&text](std::string_view blank) { return HasAtEnd(text, blank); });
}

std::string FlawOf(fs::path const& file)
{
    std::string reason = Tools::OpenFile(file).reason;
    return reason == "does not exist" ? std::string() : reason;
}

LinkFlaw FlawOfLink(fs::path const& file)
{
    std::error_code error;
    if (!fs::is_symlink(fs::symlink_status(file, error)) || fs::exists(file, error))
        return {};
    Tools::OpenedFile opened = Tools::OpenFile(file);
    if (opened.reason == "does not exist")
        return {};
    if (opened.remedy.empty())
        opened.remedy = "correct the link " + Tools::Utf8(file);
    return {std::move(opened.reason), std::move(opened.remedy)};
}

fs::path CircleIn(fs::path const& path)
{
    fs::path reached;
    for (fs::path const& part : path) {
        reached /= part;
        std::error_code error;
        if (!fs::is_symlink(fs::symlink_status(reached, error)))
            continue;
        bool const isThere = fs::exists(reached, error);
        if (!isThere && error == std::errc::too_many_symbolic_link_levels)
            return reached;
    }
    return {};
}

bool IsEmpty(fs::path const& file)
{
    std::error_code error;
    return fs::file_size(file, error) == 0 && !error;
}

std::string SimilarName(fs::path const& directory, std::string const& name)
{
    // A folder of more files is not one that somebody put this one into.
    int rest = 10000;
    std::error_code error;
    for (fs::directory_iterator entry(directory, error), end; !error && entry != end && rest > 0;
         entry.increment(error), --rest) {
        std::string found = Tools::Utf8(entry->path().filename());
        if (IsSimilar(found, name))
            return found;
    }
    return {};
}

std::string DifferenceOf(std::string const& similar, std::string const& name)
{
    if (Lower(WithoutBlanks(similar)) != Lower(WithoutBlanks(name)))
        return "its name ends in " + similar.substr(std::min(similar.rfind('.'), similar.size()));
    if (Lower(similar) == Lower(name))
        return "its name differs in case";
    return "its name differs by a blank";
}

} // namespace Halvorix::Doctor
