#include "framework/Floor.h"

#include <cstring>
#include <fstream>
#include <memory>
#include <mutex>
#include <sstream>
#include <stdexcept>
#include <utility>

#include <boost/format.hpp>
#include <json/reader.h>
#include <json/value.h>
#include <json/writer.h>

#include <plugin/ISSOClient.h>
#include <plugin/ISSOClientFactory.h>

using Halvorix::Log::LogLevel;
using Halvorix::SSOServices::ISSOClient;
using Halvorix::SSOServices::ISSOClientFactory;

namespace Bench {

std::vector<Line> floorLines;

namespace {

struct Holder {
    std::shared_ptr<ISSOClientFactory> factory;
};

std::recursive_mutex mutex;
std::shared_ptr<Holder> holder;

std::shared_ptr<ISSOClient> Client()
{
    std::lock_guard<std::recursive_mutex> const lock(mutex);
    std::shared_ptr<Holder> const copy = holder;
    return copy->factory->GetSSOClient();
}

Json::CharReaderBuilder MakeReaderBuilder()
{
    Json::CharReaderBuilder builder;
    builder["collectComments"] = false;
    return builder;
}

Json::CharReaderBuilder const readerBuilder = MakeReaderBuilder();
Json::StreamWriterBuilder const writerBuilder;

bool Parse(char const* text, Json::Value& value)
{
    std::unique_ptr<Json::CharReader> const reader(readerBuilder.newCharReader());
    return reader->parse(text, text + std::strlen(text), &value, nullptr);
}

} // namespace

void ConnectFloor(FactoryProcedure procedure)
{
    holder = std::make_shared<Holder>();
    holder->factory = procedure();
}

bool FloorIsLoggedIn() { return Client()->IsLoggedIn(); }

void FloorBanner(std::wstring const& file)
{
    static std::wstring const library = L"libHxSSOServices.so";
    static std::wstring const version = L"10.22.00.1800";
    static std::wstring const build = L"x64-Release";
    std::wstring text = (boost::wformat(L"%1% module loaded (Version: %2% Config: %3% File: %4%)") %
                         library % version % build % file)
                            .str();
    floorLines.push_back({std::move(text), LogLevel::Info});
}

bool FloorTokenRequest(std::string const& scope, Token& token)
{
    Json::Value spec;
    spec["type"] = 1;
    spec["scope"] = scope;
    spec["legacy"] = false;
    std::string const question = Json::writeString(writerBuilder, spec);
    char* text = nullptr;
    if (!Client()->GetOAuth2AccessToken(question.c_str(), text, nullptr, false))
        return false;
    std::unique_ptr<char[]> const owned(text);
    Json::Value json;
    if (!Parse(text, json))
        return false;
    Json::Value const& answered = json["OAuth2TokenSpec"];
    token.type = answered["type"].asInt();
    token.scope = answered["scope"].asString();
    token.legacy = answered["legacy"].asBool();
    token.text = json["OAuth2AccessToken"].asString();
    return true;
}

std::string FloorWriteJar(std::vector<Cookie> const& jar)
{
    Json::Value json;
    Json::Value& cookies = json["Cookies"] = Json::Value(Json::arrayValue);
    for (Cookie const& cookie : jar) {
        Json::Value& member = cookies.append(Json::Value());
        member["Name"] = cookie.name;
        member["Value"] = cookie.value;
        member["Domain"] = cookie.domain;
        member["Path"] = cookie.path;
        member["IsSecure"] = cookie.secure;
        member["IsHttpOnly"] = cookie.httpOnly;
        member["ExpiryDate"] = Json::Int64{cookie.expiryDate};
    }
    return Json::writeString(writerBuilder, json);
}

bool FloorReadJar(char const* text, std::vector<Cookie>& jar)
{
    Json::Value json;
    if (!Parse(text, json))
        return false;
    jar.clear();
    for (Json::Value const& member : std::as_const(json)["Cookies"]) {
        Cookie cookie;
        cookie.name = member["Name"].asString();
        cookie.value = member["Value"].asString();
        cookie.domain = member["Domain"].asString();
        cookie.path = member["Path"].asString();
        cookie.secure = member["IsSecure"].asBool();
        cookie.httpOnly = member["IsHttpOnly"].asBool();
        cookie.expiryDate = member["ExpiryDate"].asInt64();
        jar.push_back(std::move(cookie));
    }
    return true;
}

void FloorReadJsonFile(std::filesystem::path const& file)
{
    std::ifstream stream(file, std::ios::binary);
    std::ostringstream content;
    content << stream.rdbuf();
    Json::Value root;
    if (!Json::Reader().parse(content.str(), root))
        throw std::runtime_error("no JSON: " + file.string());
}

} // namespace Bench
