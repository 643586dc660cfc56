#pragma once

#include <exception>
#include <memory>
#include <new>
#include <string>
#include <utility>

#include "openid/session/Session.h"

namespace Halvorix::OpenId {

/// A line on the level Error: what did not come about, why, and what to do about it.
inline void Report(Session& session, std::string const& what, std::string reason,
                   std::string remedy)
{
    Failure why;
    why.reason = std::move(reason);
    why.remedy = std::move(remedy);
    session.Log().Failed(what, why);
}

/// What the interfaces have in common: they share a session, and nothing but std::bad_alloc
/// leaves them.
template <class Defaults>
class OnSession : public Defaults {
public:
    explicit OnSession(std::shared_ptr<Session> session) : session(std::move(session)) {}

protected:
    /// What `question` answers when it is given the session; after an exception the fixed answer:
    /// false, 0, empty.
    template <class Question>
    auto Ask(Question const& question) -> decltype(question(std::declval<Session&>()))
    {
        try {
            return question(*session);
        } catch (std::bad_alloc const&) {
            throw;
        } catch (std::exception const& error) {
            Report(*session, "An operation broke off", error.what(),
                   "report this line with those before it");
        }
        return decltype(question(*session))();
    }

private:
    std::shared_ptr<Session> const session;
};

} // namespace Halvorix::OpenId
