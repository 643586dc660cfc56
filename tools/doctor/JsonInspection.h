#pragma once

#include <cstddef>
#include <initializer_list>
#include <ios>
#include <optional>
#include <string>
#include <vector>

#include <json/value.h>

#include "Findings.h"

namespace Halvorix::Doctor {

/// How the library keeps a text of a file: as it is, or as characters.
enum class TextKind { Narrow, Wide };

/// A JSON file, read as the library reads it, with the places of what is in it.
class JsonInspection {
public:
    JsonInspection(std::wstring const& file, std::ios::openmode mode);

    Json::Value root;
    std::optional<ParseError> error;

    /// Where the member of this name and value begins: at its name.
    Position PositionOf(std::string const& name, Json::Value const& value) const;
    Position PositionOf(Json::Value const& value) const;

    /// Adds the members that the library does not know.
    void FindUnknown(Json::Value const& object, std::string const& prefix,
                     std::vector<std::string> const& known, std::vector<Oddity>& oddities) const;

    /// Adds a text that is none; false if the library ends there.
    bool CheckText(Json::Value const& object, std::string const& prefix, std::string const& name,
                   TextKind kind, std::vector<Oddity>& oddities) const;

private:
    Position PositionAt(std::size_t offset) const;
    void Advance(Position& position, std::size_t begin, std::size_t end) const;
    std::string LineAt(std::size_t offset) const;
    void Explain(Json::Value::LargestInt offset, std::string const& message);

    std::string text;
    std::vector<Position> marks; ///< places in the text at equal distances
};

/// False for a text that the library reads as empty though it is not.
bool IsReadable(std::string const& text);

/// "an array", say.
char const* KindOf(Json::Value const& value);

} // namespace Halvorix::Doctor
