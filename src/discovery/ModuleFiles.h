#pragma once

#include <string>

#include "platform/Platform.h"

namespace Halvorix::SSOServices {

/// Full file name, in normal form, of a module that the process has loaded;
/// empty if there is none.
std::wstring ResolveModuleFile(std::wstring const& moduleName);

/// The directory of that file.
std::wstring GetModuleDirPath(std::wstring const& moduleName);

std::wstring GetExecutableDirPath();

/// As the system spells it; empty on any failure.
std::wstring GetKnownFolderPath(Platform::KnownFolder folder);

} // namespace Halvorix::SSOServices
