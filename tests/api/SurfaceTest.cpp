// What the decorated names of the public surface do not tell: sizes, and what can be copied.
// There is nothing to run. Signatures, constness and results stand in tests/abi/lists.

#include <cstdint>
#include <type_traits>
#include <utility>

#include <NetworkCookie.h>
#include <OAuth2Token.h>
#include <SSOClientPrivate.h>
#include <WebServicesConfiguration.h>
#include <WebServicesManager.h>
#include <WebServicesUIManager.h>

using namespace Halvorix;
using namespace Halvorix::WebServices;
using Halvorix::WebServicesUI::WebServicesUIManager;

namespace {

namespace OfTheValues {

template <class Value>
constexpr bool isOnePointer = sizeof(Value) == sizeof(void*) && !std::is_polymorphic_v<Value>;

template <class Value>
constexpr bool isCopied =
    std::is_default_constructible_v<Value>&& std::is_copy_constructible_v<Value>;

template <class Value, class = void>
constexpr bool isComparable = false;
template <class Value>
constexpr bool
    isComparable<Value, std::void_t<decltype(std::declval<Value>() == std::declval<Value>())>> =
        true;

// One pointer beside that to the virtual operations.
static_assert(sizeof(WebServicesConfiguration) == 2 * sizeof(void*));
static_assert(std::has_virtual_destructor_v<WebServicesConfiguration>);
static_assert(isCopied<WebServicesConfiguration>);

static_assert(isOnePointer<OAuth2TokenSpec> && isCopied<OAuth2TokenSpec>);
static_assert(isOnePointer<OAuth2Token> && isCopied<OAuth2Token>);
static_assert(isOnePointer<NetworkCookie> && isCopied<NetworkCookie>);
static_assert(!isComparable<NetworkCookie> && isComparable<OAuth2Token>);

static_assert(isOnePointer<NetworkCookieJar>);
static_assert(std::is_default_constructible_v<NetworkCookieJar>);
static_assert(!std::is_copy_constructible_v<NetworkCookieJar> &&
              !std::is_copy_assignable_v<NetworkCookieJar>);
static_assert(!std::is_move_constructible_v<NetworkCookieJar> &&
              !std::is_move_assignable_v<NetworkCookieJar>);

} // namespace OfTheValues

namespace OfTheManagersAlone {

// Only the library makes and destroys the one instance of each.
template <class Manager>
constexpr bool isTheLibrarys =
    !std::is_default_constructible_v<Manager> && !std::is_destructible_v<Manager> &&
    !std::is_copy_constructible_v<Manager> && !std::is_copy_assignable_v<Manager>;

static_assert(isTheLibrarys<WebServicesManager>);
static_assert(isTheLibrarys<WebServicesUIManager>);
// Each holds one owned pointer and nothing else.
static_assert(sizeof(WebServicesManager) == sizeof(void*));
static_assert(sizeof(WebServicesUIManager) == sizeof(void*));

} // namespace OfTheManagersAlone

namespace OfTheSharedTypes {

template <class Enumeration>
constexpr bool
    hasSigned32Bits = std::is_same_v<std::underlying_type_t<Enumeration>, std::int32_t> &&
                      sizeof(Enumeration) == 4;

static_assert(hasSigned32Bits<Log::LogLevel>);
static_assert(hasSigned32Bits<Server>);
static_assert(hasSigned32Bits<CacheType>);
static_assert(hasSigned32Bits<HttpMethod>);
static_assert(hasSigned32Bits<ParsingMode>);
static_assert(hasSigned32Bits<LoginError>);
static_assert(hasSigned32Bits<LoginErrorEx>);
static_assert(hasSigned32Bits<WebServicesUrlCode>);
static_assert(hasSigned32Bits<ServiceEntitlement>);
static_assert(hasSigned32Bits<WebServicesPrivateCore::WebServicesEvent>);
static_assert(hasSigned32Bits<OAuth2TokenType>);

// The numbers that loggers and plugins know.
static_assert(static_cast<int>(Log::LogLevel::Error) == 2);
static_assert(static_cast<int>(Log::LogLevel::Warning) == 4);
static_assert(static_cast<int>(Log::LogLevel::Info) == 8);
static_assert(OAuth2TokenTypeDefault == 1);

// The entries are copied bit for bit.
using Entry = decltype(StdUtil::RetrySchedule::second)::value_type;
static_assert(sizeof(StdUtil::RetrySchedule::first) == 8);
static_assert(sizeof(Entry) == 16 && std::is_trivially_copyable_v<Entry> &&
              std::is_trivially_destructible_v<Entry>);

} // namespace OfTheSharedTypes

} // namespace
