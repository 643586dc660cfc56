#include "openid/session/TokenClock.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "openid/protocol/Texts.h"

namespace Halvorix::OpenId {

namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;

constexpr std::int64_t LifetimeIfNotTold = 300;
constexpr milliseconds Early{60'000};

} // namespace

std::int64_t LifetimeOf(StoredToken const& token)
{
    return token.lifetime > 0 ? token.lifetime : LifetimeIfNotTold;
}

TokenClock::TokenClock(std::function<std::int64_t()> wallClock,
                       std::function<milliseconds()> sinceBoot)
    : wallClock(std::move(wallClock)), sinceBoot(std::move(sinceBoot))
{
}

TokenClock::End const* TokenClock::Find(Ends const& known, StoredToken const& token) const
{
    for (End const& end : known)
        if (!end.text->empty() && EqualSecrets(*end.text, *token.text))
            return &end;
    return nullptr;
}

void TokenClock::Received(std::string const& login, StoredToken const& token)
{
    std::lock_guard<std::mutex> const guard(mutex);
    Ends& known = ends[{login, token.type, token.scope}];
    known[1] = known[0];
    known[0] = {token.text, sinceBoot() + seconds(LifetimeOf(token))};
}

bool TokenClock::IsGood(std::string const& login, StoredToken const& token)
{
    std::int64_t const lifetime = LifetimeOf(token);
    std::lock_guard<std::mutex> const guard(mutex);
    Ends& known = ends[{login, token.type, token.scope}];
    End const* end = Find(known, token);
    if (end == nullptr) {
        std::int64_t const left = token.receivedAt + lifetime - wallClock();
        known[1] = known[0];
        known[0] = {token.text, sinceBoot() + seconds(std::clamp<std::int64_t>(left, 0, lifetime))};
        end = &known[0];
    }
    milliseconds const margin = std::min(Early, milliseconds(seconds(lifetime)) / 2);
    return end->at - sinceBoot() > margin;
}

void TokenClock::Forget(std::string const& login)
{
    std::lock_guard<std::mutex> const guard(mutex);
    for (auto end = ends.begin(); end != ends.end();)
        end = std::get<0>(end->first) == login ? ends.erase(end) : std::next(end);
}

void TokenClock::Forget()
{
    std::lock_guard<std::mutex> const guard(mutex);
    ends.clear();
}

} // namespace Halvorix::OpenId
