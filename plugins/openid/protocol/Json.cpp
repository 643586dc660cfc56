#include "openid/protocol/Texts.h"

#include <algorithm>
#include <cstddef>
#include <memory>

#include <json/reader.h>

#include "support/SecretText.h"

namespace Halvorix::OpenId {

namespace {

/// The first thing that jsoncpp tells, on one line: "* Line 1, Column 2\n  Syntax error\n* ...".
std::string FirstError(std::string text)
{
    constexpr std::string_view mark = "* ";
    if (text.compare(0, mark.size(), mark) == 0)
        text.erase(0, mark.size());
    text.erase(std::min(text.find("\n* "), text.size()));
    std::size_t const end = text.find("\n  ");
    if (end != std::string::npos)
        text.replace(end, 3, ": ");
    // A key or a number of the document, which may be a secret.
    std::size_t const first = text.find('\''), last = text.rfind('\'');
    if (first != std::string::npos)
        text.replace(first, (last > first ? last + 1 : text.size()) - first, "'...'");
    return OneLine(text);
}

/// Whether there is one. jsoncpp 1.9.5 passes over those before a member, allowed or not.
bool HasComment(std::string_view text)
{
    bool isInText = false;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '"')
            isInText = !isInText;
        else if (text[i] == '\\')
            ++i;
        else if (text[i] == '/' && !isInText)
            return true;
    }
    return false;
}

/// A text as it lies in its value, without a copy.
std::string_view TextOf(Json::Value const& json)
{
    char const* begin = nullptr;
    char const* end = nullptr;
    bool const isThere = json.getString(&begin, &end);
    return isThere ? std::string_view(begin, static_cast<std::size_t>(end - begin))
                   : std::string_view();
}

/// An escape for half of a character gives bytes that are not UTF-8: nobody could read again what
/// is written of them.
bool HasHalfCharacter(Json::Value const& json)
{
    if (json.isString())
        return !IsUtf8(TextOf(json));
    for (auto member = json.begin(); member != json.end(); ++member)
        if ((json.isObject() && !IsUtf8(member.name())) || HasHalfCharacter(*member))
            return true;
    return false;
}

Json::CharReaderBuilder StrictBuilder(int deepest)
{
    Json::CharReaderBuilder builder;
    Json::CharReaderBuilder::strictMode(&builder.settings_);
    builder["stackLimit"] = deepest;
    builder["rejectDupKeys"] = true;
    builder["failIfExtra"] = true;
    return builder;
}

} // namespace

Json::Value ParseJsonObject(std::string_view text, std::string& reason, int deepest)
{
    Json::Value json;
    try {
        // jsoncpp would hand on whatever bytes stand in a text.
        if (!IsUtf8(text)) {
            reason = "is not UTF-8";
            return Json::Value();
        }
        // jsoncpp takes it for the end, whatever stands behind it.
        if (text.find('\0') != std::string_view::npos) {
            reason = "is not valid JSON: it has a zero character";
            return Json::Value();
        }
        if (HasComment(text)) {
            reason = "is not valid JSON: it has a comment, or a slash outside of a text";
            return Json::Value();
        }
        std::unique_ptr<Json::CharReader> const reader(StrictBuilder(deepest).newCharReader());
        std::string errors;
        if (!reader->parse(text.data(), text.data() + text.size(), &json, &errors)) {
            reason = "is not valid JSON: " + FirstError(errors);
            WipeJson(json);
            return Json::Value();
        }
    } catch (Json::Exception const& error) {
        // Nested too deeply, among others. A want of memory says nothing of the text.
        reason = "is not valid JSON: " + FirstError(error.what());
        WipeJson(json);
        return Json::Value();
    } catch (...) {
        WipeJson(json);
        throw;
    }
    if (HasHalfCharacter(json)) {
        reason = "is not valid JSON: it has half of a character";
        WipeJson(json);
        return Json::Value();
    }
    if (!json.isObject()) {
        reason = "is not a JSON object";
        WipeJson(json);
        return Json::Value();
    }
    return json;
}

std::string TextMember(Json::Value const& object, char const* key)
{
    if (!object.isObject())
        return {};
    Json::Value const& member = object[key];
    return member.isString() ? member.asString() : std::string();
}

void WipeJson(Json::Value& json)
{
    if (json.isArray() || json.isObject()) {
        for (Json::Value& member : json)
            WipeJson(member);
    } else if (json.isString()) {
        // The memory is the value's own: jsoncpp copies what it parses and what it is given.
        std::string_view const text = TextOf(json);
        SSOServices::Wipe(const_cast<char*>(text.data()), text.size());
    }
    json = Json::Value();
}

} // namespace Halvorix::OpenId
