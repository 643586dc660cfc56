#pragma once

#include <chrono>
#include <string>

#include <gtest/gtest.h>

#include "openid/FakeProvider.h"

namespace Rig {

/// The client of a provider that answers as a test wants.
struct ProviderAsked : testing::Test {
    static Halvorix::OpenId::Client TheClient()
    {
        Halvorix::OpenId::Client client;
        client.issuer = FakeProvider::Issuer;
        client.clientId = "client";
        client.scopes = "openid email";
        client.networkTimeout = std::chrono::seconds(11);
        return client;
    }

    static FakeProvider::Response Body(std::string const& body)
    {
        return FakeProvider::Status(200, body);
    }

    FakeProvider fake;
    Halvorix::OpenId::Provider provider{TheClient(), fake.Sender()};
};

} // namespace Rig
