#pragma once

#include <ios>
#include <string>

namespace Json {
class Value;
}

namespace Halvorix::SSOServices {

/// Reads a JSON file with comments; false if it cannot be read or is not valid JSON.
bool ReadJsonFile(std::wstring const& file, std::ios::openmode mode, Json::Value& root);

} // namespace Halvorix::SSOServices
