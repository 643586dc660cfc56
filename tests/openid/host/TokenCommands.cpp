#include <memory>

#include <OAuth2Token.h>
#include <WebServicesManager.h>

#include "openid/host/Commands.h"

using namespace Halvorix::WebServices;

namespace {

WebServicesManager& Manager() { return *WebServicesManager::GetInstance(); }

OAuth2TokenSpec Spec(Arguments& in)
{
    auto const type = static_cast<OAuth2TokenType>(in.Number());
    return {type, in.WideRest().c_str()};
}

Json::Value AsJson(OAuth2Token const& token)
{
    OAuth2TokenSpec const spec = token.GetSpec();
    Json::Value json;
    json["token"] = Utf8(token.GetToken());
    json["type"] = static_cast<int>(spec.GetType());
    json["scope"] = TextOf([&](wchar_t* to, int size) { return spec.GetScope(to, size); });
    return json;
}

void AddOlder(Commands& commands)
{
    commands["IsTokenAvailable"] = [](Arguments&) { return Manager().IsTokenAvailable(); };
    commands["GetAccessToken"] = [](Arguments&) {
        return TextOf([](wchar_t* to, int size) { return Manager().GetAccessToken(to, size); });
    };
    commands["GetAccessToken.flag"] = [](Arguments& in) {
        bool const flag = in.Flag();
        return TextOf(
            [&](wchar_t* to, int size) { return Manager().GetAccessToken(to, size, flag); });
    };
    // A buffer that is too small for any.
    commands["GetAccessToken.small"] = [](Arguments&) {
        wchar_t buffer[9] = L"?";
        int const stored = Manager().GetAccessToken(buffer, 9);
        Json::Value answer;
        answer["stored"] = stored;
        answer["text"] = Utf8(buffer);
        return answer;
    };
    commands["GetTokenExpiryDate"] = [](Arguments&) { return Manager().GetTokenExpiryDate(); };
    commands["IsTokenExpired"] = [](Arguments&) { return Manager().IsTokenExpired(); };
    commands["RefreshToken"] = [](Arguments& in) { return Manager().RefreshToken(in.Flag()); };
    commands["GetLoginCookie"] = [](Arguments&) {
        unsigned char* cookie = nullptr;
        int const size = Manager().GetLoginCookie(cookie);
        std::unique_ptr<unsigned char[]> const owned(cookie);
        return size;
    };
    commands["SignRequest"] = [](Arguments&) {
        return Taken(Manager().SignRequest(L"https://api.example/", nullptr, 0, HttpMethod{},
                                           ParsingMode{}, L"", L"", nullptr));
    };
    commands["SignUrlForBrowser"] = [](Arguments&) {
        return Taken(Manager().SignUrlForBrowser(L"https://api.example/", true, nullptr));
    };
}

void AddOfSpec(Commands& commands)
{
    commands["EnableOAuth2.spec"] = [](Arguments& in) { return Manager().EnableOAuth2(Spec(in)); };
    commands["GetOAuth2AccessToken"] = [](Arguments& in) {
        OAuth2Token token;
        bool const given = Manager().GetOAuth2AccessToken(Spec(in), token, nullptr, false);
        return given ? AsJson(token) : Json::Value();
    };
    commands["RefreshOAuth2Token.spec"] = [](Arguments& in) {
        return Manager().RefreshOAuth2Token(Spec(in), false);
    };
    commands["IsOAuth2TokenExpired.spec"] = [](Arguments& in) {
        return Manager().IsOAuth2TokenExpired(Spec(in));
    };
    commands["GetOAuth2TokenExpiryDate.spec"] = [](Arguments& in) {
        return Manager().GetOAuth2TokenExpiryDate(Spec(in));
    };
    commands["IsOAuth2TokenAvailable.spec"] = [](Arguments& in) {
        return Manager().IsOAuth2TokenAvailable(Spec(in));
    };
}

void AddOfDefault(Commands& commands)
{
    commands["IsOAuth2Enabled"] = [](Arguments&) { return Manager().IsOAuth2Enabled(); };
    commands["EnableOAuth2"] = [](Arguments& in) { return Manager().EnableOAuth2(in.Flag()); };
    commands["DisableOAuth2"] = [](Arguments&) { return Manager().DisableOAuth2(); };
    commands["GetOAuth2AccessToken.buffer"] = [](Arguments&) {
        return TextOf([](wchar_t* to, int size) {
            return Manager().GetOAuth2AccessToken(to, size, nullptr, false);
        });
    };
    commands["RefreshOAuth2Token"] = [](Arguments& in) {
        return Manager().RefreshOAuth2Token(in.Flag());
    };
    commands["IsOAuth2TokenExpired"] = [](Arguments&) { return Manager().IsOAuth2TokenExpired(); };
    commands["GetOAuth2TokenExpiryDate"] = [](Arguments&) {
        return Manager().GetOAuth2TokenExpiryDate();
    };
    commands["IsOAuth2TokenAvailable"] = [](Arguments&) {
        return Manager().IsOAuth2TokenAvailable();
    };
}

} // namespace

void AddTokens(Commands& commands)
{
    AddOlder(commands);
    AddOfSpec(commands);
    AddOfDefault(commands);
}
