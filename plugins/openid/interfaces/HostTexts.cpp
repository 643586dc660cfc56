#include "openid/interfaces/HostTexts.h"

#include <memory>
#include <string_view>

#include <json/writer.h>

#include "openid/protocol/Texts.h"

namespace Halvorix::OpenId {

namespace {

/// By reference to the end, since any copy of a secret would stay behind.
template <class Unit>
int Copy(std::basic_string_view<Unit> text, Unit* buffer, int capacity)
{
    if (buffer == nullptr)
        return static_cast<int>(text.size());
    if (capacity < 1)
        return 0;
    std::size_t const count = text.copy(buffer, static_cast<std::size_t>(capacity) - 1);
    buffer[count] = Unit();
    return static_cast<int>(count);
}

template <class Unit>
Unit* New(std::basic_string<Unit> const& text)
{
    auto copy = std::make_unique<Unit[]>(text.size() + 1);
    text.copy(copy.get(), text.size());
    return copy.release();
}

} // namespace

int CopyText(std::string const& text, wchar_t* buffer, int capacity)
{
    return Copy<wchar_t>(ToWide(text), buffer, capacity);
}

int CopyText(std::string const& text, char* buffer, int capacity)
{
    return Copy<char>(text, buffer, capacity);
}

int CopyWhole(Secret const& text, wchar_t* buffer, int capacity)
{
    SSOServices::SecretText<wchar_t> const wide(ToWide(*text));
    bool const fits = capacity >= 1 && wide->size() < static_cast<std::size_t>(capacity);
    std::wstring_view const whole = *wide;
    return Copy(buffer == nullptr || fits ? whole : std::wstring_view(), buffer, capacity);
}

wchar_t* NewWideText(std::string const& text) { return New(ToWide(text)); }

char* NewText(std::string const& text) { return New(text); }

std::string Given(wchar_t const* text) { return text == nullptr ? std::string() : ToUtf8(text); }

std::string WriteJson(Json::Value const& json)
{
    return Json::writeString(Json::StreamWriterBuilder(), json);
}

} // namespace Halvorix::OpenId
