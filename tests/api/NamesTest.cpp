#include <gtest/gtest.h>

#include "api/EventNames.h"
#include "discovery/SSOClientConfig.h"

namespace Names = Halvorix::SSOServices::EventNames;
using namespace Halvorix::SSOServices;

TEST(Names, OfEventsAreThoseOfPluginAndServer)
{
    EXPECT_STREQ(Names::AboutToLogout, "AboutToLogout");
    EXPECT_STREQ(Names::AccountCreated, "AccountCreated");
    EXPECT_STREQ(Names::LoggedIn, "LoggedIn");
    EXPECT_STREQ(Names::LoggedOut, "LoggedOut");
    EXPECT_STREQ(Names::LoggingOut, "LoggingOut");
    EXPECT_STREQ(Names::LoginDialogTimeoutInHxSSOServer, "LoginDialogTimeoutInHxSSOServer");
    EXPECT_STREQ(Names::LoginRestored, "LoginRestored");
    EXPECT_STREQ(Names::OAuth2Disabled, "OAuth2Disabled");
    EXPECT_STREQ(Names::OAuth2Enabled, "OAuth2Enabled");
    EXPECT_STREQ(Names::OAuth2TokenAcquired, "OAuth2TokenAcquired");
    EXPECT_STREQ(Names::OAuth2TokenAvailable, "OAuth2TokenAvailable");
    EXPECT_STREQ(Names::OAuth2TokenDiscarded, "OAuth2TokenDiscarded");
    EXPECT_STREQ(Names::OAuth2TokenQueryFailed, "OAuth2TokenQueryFailed");
    EXPECT_STREQ(Names::OAuth2TokenRefreshed, "OAuth2TokenRefreshed");
    EXPECT_STREQ(Names::ServerChanged, "ServerChanged");
    EXPECT_STREQ(Names::TokenAcquired, "TokenAcquired");
    EXPECT_STREQ(Names::TokenAvailable, "TokenAvailable");
    EXPECT_STREQ(Names::TokenQueryFailed, "TokenQueryFailed");
    EXPECT_STREQ(Names::TokenRefreshed, "TokenRefreshed");
}

TEST(Names, OfTheServerAreThoseOfPluginAndServer)
{
    EXPECT_STREQ(SSOIpcServersName, "HxSSOIpcServers-v2");
    EXPECT_STREQ(SSODefaultProcessName, "Halvorix.SSO.DefaultProcess-v2");
    EXPECT_STREQ(SSOAppStateName, "HxSSOAppState-v2");
}
