// Return buffers. The first byte of an input is the capacity, less two; the rest
// is the text, for the wide getters a byte a unit.
//
// Property: a getter writes nothing outside the capacity, neither into guards
// around it nor behind a block of just that size, and stores and answers what
// the rule of its kind tells.

#include <algorithm>
#include <cstddef>
#include <functional>
#include <memory>
#include <string>

#include <NetworkCookie.h>
#include <OAuth2Token.h>
#include <SSOServicesPrivate.h>
#include "fuzz/Property.h"
#include "support/GuardedBuffer.h"
#include "support/ReturnBuffers.h"

using namespace Halvorix::SSOServices;
using namespace Halvorix::WebServices;
using namespace Fuzz;

namespace {

template <class Unit>
struct Expected {
    int answer;
    std::basic_string<Unit> stored; // nothing: the buffer is not touched
};

template <class Unit>
using Getter = std::function<int(Unit*, int)>;

// The longest that fits with its terminator.
Expected<wchar_t> Truncated(std::wstring const& text, int capacity)
{
    if (capacity < 1)
        return {0, {}};
    std::wstring const terminated = text.c_str();
    std::wstring const stored = terminated.substr(0, static_cast<std::size_t>(capacity) - 1);
    return {static_cast<int>(stored.size()), stored + L'\0'};
}

Expected<wchar_t> AllOrNothing(std::wstring const& text, int capacity)
{
    if (capacity < 1)
        return {0, {}};
    if (static_cast<std::size_t>(capacity) <= text.size())
        return {0, std::wstring(1, L'\0')};
    return Truncated(text, capacity);
}

// A terminator only where there is room behind the bytes.
Expected<char> Unterminated(std::string const& bytes, int capacity)
{
    std::string stored = bytes.substr(0, static_cast<std::size_t>(capacity));
    int const answer = static_cast<int>(stored.size());
    if (answer < capacity)
        stored += '\0';
    return {answer, stored};
}

template <class Unit>
void Check(std::basic_string<Unit> const& text, int capacity, Expected<Unit> const& expected,
           Getter<Unit> const& get)
{
    for (int const any : {capacity, 0, -1, 1000})
        Same("a null buffer asks for the length", static_cast<int>(text.size()), get(nullptr, any));

    HxSSOTest::GuardedBuffer<Unit> guarded(std::max(0, capacity));
    Same("the answer", expected.answer, get(guarded.Data(), capacity));
    Holds(guarded.GuardsIntact(), "nothing outside the capacity", text, capacity);
    Same("what is stored", expected.stored, guarded.First(expected.stored.size()));
    if (expected.stored.empty())
        Same("a buffer that is not touched", guarded.Untouched(), guarded.Content());

    auto const size = static_cast<std::size_t>(std::max(0, capacity));
    std::unique_ptr<Unit[]> const exact(new Unit[size]);
    Same("the answer to a block of that size", expected.answer, get(exact.get(), capacity));
    Same("what is stored in it", expected.stored,
         std::basic_string<Unit>(exact.get(), expected.stored.size()));
}

void CheckBytes(std::string const& bytes, int capacity)
{
    Check<char>(bytes, capacity, Unterminated(bytes, capacity),
                [&](char* buffer, int size) { return CopyBytesToBuffer(bytes, buffer, size); });

    NetworkCookie cookie;
    cookie.SetName(bytes.c_str());
    cookie.SetValue(bytes.c_str());
    std::string const terminated = bytes.c_str();
    Expected<char> const expected = Unterminated(terminated, capacity);
    Check<char>(terminated, capacity, expected,
                [&](char* buffer, int size) { return cookie.GetName(buffer, size); });
    Check<char>(terminated, capacity, expected,
                [&](char* buffer, int size) { return cookie.GetValue(buffer, size); });
}

void CheckWide(std::wstring const& text, int capacity)
{
    Check<wchar_t>(text, capacity, Truncated(text, capacity),
                   [&](wchar_t* buffer, int size) { return GetTruncated(text, buffer, size); });
    Check<wchar_t>(text, capacity, AllOrNothing(text, capacity),
                   [&](wchar_t* buffer, int size) { return GetAllOrNothing(text, buffer, size); });

    OAuth2Token token;
    SSOServicesPrivate::Initialize(token, text, OAuth2TokenSpec());
    Check<wchar_t>(text, capacity, AllOrNothing(text, capacity),
                   [&](wchar_t* buffer, int size) { return token.GetToken(buffer, size); });

    std::wstring const terminated = text.c_str();
    NetworkCookie cookie;
    cookie.SetDomain(text.c_str());
    cookie.SetPath(text.c_str());
    Expected<wchar_t> const expected = Truncated(terminated, capacity);
    Check<wchar_t>(terminated, capacity, expected,
                   [&](wchar_t* buffer, int size) { return cookie.GetDomain(buffer, size); });
    Check<wchar_t>(terminated, capacity, expected,
                   [&](wchar_t* buffer, int size) { return cookie.GetPath(buffer, size); });
}

} // namespace

int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    if (size == 0)
        return 0;
    int const capacity = static_cast<int>(data[0]) - 2;
    CheckWide(std::wstring(data + 1, data + size), capacity);
    // No caller passes a negative capacity for bytes: it bounds nothing there.
    CheckBytes(AsText(data + 1, size - 1), std::max(0, capacity));
    return 0;
}
