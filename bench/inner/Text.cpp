// Scopes, base64 and the two text conversions.

#include <algorithm>
#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "../../include/OAuth2Token.h"
#include "../framework/Main.h"
#include "json/Base64.h"
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

std::string Bytes(std::int64_t count)
{
    std::string bytes;
    for (std::int64_t i = 0; i < count; ++i)
        bytes.push_back(static_cast<char>(i * 31 % 251));
    return bytes;
}

constexpr char const* Alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

std::uint32_t Byte(char c) { return static_cast<unsigned char>(c); }

// Whole groups of three alone: the least that encoding could be.
std::string PlainEncode(std::string const& bytes)
{
    std::string text;
    for (std::size_t i = 0; i + 2 < bytes.size(); i += 3) {
        std::uint32_t const group =
            Byte(bytes[i]) << 16 | Byte(bytes[i + 1]) << 8 | Byte(bytes[i + 2]);
        text.push_back(Alphabet[group >> 18]);
        text.push_back(Alphabet[group >> 12 & 63]);
        text.push_back(Alphabet[group >> 6 & 63]);
        text.push_back(Alphabet[group & 63]);
    }
    return text;
}

std::string PlainDecode(std::string const& text)
{
    static std::array<std::uint8_t, 256> const values = [] {
        std::array<std::uint8_t, 256> table{};
        for (std::uint8_t i = 0; i < 64; ++i)
            table[Byte(Alphabet[i])] = i;
        return table;
    }();
    std::string bytes;
    for (std::size_t i = 0; i + 3 < text.size(); i += 4) {
        std::uint32_t group = 0;
        for (std::size_t k = 0; k < 4; ++k)
            group = group << 6 | values[Byte(text[i + k])];
        bytes.push_back(static_cast<char>(group >> 16));
        bytes.push_back(static_cast<char>(group >> 8));
        bytes.push_back(static_cast<char>(group));
    }
    return bytes;
}

void Encode_Floor(benchmark::State& state)
{
    std::string const bytes = Bytes(state.range(0));
    for (auto _ : state)
        benchmark::DoNotOptimize(PlainEncode(bytes));
}

void Encode_Ours(benchmark::State& state)
{
    std::string const bytes = Bytes(state.range(0));
    for (auto _ : state)
        benchmark::DoNotOptimize(Base64Encode(bytes));
    if (Base64Encode(bytes) != PlainEncode(bytes))
        state.SkipWithError("not the same text");
}

void Decode_Floor(benchmark::State& state)
{
    std::string const text = PlainEncode(Bytes(state.range(0)));
    for (auto _ : state)
        benchmark::DoNotOptimize(PlainDecode(text));
}

void Decode_Ours(benchmark::State& state)
{
    std::string const text = PlainEncode(Bytes(state.range(0)));
    for (auto _ : state)
        benchmark::DoNotOptimize(Base64Decode(text));
    if (Base64Decode(text) != Bytes(state.range(0)))
        state.SkipWithError("not the same bytes");
}

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
// Whole groups of three.
void Sizes(benchmark::internal::Benchmark* benchmark) { benchmark->Arg(1023)->Arg(1048575); }

BENCHMARK(Scope_Floor)->Name("scope|floor")->Apply(Words);
BENCHMARK(Scope_Ours)->Name("scope|ours")->Apply(Words);
BENCHMARK(Encode_Floor)->Name("base64, encoding|floor")->Apply(Sizes);
BENCHMARK(Encode_Ours)->Name("base64, encoding|ours")->Apply(Sizes);
BENCHMARK(Decode_Floor)->Name("base64, decoding|floor")->Apply(Sizes);
BENCHMARK(Decode_Ours)->Name("base64, decoding|ours")->Apply(Sizes);
BENCHMARK(Widen_Floor)->Name("UTF-8 to wide, 1 MB|floor");
BENCHMARK(Widen_Ours)->Name("UTF-8 to wide, 1 MB|ours");
BENCHMARK(Narrow_Floor)->Name("wide to UTF-8, 1 MB|floor");
BENCHMARK(Narrow_Ours)->Name("wide to UTF-8, 1 MB|ours");

} // namespace
