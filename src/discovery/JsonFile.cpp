#include "JsonFile.h"

#include <filesystem>
#include <fstream>
#include <sstream>

#include <boost/filesystem/path.hpp>
#include <json/reader.h>
#include <json/value.h>

namespace Halvorix::SSOServices {

std::string ReadJsonText(std::wstring const& file, std::ios::openmode mode)
{
    // Wide on Windows; Boost's own file streams would narrow the name there.
    std::filesystem::path const path = boost::filesystem::path(file).native();
    std::ifstream stream(path, mode | std::ios::in);
    std::ostringstream content;
    content << stream.rdbuf();
    return content.str();
}

bool ReadJsonFile(std::wstring const& file, std::ios::openmode mode, Json::Value& root)
{
    return Json::Reader().parse(ReadJsonText(file, mode), root);
}

} // namespace Halvorix::SSOServices
