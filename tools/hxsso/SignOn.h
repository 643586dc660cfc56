#pragma once

#include <string>

#include <WebServicesManager.h>

#include "hxsso/Answer.h"

namespace Halvorix::HxSSO {

/// The library with its plugin and the server that is meant, as long as it lives.
class SignOn {
public:
    /// @param server its name; empty: the plugin's usual one
    explicit SignOn(std::string const& server);
    ~SignOn();
    SignOn(SignOn const&) = delete;
    SignOn& operator=(SignOn const&) = delete;

    /// Why nobody can sign in here, with the status for it; Done if one can.
    Answer const& Obstacle() const { return obstacle; }

    WebServices::WebServicesManager& Manager() const;

    /// A user is signed in, and the login has not ended.
    bool IsSignedIn() const;
    /// What is behind a call that the plugin refused: nobody is signed in, or else the provider,
    /// the network or the store. With the reason as far as the plugin's log has it.
    Answer Refusal(std::string const& what) const;
    /// Or that the store cannot be read for now, so that nobody knows.
    Answer NobodySignedIn() const;

private:
    Answer obstacle;
};

/// To be called before anything else of the library: keeps its lines off the standard output, and
/// sees to it that no file of the folder counts in which the user happens to be.
void BeginLibrary();

/// Whether a plugin answers.
bool HasPlugin();

/// That there is none, with what the library says of it.
Answer NoPlugin();

} // namespace Halvorix::HxSSO
