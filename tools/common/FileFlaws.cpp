#include "Files.h"

namespace Halvorix::Tools {

std::string FlawOfText(std::filesystem::path const& file)
{
    constexpr std::uint64_t largest = std::uint64_t{16} << 20U;
    OpenedFile const opened = OpenFile(file);
    if (opened.bytes != nullptr && opened.bytes->Size() > largest)
        return "is larger than 16 MiB, the limit of what is looked at";
    return opened.reason;
}

} // namespace Halvorix::Tools
