#include "JsonFile.h"

#include <filesystem>
#include <fstream>
#include <sstream>

#include <boost/filesystem/path.hpp>
#include <json/reader.h>
#include <json/value.h>

namespace Halvorix::SSOServices {

namespace {

// Empty for a file that cannot be read, such as a directory: that is no JSON.
std::string ReadWhole(std::wstring const& file, std::ios::openmode mode)
{
    // Wide on Windows; Boost's own file streams would narrow the name there.
    std::filesystem::path const path = boost::filesystem::path(file).native();
    std::ifstream stream(path, mode | std::ios::in);
    std::ostringstream content;
    content << stream.rdbuf();
    return content.str();
}

} // namespace

bool ReadJsonFile(std::wstring const& file, std::ios::openmode mode, Json::Value& root)
{
    return Json::Reader().parse(ReadWhole(file, mode), root);
}

} // namespace Halvorix::SSOServices
