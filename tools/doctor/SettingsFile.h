#pragma once

#include <ios>
#include <string>

namespace Halvorix::Doctor {

/// A file of settings, or why it is not read. The library has no limits, but nobody
/// writes that much.
struct SettingsFile {
    std::string text;
    std::string flaw;
    bool isTooLarge = false; ///< and that is why
};
SettingsFile ReadSettingsFile(std::wstring const& file, std::ios::openmode mode);

} // namespace Halvorix::Doctor
