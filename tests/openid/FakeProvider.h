#pragma once

#include <algorithm>
#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <vector>

#include <json/writer.h>

#include "openid/SigningKey.h"
#include "openid/protocol/Provider.h"

namespace Rig {

/// Answers requests as a provider does, without a network; a test puts other answers in place.
/// Any thread.
class FakeProvider {
public:
    using Request = Halvorix::OpenId::HttpRequest;
    using Response = Halvorix::OpenId::HttpResponse;
    using Answer = std::function<Response(Request const&)>;

    static constexpr char const* Issuer = "https://idp.example/tenant";
    static std::string Url(std::string const& path) { return Issuer + path; }

    FakeProvider()
    {
        Set("/.well-known/openid-configuration", Json(Description()));
        Json::Value set;
        set["keys"].append(SigningKey::Shared(SigningKey::Kind::Rsa).PublicJwk("one"));
        Set("/keys", Json(set));
    }

    /// What the provider says of itself.
    static Json::Value Description()
    {
        Json::Value json;
        json["issuer"] = Issuer;
        for (auto const& [name, path] :
             std::map<std::string, std::string>{{"authorization_endpoint", "/authorize"},
                                                {"token_endpoint", "/token"},
                                                {"userinfo_endpoint", "/userinfo"},
                                                {"jwks_uri", "/keys"},
                                                {"revocation_endpoint", "/revoke"},
                                                {"end_session_endpoint", "/logout"},
                                                {"device_authorization_endpoint", "/device"}})
            json[name] = Url(path);
        return json;
    }

    static Response Status(int status, std::string body = {},
                           std::vector<std::pair<std::string, std::string>> headers = {})
    {
        Response response;
        response.status = status;
        response.body = std::move(body);
        response.headers = std::move(headers);
        return response;
    }

    static Response Json(Json::Value const& json, int status = 200)
    {
        return Status(status, Json::writeString(Json::StreamWriterBuilder(), json),
                      {{"content-type", "application/json"}});
    }

    static Response Failed(Halvorix::OpenId::HttpFailure failure, std::string reason = {})
    {
        Response response;
        response.failure = failure;
        response.reason = std::move(reason);
        return response;
    }

    void Set(std::string const& path, Answer answer)
    {
        std::lock_guard const lock(mutex);
        answers[Url(path)] = std::move(answer);
    }

    void Set(std::string const& path, Response response)
    {
        Set(path, [response](Request const&) { return response; });
    }

    Halvorix::OpenId::Provider::Send Sender()
    {
        return [this](Request const& request) {
            Answer answer;
            {
                std::lock_guard const lock(mutex);
                requests.push_back(request);
                auto const found = answers.find(request.url);
                if (found != answers.end())
                    answer = found->second;
            }
            return answer ? answer(request) : Status(404);
        };
    }

    /// So far, to this path; all for none.
    std::vector<Request> Requests(std::string const& path = {}) const
    {
        std::lock_guard const lock(mutex);
        std::vector<Request> found;
        std::copy_if(requests.begin(), requests.end(), std::back_inserter(found),
                     [&](Request const& one) { return path.empty() || one.url == Url(path); });
        return found;
    }

private:
    mutable std::mutex mutex;
    std::map<std::string, Answer> answers;
    std::vector<Request> requests;
};

} // namespace Rig
