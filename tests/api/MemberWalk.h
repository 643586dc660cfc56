#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <type_traits>
#include <vector>

#include <json/value.h>

#include <NetworkCookie.h>
#include <OAuth2Token.h>
#include <WebServicesConfiguration.h>
#include <plugin/PluginTypes.h>

// One entry for each exported member of each exported class. The tests call them
// all in this order, with no plugin and with the recording one.
namespace MemberWalk {

struct Member {
    std::string name;                    // as check_members.py spells the export
    std::function<std::string()> action; // calls it; the result and all that it may write
    std::string alone;                   // what the action tells with no plugin
    std::string asked;                   // and with the recording plugin
    std::vector<std::string> calls;      // operations that this reaches, {name} for AddressOf
};

/// A member that does not ask the plugin.
Member OfTheLibrary(std::string const& name, std::function<std::string()> const& action,
                    std::string const& told);

std::vector<Member> AllMembers();

std::vector<Member> PathMembers(); // of SSOClientPrivate
std::vector<Member> PrivateMembers();
std::vector<Member> ServerMembers();
std::vector<Member> UIMembers();
std::vector<Member> WebServicesManagerMembers();
std::vector<Member> ConfigurationMembers();
std::vector<Member> TokenMembers();
std::vector<Member> CookieMembers();
std::vector<Member> JsonMembers();

/// What nobody looks behind, as a number that is easily told again.
template <class Pointer>
Pointer Nowhere(std::uintptr_t number)
{
    return reinterpret_cast<Pointer>(number);
}

inline BufferTransformCallback const Callback = Nowhere<BufferTransformCallback>(86);

/// Makes an address of this process known to the test under a name.
void AddressOf(std::string const& name, void const* address);
std::vector<std::pair<std::string, std::uintptr_t>> const& Addresses();

/// A caller's buffer between units that nobody may write to.
template <class Unit>
class Room {
public:
    explicit Room(int capacity)
        : units(static_cast<std::size_t>(capacity) + 2 * guard, Fill), capacity(capacity)
    {
    }

    Unit* Data() { return units.data() + guard; }
    int Capacity() const { return capacity; }

    /// "untouched", or the units up to the last one that was written.
    std::string Text() const;

private:
    static constexpr std::size_t guard = 8;
    static constexpr Unit Fill = '#';

    std::basic_string<Unit> units;
    int capacity;
};

/// A pointer that a member may set to an array of the plugin's.
template <class Unit>
class Handed {
public:
    Handed() = default;
    Handed(Handed const&) = delete;
    Handed& operator=(Handed const&) = delete;
    ~Handed()
    {
        if (pointer != before)
            delete[] pointer;
    }

    std::string Text() const;

    Unit* pointer = before;

private:
    static inline Unit* const before = Nowhere<Unit*>(81);
};

std::string Shown(std::string const& text);
std::string Shown(std::wstring const& text);
std::string Shown(char const* text);
std::string Shown(wchar_t const* text);
std::string Shown(Json::Value const& value);
std::string Shown(Halvorix::WebServices::WebServicesConfiguration const& configuration);
std::string Shown(Halvorix::WebServices::OAuth2TokenSpec const& spec);
std::string Shown(Halvorix::WebServices::OAuth2Token const& token);
std::string Shown(Halvorix::WebServices::NetworkCookie const& cookie);
std::string Shown(Halvorix::WebServices::NetworkCookieJar const& jar);

template <class Unit>
std::string Shown(Room<Unit> const& room)
{
    return room.Text();
}

template <class Unit>
std::string Shown(Handed<Unit> const& handed)
{
    return handed.Text();
}

template <class Value,
          class = std::enable_if_t<std::is_arithmetic_v<Value> || std::is_enum_v<Value>>>
std::string Shown(Value value)
{
    if constexpr (std::is_same_v<Value, bool>)
        return value ? "true" : "false";
    else if constexpr (std::is_enum_v<Value>)
        return std::to_string(static_cast<std::underlying_type_t<Value>>(value));
    else
        return std::to_string(value);
}

/// The values, separated by commas.
template <class First, class... Others>
std::string Told(First const& first, Others const&... others)
{
    std::string text = Shown(first);
    ((text += ", " + Shown(others)), ...);
    return text;
}

/// What a member without result leaves to tell.
inline std::string const Returned = "returned";

/// What a text getter of a plugin tells that stores the text and its length.
std::string Filled(std::string const& text);

} // namespace MemberWalk
