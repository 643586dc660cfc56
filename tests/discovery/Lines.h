#pragma once

#include <string>
#include <vector>

#include "framework/LogMessage.h"
#include "framework/System.h"

// The lines that discovery logs, and what it throws, as they are expected to the letter.
namespace Rig {

using Text = std::string const&;

inline std::string const AppConfig = "{root}/app/SSOClient.config";
inline std::string const ServerFile = "{root}/server/SSOVersionCompatibility.config";
inline std::string const BareFile = "SSOVersionCompatibility.config";
inline std::string const ExecutableFirst = "{root}/app\n{root}/lib";
inline std::string const LibraryFirst = "{root}/lib\n{root}/app";

inline std::string const RequiresObject =
    "Json::LogicError: in Json::Value::resolveReference(key, end): requires objectValue";
inline std::string const RequiresText = "Json::LogicError: Type is not convertible to string";

inline LogMessage SearchesConfig(Text paths = ExecutableFirst)
{
    return {Info,
            "Searching for client config file SSOClient.config in the following paths:\n" + paths};
}
inline LogMessage FindsConfig(Text file = AppConfig)
{
    return {Info, "Found client config file at " + file};
}
inline LogMessage MissesConfig(Text paths = ExecutableFirst)
{
    return {Warning,
            "Failed to find client config file SSOClient.config in the following paths:\n" + paths};
}
inline LogMessage LoadsConfig(Text file = AppConfig)
{
    return {Info, "Loading client config file " + file};
}
inline LogMessage RefusesConfig(Text file = AppConfig)
{
    return {Error, "Failed to load client config file " + file + ". Invalid file format."};
}
inline LogMessage SetsOverride(Text file)
{
    return {Info, "Client config file override set to " + file};
}
inline LogMessage FindsOverride(Text file)
{
    return {Info, "Found client config file override at " + file};
}
inline LogMessage MissesOverride(Text file)
{
    return {Error, "Failed to find client config file override " + file};
}
inline LogMessage RefusesOverride(Text file, Text loaded)
{
    return {Error, "Failed to set client config file override " + file +
                       " since client config file " + loaded + " is already loaded"};
}

inline LogMessage HasNoLocation()
{
    return {Info,
            "Unable to get HxSSO path from registry, failed with error: " + SystemErrorText(2)};
}
inline LogMessage HasLocation(Text text)
{
    return {Info, "Getting HxSSO path from registry: " + text};
}

inline LogMessage SearchesServer(Text name = "HxSSO.exe", Text paths = LibraryFirst)
{
    return {Info, "Searching for SSO server app " + name + " in the following paths:\n" + paths};
}
inline LogMessage FindsServer(Text file) { return {Info, "Found SSO server app at " + file}; }
inline LogMessage MissesServer(Text name = "HxSSO.exe", Text paths = LibraryFirst)
{
    return {Error, "Failed to find SSO server app " + name + " in the following paths:\n" + paths};
}

inline LogMessage SearchesCompatibility(Text paths = "{root}/server")
{
    return {Info, "Searching for version compatibility file SSOVersionCompatibility.config in the "
                  "following paths:\n" +
                      paths};
}
inline LogMessage FindsCompatibility(Text file = ServerFile)
{
    return {Info, "Found version compatibility file at " + file};
}
inline LogMessage MissesCompatibility(Text paths = "{root}/server")
{
    return {Error, "Failed to find version compatibility file SSOVersionCompatibility.config in "
                   "the following paths:\n" +
                       paths};
}
inline LogMessage HasNoCompatibility(Text file = BareFile)
{
    return {Error, "Version compatibility file " + file + " not found"};
}
inline LogMessage HasNoModules(Text key, Text file = ServerFile)
{
    return {Error, "Version compatibility list is empty under key " + key +
                       " in version compatibility file " + file};
}
inline LogMessage RefusesFile(Text file = ServerFile)
{
    return {Error, "Failed to load file " + file + ". Possibly json format is not valid."};
}
/// keyInQuotes: 'module', 'modulePath' or 'modulePathWoW64', 'version'
inline LogMessage MissesKey(Text keyInQuotes, Text group, Text file = ServerFile)
{
    return {Error, "Blank or missing key " + keyInQuotes + " in " + group +
                       " in version compatibility file " + file + ". Object ignored."};
}
inline LogMessage MissesRange(Text file = ServerFile)
{
    return {Error, "Missing object 'compatibleSsoServicesVersion' in version compatibility file " +
                       file + ". Object ignored."};
}
inline LogMessage RefusesRange(Text file = ServerFile)
{
    return {Error, "Invalid version range in 'compatibleSsoServicesVersion' object in version "
                   "compatibility file " +
                       file + ". Object ignored."};
}

/// module: client plugin, openssl
inline LogMessage SearchesModule(Text module, Text file = ServerFile)
{
    return {Info, "Searching for compatible " + module +
                      " version for HxSSOServices version 10.22.00.1800 in version compatibility "
                      "file " +
                      file};
}
inline LogMessage FindsPlugin(Text module)
{
    return {Info, "Found compatible client plugin for HxSSOServices version 10.22.00.1800 in "
                  "version compatibility file: " +
                      module};
}
inline LogMessage FindsOpenSsl(Text module)
{
    return {Info, "Found compatible openssl version for HxSSOServices version 10.22.00.1800 in "
                  "version compatibility file: " +
                      module};
}
inline LogMessage MissesModule(Text module, Text file = ServerFile)
{
    return {Error, "Failed to find compatible " + module +
                       " version for HxSSOServices version 10.22.00.1800 in version compatibility "
                       "file " +
                       file};
}
inline LogMessage MissesModuleWithoutFile(Text module, Text file = BareFile)
{
    return {Error, "Failed to find compatible " + module +
                       " version for HxSSOServices version 10.22.00.1800 since version "
                       "compatibility file " +
                       file + " is not found"};
}
inline LogMessage SearchesOpenSslOverride(Text file = AppConfig)
{
    return {Info, "Searching for openssl override in client config file " + file};
}
inline LogMessage FindsOpenSslOverride(Text module)
{
    // The version stands in the place of the file, on purpose.
    return {Info,
            "Found openssl override in client config file 10.22.00.1800 and using it: " + module};
}
inline LogMessage MissesOpenSslOverride(Text file = AppConfig)
{
    return {Info, "No openssl override specified in client config file " + file};
}

} // namespace Rig
