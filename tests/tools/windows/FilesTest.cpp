#include "common/Files.h"

#include <filesystem>

#include <gtest/gtest.h>

using Halvorix::Tools::OpenFile;

// By their names alone: to open one may wait for what is at the other end.
TEST(ToolFiles, OfDevicesAreToldAndNotOpened)
{
    for (wchar_t const* const name :
         {L"NUL", L"nul.dll", L"Con", L"PRN.txt", L"aux .dll", L"COM1", L"COM1:", L"com9.x.dll",
          L"LPT3", L"CONIN$", L"conout$", L"COM\u00b9", L"com\u00b2.dll", L"COM\u00b3 ",
          L"LPT\u00b9.x", L"lpt\u00b2", L"LPT\u00b3:"}) {
        for (std::filesystem::path const& path :
             {std::filesystem::path(name), std::filesystem::path(L"folder") / name}) {
            auto const opened = OpenFile(path);
            EXPECT_EQ(opened.bytes, nullptr) << path;
            EXPECT_EQ(opened.reason, "is a device, not a file") << path;
        }
    }
}

TEST(ToolFiles, OfNamesLikeADevicesAreFiles)
{
    for (wchar_t const* const name :
         {L"COM0", L"COM10.dll", L"NULL", L"CON1", L"xCON", L"COM\u2074", L"LPT\u00b9\u00b9"})
        EXPECT_EQ(OpenFile(name).reason, "does not exist") << std::filesystem::path(name);
}
