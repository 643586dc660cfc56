#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <utility>

#include "openid/TestBrowser.h"
#include "openid/TestFolder.h"
#include "openid/TestProvider.h"
#include "openid/session/Session.h"

namespace Rig {

/// All that the login was granted.
inline Halvorix::OpenId::TokenSpec const All{1, ""};

/// What sessions of one user live in: a store, a provider, a browser, clocks that the test sets.
/// Each session stands for a process of its own, but for the locks between processes.
class SessionWorld {
public:
    SessionWorld()
    {
        configuration.store = folder.Path() / "store";
        auto& server = configuration.servers["production"];
        server.issuer = provider.Issuer();
        server.clientId = "client-1";
        server.scopes = "offline_access openid profile";
        configuration.loginTimeout = std::chrono::seconds(20);
        configuration.networkTimeout = std::chrono::seconds(10);
    }

    std::shared_ptr<Halvorix::OpenId::Session> NewSession()
    {
        using namespace Halvorix::OpenId;
        auto log = std::make_shared<LogFile>();
        log->Open(folder.Path() / "log");
        Outside outside;
        outside.send = [this](HttpRequest const& request) {
            sharing += request.connections != nullptr ? 1 : 0;
            return provider.Answer(request);
        };
        outside.openBrowser = [this](std::string const& url, std::string& reason) {
            reason = "there is none";
            if (beforeBrowser)
                beforeBrowser();
            return hasBrowser && browser.Open(url);
        };
        outside.wallClock = [this] { return WallClock() + wallOffset.load(); };
        outside.sinceBoot = [this] { return SinceBoot() + Passed(); };
        outside.canShowBrowser = [this] { return hasScreen.load(); };
        outside.sleep = [this](std::chrono::milliseconds time) {
            if (sleepsInNoTime)
                passed += time.count();
            else
                std::this_thread::sleep_for(time);
        };
        return std::make_shared<Session>(configuration, std::move(log), std::move(outside));
    }

    /// Time goes by, by both clocks.
    void Pass(std::chrono::seconds time)
    {
        passed += std::chrono::milliseconds(time).count();
        wallOffset += time.count();
    }
    /// How much has gone by so, or while a session slept.
    std::chrono::milliseconds Passed() const { return std::chrono::milliseconds(passed.load()); }
    /// Somebody sets the clock.
    void Jump(std::chrono::seconds time) { wallOffset += time.count(); }

    std::string LogText() const { return ContentOf(folder / "log" / "HxSSOOpenID.log"); }
    int LinesWith(std::string const& text) const
    {
        std::string const log = LogText();
        int count = 0;
        for (auto at = log.find(text); at != std::string::npos; at = log.find(text, at + 1))
            ++count;
        return count;
    }

    TestFolder folder;
    TestProvider provider;
    Halvorix::OpenId::PluginConfiguration configuration;
    std::atomic<bool> hasBrowser{true}, hasScreen{true}, sleepsInNoTime{false};
    std::atomic<int> sharing{0};         ///< Requests that may take a connection of those before.
    std::function<void()> beforeBrowser; ///< Called when a session wants to open it.

private:
    std::atomic<std::int64_t> wallOffset{0};
    std::atomic<std::int64_t> passed{0};

public:
    TestBrowser browser{provider}; ///< Its threads end first.
};

} // namespace Rig
