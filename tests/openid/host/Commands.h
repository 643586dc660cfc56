#pragma once

#include <functional>
#include <map>
#include <string>

#include <json/value.h>

/// What stands behind a command's name, to be read from left to right.
class Arguments {
public:
    explicit Arguments(std::string line) : line(std::move(line)) {}
    std::string Word(); ///< Up to the next blank; empty at the end.
    int Number();       ///< 0 for what is none.
    bool Flag() { return Word() == "true"; }
    std::string Rest(); ///< All that is left, with its blanks.
    std::wstring WideRest();

private:
    std::string line;
};

/// By the name of the library's operation; of overloads the later ones have an addition.
using Commands = std::map<std::string, std::function<Json::Value(Arguments&)>>;

void AddManager(Commands& commands); ///< WebServicesManager, but for what follows.
void AddLogin(Commands& commands);   ///< Its logins and logouts.
void AddTokens(Commands& commands);  ///< Its tokens.
void AddUI(Commands& commands);      ///< WebServicesUIManager and WebServicesAutomation.
void AddPrivate(Commands& commands); ///< SSOClientPrivate.
void AddServer(Commands& commands);  ///< SSOServerManager and SSOServicesManager.

std::string Utf8(std::wstring const& text);
std::string Utf8(wchar_t const* text); ///< Up to its terminator.
std::wstring Wide(std::string const& text);

/// The text of a getter that fills a buffer: by its length, as a host asks.
template <class Getter>
Json::Value TextOf(Getter const& get)
{
    std::wstring text(static_cast<std::size_t>(get(nullptr, 0)), L'\0');
    text.resize(static_cast<std::size_t>(get(text.data(), static_cast<int>(text.size()) + 1)));
    return Utf8(text);
}

/// A text that the plugin made by new[], taken over; null for a null pointer.
Json::Value Taken(wchar_t* text);
