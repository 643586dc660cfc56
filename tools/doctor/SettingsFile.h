#pragma once

#include <cstdint>
#include <ios>
#include <string>

namespace Halvorix::Doctor {

constexpr std::uint64_t LargestSettings = std::uint64_t{16} << 20U;
/// What is said of a larger one.
constexpr char const* LargerThanSettings = "is larger than 16 MiB, the limit of what is looked at";

/// A file of settings, or why it is not read. The library has no limits, but nobody
/// writes that much.
struct SettingsFile {
    std::string text;
    std::string flaw;
    bool isTooLarge = false; ///< and that is why
};
SettingsFile ReadSettingsFile(std::wstring const& file, std::ios::openmode mode);

} // namespace Halvorix::Doctor
