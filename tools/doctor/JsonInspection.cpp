#include "doctor/JsonInspection.h"

#include <algorithm>
#include <exception>
#include <string_view>

#include <json/reader.h>

#include "common/System.h"
#include "doctor/RepeatedKeys.h"
#include "doctor/SettingsFile.h"
#include "doctor/Text.h"
#include "doctor/TextOddities.h"
#include "support/TextConversion.h"

namespace Halvorix::Doctor {

namespace {

constexpr std::size_t MarkDistance = 1024;

bool BeginsWith(std::string const& text, std::string const& beginning)
{
    return text.rfind(beginning, 0) == 0;
}

// By its mark, or by the empty half of the first character, which every JSON file has.
bool IsUtf16(std::string const& text)
{
    return BeginsWith(text, "\xff\xfe") || BeginsWith(text, "\xfe\xff") ||
           (text.size() > 1 && (text[0] == '\0') != (text[1] == '\0'));
}

// Behind the comment or the string that begins there.
std::size_t EndOfComment(std::string const& text, std::size_t at)
{
    if (text[at + 1] == '/')
        return std::min(text.find_first_of("\r\n", at), text.size());
    std::size_t const end = text.find("*/", at + 2);
    return end == std::string::npos ? text.size() : end + 2;
}
std::size_t EndOfString(std::string const& text, std::size_t at)
{
    for (++at; at < text.size() && text[at] != '"'; ++at)
        if (text[at] == '\\')
            ++at;
    return at + 1;
}

// The comma before a bracket that closes the one which is open, white space and comments
// aside; npos: there is none. Up to the bracket the text is well formed.
std::size_t FindTrailingComma(std::string const& text, std::size_t bracket)
{
    if (bracket >= text.size() || (text[bracket] != '}' && text[bracket] != ']'))
        return std::string::npos;
    std::string open;
    std::size_t last = std::string::npos;
    for (std::size_t at = 0; at < bracket;) {
        char const unit = text[at];
        if (unit == '/' && (text[at + 1] == '/' || text[at + 1] == '*')) {
            at = EndOfComment(text, at);
            continue;
        }
        if (unit == '{' || unit == '[')
            open += unit;
        else if ((unit == '}' || unit == ']') && !open.empty())
            open.pop_back();
        if (std::string_view(" \t\r\n").find(unit) == std::string_view::npos)
            last = at;
        at = unit == '"' ? EndOfString(text, at) : at + 1;
    }
    bool const isClosing = !open.empty() && open.back() == (text[bracket] == '}' ? '{' : '[');
    return isClosing && last != std::string::npos && text[last] == ',' ? last : std::string::npos;
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

void Shorten(std::vector<Oddity>& oddities)
{
    constexpr std::size_t most = 1000;
    std::size_t others = 0;
    std::optional<Oddity> more;
    oddities.erase(std::remove_if(oddities.begin(), oddities.end(),
                                  [&](Oddity const& oddity) {
                                      if (oddity.stopsReading || ++others <= most)
                                          return false;
                                      if (!more)
                                          more = oddity;
                                      return true;
                                  }),
                   oddities.end());
    if (!more)
        return;
    more->code = "more";
    more->text = "is one of " + std::to_string(others - most) + " more, which are not told";
    more->remedy = "correct those that are told first";
    more->meant.clear();
    oddities.push_back(std::move(*more));
}

Oddity WrongType(Position at, std::string const& key, Json::Value const& value, char const* wanted,
                 bool stopsReading)
{
    return {at,
            key,
            "wrong-type",
            std::string("is ") + KindOf(value) + " where " + wanted + " belongs",
            std::string("write ") + wanted + " there",
            stopsReading,
            {}};
}

JsonInspection::JsonInspection(std::wstring const& file, std::ios::openmode mode)
{
    SettingsFile settings = ReadSettingsFile(file, mode);
    if (!settings.flaw.empty()) {
        Explain(settings.isTooLarge                ? Damage::TooLarge
                : BeginsWith(settings.flaw, "is ") ? Damage::NoFile
                                                   : Damage::NotOpened,
                settings.flaw);
        return;
    }
    text = std::move(settings.text);
    Position position{1, 1};
    for (std::size_t begin = 0; begin < text.size(); begin += MarkDistance) {
        marks.push_back(position);
        Advance(position, begin, std::min(begin + MarkDistance, text.size()));
    }
    try {
        Json::Reader reader;
        if (reader.parse(text, root))
            return;
        if (text.find_first_not_of(" \t\r\n") == std::string::npos)
            Explain(Damage::Empty, "is empty");
        else if (BeginsWith(text, "\xef\xbb\xbf"))
            Explain(Damage::ByteOrderMark, "begins with a byte order mark");
        else if (IsUtf16(text))
            Explain(Damage::Utf16, "is UTF-16, and the library reads UTF-8");
        else if (auto const errors = reader.getStructuredErrors(); errors.empty())
            Explain(Damage::NotJson, 0, "no reason is given");
        else
            Explain(Damage::NotJson, errors.front().offset_start, errors.front().message);
    } catch (std::exception const& exception) {
        // The reader throws for nothing else, and says it in terms of its own.
        Explain(Damage::TooDeep, 0, std::string("it is nested too deeply: ") + exception.what());
    }
}

void JsonInspection::Explain(Damage damage, std::string const& message)
{
    root = Json::Value();
    error = ParseError();
    error->damage = damage;
    error->message = Tools::Presentable(message);
}

void JsonInspection::Explain(Damage damage, Json::Value::LargestInt offset,
                             std::string const& message)
{
    Explain(damage, message);
    auto at = std::min(static_cast<std::size_t>(std::max<Json::Value::LargestInt>(offset, 0)),
                       text.size());
    // The reader stumbles over what comes next, lines below.
    std::size_t const comma =
        damage == Damage::NotJson ? FindTrailingComma(text, at) : std::string::npos;
    if (comma != std::string::npos) {
        error->isTrailingComma = true;
        error->message = std::string("there is a comma behind the last ") +
                         (text[at] == '}' ? "member" : "entry");
        at = comma;
    }
    error->at = PositionAt(at);
    error->line = Tools::Presentable(LineAt(at));
    while (!error->message.empty() && error->message.back() == '.')
        error->message.pop_back();
    if (BeginsWith(message, "Bad escape sequence"))
        error->message += "; a backslash in a path is written twice";
}

std::string JsonInspection::SpellingOf(Json::Value const& value) const
{
    auto const begin = static_cast<std::size_t>(value.getOffsetStart());
    auto const end = static_cast<std::size_t>(value.getOffsetLimit());
    return begin <= end && end <= text.size() ? text.substr(begin, end - begin) : value.asString();
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
                                 std::vector<Oddity>& oddities,
                                 std::vector<KeyElsewhere> const& elsewhere,
                                 std::string const& outside) const
{
    if (!object.isObject())
        return;
    for (std::string const& name : object.getMemberNames()) {
        if (std::find(known.begin(), known.end(), name) != known.end())
            continue;
        Position const at = PositionOf(name, object[name]);
        std::string const key = Tools::Presentable(prefix + name);
        auto const meant = std::find_if(known.begin(), known.end(), [&](std::string const& one) {
            return Lower(one) == Lower(name);
        });
        auto const other =
            std::find_if(elsewhere.begin(), elsewhere.end(),
                         [&](KeyElsewhere const& one) { return Lower(one.name) == Lower(name); });
        if (meant != known.end())
            oddities.push_back({at, key, "unknown-key", "is ignored: the key is written " + *meant,
                                "write " + *meant, false, prefix + *meant});
        else if (other == elsewhere.end())
            oddities.push_back({at, key, "unknown-key", "is not a key of this file, and is ignored",
                                "correct or remove it", false, std::string()});
        else if (other->isOfOtherFile)
            oddities.push_back({at, key, "key-of-the-other-file",
                                "is ignored: it belongs in " + other->place,
                                "write it in " + other->place, false, std::string()});
        else
            oddities.push_back({at, key, "misplaced-key",
                                "is ignored: it belongs in " + other->place,
                                "move it into " + other->place, false,
                                outside + other->place + "." + other->name});
    }
}

void JsonInspection::FindRepeated(std::vector<Oddity>& oddities) const
{
    for (RepeatedKey const& key : FindRepeatedKeys(text))
        oddities.push_back({PositionAt(key.offset),
                            Tools::Presentable(key.path),
                            "repeated-key",
                            "is there more than once, and the last one counts",
                            "leave one of them",
                            false,
                            {}});
}

void JsonInspection::FindTrailing(std::vector<Oddity>& oddities) const
{
    std::size_t at = std::min(static_cast<std::size_t>(root.getOffsetLimit()), text.size());
    for (bool isComment = true; isComment;) {
        // The last one ended texts once.
        at = std::min(text.find_first_not_of(" \t\r\n\x1a", at), text.size());
        bool const isBlock = text.compare(at, 2, "/*") == 0;
        isComment = isBlock || text.compare(at, 2, "//") == 0;
        if (isBlock)
            at = std::min(text.find("*/", at + 2), text.size() - 2) + 2;
        else if (isComment)
            at = std::min(text.find('\n', at), text.size());
    }
    if (at < text.size())
        oddities.push_back({PositionAt(at),
                            "the text behind the end",
                            "text-behind-the-end",
                            "is ignored: the file ends with its first object",
                            "remove it, or what stands before it",
                            false,
                            {}});
}

void JsonInspection::CheckQuotes(Json::Value const& value, std::string const& key, Position at,
                                 std::vector<Oddity>& oddities) const
{
    if (!value.isNumeric() && !value.isBool())
        return;
    std::string const spelling = SpellingOf(value);
    oddities.push_back(
        {at,
         key,
         "not-quoted",
         "is " + spelling + " without quotes, and reads as \"" + value.asString() + "\"",
         "write it in quotes: \"" + spelling + "\"",
         false,
         {}});
}

bool JsonInspection::CheckText(Json::Value const& object, std::string const& prefix,
                               std::string const& name, TextKind kind,
                               std::vector<Oddity>& oddities) const
{
    Json::Value const& value = object[name];
    if (value.isNull())
        return true;
    Position const at = PositionOf(name, value);
    std::string const key = prefix + name;
    if (value.isArray() || value.isObject()) {
        oddities.push_back(WrongType(at, key, value, "a text", true));
        return false;
    }
    CheckQuotes(value, key, at, oddities);
    FindTextOddities(value.asString(), kind, key, at, oddities);
    return true;
}

} // namespace Halvorix::Doctor
