#pragma once

#include <chrono>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <type_traits>
#include <vector>

#include <json/value.h>

#include "support/TextConversion.h"

namespace Rig {

/// One call that reached the recording plugin: it is written down with its
/// arguments as they arrived, and then does what the script says:
///   {"answer": value}        in place of the default answer
///   {"text": value}          in place of the default text, null for a null one
///   {"bytes": "c3ff"}        likewise, for bytes that a script cannot spell
///   {"repeat": count}        that text so many times over
///   {"empty": true}          an empty interface, from a getter; from a setter,
///                            nothing that is kept
///   {"throw": "text"}        std::runtime_error; of a number, that int
///   {"wait": "file"}         until the file exists, announced by file + ".waiting"
///   {"callBack": true}       uses the library on the same thread
///   {"askForPaths": true}    likewise, for what starts a search
///   {"fresh": true}          a factory or an interface of its own, whose end is
///                            written down
///   {"probe": seconds}       writes down ["LockIsFree", operation, bool]: whether
///                            another thread can take the library's lock meanwhile
/// The script's "*" is for each operation without an entry of its own that a
/// public call reaches.
/// With HXSSO_PLUGIN_QUIET set nothing is written down and the script is read
/// once: for hosts that call a million times, or while the process ends.
class Call {
public:
    template <class... Arguments>
    explicit Call(char const* operation, Arguments const&... arguments)
    {
        if (!IsQuiet()) {
            Json::Value line(Json::arrayValue);
            line.append(operation);
            (line.append(AsJson(arguments)), ...);
            WriteDown(line);
        }
        Act(operation);
    }

    bool IsFresh() const { return action["fresh"].asBool(); }
    bool IsEmpty() const { return action["empty"].asBool(); }

    template <class Value>
    Value Answer(Value usual) const
    {
        if (!action.isMember("answer"))
            return usual;
        return static_cast<Value>(action["answer"].asInt64());
    }

    /// The scripted text, or the usual one; false if it is to be null.
    bool Text(std::string& text) const;

    std::string Text() const;
    std::wstring WideText() const;

    /// Fills a buffer by the common convention, and answers the length.
    int Fill(wchar_t* buffer, int capacity) const;
    int Fill(char* buffer, int capacity) const;

    /// Fresh copies that the other side releases; null if the script says so.
    wchar_t* NewWideText() const;
    char* NewText() const;

private:
    static Json::Value AsJson(char const* text);
    static Json::Value AsJson(wchar_t const* text);
    static Json::Value AsJson(std::string const& text) { return text; }
    static Json::Value AsJson(std::wstring const& text)
    {
        return Halvorix::SSOServices::WideToUtf8(text);
    }
    static Json::Value AsJson(std::vector<std::string> const& texts);
    static Json::Value AsJson(std::map<std::wstring, std::wstring> const& texts);
    static Json::Value AsJson(std::map<std::string, std::string> const& texts);

    template <class Representation, class Period>
    static Json::Value AsJson(std::chrono::duration<Representation, Period> const& duration)
    {
        return static_cast<Json::Int64>(duration.count());
    }

    template <class Value>
    static Json::Value AsJson(Value const& value)
    {
        if constexpr (std::is_same_v<Value, bool>)
            return value;
        else if constexpr (std::is_pointer_v<Value>)
            return static_cast<Json::UInt64>(reinterpret_cast<std::uintptr_t>(value));
        else if constexpr (std::is_unsigned_v<Value>)
            return static_cast<Json::UInt64>(value);
        else
            return static_cast<Json::Int64>(value);
    }

    static bool IsQuiet();
    static void WriteDown(Json::Value const& line);
    void Act(char const* operation);

    std::string usualText;
    Json::Value action;
};

} // namespace Rig
