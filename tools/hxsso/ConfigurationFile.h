#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include <json/value.h>

namespace Halvorix::HxSSO {

/// HxSSOOpenID.json, which is replaced as a whole.
class ConfigurationFile {
public:
    explicit ConfigurationFile(std::filesystem::path const& file);

    /// Links are followed.
    std::filesystem::path const& Path() const { return path; }

    /// What stands in it, or an empty object where there is none. False if it cannot be changed,
    /// with the reason, which goes on behind its name.
    bool Read(Json::Value& configuration, std::string& reason);
    bool Write(Json::Value const& configuration, std::string& reason) const;
    /// As it was when it was read.
    bool PutBack(std::string& reason) const;

private:
    bool Replace(std::string const& text, std::string& reason) const;

    std::filesystem::path path;
    std::optional<std::string> before;
};

} // namespace Halvorix::HxSSO
