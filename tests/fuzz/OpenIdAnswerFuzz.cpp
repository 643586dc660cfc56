// An answer of a provider's endpoint for tokens or devices. The first byte gives its status, the
// rest is its body; a body that begins with a byte 1 is made of what follows.
//
// Property: what is accepted can stand in a header and has a bounded lifetime; what is not ends in
// a reason that fits on a line of a log and repeats no secret that was sent.

#include <algorithm>
#include <string>
#include <vector>

#include "fuzz/JsonMaker.h"
#include "fuzz/Property.h"
#include "openid/protocol/Texts.h"
#include "openid/protocol/TokenAnswers.h"

using namespace Halvorix::OpenId;
using namespace Fuzz;

namespace {

constexpr char const* Code = "SplxlOBeZQQYbYS6WxSbIA";
constexpr std::int64_t LongestLife = 366 * 24 * 3600;

bool IsVisible(std::string const& text)
{
    return std::all_of(text.begin(), text.end(),
                       [](char unit) { return unit >= 0x20 && unit < 0x7F; });
}

Json::Value MakeAnswer(JsonMaker& maker)
{
    Json::Value json(Json::objectValue);
    json["access_token"] = maker.TextValue();
    json["token_type"] = maker.Seldom() ? maker.Odd() : Json::Value("Bearer");
    for (char const* const name : {"refresh_token", "id_token", "scope", "device_code", "user_code",
                                   "verification_uri", "verification_uri_complete"})
        maker.SetText(json, name);
    for (char const* const name : {"expires_in", "interval"})
        json[name] = maker.Seldom() ? maker.Odd() : Json::Value(maker.Byte());
    for (char const* const name : {"error", "error_description"})
        if (maker.Seldom())
            maker.SetText(json, name);
    return json;
}

void CheckFailure(Failure const& why)
{
    Holds(IsUtf8(why.reason) && why.reason.find_first_of("\r\n\x1B") == std::string::npos &&
              why.reason.size() < 4000,
          "a reason fits on a line", why.reason);
    Holds((why.reason + why.code).find(Code) == std::string::npos, "a secret is not told",
          why.reason);
    Holds(IsVisible(why.code), "a code is plain", why.code);
    Holds(why.kind == Failure::Kind::Network || why.kind == Failure::Kind::Provider ||
              why.kind == Failure::Kind::Refused,
          "an answer is not the host's fault", why.reason);
    Holds(why.kind != Failure::Kind::Refused || (why.status >= 400 && why.status < 500),
          "a refusal has its status", why.reason);
}

void CheckTokens(TokenAnswer const& answer)
{
    Holds(!answer.accessToken->empty(), "there is a token");
    for (std::string const& text : {*answer.accessToken, *answer.refreshToken, *answer.idToken})
        Holds(IsVisible(text), "a token is plain", text);
    Same("the type", std::string("Bearer"), answer.tokenType);
    Same("the scope is in normal form", NormalScope(answer.scope), answer.scope);
    Holds(answer.lifetime.count() >= 0 && answer.lifetime.count() <= LongestLife,
          "the lifetime is bounded");
}

void CheckDevice(DeviceAuthorization const& answer)
{
    Holds(!answer.deviceCode->empty() && !answer.userCode.empty(), "there are codes");
    Holds(IsVisible(answer.userCode) && answer.userCode.size() <= 64, "a person can type it");
    Holds(answer.userCode.front() != ' ' && answer.userCode.back() != ' ', "it is seen whole");
    std::string const &address = answer.verificationUri, &complete = answer.verificationUriComplete;
    Holds(IsSecureUrl(address) && UsesTls(address), "the address is proper", address);
    Holds(complete.empty() || (IsSecureUrl(complete) && UsesTls(complete)),
          "the address with the code is proper", complete);
    Holds(answer.lifetime.count() >= 1 && answer.lifetime.count() <= LongestLife, "it ends");
    Holds(answer.interval.count() >= 1 && answer.interval.count() <= 300, "it is asked seldom");
}

} // namespace

int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    static std::vector<std::string> const texts{"token", Code, "invalid_grant", "openid email",
                                                "https://idp.example/d"};
    constexpr int statuses[] = {200, 400, 401, 403, 429, 500, 503, 302, 204, 0};
    HttpResponse response;
    response.status = size == 0 ? 200 : statuses[data[0] % std::size(statuses)];
    if (size > 1)
        response.body = Document(data + 1, size - 1, texts, MakeAnswer);
    if (response.status == 429 || response.status == 401)
        response.headers = {{"retry-after", response.body}, {"www-authenticate", response.body}};
    Question const question{"the token endpoint", "https://idp.example/token", {Code}};
    auto const json = ReadJsonAnswer(response, question);
    if (!json) {
        CheckFailure(json.Why());
        return 0;
    }
    auto const tokens = ReadTokenAnswer(*json, question, "openid");
    if (tokens)
        CheckTokens(*tokens);
    else
        CheckFailure(tokens.Why());
    auto const device = ReadDeviceAuthorization(*json, question);
    if (device)
        CheckDevice(*device);
    else
        CheckFailure(device.Why());
    return 0;
}
