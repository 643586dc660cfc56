// A login's file, as it lies in the store. A byte 1 first: the rest makes one.
//
// Property: what is read can be written and read again, and is the same; what is not ends in a
// reason on one line.

#include <string>
#include <vector>

#include "fuzz/JsonMaker.h"
#include "fuzz/Property.h"
#include "openid/platform/Crypto.h"
#include "openid/session/LoginDocument.h"

using namespace Halvorix::OpenId;
using namespace Fuzz;

namespace {

Json::Value MakeLogin(JsonMaker& maker)
{
    Json::Value json(Json::objectValue);
    json["format"] = maker.Seldom() ? maker.Odd() : Json::Value(1);
    for (char const* const name :
         {"issuer", "clientId", "subject", "refreshToken", "idToken", "askedFor", "scopes"})
        json[name] = maker.TextValue();
    json["signedInAt"] = maker.Seldom() ? maker.Odd() : Json::Value(maker.Byte());
    json["claims"] = maker.Seldom() ? maker.Odd() : Json::Value(Json::objectValue);
    json["tokens"] = maker.Seldom() ? maker.Odd() : Json::Value(Json::arrayValue);
    if (json["tokens"].isArray())
        for (unsigned i = maker.Byte() % 3; i > 0; --i) {
            Json::Value token(Json::objectValue);
            for (char const* const name : {"type", "scope", "text"})
                token[name] = maker.TextValue();
            for (char const* const name : {"receivedAt", "lifetime"})
                token[name] = maker.Seldom() ? maker.Odd() : Json::Value(maker.Byte());
            json["tokens"].append(token);
        }
    return json;
}

} // namespace

int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    static std::vector<std::string> const texts{"https://idp.example", "client", "token", "1",
                                                "openid"};
    std::string reason;
    std::string const bytes = Protect(Document(data, size, texts, MakeLogin), reason);
    auto const login = ReadLogin(bytes);
    if (!login) {
        Holds(!login.Why().reason.empty() &&
                  login.Why().reason.find_first_of("\r\n\x1B") == std::string::npos,
              "a reason is a line", login.Why().reason);
        return 0;
    }
    auto const first = WriteLogin(*login);
    Holds(static_cast<bool>(first), "what was read can be written");
    auto const again = ReadLogin(**first);
    Holds(static_cast<bool>(again), "what was written can be read");
    auto const second = WriteLogin(*again);
    Same("what was written twice", **first, **second);
    Same("the user", login->subject, again->subject);
    Same("the tokens", login->tokens.size(), again->tokens.size());
    return 0;
}
