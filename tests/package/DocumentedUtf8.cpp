// Utf8 of the host in docs/getting-started.md, held against texts that a plugin may hand out.

#define main DocumentedMain
#include "Main.cpp"
#undef main

namespace {

bool failed = false;

void Expect(std::wstring const& text, std::string const& wanted)
{
    if (Utf8(text) == wanted)
        return;
    std::cout << "a text of " << text.size() << " units becomes";
    for (unsigned char const byte : Utf8(text))
        std::cout << ' ' << std::hex << int{byte};
    std::cout << std::endl;
    failed = true;
}

wchar_t Unit(unsigned long value) { return static_cast<wchar_t>(value); }

} // namespace

int main()
{
    std::wstring const high(1, Unit(0xD83D));
    std::wstring const low(1, Unit(0xDE00));
    std::string const replacement = "\xEF\xBF\xBD";
    Expect(L"a\u00EB\u20AC", "a\xC3\xAB\xE2\x82\xAC");
    Expect(high + low, "\xF0\x9F\x98\x80");
    Expect(high, replacement);
    Expect(low, replacement);
    Expect(high + L"a", replacement + "a");
    Expect(high + high + low, replacement + "\xF0\x9F\x98\x80");
    Expect(low + high, replacement + replacement);
    Expect(L"\uD7FF\uE000", "\xED\x9F\xBF\xEE\x80\x80");
    if (sizeof(wchar_t) == 4) {
        Expect(std::wstring(1, Unit(0x10FFFF)), "\xF4\x8F\xBF\xBF");
        Expect(std::wstring(1, Unit(0x110000)), replacement);
        Expect(std::wstring(1, Unit(0xFFFFFFFF)), replacement);
    }
    return failed;
}
