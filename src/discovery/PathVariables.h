#pragma once

#include <functional>
#include <string>
#include <vector>

namespace Halvorix::SSOServices {

/// Puts the value of a variable into its second argument; false leaves the
/// variable as it stands in the text.
using VariableLookup = std::function<bool(std::wstring, std::wstring&)>;

/// Replaces each %name% in one pass from the front; values are not expanded
/// again. Answers the number of variables met, known or not.
int ExpandVariables(std::wstring& text, VariableLookup const& lookup);

/// ExpandVariables, then NormalizePath.
int ExpandPath(std::wstring& text, VariableLookup const& lookup);

/// Expands every entry, then normalises every entry.
void ExpandPathList(std::vector<std::wstring>& paths, VariableLookup const& lookup);

/// Value of a variable that needs no search: ProgramFiles, ExePath, AppPath,
/// AppData, LocalAppData. Empty for any other name.
std::wstring GetSystemPathVariable(std::wstring const& name);

/// Whether the names are the same but for case.
bool IsVariableName(std::wstring const& name, wchar_t const* variable);

} // namespace Halvorix::SSOServices
