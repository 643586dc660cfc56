#pragma once

#include <cstddef>
#include <ios>
#include <optional>
#include <string>
#include <vector>

#include <json/value.h>

#include "doctor/Findings.h"

namespace Halvorix::Doctor {

/// What a text is for. The library keeps a narrow one as it is and the others as
/// characters; the last one is of no JSON file.
enum class TextKind { Narrow, Wide, Name, Path, PathList, Location };

/// A key that is read somewhere else.
struct KeyElsewhere {
    std::string name;
    std::string place; ///< "ssoServer", or the name of the other file
    bool isOfOtherFile;
};

/// A JSON file, read as the library reads it, with the places of what is in it.
class JsonInspection {
public:
    JsonInspection(std::wstring const& file, std::ios::openmode mode);

    Json::Value root;
    std::optional<ParseError> error;

    /// Where the member of this name and value begins: at its name.
    Position PositionOf(std::string const& name, Json::Value const& value) const;
    Position PositionOf(Json::Value const& value) const;

    /// Adds the members that the library does not know there, and where it would.
    /// @param outside  what the places elsewhere are in: "" or "ssoClientPlugin[0]."
    void FindUnknown(Json::Value const& object, std::string const& prefix,
                     std::vector<std::string> const& known, std::vector<Oddity>& oddities,
                     std::vector<KeyElsewhere> const& elsewhere,
                     std::string const& outside = {}) const;

    /// Adds the members of a name that their object has already.
    void FindRepeated(std::vector<Oddity>& oddities) const;

    /// Adds what follows the value of which the file consists.
    void FindTrailing(std::vector<Oddity>& oddities) const;

    /// Adds a text that is none, or that is hardly meant; false if the library ends there.
    bool CheckText(Json::Value const& object, std::string const& prefix, std::string const& name,
                   TextKind kind, std::vector<Oddity>& oddities) const;

    /// Adds a number or a boolean where a text belongs.
    void CheckQuotes(Json::Value const& value, std::string const& key, Position at,
                     std::vector<Oddity>& oddities) const;

private:
    Position PositionAt(std::size_t offset) const;
    void Advance(Position& position, std::size_t begin, std::size_t end) const;
    std::string LineAt(std::size_t offset) const;
    std::string SpellingOf(Json::Value const& value) const;
    void Explain(Damage damage, std::string const& message);
    void Explain(Damage damage, Json::Value::LargestInt offset, std::string const& message);

    std::string text;
    std::vector<Position> marks; ///< places in the text at equal distances
};

/// False for a text that the library reads as empty though it is not.
bool IsReadable(std::string const& text);

/// "an array", say.
char const* KindOf(Json::Value const& value);

/// Leaves all that stop the reading and a thousand others; the last one tells of more.
void Shorten(std::vector<Oddity>& oddities);

/// An oddity of a value of a wrong type.
Oddity WrongType(Position at, std::string const& key, Json::Value const& value, char const* wanted,
                 bool stopsReading);

} // namespace Halvorix::Doctor
