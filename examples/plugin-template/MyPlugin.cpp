// A plugin to begin with: it signs in one user and hands out a token. What it does not
// write has the answer that hosts get with no plugin; plugin/Defaults.h lists the rest.

#include <atomic>
#include <cstring>
#include <ctime>

#include <plugin/Defaults.h>

namespace {

using namespace Halvorix::SSOServices;

// A JSON result: the library releases it.
char* NewText(char const* text)
{
    std::size_t const size = std::strlen(text) + 1;
    char* const copy = new char[size];
    std::memcpy(copy, text, size);
    return copy;
}

// Called from any thread, several at once.
class Client : public SSOClientDefaults {
public:
    bool RestoreLogin() override
    {
        signedIn = true;
        return true;
    }
    bool Logout() override
    {
        signedIn = false;
        return true;
    }
    bool IsLoggedIn() override { return signedIn; }

    using SSOClientDefaults::GetOAuth2AccessToken; // the other overload
    bool GetOAuth2AccessToken(char const*, char*& token, BufferTransformCallback, bool) override
    {
        if (!signedIn)
            return false;
        token = NewText(R"({"OAuth2AccessToken": "a token of yours",
                            "OAuth2TokenSpec": {"type": 1, "scope": "data:read"}})");
        constexpr unsigned int hour = 3600;
        expiryDate = static_cast<unsigned int>(std::time(nullptr)) + hour;
        return true;
    }

    // Seconds since 1970, UTC; 0 for none. Tell your hosts the unit.
    unsigned int GetOAuth2TokenExpiryDate(char const*) override { return expiryDate; }
    unsigned int GetOAuth2TokenExpiryDate() override { return expiryDate; }

private:
    std::atomic<bool> signedIn = false;
    std::atomic<unsigned int> expiryDate = 0;
};

// One client for all calls: the library asks for it on each.
class Factory : public SSOClientFactoryDefaults {
public:
    std::shared_ptr<ISSOClient> GetSSOClient() override { return client; }

private:
    std::shared_ptr<ISSOClient> const client = std::make_shared<Client>();
};

} // namespace

std::shared_ptr<ISSOClientFactory> GetSSOClientFactory()
{
    static auto const factory = std::make_shared<Factory>();
    return factory;
}
