#pragma once

#include <exception>
#include <fstream>
#include <string>
#include <type_traits>
#include <vector>

#include <json/value.h>

namespace Rig {

/// What a host program tells the test that runs it, under names.
class Report {
public:
    explicit Report(std::string const& file);

    void Add(std::string const& name, Json::Value const& value);

    template <class Value>
    void operator()(std::string const& name, Value const& value)
    {
        Add(name, AsJson(value));
    }

    /// Runs something and reports "returned", or the exception that came out.
    template <class Action>
    void Try(std::string const& name, Action action)
    {
        try {
            action();
            Add(name, "returned");
        } catch (std::exception const& exception) {
            Add(name, std::string("threw ") + exception.what());
        } catch (...) {
            Add(name, "threw something else");
        }
    }

private:
    template <class Value>
    static Json::Value AsJson(Value const& value)
    {
        if constexpr (std::is_same_v<Value, bool>)
            return Json::Value(value);
        else if constexpr (std::is_enum_v<Value>)
            return Json::Value(static_cast<Json::Int64>(value));
        else if constexpr (std::is_unsigned_v<Value>)
            return Json::Value(static_cast<Json::UInt64>(value));
        else if constexpr (std::is_integral_v<Value>)
            return Json::Value(static_cast<Json::Int64>(value));
        else
            return TextAsJson(value);
    }

    static Json::Value TextAsJson(std::string const& text);
    static Json::Value TextAsJson(std::wstring const& text);

    std::ofstream stream;
};

/// A host of the library, run in a process of its own by Installation::Run.
using HostProgram = void (*)(Report& report, std::vector<std::string> const& arguments);

bool RegisterHostProgram(std::string const& name, HostProgram program);

/// Runs one by name; the exit status of the process.
int RunHostProgram(std::string const& name, std::vector<std::string> const& arguments);

} // namespace Rig

#define HOST_PROGRAM(name)                                                                         \
    static void name(Rig::Report& report, std::vector<std::string> const& arguments);              \
    [[maybe_unused]] static bool const name##IsRegistered =                                        \
        Rig::RegisterHostProgram(#name, &name);                                                    \
    static void name([[maybe_unused]] Rig::Report& report,                                         \
                     [[maybe_unused]] std::vector<std::string> const& arguments)
