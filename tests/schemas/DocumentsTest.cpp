#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

#include <gmock/gmock.h>

#include <NetworkCookie.h>
#include <OAuth2Token.h>
#include <SSOServicesPrivate.h>
#include "framework/ThisBuild.h"

// The documents of the plugin boundary, which check.py holds against their schemas, by the
// functions that a plugin has for them too.

using namespace Halvorix::WebServices;

namespace {

namespace fs = std::filesystem;

struct Kind {
    char const* name;
    bool (*read)(char const* text);
    std::string (*rewritten)(std::string const& text);
};

template <class Value, bool (*Read)(char const*, Value&)>
bool IsRead(char const* text)
{
    Value value;
    return Read(text, value);
}

template <class Value, bool (*Read)(char const*, Value&), bool (*Write)(Value const&, std::string&)>
std::string Rewritten(std::string const& text)
{
    Value value;
    EXPECT_TRUE(Read(text.c_str(), value));
    std::string written;
    EXPECT_TRUE(Write(value, written));
    return written;
}

template <class Value, bool (*Read)(char const*, Value&), bool (*Write)(Value const&, std::string&)>
constexpr Kind KindOf(char const* name)
{
    return {name, IsRead<Value, Read>, Rewritten<Value, Read, Write>};
}

// Through functions of this program: to Visual Studio an imported one is no constant.
bool ReadSpec(char const* text, OAuth2TokenSpec& spec)
{
    return SSOServicesPrivate::JsonToOAuth2TokenSpec(text, spec);
}
bool WriteSpec(OAuth2TokenSpec const& spec, std::string& text)
{
    return SSOServicesPrivate::OAuth2TokenSpecToJson(spec, text);
}
bool ReadToken(char const* text, OAuth2Token& token)
{
    return SSOServicesPrivate::JsonToOAuth2Token(text, token);
}
bool WriteToken(OAuth2Token const& token, std::string& text)
{
    return SSOServicesPrivate::OAuth2TokenToJson(token, text);
}
bool ReadCookie(char const* text, NetworkCookie& cookie)
{
    return SSOServicesPrivate::JsonToNetworkCookie(text, cookie);
}
bool WriteCookie(NetworkCookie const& cookie, std::string& text)
{
    return SSOServicesPrivate::NetworkCookieToJson(cookie, text);
}
bool ReadJar(char const* text, NetworkCookieJar& jar)
{
    return SSOServicesPrivate::JsonToNetworkCookieJar(text, jar);
}
bool WriteJar(NetworkCookieJar const& jar, std::string& text)
{
    return SSOServicesPrivate::NetworkCookieJarToJson(jar, text);
}

Kind const Kinds[] = {
    KindOf<OAuth2TokenSpec, ReadSpec, WriteSpec>("OAuth2TokenSpec"),
    KindOf<OAuth2Token, ReadToken, WriteToken>("OAuth2Token"),
    KindOf<NetworkCookie, ReadCookie, WriteCookie>("NetworkCookie"),
    KindOf<NetworkCookieJar, ReadJar, WriteJar>("NetworkCookieJar"),
};

std::string Content(fs::path const& file)
{
    std::ifstream stream(file);
    return {std::istreambuf_iterator<char>(stream), {}};
}

/// The documents in a folder of each kind.
template <class Look>
void ForEach(std::string const& folder, Look const& look)
{
    for (Kind const& kind : Kinds) {
        int count = 0;
        fs::path const place = Rig::SourceFile("tests/schemas/documents") / kind.name / folder;
        for (auto const& entry : fs::directory_iterator(place)) {
            SCOPED_TRACE(entry.path().u8string());
            look(kind, entry.path());
            ++count;
        }
        EXPECT_GT(count, 0) << place;
    }
}

bool IsRefused(Kind const& kind, std::string const& text)
{
    try {
        return !kind.read(text.c_str());
    } catch (std::exception const&) {
        return true;
    }
}

} // namespace

TEST(Documents, AreWrittenAsTheyWereRead)
{
    ForEach("written", [](Kind const& kind, fs::path const& file) {
        std::string const text = Content(file);
        EXPECT_EQ(kind.rewritten(text) + "\n", text);
    });
}

TEST(Documents, AreReadWhenTheSchemaTakesThem)
{
    ForEach("accepted", [](Kind const& kind, fs::path const& file) {
        EXPECT_TRUE(kind.read(Content(file).c_str()));
    });
}

TEST(Documents, AreRefusedWhenTheSchemaRefusesThem)
{
    ForEach("refused", [](Kind const& kind, fs::path const& file) {
        EXPECT_TRUE(IsRefused(kind, Content(file)));
    });
}

TEST(Documents, AreReadWithMistakesThatTheSchemaTells)
{
    ForEach("reader-only", [](Kind const& kind, fs::path const& file) {
        fs::path const folder = file.parent_path().parent_path() / "reader-only-read";
        EXPECT_EQ(kind.rewritten(Content(file)) + "\n", Content(folder / file.filename()));
    });
}
