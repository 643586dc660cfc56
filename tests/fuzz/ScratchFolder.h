#pragma once

#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <system_error>

namespace Fuzz {

/// A folder of this process alone, the current one for as long as it lives.
class ScratchFolder {
public:
    ScratchFolder()
    {
        std::random_device random;
        do
            path =
                std::filesystem::temp_directory_path() / ("hxsso-fuzz-" + std::to_string(random()));
        while (!std::filesystem::create_directory(path));
        before = std::filesystem::current_path();
        std::filesystem::current_path(path);
    }
    ~ScratchFolder()
    {
        std::error_code ignored;
        std::filesystem::current_path(before, ignored);
        std::filesystem::remove_all(path, ignored);
    }
    ScratchFolder(ScratchFolder const&) = delete;
    ScratchFolder& operator=(ScratchFolder const&) = delete;

    /// In forward slashes.
    std::wstring File(std::string const& name) const { return (path / name).generic_wstring(); }

    void Write(std::string const& name, std::string const& content) const
    {
        std::filesystem::create_directories((path / name).parent_path());
        std::ofstream(path / name, std::ios::binary) << content;
    }

private:
    std::filesystem::path path;
    std::filesystem::path before;
};

} // namespace Fuzz
