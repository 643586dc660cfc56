#include "support/SystemError.h"

#include <string>

#include <gtest/gtest.h>

#include "platform/Platform.h"

using Halvorix::SSOServices::FormatSystemError;
namespace Platform = Halvorix::Platform;

TEST(SystemError, IsTheSystemsTextUnchanged)
{
    std::wstring const text = Platform::ErrorText(2);
    if (text.empty()) {
        GTEST_SKIP() << "the system has no text for a code out of context";
    }
    EXPECT_EQ(FormatSystemError(2), text);
}

TEST(SystemError, HasATextOfItsOwnForAMissingModuleOnly)
{
    std::wstring const text = Platform::ErrorText(126);
    EXPECT_EQ(FormatSystemError(126),
              text.empty() ? L"The specified module could not be found." : text);
}
