#pragma once

#include <cstdint>
#include <utility>
#include <vector>

/// @file
/// The types that hosts, library and plugin share. The library carries them
/// from one side to the other and looks inside none of them, so the numbers of
/// the enumerations are an agreement between plugin and hosts; the only
/// enumerators here are those that the library itself writes or tests. All
/// enumerations have 32 bits on every compiler, since they cross a binary
/// boundary.

/// Transforms a text on behalf of the plugin, to encrypt or decrypt it.
/// Arguments: input text, its length in bytes, output buffer, its capacity in
/// bytes, the plugin's context pointer. The library never calls one.
using BufferTransformCallback = int (*)(char const* input, int inputLength, char* output,
                                        int outputCapacity, void* context);

namespace Halvorix::Log {

enum class LogLevel : std::int32_t {
    Error = 2,
    Warning = 4,
    Info = 8,
};

} // namespace Halvorix::Log

namespace Halvorix::StdUtil {

/// One entry of a retry schedule: 16 plain bytes, copied bit for bit.
struct RetryScheduleEntry {
    std::int64_t first;
    std::int64_t second;
};

/// When a failed token refresh is tried again. Units are the plugin's.
struct RetrySchedule {
    std::int64_t first = 0;
    std::vector<RetryScheduleEntry> second;
};

} // namespace Halvorix::StdUtil

namespace Halvorix::WebServices {

/// A service environment. -1 is no server: it is the library's answer where
/// only a plugin could have named one.
enum class Server : std::int32_t {};

enum class CacheType : std::int32_t {};
enum class HttpMethod : std::int32_t {};
enum class ParsingMode : std::int32_t {};
enum class WebServicesUrlCode : std::int32_t {};
enum class ServiceEntitlement : std::int32_t {};

enum class LoginError : std::int32_t {
    /// What the library stores before it asks the plugin.
    Preset = 2,
};

enum class LoginErrorEx : std::int32_t {
    /// What the library stores before it asks the plugin.
    Preset = 7,
};

/// Kind of an OAuth2 token. Numbers other than the default are the plugin's.
enum OAuth2TokenType : std::int32_t {
    OAuth2TokenTypeDefault = 1,
};

/// Home of the events that a trusted caller can raise.
class WebServicesPrivateCore {
public:
    enum class WebServicesEvent : std::int32_t {};
};

struct RequestParam;
class IWebServicesObserver;
class IRsaCryptor;
class WebServicesConfiguration;

} // namespace Halvorix::WebServices

namespace Halvorix::WebServicesUI {

class IWebServicesUIObserver;

} // namespace Halvorix::WebServicesUI
