// The one command that writes a secret. It is nowhere but in a Secret, which is wiped, and goes
// past all buffers.

#include <OAuth2Token.h>

#include "common/Report.h"
#include "hxsso/Commands.h"
#include "hxsso/PluginTexts.h"
#include "hxsso/SignOn.h"
#include "hxsso/System.h"
#include "hxsso/Text.h"

namespace Halvorix::HxSSO {

namespace {

using namespace WebServices;

constexpr std::int64_t LongestWait = 1'000'000'000;

struct TokenAtHand {
    OAuth2Token token;
    std::int64_t expiresAt = 0; ///< seconds since 1970, 0 if nobody knows
};

/// Another process may renew it between the two questions.
bool Ask(WebServicesManager& manager, OAuth2TokenSpec const& spec, TokenAtHand& found)
{
    if (!manager.GetOAuth2AccessToken(spec, found.token, nullptr, false))
        return false;
    for (int tries = 0; tries < 5; ++tries) {
        OAuth2Token again;
        found.expiresAt = manager.GetOAuth2TokenExpiryDate(spec);
        if (!manager.GetOAuth2AccessToken(spec, again, nullptr, false))
            return false;
        if (again == found.token)
            return true;
        found.token = again;
    }
    return true;
}

/// Another plugin may not tell.
bool IsRefreshable()
{
    Json::Value const refreshable = SessionState()["refreshable"];
    return !refreshable.isBool() || refreshable.asBool();
}

bool EndsBefore(TokenAtHand const& found, std::int64_t time)
{
    return found.expiresAt != 0 && found.expiresAt < time;
}

/// Whole seconds; -1 if it is none.
std::int64_t Seconds(std::string const& text)
{
    std::int64_t seconds = text.empty() ? -1 : 0;
    for (char const digit : text) {
        if (digit < '0' || digit > '9' || seconds > LongestWait)
            return -1;
        seconds = seconds * 10 + (digit - '0');
    }
    return seconds > LongestWait ? -1 : seconds;
}

/// As a text of JSON has it.
void AppendEscaped(std::string& to, std::string const& text)
{
    static char const digits[] = "0123456789abcdef";
    for (char const unit : text) {
        auto const byte = static_cast<unsigned char>(unit);
        if (byte == '"' || byte == '\\')
            to += {'\\', unit};
        else if (byte < 0x20 || byte == 0x7F)
            to += {'\\', 'u', '0', '0', digits[byte >> 4], digits[byte & 15]};
        else
            to += unit;
    }
}

/// What stands before the token and behind it, which is all that jsoncpp gets to see.
struct Surroundings {
    std::string before, behind;
};

Surroundings SurroundingsOf(Options const& options, TokenAtHand const& found)
{
    if (!options.Has("--json"))
        return {options.Has("--header") ? "Authorization: Bearer " : "", "\n"};
    Answer answer;
    answer.result["token"] = "";
    answer.result["expiresAt"] = TimeOrNull(found.expiresAt);
    answer.result["scope"] = TextOrNull(options.Value("--scope"));
    std::string const document = Document("token", answer), place = "\"token\" : \"";
    std::size_t const at = document.find(place) + place.size();
    return {document.substr(0, at), document.substr(at)};
}

int WriteToken(Options const& options, TokenAtHand const& found)
{
    constexpr std::size_t mostEscaped = 6;
    Surroundings const around = SurroundingsOf(options, found);
    auto const length = static_cast<std::size_t>(found.token.GetTokenSize());
    Secret token(length * MostUtf8);
    Secret output(around.before.size() + length * MostUtf8 * mostEscaped + around.behind.size());
    AppendUtf8(token.text, found.token.GetToken(), length);
    output.text += around.before;
    if (options.Has("--json"))
        AppendEscaped(output.text, token.text);
    else
        output.text += token.text;
    output.text += around.behind;
    if (Write(Stream::Output, output.text))
        return static_cast<int>(Status::Done);
    TellError(Failed(Status::Failed, "the token cannot be written to the standard output"));
    return static_cast<int>(Status::Failed);
}

/// What the provider renews is stored, whoever interrupts: it may have ended the old one.
bool Fetch(WebServicesManager& manager, Options const& options, TokenAtHand& found)
{
    InterruptsHeldBack const heldBack;
    OAuth2TokenSpec const spec(OAuth2TokenTypeDefault, ToWide(options.Value("--scope")).c_str());
    if (!Ask(manager, spec, found))
        return false;
    if (!options.Has("--min-valid"))
        return true;
    std::int64_t const needed = Now() + Seconds(options.Value("--min-valid"));
    if (EndsBefore(found, needed) && IsRefreshable() &&
        !(manager.RefreshOAuth2Token(spec, false) && Ask(manager, spec, found)))
        return false;
    if (EndsBefore(found, needed))
        TellProgress("hxsso: the provider gives no token that lives so long; this one ends at " +
                     AsTime(found.expiresAt));
    return true;
}

Answer MisuseOfToken(Options const& options)
{
    if (options.Has("--header") && options.Has("--json"))
        return Failed(Status::WrongUse, "--header and --json do not go together", "give one");
    if (options.Has("--min-valid") && Seconds(options.Value("--min-valid")) < 0)
        return Failed(Status::WrongUse, "the value of --min-valid is no number of seconds",
                      "give one up to " + std::to_string(LongestWait));
    if (IsTerminal(Stream::Output) && !options.Has("--show"))
        return Failed(Status::WrongUse, "a token is not written to a terminal",
                      "pass it on, as in TOKEN=$(hxsso token), or give --show");
    return {};
}

} // namespace

int TellToken(Options const& options)
{
    // Not as a document, either: whoever reads that would have to look for a token in it.
    Answer const misuse = MisuseOfToken(options);
    if (misuse.status != Status::Done) {
        TellError(misuse);
        return static_cast<int>(misuse.status);
    }
    bool const asJson = options.Has("--json");
    SignOn const session(options.Value("--server"));
    if (session.Obstacle().status != Status::Done)
        return Tell("token", session.Obstacle(), asJson);

    TokenAtHand found;
    if (!Fetch(session.Manager(), options, found))
        return Tell("token", session.Refusal("there is no such token"), asJson);
    return WriteToken(options, found);
}

} // namespace Halvorix::HxSSO
