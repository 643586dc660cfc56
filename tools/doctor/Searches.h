#pragma once

#include <exception>
#include <string>
#include <vector>

#include "doctor/Findings.h"

namespace Halvorix::Doctor {

/// Where the library looked last for a file of this name: the directories as they were
/// resolved then, since a variable may have a value only now. Empty if it did not.
std::vector<std::wstring> DirectoriesSearchedFor(std::wstring const& file);

/// Whether the system would ask another machine for it, which looking must not do.
bool IsOnOtherMachine(std::wstring const& path);

/// Begins with none.
void ForgetSearches();

/// A question of which the library would never make an end ends with this, which is no
/// std::exception: those are told as the library's.
struct QuestionLimit {
    std::string text; ///< what the question does: "looks into more than …"
};

/// Begins the counts for one question to the library.
void BeginQuestion();

/// Counts the value of a variable, which may stand in a text again and again.
void CountExpansion(std::wstring const& value);

/// What lies in each of the resolved directories under the name.
Search LookThrough(std::wstring const& file, std::vector<std::wstring> const& directories);

/// Whether it says that the user has no right to look.
bool IsDenial(std::exception const& exception);

/// The link that leads to itself, if that is what it says.
std::string CircleOf(std::exception const& exception);

/// By the library's test for its own files and the OpenSSL module.
Presence LookFor(std::wstring const& file);

/// By that for the client plugin, which takes the narrow name.
Presence LookForPlugin(std::wstring const& file);

/// What is wrong with the file, or what lies in its place. Lists a folder, so not for
/// each entry of a list.
void LookCloser(std::wstring const& file, Presence& presence);

} // namespace Halvorix::Doctor
