#include "JsonInspection.h"

#include <algorithm>
#include <exception>
#include <string_view>

#include <json/reader.h>

#include "platform/Platform.h"
#include "support/TextConversion.h"

namespace Halvorix::Doctor {

namespace {

constexpr std::size_t MarkDistance = 1024;

std::string Lower(std::string text)
{
    for (char& unit : text)
        if (unit >= 'A' && unit <= 'Z')
            unit = static_cast<char>(unit - 'A' + 'a');
    return text;
}

bool BeginsWith(std::string const& text, char const* beginning)
{
    return text.rfind(beginning, 0) == 0;
}

// Editors that mean well put these in front; to the reader they are no JSON.
char const* MarkOf(std::string const& text)
{
    if (BeginsWith(text, "\xef\xbb\xbf"))
        return "the file begins with a byte order mark; save it as UTF-8 without one";
    if (BeginsWith(text, "\xff\xfe") || BeginsWith(text, "\xfe\xff"))
        return "the file is UTF-16; save it as UTF-8";
    return nullptr;
}

} // namespace

bool IsReadable(std::string const& text)
{
    return text.empty() || !SSOServices::Utf8ToWide(text).empty();
}

char const* KindOf(Json::Value const& value)
{
    switch (value.type()) {
    case Json::nullValue:
        return "null";
    case Json::arrayValue:
        return "an array";
    case Json::objectValue:
        return "an object";
    case Json::stringValue:
        return "a text";
    case Json::booleanValue:
        return "a boolean";
    case Json::intValue:
    case Json::uintValue:
    case Json::realValue:
        break;
    }
    return "a number";
}

JsonInspection::JsonInspection(std::wstring const& file, std::ios::openmode mode)
    : text(Halvorix::Platform::ReadRegularFile(file, mode))
{
    Position position{1, 1};
    for (std::size_t begin = 0; begin < text.size(); begin += MarkDistance) {
        marks.push_back(position);
        Advance(position, begin, std::min(begin + MarkDistance, text.size()));
    }
    try {
        Json::Reader reader;
        if (reader.parse(text, root))
            return;
        auto const errors = reader.getStructuredErrors();
        if (errors.empty())
            Explain(0, "no reason is given");
        else
            Explain(errors.front().offset_start, errors.front().message);
    } catch (std::exception const& exception) {
        // The reader throws for nothing else, and says it in terms of its own.
        Explain(0, std::string("the file is nested too deeply: ") + exception.what());
        error->stopsReading = true;
    }
}

void JsonInspection::Explain(Json::Value::LargestInt offset, std::string const& message)
{
    root = Json::Value();
    error = ParseError();
    auto const at = std::min(static_cast<std::size_t>(std::max<Json::Value::LargestInt>(offset, 0)),
                             text.size());
    error->at = PositionAt(at);
    error->line = Tools::Presentable(LineAt(at));
    char const* const mark = MarkOf(text);
    error->message = Tools::Presentable(mark != nullptr ? mark
                                        : text.empty()  ? "the file is empty or cannot be read"
                                                        : message);
    while (!error->message.empty() && error->message.back() == '.')
        error->message.pop_back();
}

Position JsonInspection::PositionAt(std::size_t offset) const
{
    offset = std::min(offset, text.size());
    if (marks.empty())
        return {1, 1};
    std::size_t const mark = std::min(offset / MarkDistance, marks.size() - 1);
    Position position = marks[mark];
    Advance(position, mark * MarkDistance, offset);
    return position;
}

void JsonInspection::Advance(Position& position, std::size_t begin, std::size_t end) const
{
    for (std::size_t i = begin; i < end; ++i) {
        if (text[i] == '\n')
            position = {position.line + 1, 1};
        else if ((static_cast<unsigned char>(text[i]) & 0xC0) != 0x80)
            ++position.column;
    }
}

std::string JsonInspection::LineAt(std::size_t offset) const
{
    std::size_t const before = offset == 0 ? std::string::npos : text.rfind('\n', offset - 1);
    std::size_t const begin = before == std::string::npos ? 0 : before + 1;
    std::string line = text.substr(begin, text.find('\n', begin) - begin);
    if (!line.empty() && line.back() == '\r')
        line.pop_back();
    constexpr std::size_t longest = 200;
    if (line.size() > longest)
        line.resize(longest);
    return line;
}

Position JsonInspection::PositionOf(Json::Value const& value) const
{
    return PositionAt(static_cast<std::size_t>(value.getOffsetStart()));
}

Position JsonInspection::PositionOf(std::string const& name, Json::Value const& value) const
{
    // Not far before its value: a key that is spelled in escapes is not found at all.
    constexpr std::size_t farthest = 4096;
    auto const start = std::min(static_cast<std::size_t>(value.getOffsetStart()), text.size());
    std::size_t const reach = name.size() + farthest;
    std::size_t const begin = start < reach ? 0 : start - reach;
    std::string_view const before = std::string_view(text).substr(begin, start - begin);
    std::size_t const found = before.rfind('"' + name + '"');
    return PositionAt(found == std::string_view::npos ? start : begin + found);
}

void JsonInspection::FindUnknown(Json::Value const& object, std::string const& prefix,
                                 std::vector<std::string> const& known,
                                 std::vector<Oddity>& oddities) const
{
    if (!object.isObject())
        return;
    for (std::string const& name : object.getMemberNames()) {
        if (std::find(known.begin(), known.end(), name) != known.end())
            continue;
        auto const meant = std::find_if(known.begin(), known.end(), [&](std::string const& key) {
            return Lower(key) == Lower(name);
        });
        oddities.push_back({PositionOf(name, object[name]), Tools::Presentable(prefix + name),
                            meant == known.end() ? "no key of this file, ignored"
                                                 : "ignored: the key is written " + *meant,
                            false, meant == known.end() ? std::string() : prefix + *meant});
    }
}

bool JsonInspection::CheckText(Json::Value const& object, std::string const& prefix,
                               std::string const& name, TextKind kind,
                               std::vector<Oddity>& oddities) const
{
    Json::Value const& value = object[name];
    if (kind == TextKind::Wide && value.isString() && !IsReadable(value.asString()))
        oddities.push_back(
            {PositionOf(name, value), prefix + name, "not UTF-8 and reads as empty", false, {}});
    if (value.isNull() || value.isString())
        return true;
    bool const stops = value.isArray() || value.isObject();
    oddities.push_back(
        {PositionOf(name, value),
         prefix + name,
         std::string(KindOf(value)) + (stops ? " where a text belongs" : ", taken as a text"),
         stops,
         {}});
    return !stops;
}

} // namespace Halvorix::Doctor
