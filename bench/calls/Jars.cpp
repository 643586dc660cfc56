// Cookie jars as documents, both ways. They need no plugin.

#include <string>

#include <NetworkCookie.h>
#include <SSOServicesPrivate.h>

#include "framework/Floor.h"
#include "framework/Main.h"

using namespace Bench;
using namespace Halvorix::WebServices;

namespace {

std::vector<Cookie> PlainJar(std::int64_t count)
{
    std::vector<Cookie> jar;
    for (std::int64_t i = 0; i < count; ++i) {
        std::string const number = std::to_string(i);
        jar.push_back({"session-" + number, "0123456789abcdef0123456789abcdef" + number,
                       "sign-on" + number + ".example", "/accounts/login", true, i % 2 == 0,
                       1900000000 + i});
    }
    return jar;
}

void Fill(NetworkCookieJar& jar, std::int64_t count)
{
    for (Cookie const& plain : PlainJar(count)) {
        NetworkCookie cookie;
        cookie.SetName(plain.name.c_str());
        cookie.SetValue(plain.value.c_str());
        cookie.SetDomain(std::wstring(plain.domain.begin(), plain.domain.end()).c_str());
        cookie.SetPath(std::wstring(plain.path.begin(), plain.path.end()).c_str());
        cookie.SetSecure(plain.secure);
        cookie.SetHttpOnly(plain.httpOnly);
        cookie.SetExpiryDate(plain.expiryDate);
        jar.AddCookie(cookie);
    }
}

void Write_Floor(benchmark::State& state)
{
    std::vector<Cookie> const jar = PlainJar(state.range(0));
    for (auto _ : state)
        benchmark::DoNotOptimize(FloorWriteJar(jar));
}

void Write_Ours(benchmark::State& state)
{
    NetworkCookieJar jar;
    Fill(jar, state.range(0));
    std::string text;
    for (auto _ : state)
        benchmark::DoNotOptimize(SSOServicesPrivate::NetworkCookieJarToJson(jar, text));
    if (text != FloorWriteJar(PlainJar(state.range(0))))
        state.SkipWithError("not the same document");
}

void Read_Floor(benchmark::State& state)
{
    std::string const text = FloorWriteJar(PlainJar(state.range(0)));
    std::vector<Cookie> jar;
    for (auto _ : state)
        benchmark::DoNotOptimize(FloorReadJar(text.c_str(), jar));
}

void Read_Ours(benchmark::State& state)
{
    std::string const text = FloorWriteJar(PlainJar(state.range(0)));
    NetworkCookieJar jar;
    for (auto _ : state)
        benchmark::DoNotOptimize(SSOServicesPrivate::JsonToNetworkCookieJar(text.c_str(), jar));
    if (jar.GetCookieCount() != state.range(0))
        state.SkipWithError("not the same jar");
}

void Counts(benchmark::internal::Benchmark* benchmark) { benchmark->Arg(1)->Arg(100)->Arg(10000); }

BENCHMARK(Write_Floor)->Name("jar to document|floor")->Apply(Counts);
BENCHMARK(Write_Ours)->Name("jar to document|ours")->Apply(Counts);
BENCHMARK(Read_Floor)->Name("document to jar|floor")->Apply(Counts);
BENCHMARK(Read_Ours)->Name("document to jar|ours")->Apply(Counts);

} // namespace
