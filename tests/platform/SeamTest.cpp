// What the library asks of the system, and what it does with answers that a
// system seldom gives.

#include <string>

#include <boost/system/system_error.hpp>
#include <gmock/gmock.h>

#include <SSOClientPrivate.h>
#include "host/SSOClientManager.h"
#include "platform/OverFakeSystem.h"
#include "support/EarlyLines.h"
#include "support/SystemError.h"

using namespace Halvorix;
using namespace Halvorix::SSOServices;
using Platform::LocationView;
using Rig::fakeSystem;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

namespace {

class Seam : public Rig::OverFakeSystem {};

} // namespace

TEST_F(Seam, TheLoadReadsItsErrorAfterTheDependencyDirectoryIsRestored)
{
    Write("plugin.dll", "");
    Write("SSOVersionCompatibility.config",
          R"({"ssoClientPlugin": [{"module": "plugin.dll", "modulePath": "%ExePath%",
              "version": "1", "compatibleSsoServicesVersion": {"minVersion": "10"}}]})");
    fakeSystem.lastError = 193;
    std::shared_ptr<ISSOClient> client;
    SSOClientManager::GetInstance()->GetSSOClient(client);
    EXPECT_EQ(client, nullptr);
    std::wstring const plugin = InFolder(L"plugin.dll");
    EXPECT_THAT(fakeSystem.calls,
                ElementsAre(L"dependencies " + folder.generic_wstring(), L"load " + plugin,
                            L"dependencies restored", L"last error"));
    std::vector<EarlyLogEntry> const lines = TakeEarlyLines();
    ASSERT_FALSE(lines.empty());
    EXPECT_EQ(lines.back().text,
              L"Failed to load client plugin module " + plugin + L". Error: error 193");
    SSOClientManager::ReleaseInstance();
}

// On Windows the name goes through narrow text, unit by unit, and Boost refuses halves of
// a pair.
TEST_F(Seam, APluginBelowANameBeyondTheFirstPlaneThrowsOnWindows)
{
    fakeSystem.executable = folder.generic_wstring() + L"/e\U0001F600/host.exe";
    Write("SSOVersionCompatibility.config",
          R"({"ssoClientPlugin": [{"module": "plugin.dll", "modulePath": "%ExePath%",
              "version": "1", "compatibleSsoServicesVersion": {"minVersion": "10"}}]})");
    std::shared_ptr<ISSOClient> client;
    auto const load = [&] { SSOClientManager::GetInstance()->GetSSOClient(client); };
    if (Platform::AreFileNamesWide())
        EXPECT_THROW(load(), boost::system::system_error);
    else
        EXPECT_NO_THROW(load());
    EXPECT_EQ(client, nullptr);
    SSOClientManager::ReleaseInstance();
}

// The loader may be busy, and each line is written with the lock held.
TEST_F(Seam, ABannerAfterAFailedLoadAsksTheSystemForNoModule)
{
    SSOClientManager manager(
        [this](std::wstring const& text, Log::LogLevel) { log.push_back(text); });
    std::shared_ptr<ISSOClient> client;
    manager.GetSSOClient(client);
    int const questions = fakeSystem.moduleQuestions;
    EXPECT_GE(questions, 1);
    log.clear();
    manager.GetSSOClient(client);
    EXPECT_THAT(log, ElementsAre(HasSubstr(L" File: " + InFolder(L"HxSSOServices.dll"))));
    EXPECT_EQ(fakeSystem.moduleQuestions, questions);
}

TEST_F(Seam, ALocationThatCannotBeReadIsPassedOver)
{
    Write("SSOClient.config", "{}");
    fakeSystem.locations = {{LocationView::Own, L"/unread"}};
    fakeSystem.locationIsReadable = false;
    EXPECT_EQ(resolver.GetSSOServerAppPath(), folder.generic_wstring());
    EXPECT_THAT(fakeSystem.calls, ElementsAre(L"open own view", L"close"));
    EXPECT_THAT(log, Not(Contains(HasSubstr(L"registry"))));
}

TEST_F(Seam, AModulePathOfSlashesIsToldAsABlankVersion)
{
    Write("SSOVersionCompatibility.config",
          R"({"ssoClientPlugin": [{"module": "plugin.dll", "modulePath": "//", "version": "1"}]})");
    EXPECT_EQ(resolver.GetSSOClientPluginModule(), L"");
    EXPECT_THAT(log, Contains(HasSubstr(L"Missing object 'compatibleSsoServicesVersion'")));
    // The file is found by now; without a root nothing is left of its entry's path.
    fakeSystem.leadingSlashIsRoot = false;
    log.clear();
    EXPECT_EQ(resolver.GetSSOClientPluginModule(), L"");
    EXPECT_THAT(log, Contains(HasSubstr(L"Blank or missing key 'version' in ssoClientPlugin in "
                                        L"version compatibility file ")));
    EXPECT_THAT(log, Not(Contains(HasSubstr(L"Missing object"))));
}

TEST_F(Seam, AMissingModuleHasATextWhereTheSystemHasNone)
{
    fakeSystem.hasErrorTexts = false;
    EXPECT_EQ(FormatSystemError(126), L"The specified module could not be found.");
    EXPECT_EQ(FormatSystemError(127), L"");
    fakeSystem.hasErrorTexts = true;
    EXPECT_EQ(FormatSystemError(126), L"error 126");
}

TEST_F(Seam, TheFileNameOfThePluginIsTheLastPartOfItsPath)
{
    EXPECT_EQ(resolver.GetSSOClientPluginFileName(), L"");
    Write("SSOVersionCompatibility.config",
          R"({"ssoClientPlugin": [{"module": "sub/plugin.dll", "modulePath": "/plugins",
              "version": "1", "compatibleSsoServicesVersion": {"minVersion": "10"}}]})");
    Halvorix::SSOServices::SSOPathResolver fresh{Version{"10"}, {}};
    EXPECT_EQ(fresh.GetSSOClientPluginModule(), L"/plugins/sub/plugin.dll");
    EXPECT_EQ(fresh.GetSSOClientPluginFileName(), L"plugin.dll");
}

// A drive without a slash names the drive's current folder.
TEST_F(Seam, TheLogFileIsJoinedToAKnownFolderAsTheSystemJoinsPaths)
{
    fakeSystem.knownFolder = L"D:";
    std::wstring const below = L"Halvorix/Web Services/Log/WebServices.log";
    EXPECT_EQ(SSOClientPrivate::GetLogFile(),
              (Platform::AreFileNamesWide() ? L"D:" : L"D:/") + below);
    fakeSystem.knownFolder = L"/data";
    EXPECT_EQ(SSOClientPrivate::GetLogFile(), L"/data/" + below);
}
