// A host that asks for the two modules and nothing else, in a process that does
// nothing else. Lines of the standard input tell what it sets before: "config=FILE",
// "search=PATHS". Writes a line each: whether it was stopped by an exception before it
// could ask, the client plugin, the OpenSSL module; an exception gives an empty one. On
// the standard error, since the library has the output for its log.

#include <exception>
#include <iostream>
#include <string>

#include <SSOClientPrivate.h>
#include <WebServicesManager.h>

#include "support/TextConversion.h"

namespace {

using Halvorix::SSOServices::SSOClientPrivate;
using Halvorix::SSOServices::Utf8ToWide;
using Halvorix::SSOServices::WideToUtf8;
using Halvorix::WebServices::WebServicesManager;

bool Set(std::string const& name, std::wstring const& value)
{
    try {
        if (name == "config")
            SSOClientPrivate::SetSSOClientConfigFileOverride(value);
        else
            WebServicesManager::SetSupportFileSearchPaths(value.c_str());
    } catch (std::exception const&) {
        return false;
    }
    return true;
}

std::string Answer(std::wstring (*question)())
{
    try {
        return WideToUtf8(question());
    } catch (std::exception const&) {
        return {};
    }
}

} // namespace

int main()
{
    bool isStopped = false;
    for (std::string line; std::getline(std::cin, line);) {
        std::size_t const split = line.find('=');
        isStopped = !Set(line.substr(0, split), Utf8ToWide(line.substr(split + 1))) || isStopped;
    }
    std::string const plugin = Answer(&SSOClientPrivate::GetSSOClientPluginModule);
    std::string const openSsl = Answer(&SSOClientPrivate::GetOpenSslModule);
    std::cerr << (isStopped ? "stopped" : "asked") << '\n'
              << plugin << '\n'
              << openSsl << std::endl;
}
