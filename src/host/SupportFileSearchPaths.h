#pragma once

#include <string>
#include <vector>

namespace Halvorix::SSOServices {

/// What the host has given to WebServicesManager::SetSupportFileSearchPaths; survives
/// Uninitialize. From any thread.
std::vector<std::wstring> SupportFileSearchPaths();
void StoreSupportFileSearchPaths(std::vector<std::wstring> paths);

} // namespace Halvorix::SSOServices
