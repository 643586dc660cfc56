// Scopes and the two text conversions.

#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

#include <OAuth2Token.h>
#include "framework/Main.h"
#include "support/TextConversion.h"

using namespace Halvorix::SSOServices;
using Halvorix::WebServices::OAuth2TokenSpec;

namespace {

std::wstring Scope(std::int64_t words)
{
    std::wstring text;
    for (std::int64_t i = 0; i < words; ++i)
        text += L"data" + std::to_wstring(i * 7919 % 100003) + L":Read ";
    text.pop_back();
    return text;
}

wchar_t Folded(wchar_t unit)
{
    return unit >= L'A' && unit <= L'Z' ? static_cast<wchar_t>(unit - L'A' + L'a') : unit;
}

bool Before(std::wstring const& a, std::wstring const& b)
{
    return std::lexicographical_compare(a.begin(), a.end(), b.begin(), b.end(),
                                        [](wchar_t x, wchar_t y) { return Folded(x) < Folded(y); });
}

void Scope_Floor(benchmark::State& state)
{
    std::wstring const scope = Scope(state.range(0));
    for (auto _ : state) {
        std::vector<std::wstring> words;
        std::size_t at = 0;
        for (std::size_t blank = 0; (blank = scope.find(L' ', at)) != std::wstring::npos;
             at = blank + 1)
            words.push_back(scope.substr(at, blank - at));
        words.push_back(scope.substr(at));
        std::sort(words.begin(), words.end(), Before);
        std::wstring joined;
        for (std::wstring const& word : words) {
            if (!joined.empty())
                joined += L' ';
            joined += word;
        }
        benchmark::DoNotOptimize(joined.data());
    }
}

void Scope_Ours(benchmark::State& state)
{
    std::wstring const scope = Scope(state.range(0));
    OAuth2TokenSpec const spec;
    for (auto _ : state)
        benchmark::DoNotOptimize(spec.SetScope(scope.c_str()));
}

std::uint32_t Byte(char c) { return static_cast<unsigned char>(c); }

// Mostly ASCII, as names and paths are, with two and three bytes in between.
std::string Narrow()
{
    std::string text;
    while (text.size() < 1000000)
        text += "Zo\xC3\xAB Marsh, data:read user:profile \xE2\x82\xAC 42; ";
    return text;
}

std::wstring PlainWiden(std::string const& text)
{
    std::wstring wide;
    for (std::size_t i = 0; i < text.size();) {
        std::uint32_t const first = Byte(text[i++]);
        if (first < 0x80)
            wide.push_back(static_cast<wchar_t>(first));
        else if (first < 0xE0)
            wide.push_back(static_cast<wchar_t>((first & 31) << 6 | (Byte(text[i++]) & 63)));
        else {
            std::uint32_t const second = Byte(text[i++]) & 63;
            wide.push_back(
                static_cast<wchar_t>((first & 15) << 12 | second << 6 | (Byte(text[i++]) & 63)));
        }
    }
    return wide;
}

std::string PlainNarrow(std::wstring const& text)
{
    std::string narrow;
    for (wchar_t const unit : text) {
        auto const value = static_cast<std::uint32_t>(unit);
        if (value < 0x80) {
            narrow.push_back(static_cast<char>(value));
        } else if (value < 0x800) {
            narrow.push_back(static_cast<char>(0xC0 | value >> 6));
            narrow.push_back(static_cast<char>(0x80 | (value & 63)));
        } else {
            narrow.push_back(static_cast<char>(0xE0 | value >> 12));
            narrow.push_back(static_cast<char>(0x80 | (value >> 6 & 63)));
            narrow.push_back(static_cast<char>(0x80 | (value & 63)));
        }
    }
    return narrow;
}

void Widen_Floor(benchmark::State& state)
{
    std::string const text = Narrow();
    for (auto _ : state)
        benchmark::DoNotOptimize(PlainWiden(text));
}

void Widen_Ours(benchmark::State& state)
{
    std::string const text = Narrow();
    for (auto _ : state)
        benchmark::DoNotOptimize(Utf8ToWide(text));
    if (Utf8ToWide(text) != PlainWiden(text))
        state.SkipWithError("not the same text");
}

void Narrow_Floor(benchmark::State& state)
{
    std::wstring const text = PlainWiden(Narrow());
    for (auto _ : state)
        benchmark::DoNotOptimize(PlainNarrow(text));
}

void Narrow_Ours(benchmark::State& state)
{
    std::wstring const text = PlainWiden(Narrow());
    for (auto _ : state)
        benchmark::DoNotOptimize(WideToUtf8(text));
    if (WideToUtf8(text) != PlainNarrow(text))
        state.SkipWithError("not the same text");
}

void Words(benchmark::internal::Benchmark* benchmark)
{
    benchmark->Arg(10)->Arg(1000)->Arg(100000);
}

BENCHMARK(Scope_Floor)->Name("scope|floor")->Apply(Words);
BENCHMARK(Scope_Ours)->Name("scope|ours")->Apply(Words);
BENCHMARK(Widen_Floor)->Name("UTF-8 to wide, 1 MB|floor");
BENCHMARK(Widen_Ours)->Name("UTF-8 to wide, 1 MB|ours");
BENCHMARK(Narrow_Floor)->Name("wide to UTF-8, 1 MB|floor");
BENCHMARK(Narrow_Ours)->Name("wide to UTF-8, 1 MB|ours");

} // namespace
