#pragma once

#include <ios>
#include <string>

namespace Json {
class Value;
}

namespace Halvorix::SSOServices {

/// The text of a file; empty for one that cannot be read, such as a directory:
/// that is no JSON.
std::string ReadJsonText(std::wstring const& file, std::ios::openmode mode);

/// Reads a JSON file with comments; false if it cannot be read or is no JSON.
bool ReadJsonFile(std::wstring const& file, std::ios::openmode mode, Json::Value& root);

} // namespace Halvorix::SSOServices
