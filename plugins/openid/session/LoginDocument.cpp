#include "openid/session/LoginDocument.h"

#include <memory>
#include <ostream>
#include <streambuf>
#include <utility>

#include <json/value.h>
#include <json/writer.h>

#include "openid/platform/Crypto.h"
#include "openid/protocol/Texts.h"

namespace Halvorix::OpenId {

namespace {

constexpr int Format = 1;
// So that sums of them stay numbers.
constexpr std::int64_t LatestTime = 253'402'300'799; // the end of the year 9999
constexpr std::int64_t LongestLife = 100LL * 366 * 24 * 3600;

Failure Damage(std::string reason)
{
    Failure failure;
    failure.reason = std::move(reason);
    return failure;
}

Failure CannotBeMadeClear(std::string reason)
{
    Failure failure = Damage(std::move(reason));
    failure.remedy = "log on to Windows with the password of the user whose login it is, or sign "
                     "in again";
    return failure;
}

/// A document whose texts are wiped at its end.
struct SecretJson {
    Json::Value value;
    ~SecretJson() { WipeJson(value); }
};

/// Unlike a string stream's, a buffer that leaves nothing behind when it grows.
class SecretBuffer : public std::streambuf {
public:
    Secret Release() { return text; }

protected:
    std::streamsize xsputn(char const* bytes, std::streamsize count) override
    {
        auto const size = static_cast<std::size_t>(count);
        MakeRoomFor(size);
        text->append(bytes, size);
        return count;
    }

    int_type overflow(int_type unit) override
    {
        if (!traits_type::eq_int_type(unit, traits_type::eof())) {
            MakeRoomFor(1);
            text->push_back(traits_type::to_char_type(unit));
        }
        return traits_type::not_eof(unit);
    }

private:
    void MakeRoomFor(std::size_t count)
    {
        if (text->capacity() - text->size() >= count)
            return;
        Secret larger;
        larger->reserve(2 * (text->size() + count));
        larger->append(*text);
        text->swap(*larger);
    }

    Secret text;
};

Secret AsText(Json::Value const& json)
{
    Json::StreamWriterBuilder builder;
    builder["indentation"] = "";
    builder["emitUTF8"] = true;
    std::unique_ptr<Json::StreamWriter> const writer(builder.newStreamWriter());
    SecretBuffer buffer;
    std::ostream stream(&buffer);
    writer->write(json, &stream);
    return buffer.Release();
}

Json::Value AsJson(StoredToken const& token)
{
    Json::Value json;
    json["type"] = token.type;
    json["scope"] = token.scope;
    json["text"] = *token.text;
    json["receivedAt"] = static_cast<Json::Int64>(token.receivedAt);
    json["lifetime"] = static_cast<Json::Int64>(token.lifetime);
    return json;
}

/// The members that a document must have. One that is missing or of another kind leaves the
/// document incomplete.
class Members {
public:
    explicit Members(Json::Value const& object) : object(object), complete(object.isObject()) {}

    std::string Text(char const* key)
    {
        return Has(key) && Check(object[key].isString()) ? object[key].asString() : std::string();
    }
    std::int64_t Number(char const* key, std::int64_t most)
    {
        if (!Has(key) || !Check(object[key].isInt64()))
            return 0;
        std::int64_t const number = object[key].asInt64();
        return Check(number >= 0 && number <= most) ? number : 0;
    }
    bool AreComplete() const { return complete; }

private:
    bool Has(char const* key) { return complete && Check(object.isMember(key)); }
    bool Check(bool good)
    {
        complete = complete && good;
        return good;
    }

    Json::Value const& object;
    bool complete;
};

bool ReadToken(Json::Value const& json, StoredToken& token)
{
    Members members(json);
    token.type = members.Text("type");
    token.scope = members.Text("scope");
    token.text = members.Text("text");
    token.receivedAt = members.Number("receivedAt", LatestTime);
    token.lifetime = members.Number("lifetime", LongestLife);
    return members.AreComplete();
}

bool ReadMembers(Json::Value const& json, StoredLogin& login)
{
    Members members(json);
    login.issuer = members.Text("issuer");
    login.clientId = members.Text("clientId");
    login.subject = members.Text("subject");
    login.refreshToken = members.Text("refreshToken");
    login.askedFor = members.Text("askedFor");
    login.scopes = members.Text("scopes");
    login.signedInAt = members.Number("signedInAt", LatestTime);
    if (!members.AreComplete() || !json["claims"].isObject() || !json["tokens"].isArray())
        return false;
    login.claims = json["claims"];
    for (Json::Value const& token : json["tokens"])
        if (!ReadToken(token, login.tokens.emplace_back()))
            return false;
    return true;
}

} // namespace

Outcome<Secret> WriteLogin(StoredLogin const& login)
{
    SecretJson json;
    json.value["format"] = Format;
    json.value["issuer"] = login.issuer;
    json.value["clientId"] = login.clientId;
    json.value["subject"] = login.subject;
    json.value["refreshToken"] = *login.refreshToken;
    json.value["askedFor"] = login.askedFor;
    json.value["scopes"] = login.scopes;
    json.value["claims"] = login.claims.isObject() ? login.claims : Json::Value(Json::objectValue);
    json.value["signedInAt"] = static_cast<Json::Int64>(login.signedInAt);
    json.value["tokens"] = Json::Value(Json::arrayValue);
    for (StoredToken const& token : login.tokens)
        json.value["tokens"].append(AsJson(token));

    std::string reason;
    Secret guarded(Protect(*AsText(json.value), reason));
    if (guarded->empty())
        return Damage(reason);
    return guarded;
}

Outcome<StoredLogin> ReadLogin(std::string const& bytes)
{
    Unprotected made = Unprotect(bytes);
    Secret const clear(std::move(made.bytes));
    if (made.state == Unprotected::State::Failed)
        return CannotBeMadeClear(made.reason);
    if (clear->empty())
        return Damage(made.reason.empty() ? "it is empty" : made.reason);
    SecretJson json;
    std::string reason;
    // What a provider gave lies in it one level deeper.
    json.value = ParseJsonObject(*clear, reason, DeepestJson + 1);
    if (!json.value.isObject())
        return Damage("it is not valid JSON");
    Json::Value const& format = json.value["format"];
    if (!format.isInt())
        return Damage("it has no format number");
    if (format.asInt() > Format)
        return Damage("it was written by a newer version, in format " +
                      std::to_string(format.asInt()));
    StoredLogin login;
    if (format.asInt() != Format || !ReadMembers(json.value, login))
        return Damage("it is not complete");
    return login;
}

} // namespace Halvorix::OpenId
