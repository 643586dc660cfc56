#include "doctor/Location.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <utility>

#include "common/Files.h"
#include "common/Utf8.h"
#include "doctor/JsonInspection.h"
#include "doctor/SettingsFile.h"

namespace Halvorix::Doctor {

namespace {

namespace fs = std::filesystem;

// By its mark, or by the empty half of the first character.
bool IsUtf16(Tools::ByteView const& bytes)
{
    std::uint64_t const mark = bytes.NumberOrZero(0, 2);
    return mark == 0xFEFF || mark == 0xFFFE || (mark & 0xFFU) == 0 || mark < 0x100;
}

// As the library takes it: a zero ends it too.
std::string FirstLine(Tools::ByteView const& bytes)
{
    std::string text(static_cast<std::size_t>(bytes.Size()), '\0');
    if (!bytes.Bytes(0, text.data(), text.size()))
        return {};
    text.resize(std::min(text.find_first_of(std::string("\n\0", 2)), text.size()));
    return text;
}

LocationFlaw FlawOfContent(fs::path const& file, Tools::ByteView const& bytes)
{
    if (bytes.Size() == 0)
        return {"is empty", "write the server application's directory into " + Tools::Utf8(file)};
    if (bytes.Size() > LargestSettings)
        return {LargerThanSettings,
                "write the server application's directory into " + Tools::Utf8(file), true};
    if (bytes.Size() > 1 && IsUtf16(bytes))
        return {"is UTF-16, and the library reads UTF-8",
                "save " + Tools::Utf8(file) + " as UTF-8"};
    if (bytes.NumberOrZero(0, 3) == 0xBFBBEF)
        return {"begins with a byte order mark, which counts as part of the path",
                "save " + Tools::Utf8(file) + " as UTF-8 without a byte order mark"};
    if (!IsReadable(FirstLine(bytes)))
        return {"is not UTF-8, and the library reads UTF-8",
                "save " + Tools::Utf8(file) + " as UTF-8"};
    return {};
}

} // namespace

// The library ends at the first that is there, whether or not it can read it, and passes
// over a folder that it cannot look into.
LocationFlaw FlawOfLocation()
{
    char const* const variable = ::secure_getenv("XDG_CONFIG_DIRS");
    std::string const list = variable == nullptr || *variable == '\0' ? "/etc/xdg" : variable;
    LocationFlaw first;
    for (std::size_t begin = 0, end = 0; end != std::string::npos; begin = end + 1) {
        end = list.find(':', begin);
        fs::path const directory = list.substr(begin, end - begin);
        if (directory.empty())
            continue;
        fs::path const file = directory / "Halvorix/HxSSO/Location";
        Tools::OpenedFile const opened = Tools::OpenFile(file);
        if (opened.bytes != nullptr)
            return FlawOfContent(file, Tools::ByteView(*opened.bytes));
        if (opened.reason == "does not exist")
            continue;
        std::error_code unknown;
        bool const isFile = opened.reason.rfind("is ", 0) != 0;
        bool const isBrokenLink = fs::status(file, unknown).type() == fs::file_type::not_found;
        LocationFlaw flaw = {
            opened.reason, !opened.remedy.empty() ? opened.remedy
                           : isFile
                               ? "allow the program's user to read " + Tools::Utf8(file)
                               : "put a file with the server application's directory in place of " +
                                     Tools::Utf8(file)};
        if (!isBrokenLink && fs::exists(fs::symlink_status(file, unknown)))
            return flaw;
        if (first.text.empty())
            first = std::move(flaw);
    }
    return first;
}

} // namespace Halvorix::Doctor
