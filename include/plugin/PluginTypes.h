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

/// How much a line of the log matters.
enum class LogLevel : std::int32_t {
    Error = 2,   ///< a step failed
    Warning = 4, ///< the client configuration file is missing; nothing else
    Info = 8,    ///< progress
};

} // namespace Halvorix::Log

namespace Halvorix::StdUtil {

/// One entry of a retry schedule: 16 plain bytes, copied bit for bit.
struct RetryScheduleEntry {
    std::int64_t first;  ///< the plugin's
    std::int64_t second; ///< the plugin's
};

/// When a failed token refresh is tried again. Units are the plugin's.
struct RetrySchedule {
    std::int64_t first = 0;                 ///< the plugin's
    std::vector<RetryScheduleEntry> second; ///< the schedule's entries
};

} // namespace Halvorix::StdUtil

namespace Halvorix::WebServices {

/// A service environment. -1 is no server: without a plugin ServerNameToServer
/// answers it. GetServer then answers 0.
enum class Server : std::int32_t {};

/// A cache of the plugin.
enum class CacheType : std::int32_t {};
/// Method of a request that is to be signed.
enum class HttpMethod : std::int32_t {};
/// How a request that is to be signed is read.
enum class ParsingMode : std::int32_t {};
/// A URL of the service.
enum class WebServicesUrlCode : std::int32_t {};
/// What a licence allows.
enum class ServiceEntitlement : std::int32_t {};

/// Why a login could not be initiated.
enum class LoginError : std::int32_t {
    /// What the library stores before it asks the plugin.
    Preset = 2,
};

/// Why a login could not be initiated, in the finer division.
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
    /// An event, by the plugin's number.
    enum class WebServicesEvent : std::int32_t {};
};

/// Only declared: what they have is an agreement between the plugin and its hosts.
struct RequestParam;
class IWebServicesObserver;

class IRsaCryptor;
class WebServicesConfiguration;

} // namespace Halvorix::WebServices

namespace Halvorix::WebServicesUI {

class IWebServicesUIObserver;

} // namespace Halvorix::WebServicesUI
