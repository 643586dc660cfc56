#include "SettingsFile.h"

#include <algorithm>

#include "../common/Files.h"
#include "../common/System.h"
#include "platform/Platform.h"

namespace Halvorix::Doctor {

SettingsFile ReadSettingsFile(std::wstring const& file, std::ios::openmode mode)
{
    constexpr std::uint64_t largest = std::uint64_t{16} << 20U;
    constexpr std::ptrdiff_t mostCommas = 300000;
    {
        Tools::OpenedFile const opened = Tools::OpenFile(Tools::FromWide(file));
        if (opened.bytes == nullptr)
            return {{}, opened.reason, false};
        if (opened.bytes->Size() > largest)
            return {{}, "is larger than 16 MiB, the limit of what is looked at", true};
    }
    std::string text = Platform::ReadRegularFile(file, mode);
    // Each value takes the reader fifty times the room of its text.
    if (std::count(text.begin(), text.end(), ',') > mostCommas)
        return {{},
                "has more than " + std::to_string(mostCommas) +
                    " values, the limit of what is looked at",
                true};
    return {std::move(text), {}, false};
}

} // namespace Halvorix::Doctor
