#pragma once

#include <memory>
#include <string>
#include <vector>

#include <plugin/PluginTypes.h>

#include "framework/System.h"

namespace Halvorix::SSOServices {
class ISSOClientFactory;
}

// The least that each call of the library could be, by hand: beside these the
// calls of the library are measured, in the same program.
namespace Bench {

/// The plugin's factory, which the floors ask as the library asks its own.
void ConnectFloor(FactoryProcedure procedure);

bool FloorIsLoggedIn();

/// One line of a log that nobody takes.
struct Line {
    std::wstring text;
    Halvorix::Log::LogLevel level;
};
extern std::vector<Line> floorLines;
void FloorBanner(std::wstring const& file);

struct Token {
    std::string text;
    int type = 0;
    std::string scope;
    bool legacy = false;
};

/// Asks for a token with a spec: both documents by jsoncpp alone.
bool FloorTokenRequest(std::string const& scope, Token& token);

struct Cookie {
    std::string name;
    std::string value;
    std::string domain;
    std::string path;
    bool secure = false;
    bool httpOnly = false;
    long long expiryDate = 0;
};

std::string FloorWriteJar(std::vector<Cookie> const& jar);
bool FloorReadJar(char const* text, std::vector<Cookie>& jar);

/// Reads a file whole and parses it, which must work.
void FloorReadJsonFile(std::filesystem::path const& file);

} // namespace Bench
