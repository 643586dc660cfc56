#pragma once

#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "openid/TestProvider.h"

namespace Rig {

/// A browser without a window: it lets the provider redirect it and follows to the listener, over
/// a real socket and on a thread of its own, as a real one does.
class TestBrowser {
public:
    explicit TestBrowser(TestProvider& provider) : provider(provider) {}
    ~TestBrowser();
    TestBrowser(TestBrowser const&) = delete;
    TestBrowser& operator=(TestBrowser const&) = delete;

    /// What a session is given to open a browser.
    bool Open(std::string const& url);
    /// The addresses that were opened.
    std::vector<std::string> Opened() const;
    /// What the listener answered last.
    std::string Page() const;

private:
    TestProvider& provider;
    mutable std::mutex mutex; // Of what follows.
    std::vector<std::string> opened;
    std::string page;
    std::vector<std::thread> threads;
};

/// Asks for an http address at the loopback address; the whole answer, empty if there is none.
std::string Get(std::string const& url);

} // namespace Rig
