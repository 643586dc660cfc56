#pragma once

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

#include "openid/platform/Crypto.h"

namespace Rig {

/// A new empty folder, removed again at the end.
class TestFolder {
public:
    TestFolder()
    {
        constexpr char const* digits = "0123456789abcdef";
        std::string name = "hxsso-openid-";
        for (char const byte : Halvorix::OpenId::RandomBytes(8)) {
            name += digits[(byte >> 4) & 15];
            name += digits[byte & 15];
        }
        folder = std::filesystem::temp_directory_path() / name;
        std::filesystem::create_directories(folder);
    }
    ~TestFolder()
    {
        std::error_code left;
        std::filesystem::remove_all(folder, left);
    }
    TestFolder(TestFolder const&) = delete;
    TestFolder& operator=(TestFolder const&) = delete;

    std::filesystem::path const& Path() const { return folder; }
    std::filesystem::path operator/(std::filesystem::path const& name) const
    {
        return folder / name;
    }

private:
    std::filesystem::path folder;
};

inline std::string ContentOf(std::filesystem::path const& file)
{
    std::ifstream stream(file, std::ios::binary);
    std::ostringstream content;
    content << stream.rdbuf();
    return content.str();
}

inline void WriteTo(std::filesystem::path const& file, std::string const& content)
{
    std::ofstream(file, std::ios::binary) << content;
}

} // namespace Rig
