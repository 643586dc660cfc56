#pragma once

#include <memory>
#include <string>

namespace Bench {

/// The system's HTTP library, used as its manual shows and no more. One connection serves all
/// requests of one object.
class BareHttp {
public:
    BareHttp();
    ~BareHttp();
    BareHttp(BareHttp const&) = delete;
    BareHttp& operator=(BareHttp const&) = delete;

    /// POST if there is a body, else GET. The body of the answer; throws unless its status is 200.
    std::string Ask(std::string const& url, std::string const& bearer, std::string const& body);

private:
    struct Handles;
    std::unique_ptr<Handles> const handles;
};

} // namespace Bench
