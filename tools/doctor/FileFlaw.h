#pragma once

#include <filesystem>
#include <string>

namespace Halvorix::Doctor {

/// What keeps a file from being read, to stand behind its name: "is a folder, not a
/// file". Empty if nothing does, and for one that is not there. Neither a pipe nor a
/// device is opened.
std::string FlawOf(std::filesystem::path const& file);

struct LinkFlaw {
    std::string text; ///< to stand behind the link's name, as above
    std::string remedy;
};

/// Of a link that leads to nothing; empty for all else.
LinkFlaw FlawOfLink(std::filesystem::path const& file);

/// The link along the path that leads to itself, over others or at once; empty if there
/// is none.
std::filesystem::path CircleIn(std::filesystem::path const& path);

/// Of one that has no flaw.
bool IsEmpty(std::filesystem::path const& file);

/// Whether it has a blank there, be it one at which no line breaks.
bool BeginsWithBlank(std::string const& text);
bool EndsInBlank(std::string const& text);

/// The name of a file in the directory that is nearly this one: it differs in case, in
/// blanks at an end, or by a further ending such as ".txt". Empty if there is none.
std::string SimilarName(std::filesystem::path const& directory, std::string const& name);

/// What such a name differs by: "its name ends in .txt".
std::string DifferenceOf(std::string const& similar, std::string const& name);

} // namespace Halvorix::Doctor
