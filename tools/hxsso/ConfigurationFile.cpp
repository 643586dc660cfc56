#include "hxsso/ConfigurationFile.h"

#include <fstream>
#include <iterator>
#include <memory>
#include <system_error>
#include <utility>

#include <json/reader.h>
#include <json/writer.h>

#include "hxsso/System.h"

namespace Halvorix::HxSSO {

namespace {

namespace fs = std::filesystem;

constexpr std::uintmax_t LargestFile = 1 << 20; // the plugin reads none that is larger

bool Parse(std::string const& text, Json::Value& value)
{
    Json::CharReaderBuilder builder;
    Json::CharReaderBuilder::strictMode(&builder.settings_);
    builder["allowComments"] = true;
    std::unique_ptr<Json::CharReader> const reader(builder.newCharReader());
    try {
        return reader->parse(text.data(), text.data() + text.size(), &value, nullptr);
    } catch (Json::Exception const&) { // nested too deeply
        return false;
    }
}

/// Where links lead, even if nothing is there yet: packages keep the file in a folder for
/// configuration, and the link to it is theirs.
fs::path Followed(fs::path file)
{
    constexpr int most = 8; // a circle is an error of whoever writes to it
    std::error_code isNone;
    for (int links = 0; links < most; ++links) {
        fs::path const target = fs::read_symlink(file, isNone);
        if (isNone)
            break;
        file = file.parent_path() / target;
    }
    return file;
}

} // namespace

ConfigurationFile::ConfigurationFile(fs::path const& file) : path(Followed(file)) {}

bool ConfigurationFile::Read(Json::Value& configuration, std::string& reason)
{
    std::error_code unknown;
    configuration = Json::Value(Json::objectValue);
    fs::file_status const status = fs::status(path, unknown);
    if (status.type() == fs::file_type::not_found)
        return true;
    if (!fs::is_regular_file(status) || fs::file_size(path, unknown) > LargestFile) {
        reason = "is no file of a configuration";
        return false;
    }
    std::ifstream file(path, std::ios::binary);
    std::string text{std::istreambuf_iterator<char>(file), {}};
    if (!file) {
        reason = "cannot be read";
        return false;
    }
    if (!Parse(text, configuration) || !configuration.isObject()) {
        reason = "is not valid JSON";
        return false;
    }
    Json::Value& servers = configuration["servers"];
    bool isGood = servers.isNull() || servers.isObject();
    for (Json::Value const& server : isGood ? servers : Json::Value())
        isGood = isGood && server.isObject();
    if (!isGood)
        reason = "has servers that are none";
    else
        before = std::move(text);
    return isGood;
}

bool ConfigurationFile::Write(Json::Value const& configuration, std::string& reason) const
{
    Json::StreamWriterBuilder writer;
    writer["indentation"] = "    ";
    writer["emitUTF8"] = true;
    writer["enableYAMLCompatibility"] = true; // no blank before a colon
    return Replace(Json::writeString(writer, configuration) + '\n', reason);
}

bool ConfigurationFile::PutBack(std::string& reason) const
{
    if (before)
        return Replace(*before, reason);
    std::error_code error;
    fs::remove(path, error);
    reason = error ? error.message() : std::string();
    return !error;
}

/// Beside it and renamed, so that no program reads half of it.
bool ConfigurationFile::Replace(std::string const& text, std::string& reason) const
{
    fs::path other = path;
    other += ".new";
    if (!WriteNewFile(other, text, reason))
        return false;
    std::error_code error;
    fs::rename(other, path, error);
    if (!error)
        return true;
    reason = error.message();
    fs::remove(other, error);
    return false;
}

} // namespace Halvorix::HxSSO
