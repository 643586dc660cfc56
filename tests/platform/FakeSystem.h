#pragma once

#include <map>
#include <string>
#include <vector>

#include "platform/Platform.h"

namespace Rig {

/// What the seam answers in this executable, in place of the system's own
/// answers. The comparison and the copying of text stay the system's.
struct FakeSystem {
    std::wstring executable;
    std::wstring library;
    std::wstring knownFolder;
    bool wow64 = false;
    bool leadingSlashIsRoot = true;
    bool hasErrorTexts = true;
    bool threadsEndBeforeModules = false;

    /// Result of opening each view, and what is then read there.
    std::map<Halvorix::Platform::LocationView, Halvorix::Platform::ErrorCode> openings;
    std::map<Halvorix::Platform::LocationView, std::wstring> locations;
    bool locationIsReadable = true;

    Halvorix::Platform::ErrorCode lastError = 0;

    /// How often it was asked for the kind of this process.
    int processQuestions = 0;

    /// How often it was asked for the file of a loaded module.
    int moduleQuestions = 0;

    /// What was asked that changes something, in order.
    std::vector<std::wstring> calls;
};

extern FakeSystem fakeSystem;

} // namespace Rig
