// The value classes, texts and versions with each allocation failing.

#include <memory>

#include <gtest/gtest.h>

#include <NetworkCookie.h>
#include <OAuth2Token.h>
#include <SSOServicesPrivate.h>
#include <WebServicesConfiguration.h>
#include "discovery/CompatibleModule.h"
#include "discovery/PathText.h"
#include "faults/allocation/Sweep.h"
#include "support/SystemError.h"
#include "support/TextConversion.h"

using namespace Halvorix::SSOServices;
using namespace Halvorix::WebServices;

namespace {

constexpr wchar_t const* LongText = L"a text that is long enough to need memory";

OAuth2TokenSpec MakeSpec() { return {OAuth2TokenTypeDefault, L"data:read user:profile"}; }

OAuth2Token MakeToken()
{
    OAuth2Token token;
    SSOServicesPrivate::Initialize(token, LongText, MakeSpec());
    return token;
}

NetworkCookie MakeCookie()
{
    NetworkCookie cookie;
    cookie.SetName("a name that is long enough to need memory");
    cookie.SetDomain(LongText);
    return cookie;
}

WebServicesConfiguration MakeConfiguration()
{
    WebServicesConfiguration configuration;
    configuration.SetConsumerKey(LongText);
    configuration.SetOAuth2AccessTokenScope(LongText);
    return configuration;
}

template <class Value>
void SweepCopies(Value const& original, std::function<void(Value const&)> const& expectEqual)
{
    std::unique_ptr<Value> target;
    Faults::Operation operation;
    operation.run = [&] { target = std::make_unique<Value>(original); };
    operation.expectGood = [&] { expectEqual(*target); };
    operation.useAfterwards = [&] { EXPECT_EQ(target, nullptr); };
    operation.discard = [&] { target.reset(); };
    Faults::FailEachAllocation(operation);

    operation.prepare = [&] { target = std::make_unique<Value>(); };
    operation.run = [&] { *target = original; };
    // Half of it may be there; the next assignment brings all of it.
    operation.useAfterwards = [&] {
        Value const copy(*target);
        *target = original;
        expectEqual(*target);
    };
    Faults::FailEachAllocation(operation);
}

/// Something made of something, that is there whole or not at all.
template <class Result, class Make>
void SweepMaking(Make make)
{
    Result const good = make();
    std::unique_ptr<Result> result;
    Faults::Operation operation;
    operation.run = [&] { result = std::make_unique<Result>(make()); };
    operation.expectGood = [&] { EXPECT_EQ(*result, good); };
    operation.useAfterwards = [&] { EXPECT_EQ(result, nullptr); };
    operation.discard = [&] { result.reset(); };
    Faults::FailEachAllocation(operation);
}

} // namespace

TEST(ValueAllocation, FailingInACopyOfASpecLeavesIt)
{
    OAuth2TokenSpec const spec = MakeSpec();
    SweepCopies<OAuth2TokenSpec>(spec,
                                 [&](OAuth2TokenSpec const& copy) { EXPECT_TRUE(copy == spec); });
}

TEST(ValueAllocation, FailingInACopyOfATokenLeavesIt)
{
    OAuth2Token const token = MakeToken();
    SweepCopies<OAuth2Token>(token, [&](OAuth2Token const& copy) { EXPECT_TRUE(copy == token); });
}

TEST(ValueAllocation, FailingInACopyOfACookieLeavesIt)
{
    NetworkCookie const cookie = MakeCookie();
    SweepCopies<NetworkCookie>(cookie, [](NetworkCookie const& copy) {
        wchar_t domain[64] = {};
        copy.GetDomain(domain, 64);
        EXPECT_EQ(domain, std::wstring(LongText));
    });
}

TEST(ValueAllocation, FailingInACopyOfAConfigurationLeavesIt)
{
    WebServicesConfiguration const configuration = MakeConfiguration();
    SweepCopies<WebServicesConfiguration>(configuration, [](WebServicesConfiguration const& copy) {
        wchar_t scope[64] = {};
        copy.GetOAuth2AccessTokenScope(scope, 64);
        EXPECT_EQ(scope, std::wstring(LongText));
    });
}

TEST(ValueAllocation, FailingInAScopeKeepsTheOldOne)
{
    std::unique_ptr<OAuth2TokenSpec> spec;
    Faults::Operation operation;
    operation.prepare = [&] { spec = std::make_unique<OAuth2TokenSpec>(MakeSpec()); };
    operation.run = [&] { spec->SetScope(L"write:data  another:scope read:more"); };
    operation.expectGood = [&] {
        wchar_t scope[64] = {};
        spec->GetScope(scope, 64);
        EXPECT_EQ(scope, std::wstring(L"another:scope read:more write:data"));
    };
    operation.useAfterwards = [&] { EXPECT_TRUE(*spec == MakeSpec()); };
    operation.discard = [&] { spec.reset(); };
    Faults::FailEachAllocation(operation);
}

TEST(ValueAllocation, FailingInASpecWithAScopeMakesNone)
{
    std::unique_ptr<OAuth2TokenSpec> spec;
    Faults::Operation operation;
    operation.run = [&] { spec = std::make_unique<OAuth2TokenSpec>(MakeSpec()); };
    operation.discard = [&] { spec.reset(); };
    Faults::FailEachAllocation(operation);
}

TEST(ValueAllocation, FailingInAJarAddsNoCookie)
{
    NetworkCookie const cookie = MakeCookie();
    std::unique_ptr<NetworkCookieJar> jar;
    Faults::Operation operation;
    operation.prepare = [&] {
        jar = std::make_unique<NetworkCookieJar>();
        jar->AddCookie(cookie);
    };
    operation.run = [&] { jar->AddCookie(cookie); };
    operation.expectGood = [&] { EXPECT_EQ(jar->GetCookieCount(), 2); };
    operation.useAfterwards = [&] { EXPECT_EQ(jar->GetCookieCount(), 1); };
    operation.discard = [&] { jar.reset(); };
    Faults::FailEachAllocation(operation);
    operation.run = [&] { NetworkCookie const copy = jar->GetCookie(0); };
    operation.expectGood = [&] { EXPECT_EQ(jar->GetCookieCount(), 1); };
    Faults::FailEachAllocation(operation);
}

TEST(TextAllocation, FailingInAConversionReachesTheCaller)
{
    std::string const narrow = "a text that is long enough to need memory \xC3\xA4\xE2\x98\x83";
    SweepMaking<std::wstring>([&] { return Utf8ToWide(narrow); });
    std::wstring const wide = Utf8ToWide(narrow);
    SweepMaking<std::string>([&] { return WideToUtf8(wide); });
    SweepMaking<std::wstring>([] { return FormatSystemError(2); });
}

TEST(TextAllocation, FailingInAPathReachesTheCaller)
{
    std::wstring const path = L"//some/where\\that//needs/memory/";
    SweepMaking<std::wstring>([&] { return NormalizePath(path); });
    SweepMaking<std::wstring>([&] { return JoinPath(path, L"a name that needs memory"); });
    SweepMaking<std::wstring>([&] { return ParentPath(path); });
    SweepMaking<std::vector<std::wstring>>(
        [&] { return SplitPathList(L"the first path of all;;the second path"); });
}

TEST(VersionAllocation, FailingReachesTheCaller)
{
    std::vector<CompatibleModule> const unsorted = [] {
        std::vector<CompatibleModule> list(3);
        for (std::size_t i = 0; i < list.size(); ++i) {
            list[i].module = std::wstring(40, L'a' + static_cast<wchar_t>(i));
            ParseVersion(list[i].version, i == 1 ? "three.0" : std::to_string(i) + ".x");
        }
        return list;
    }();
    SweepMaking<std::wstring>([&] {
        std::vector<CompatibleModule> list = unsorted;
        SortByVersion(list);
        CompatibleModule selected;
        EXPECT_TRUE(SelectCompatibleModule({}, list, selected));
        return selected.module;
    });
    SweepMaking<std::string>([] {
        VersionRange range;
        range.Set("11.22.00.1800 and a long tail of it", "10", {"10.1", " . "});
        return VersionToString(range.maxVersion);
    });
}
