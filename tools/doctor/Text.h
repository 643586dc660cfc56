#pragma once

#include <string>
#include <vector>

#include "support/Messages.h"

namespace Halvorix::Doctor {

/// UTF-8 that any reader takes, of what the library holds: unlike its own
/// conversion, by characters and not by units.
std::string Shown(std::wstring const& text);
std::wstring Wide(std::string const& text);

/// Of what is ASCII.
std::string Lower(std::string text);

/// Those that the library knows.
constexpr char const* PathVariables[] = {"SSOServerAppPath",
                                         "SSOServerAppExeDirPath",
                                         "SSOServerAppExeFile",
                                         "SSOServicesModulePath",
                                         "ProgramFiles",
                                         "ExePath",
                                         "AppPath",
                                         "AppData",
                                         "LocalAppData"};
bool IsPathVariable(std::string const& name);

/// Names of the variables in a text.
std::vector<std::string> VariablesIn(std::wstring const& text);

/// A key's JSON path in words, where entries count from 1: "entry 2 of openssl: version".
std::string InWords(std::string const& key);

/// What the lines of this message begin with, up to the first placeholder.
std::string BeginningOf(SSOServices::Message const& message);

/// The first three, and how many more there are: the tables hold all of them.
std::string Listed(std::vector<std::string> const& items, char const* separator);

/// "%a%, %b%" for a sentence.
std::string ListedVariables(std::vector<std::string> const& names);

} // namespace Halvorix::Doctor
