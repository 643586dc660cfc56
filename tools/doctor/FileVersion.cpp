#include "FileVersion.h"

#include "../common/Utf8.h"

namespace Halvorix::Doctor {

namespace {

std::string InUtf16(std::string const& text)
{
    std::string units;
    for (char const unit : text) {
        units += unit;
        units += '\0';
    }
    return units;
}

// The name in the resource, its padding, the value.
std::string FromResource(std::string const& content)
{
    std::string const name = InUtf16(std::string("FileVersion") + '\0');
    std::size_t at = content.find(name);
    if (at == std::string::npos)
        return {};
    at += name.size();
    while (at + 1 < content.size() && content[at] == '\0' && content[at + 1] == '\0')
        at += 2;
    std::string version;
    for (; at + 1 < content.size() && content[at] != '\0' && version.size() < 64; at += 2)
        version += content[at];
    return version;
}

// What is left of libX.so.1.2.3.4 once all links are followed.
std::string FromName(std::filesystem::path const& file)
{
    std::error_code unknown;
    std::string const name = Tools::Utf8(std::filesystem::canonical(file, unknown).filename());
    std::string const mark = ".so.";
    std::size_t const at = name.find(mark);
    if (unknown || at == std::string::npos)
        return {};
    std::string const version = name.substr(at + mark.size());
    // A sole number is that of the interface.
    return version.find('.') == std::string::npos ? std::string() : version;
}

} // namespace

std::string FileVersionOf(std::filesystem::path const& file, std::string const& content)
{
    // Resources are searched only where there can be any: it takes its time.
    return content.rfind("MZ", 0) == 0 ? FromResource(content) : FromName(file);
}

} // namespace Halvorix::Doctor
