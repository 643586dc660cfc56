#pragma once

#include <functional>
#include <map>
#include <string>
#include <vector>

#include "framework/Installation.h"

namespace Faults {

enum class Presence { File, Missing, Folder, Unreadable };

/// A file that the library reads: what lies there, and what that makes it say
/// at level error or raise.
struct Document {
    Presence presence = Presence::File;
    std::string content;
    std::vector<std::string> told;
    std::string raised;
};

/// One list of the version compatibility file.
struct ModuleList {
    std::string json;
    std::vector<std::string> told;
    std::string raised;
    bool hasFittingModule = true;
};

enum class ModuleKind { Good, Missing, DoesNotLoad, NoFactoryProcedure };

enum class Reaction { Usual, Empty, Throws, ThrowsNumber };

/// All that a load depends on. The tree on the disk is made of it, and what is
/// expected is worked out from it.
struct Circumstances {
    Circumstances();

    Document clientConfig;
    Presence serverApp = Presence::File;
    Document compatibility; // with no content it is put together from the lists
    ModuleList plugins;
    ModuleList openSsl;
    ModuleKind module = ModuleKind::Good;
    std::function<void(Rig::Installation&)> placeModule;
    bool openSslFile = true;
    std::map<std::string, Reaction> reactions; // by operation of the plugin

    Reaction ReactionOf(std::string const& operation) const;
};

/// What an operation that throws says.
std::string TextThrownBy(std::string const& operation);

/// Makes the tree; may be called again for others in the same tree. False if the
/// system does not let it be made so.
bool Arrange(Circumstances const& circumstances, Rig::Installation& installation);

} // namespace Faults
