#include "openid/session/TokenStore.h"

#include <algorithm>
#include <chrono>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include <gmock/gmock.h>

#include "openid/Child.h"
#include "openid/TestFolder.h"
#include "openid/platform/Crypto.h"
#include "openid/protocol/Texts.h"

using namespace Halvorix::OpenId;
using Rig::TestFolder;
using std::chrono::milliseconds;
using testing::HasSubstr;
using testing::Not;

namespace fs = std::filesystem;

namespace {

std::string const Issuer = "https://login.example";
std::string const ClientId = "desktop";

StoredLogin NewLogin()
{
    StoredLogin login;
    login.issuer = Issuer;
    login.clientId = ClientId;
    login.subject = "alice-1";
    login.refreshToken = std::string("refresh-\xC3\xA9\"\\\x01");
    login.askedFor = "openid profile";
    login.scopes = "openid";
    login.claims["name"] = "Alice";
    login.signedInAt = 1'700'000'000;
    StoredToken token;
    token.type = "1";
    token.scope = "Data:Read data:read";
    token.text = std::string("access-token");
    token.receivedAt = 1'700'000'001;
    token.lifetime = 3600;
    login.tokens = {token, token};
    return login;
}

fs::path StoreIn(TestFolder const& folder) { return folder / "store"; }

/// The login, or the failure's reason.
std::string Look(TokenStore& store)
{
    auto const read = store.Read(Issuer, ClientId);
    if (!read)
        return read.Why().reason;
    return *read ? "signed in as " + (*read)->subject : "nobody";
}

std::vector<std::string> FilesIn(fs::path const& folder)
{
    std::vector<std::string> names;
    for (auto const& entry : fs::directory_iterator(folder))
        names.push_back(PathText(entry.path().filename()));
    return names;
}

/// A document as this version writes it, with a part of it changed.
std::string Changed(fs::path const& file, std::string const& part, std::string const& other)
{
    std::string reason;
    std::string text = Unprotect(Rig::ContentOf(file)).bytes;
    auto const at = text.find(part);
    EXPECT_NE(at, std::string::npos) << part;
    text.replace(at, part.size(), other);
    return Protect(text, reason);
}

} // namespace

TEST(TokenStore, GivesBackWhatWasWritten)
{
    TestFolder const folder;
    TokenStore store(StoreIn(folder));
    EXPECT_EQ(Look(store), "nobody");
    ASSERT_TRUE(store.Write(NewLogin()));
    TokenStore another(StoreIn(folder));
    for (TokenStore* const reader : {&store, &another}) {
        auto const read = reader->Read(Issuer, ClientId);
        ASSERT_TRUE(read && *read);
        StoredLogin const& login = **read;
        EXPECT_EQ(login.issuer, Issuer);
        EXPECT_EQ(login.clientId, ClientId);
        EXPECT_EQ(login.subject, "alice-1");
        EXPECT_EQ(*login.refreshToken, *NewLogin().refreshToken);
        EXPECT_EQ(login.askedFor, "openid profile");
        EXPECT_EQ(login.scopes, "openid");
        EXPECT_EQ(login.claims, NewLogin().claims);
        EXPECT_EQ(login.signedInAt, 1'700'000'000);
        ASSERT_EQ(login.tokens.size(), 2u);
        EXPECT_EQ(login.tokens[0].type, "1");
        EXPECT_EQ(login.tokens[0].scope, "Data:Read data:read");
        EXPECT_EQ(*login.tokens[0].text, "access-token");
        EXPECT_EQ(login.tokens[0].receivedAt, 1'700'000'001);
        EXPECT_EQ(login.tokens[0].lifetime, 3600);
    }
}

TEST(TokenStore, ReadsAnOlderFileAndKeepsItsIdTokenNoLonger)
{
    TestFolder const folder;
    TokenStore store(StoreIn(folder));
    auto const file = store.FileOf(Issuer, ClientId);
    ASSERT_TRUE(store.Write(NewLogin()));
    std::string reason;
    ASSERT_TRUE(ReplacePrivateFile(
        file, Changed(file, "\"issuer\"", "\"idToken\":\"a.b.c\",\"issuer\""), reason));
    EXPECT_EQ(Look(store), "signed in as alice-1");
    auto const read = store.Read(Issuer, ClientId);
    ASSERT_TRUE(read && *read);
    ASSERT_TRUE(store.Write(**read));
    EXPECT_THAT(Unprotect(Rig::ContentOf(file)).bytes, Not(HasSubstr("a.b.c")));
}

/// What another process then reads.
static std::optional<StoredLogin> ReadAnew(TestFolder const& folder)
{
    auto read = TokenStore(StoreIn(folder)).Read(Issuer, ClientId);
    EXPECT_TRUE(read) << read.Why().reason;
    return read ? *read : std::nullopt;
}

TEST(TokenStore, GivesBackTheDeepestClaimsThatAProviderMaySend)
{
    std::string text = "{}", reason;
    StoredLogin login = NewLogin();
    int depth = 0;
    for (; login.claims = ParseJsonObject(text, reason), !login.claims.isNull(); ++depth) {
        TestFolder const folder;
        ASSERT_TRUE(TokenStore(StoreIn(folder)).Write(login));
        auto const read = ReadAnew(folder);
        ASSERT_TRUE(read) << depth;
        EXPECT_EQ(read->claims, login.claims);
        text = "{\"a\":" + text + '}';
    }
    EXPECT_EQ(depth, DeepestJson);
}

TEST(TokenStore, GivesBackTheLargestTokensThatAProviderMayGive)
{
    TestFolder const folder;
    StoredLogin login = NewLogin();
    std::string const most(65'536, 'x');
    login.refreshToken = most;
    login.tokens.resize(32, login.tokens[0]);
    for (StoredToken& token : login.tokens)
        token.text = most;
    login.claims["large"] = std::string(1'000'000, 'x');
    ASSERT_TRUE(TokenStore(StoreIn(folder)).Write(login));
    auto const read = ReadAnew(folder);
    ASSERT_TRUE(read);
    EXPECT_EQ(read->claims, login.claims);
    EXPECT_EQ(read->tokens.size(), 32u);
    EXPECT_EQ(*read->tokens[31].text, most);
}

TEST(TokenStore, ReadsAllThatItWrites)
{
    StoredLogin login = NewLogin();
    constexpr std::size_t limit = 4 << 20;
    bool isWritten = false, isRefused = false;
    // What protects the document makes it larger.
    for (std::size_t const spare : {8'000, 2'000, 1'000, 500, 0}) {
        TestFolder const folder;
        login.claims["large"] = std::string(limit - spare, 'x');
        auto const written = TokenStore(StoreIn(folder)).Write(login);
        (written ? isWritten : isRefused) = true;
        if (!written) {
            EXPECT_EQ(written.Why().reason, "The login is larger than 4194304 bytes");
            continue;
        }
        auto const read = ReadAnew(folder);
        ASSERT_TRUE(read) << spare;
        EXPECT_EQ(read->claims, login.claims);
    }
    EXPECT_TRUE(isWritten);
    EXPECT_TRUE(isRefused);
}

TEST(TokenStore, KeepsIssuersAndClientsApart)
{
    TestFolder const folder;
    TokenStore store(StoreIn(folder));
    ASSERT_TRUE(store.Write(NewLogin()));
    for (auto const& [issuer, clientId] : {std::pair<std::string, std::string>{Issuer, "other"},
                                           {Issuer + "/", ClientId},
                                           {Issuer + "\ndesktop", ""}}) {
        auto const read = store.Read(issuer, clientId);
        ASSERT_TRUE(read);
        EXPECT_FALSE(*read) << issuer << ' ' << clientId;
    }
    EXPECT_EQ(Look(store), "signed in as alice-1");
}

TEST(TokenStore, ForgetsWhatIsRemoved)
{
    TestFolder const folder;
    TokenStore store(StoreIn(folder));
    ASSERT_TRUE(store.Write(NewLogin()));
    ASSERT_TRUE(store.Remove(Issuer, ClientId));
    EXPECT_EQ(Look(store), "nobody");
    EXPECT_FALSE(fs::exists(store.FileOf(Issuer, ClientId)));
    EXPECT_TRUE(store.Remove(Issuer, ClientId));
}

TEST(TokenStore, SeesAtOnceWhatAnotherProcessWrites)
{
    TestFolder const folder;
    TokenStore store(StoreIn(folder));
    TokenStore another(StoreIn(folder));
    StoredLogin login = NewLogin();
    for (int i = 0; i < 200; ++i) {
        login.subject = "user-" + std::to_string(1000 + i); // always as long
        ASSERT_TRUE(another.Write(login));
        ASSERT_EQ(Look(store), "signed in as " + login.subject);
    }
    ASSERT_TRUE(another.Remove(Issuer, ClientId));
    EXPECT_EQ(Look(store), "nobody");
}

TEST(TokenStore, ReadsAFileOnceWhileItStaysAsItIs)
{
    TestFolder const folder;
    TokenStore store(StoreIn(folder));
    ASSERT_TRUE(store.Write(NewLogin()));
    using Clock = std::chrono::steady_clock;
    auto const best = [](auto const& read) {
        auto shortest = Clock::duration::max();
        for (int i = 0; i < 200; ++i) {
            auto const start = Clock::now();
            read();
            shortest = std::min(shortest, Clock::now() - start);
        }
        return shortest;
    };
    auto const again = best([&] { EXPECT_EQ(Look(store), "signed in as alice-1"); });
    auto const anew = best([&] {
        TokenStore fresh(StoreIn(folder));
        EXPECT_EQ(Look(fresh), "signed in as alice-1");
    });
    EXPECT_LT(again.count(), anew.count());
}

TEST(TokenStore, SetsAsideWhatIsDamagedForeignOrNewerAndTellsItOnce)
{
    TestFolder const folder;
    TokenStore store(StoreIn(folder));
    auto const file = store.FileOf(Issuer, ClientId);
    auto const name = PathText(file.filename());
    ASSERT_TRUE(store.Write(NewLogin()));
    std::string const whole = Rig::ContentOf(file);
    struct Sample {
        std::string content, reason;
    };
    std::vector<Sample> const samples{
        {"", ""},
        {std::string(5000, '\0'), ""},
        {whole.substr(0, whole.size() / 2), ""},
        {Changed(file, "\"format\":1", "\"format\":2"),
         "it was written by a newer version, in format 2"},
        {Changed(file, "\"format\":1", "\"format\":\"1\""), "it has no format number"},
        {Changed(file, "\"format\":1", "\"format\":0"), "it is not complete"},
        {Changed(file, "\"desktop\"", "\"dashtop\""), "it is of another provider or client"},
        {Changed(file, "\"signedInAt\":1700000000", "\"signedInAt\":-1"), "it is not complete"},
        {Changed(file, "\"lifetime\":3600", "\"lifetime\":9223372036854775807"),
         "it is not complete"},
        {Changed(file, "\"subject\":\"alice-1\"", "\"subject\":null"), "it is not complete"},
        {Changed(file, "\"claims\":{", "\"claims\":1,\"x\":{"), "it is not complete"},
    };
    int number = 0;
    for (Sample const& sample : samples) {
        SCOPED_TRACE(sample.content.substr(0, 200));
        std::string reason;
        ASSERT_TRUE(ReplacePrivateFile(file, sample.content, reason)) << reason;
        auto const read = store.Read(Issuer, ClientId);
        ASSERT_FALSE(read);
        std::string const aside = name + ".damaged-" + std::to_string(++number);
        EXPECT_THAT(read.Why().reason, HasSubstr(name + " cannot be used and was set aside as " +
                                                 aside + ": " + sample.reason));
        EXPECT_EQ(read.Why().remedy, "sign in again");
        EXPECT_EQ(Rig::ContentOf(StoreIn(folder) / aside), sample.content);
        EXPECT_EQ(Look(store), "nobody");
    }
    ASSERT_TRUE(store.Write(NewLogin()));
    EXPECT_EQ(Look(store), "signed in as alice-1");
}

TEST(TokenStore, DoesNotTakeAFileThatIsNoFile)
{
    TestFolder const folder;
    TokenStore store(StoreIn(folder));
    fs::create_directories(store.FileOf(Issuer, ClientId));
    EXPECT_THAT(Look(store), HasSubstr("was set aside as "));
    EXPECT_EQ(Look(store), "nobody");
}

TEST(TokenStore, LeavesADamagedFileToWhoeverHasTheLock)
{
    TestFolder const folder;
    TokenStore store(StoreIn(folder));
    TokenStore another(StoreIn(folder));
    ASSERT_TRUE(store.Write(NewLogin()));
    auto lock = another.Acquire(Issuer, ClientId, milliseconds(0));
    ASSERT_TRUE(lock) << lock.Why().reason;
    std::string reason;
    ASSERT_TRUE(ReplacePrivateFile(store.FileOf(Issuer, ClientId), "half", reason));
    EXPECT_THAT(Look(store), HasSubstr("cannot be used: "));
    ASSERT_TRUE(another.Write(NewLogin()));
    lock = Failure();
    EXPECT_EQ(Look(store), "signed in as alice-1");
    for (std::string const& file : FilesIn(StoreIn(folder)))
        EXPECT_THAT(file, Not(HasSubstr("damaged")));
}

TEST(TokenStore, SetsAsideUnderItsOwnLock)
{
    TestFolder const folder;
    TokenStore store(StoreIn(folder));
    ASSERT_TRUE(store.Write(NewLogin()));
    std::string reason;
    ASSERT_TRUE(ReplacePrivateFile(store.FileOf(Issuer, ClientId), "half", reason));
    auto const lock = store.Acquire(Issuer, ClientId, milliseconds(0));
    ASSERT_TRUE(lock);
    EXPECT_THAT(Look(store), HasSubstr("was set aside as "));
}

TEST(TokenStore, RemovesWhatWasSetAsideButNotTheLoginsOfOthers)
{
    TestFolder const folder;
    TokenStore store(StoreIn(folder));
    ASSERT_TRUE(store.Write(NewLogin()));
    auto const file = store.FileOf(Issuer, ClientId);
    auto const aside = [&](std::string const& ending) {
        return fs::path(file) += ".damaged-" + ending;
    };
    fs::copy_file(file, aside("1"));
    Rig::WriteTo(aside("2"), "damaged");
    StoredLogin login = NewLogin();
    login.clientId = "other";
    ASSERT_TRUE(store.Write(login));
    auto const others = store.FileOf(Issuer, "other");
    fs::copy_file(others, aside("3"));
    fs::rename(others, fs::path(others) += ".damaged-1");
    fs::create_directories(aside("4"));

    std::vector<fs::path> left;
    auto const tokens = store.RemoveSetAside(Issuer, ClientId, left);
    EXPECT_TRUE(left.empty());
    ASSERT_EQ(tokens.size(), 1u);
    EXPECT_EQ(*tokens[0], *NewLogin().refreshToken);
    EXPECT_FALSE(fs::exists(aside("1")));
    EXPECT_FALSE(fs::exists(aside("2")));
    EXPECT_TRUE(fs::exists(aside("3")));
    EXPECT_TRUE(fs::exists(aside("4")));
    EXPECT_TRUE(fs::exists(fs::path(others) += ".damaged-1"));
    EXPECT_EQ(Look(store), "signed in as alice-1");
}

TEST(TokenStore, TellsWhereItCannotWrite)
{
    TestFolder const folder;
    Rig::WriteTo(folder / "file", "in the way");
    TokenStore store(folder / "file" / "store");
    auto const written = store.Write(NewLogin());
    ASSERT_FALSE(written);
    EXPECT_THAT(written.Why().reason, HasSubstr(" cannot be written: "));
    auto const lock = store.Acquire(Issuer, ClientId, milliseconds(0));
    EXPECT_FALSE(lock);
    EXPECT_EQ(Look(store), "nobody");
}

CHILD_PROGRAM(WritesLoginsForEver)
{
    TokenStore store(PathFromText(arguments.at(0)));
    StoredLogin login = NewLogin();
    for (int i = 0;; ++i) {
        login.refreshToken = std::string(static_cast<std::size_t>(i * 7919 % 50'000), 'x');
        auto const lock = store.Acquire(Issuer, ClientId, std::chrono::minutes(1));
        if (!lock || !store.Write(login))
            return 1;
    }
}

TEST(TokenStore, HasTheOldOrTheNewLoginHoweverAProcessEnds)
{
    TestFolder const folder;
    TokenStore store(StoreIn(folder));
    ASSERT_TRUE(store.Write(NewLogin()));
    for (int i = 0; i < 20; ++i) {
        Rig::Child child("WritesLoginsForEver", {PathText(StoreIn(folder))});
        std::this_thread::sleep_for(milliseconds(20 + i * 7 % 30));
        child.Kill();
        ASSERT_EQ(Look(store), "signed in as alice-1");
        // The lock ends with its process.
        ASSERT_TRUE(store.Acquire(Issuer, ClientId, std::chrono::seconds(5)));
    }
}
