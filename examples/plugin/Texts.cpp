#include "Texts.h"

#include <algorithm>
#include <memory>
#include <sstream>

#include <boost/locale/encoding_utf.hpp>
#include <json/reader.h>
#include <json/writer.h>

namespace Sample {

namespace {

template <typename Unit>
int Copy(std::basic_string<Unit> const& text, Unit* buffer, int capacity)
{
    if (buffer == nullptr)
        return static_cast<int>(text.size());
    if (capacity < 1)
        return 0;
    std::size_t const count = text.copy(buffer, static_cast<std::size_t>(capacity) - 1);
    buffer[count] = Unit();
    return static_cast<int>(count);
}

template <typename Unit>
Unit* New(std::basic_string<Unit> const& text)
{
    auto copy = std::make_unique<Unit[]>(text.size() + 1);
    text.copy(copy.get(), text.size());
    return copy.release();
}

} // namespace

int CopyText(std::wstring const& text, wchar_t* buffer, int capacity)
{
    return Copy(text, buffer, capacity);
}

int CopyText(std::string const& text, char* buffer, int capacity)
{
    return Copy(text, buffer, capacity);
}

wchar_t* NewText(std::wstring const& text) { return New(text); }

char* NewText(std::string const& text) { return New(text); }

std::wstring Given(wchar_t const* text) { return text == nullptr ? L"" : text; }

std::string ToUtf8(std::wstring const& text) { return boost::locale::conv::utf_to_utf<char>(text); }

std::wstring ToWide(std::string const& text)
{
    return boost::locale::conv::utf_to_utf<wchar_t>(text);
}

Json::Value ReadJson(char const* text)
{
    Json::Value json;
    std::istringstream stream(text == nullptr ? "" : text);
    return Json::parseFromStream(Json::CharReaderBuilder(), stream, &json, nullptr) ? json
                                                                                    : Json::Value();
}

std::string WriteJson(Json::Value const& json)
{
    return Json::writeString(Json::StreamWriterBuilder(), json);
}

} // namespace Sample
