#pragma once

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "discovery/SSOPathResolver.h"
#include "platform/FakeSystem.h"

namespace Rig {

/// A folder with the executable and the library, and a resolver that looks there.
class OverFakeSystem : public testing::Test {
protected:
    OverFakeSystem()
    {
        std::filesystem::create_directories(folder);
        fakeSystem = {};
        fakeSystem.executable = (folder / "host.exe").generic_wstring();
        fakeSystem.library = (folder / "HxSSOServices.dll").generic_wstring();
        Write("HxSSO.exe", "");
    }
    ~OverFakeSystem() override { std::filesystem::remove_all(folder); }

    void Write(std::string const& name, std::string const& content) const
    {
        std::ofstream(folder / name, std::ios::binary) << content;
    }

    std::wstring InFolder(std::wstring const& name) const
    {
        return (folder / name).generic_wstring();
    }

    std::filesystem::path const folder =
        std::filesystem::temp_directory_path() /
        ("hxsso-seam-" + std::to_string(reinterpret_cast<std::uintptr_t>(this)) + "-" +
         testing::UnitTest::GetInstance()->current_test_info()->name());

    std::vector<std::wstring> log;
    Halvorix::SSOServices::SSOPathResolver resolver{
        {"10", "22", "00", "1800"},
        [this](std::wstring const& text, Halvorix::Log::LogLevel) { log.push_back(text); }};
};

} // namespace Rig
