#pragma once

#include <optional>
#include <string>
#include <utility>

namespace Halvorix::OpenId {

/// Why something did not come about, for the log: what happened and what to do about it. Holds
/// no secret and no query of an address.
struct Failure {
    enum class Kind {
        Configuration, ///< This machine's files.
        Network,       ///< No answer; to be tried again later.
        Provider,      ///< An answer that breaks the standard, or a server's error.
        /// The provider's no: its error, such as invalid_grant, or a 400 or 401 without anything.
        Refused,
        OtherUser, ///< An answer about another user than the one who signed in.
        Cancelled, ///< By the host, or the time limit.
        Local,     ///< The store, a port, the browser.
    };
    Kind kind = Kind::Local;
    std::string reason;
    std::string remedy;
    std::string code; ///< The provider's `error`, if it gave one.
    int status = 0;   ///< Of the provider's answer; 0 without one.
};

/// A value or the failure in its place.
template <class Value>
class Outcome {
public:
    Outcome(Value result) : value(std::move(result)) {}
    Outcome(Failure reason) : failure(std::move(reason)) {}

    explicit operator bool() const { return value.has_value(); }
    Value& operator*() { return *value; }
    Value const& operator*() const { return *value; }
    Value* operator->() { return &*value; }
    Value const* operator->() const { return &*value; }
    /// Only without a value.
    Failure const& Why() const { return failure; }

private:
    std::optional<Value> value;
    Failure failure;
};

} // namespace Halvorix::OpenId
