#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "common/Report.h"

// What the examination found: facts alone, all texts UTF-8. The verdict and the
// reports are made of these and of nothing else.
namespace Halvorix::Doctor {

/// In a file; both begin with 1, and 0 is unknown. Columns count characters.
struct Position {
    unsigned line = 0;
    unsigned column = 0;
};

/// Why nothing comes of a file.
enum class Damage { NotJson, NotOpened, NoFile, Empty, Utf16, ByteOrderMark, TooDeep, TooLarge };

struct ParseError {
    Damage damage = Damage::NotJson;
    Position at; ///< only where it is not valid JSON, or nested too deeply
    std::string message;
    std::string line; ///< the line itself
    bool isTrailingComma = false;

    /// The library ends here with an exception.
    bool StopsReading() const { return damage == Damage::TooDeep; }
};

/// What is strange in a file that is JSON.
struct Oddity {
    Position at;
    std::string key;  ///< as a JSON path, where entries count from 0
    std::string code; ///< never changes, for programs
    std::string text; ///< goes on behind the key: "is a number where …"
    std::string remedy;
    bool stopsReading = false; ///< the library ends here with an exception
    std::string meant;         ///< for a key: the one that is written otherwise
};

enum class Finding { Hit, LaterHit, NoFile, NoDirectory, Unreadable };

struct Directory {
    std::string path; ///< as it was searched
    Finding finding;
    std::vector<std::string> unknown; ///< variables that stayed in it
    std::string similar;              ///< a file there whose name is nearly the one searched
    std::string flaw;                 ///< of what is there in its place: a link to nothing
    std::string linkRemedy;           ///< for that
    bool isFirstAgain = false;        ///< a later hit that is the first one, spelled otherwise
    bool holdsList = false; ///< for the server application: the version compatibility file too
};

struct Search {
    std::string file; ///< the name that was looked for
    std::vector<Directory> tried;
};

/// A file on disk.
struct Presence {
    bool isThere = false;
    std::string reason;        ///< why it cannot be looked at, which counts as not there
    bool isDenied = false;     ///< and that is why
    std::string circle;        ///< or that: a link that leads to itself
    std::string flaw;          ///< of what is there: "is a folder, not a file", "is a link to …"
    std::string linkRemedy;    ///< for a link to nothing
    std::string similar;       ///< for one that is not: a file whose name is nearly the same
    bool isBelowFile = false;  ///< what should be its folder is a file
    bool isOutOfReach = false; ///< there, but not under the name that the library makes of it
};

struct NamedText {
    std::string name;
    std::string text;
};

/// The program that is looked at, and what it consists of.
struct Program {
    std::string libraryName;
    std::string version;
    std::string build;
    std::string libraryFile; ///< empty: not found
    std::string libraryMachine;
    std::string libraryFlaw;                 ///< "is damaged"; empty: none
    std::string libraryFlawRemedy;           ///< where the file need not be another one
    std::string libraryHint;                 ///< what there is in its place; may be empty
    std::string libraryRemedy;               ///< where to put it, if it is not found
    std::vector<Tools::Check> libraryChecks; ///< what it needs and would not get
    std::string fileVersion;                 ///< as the library's file carries it; empty: unknown
    std::string ownFileVersion;              ///< the same for the version of this tool
    std::string executable;
    std::string executableMachine; ///< empty if that is no program of this system
    std::string executableFlaw;    ///< "is not a program"; empty: none
    std::string executableRemedy;  ///< where the file need not be another one
    std::string startFlaw;         ///< why the system does not start it; empty: none
    std::string startRemedy;
    bool isStatic = false;           ///< it has no loader
    bool isDenied = false;           ///< the user of this doctor may not execute it
    bool needsLibrary = true;        ///< at its start; else it may load it by itself
    std::vector<NamedText> cutFiles; ///< of which the library reads a part of the path
    bool isNamed = false;            ///< by --exe; else it is this tool
    bool isLibraryNamed = false;     ///< by --library
    std::string locale;              ///< the environment's; empty: none
    std::string directory;
    std::string workingDirectory;
    std::string ownMachine; ///< of this tool
    std::vector<NamedText> folders;
    std::vector<NamedText> variables; ///< an empty one stays as text
};

enum class Origin { File, Default, Registry, Unset };

struct KeyValue {
    std::string key;
    std::string value;
    Origin origin;
    Position at; ///< for those from the file
};

enum class ConfigState { Read, NoFile, NotJson, Stopped };

/// The server application's directory as its installation left it for the library,
/// which has not asked.
struct UnaskedLocation {
    std::string path;
    bool holdsServerApp = false;
};

struct ClientConfig {
    std::string override; ///< empty: none
    Search search;        ///< empty with an override
    std::string file;     ///< the one that is read, or would be
    bool isInWorkingDirectory = false;
    ConfigState state = ConfigState::NoFile;
    std::optional<ParseError> parseError;
    bool hasLocation = false; ///< the last search path is the registry's
    std::optional<UnaskedLocation> unasked;
    std::vector<Oddity> locationOddities; ///< whether it is asked or not
    std::vector<KeyValue> keys;
    std::vector<Oddity> oddities;
};

struct ServerApp {
    Search search;
    bool isInWorkingDirectory = false; ///< found there, by an empty entry
    std::string directory;             ///< empty: not found, or of no use
    std::string executable;
    Presence presence; ///< of the executable
};

enum class Fit {
    Chosen,
    LowerVersion, ///< it fits, and so does one of a higher version
    LaterInFile,  ///< it fits, and so does one of the same version before it
    Overridden,   ///< it fits, and the client configuration names another module
    BelowMinimum,
    AboveMaximum,
    NotListed,
    NoPathForProcess,
    Ignored,
    StopsReading,
    Null,
};

struct Module {
    unsigned number; ///< from 1, in the file's order
    Position at;
    std::string name;
    std::string path; ///< as the file spells it
    std::string expandedPath;
    std::string version;
    std::string range;
    Fit fit = Fit::Ignored;
    std::string detail; ///< which bound, which key, which exception
    std::string file;   ///< empty where none comes of it
    Presence presence;
    std::vector<std::string> unknown; ///< variables that stayed in the path
    std::string remedy;               ///< for a bound that fails by its zeros alone
};

struct ModuleList {
    std::string key;
    std::vector<Module> modules;
    std::string problem;          ///< why there are none, or none that could be read
    bool isNothingListed = false; ///< and that is why: nobody meant to list one
};

struct Compatibility {
    Search search;
    std::string file; ///< empty: not found
    bool isInWorkingDirectory = false;
    std::optional<ParseError> parseError;
    std::vector<Oddity> oddities;
    ModuleList plugins;
    ModuleList openSsl;
};

struct Plugin {
    std::string file;             ///< empty: none chosen
    std::filesystem::path asFile; ///< the same as the system spells it
    std::filesystem::path loaded; ///< the file that a load maps; empty: none
    Presence presence;
    std::vector<Tools::Check> fileChecks;     ///< without running any of it
    std::vector<std::filesystem::path> first; ///< in the program's process before it
    std::string ofProgram; ///< a symbol that it takes from the program itself; empty: none
    std::vector<Tools::Check> loadChecks; ///< empty unless it was asked for
};

struct OpenSsl {
    std::string file; ///< empty: none chosen
    Presence presence;
    bool isOverride = false;
};

/// An exception that a host would get.
struct Interruption {
    std::string during;
    std::string text;
    bool isAfterPlugin = false; ///< the plugin is in use by then
    bool isDenied = false;      ///< the user has no right to look there
    std::string circle;         ///< there is a link that leads to itself
    bool isLimit = false;       ///< of the doctor, which the library does not have
};

struct LogMessage {
    int level;
    std::string text;
};

struct RealLoad {
    bool worked = false;
    bool isInterrupted = false; ///< an exception ended it
    std::string death;          ///< how the plugin ended the process; empty: it did not
    std::vector<LogMessage> lines;
};

struct Findings {
    Program program;
    ClientConfig config;
    ServerApp server;
    Compatibility compatibility;
    Plugin plugin;
    OpenSsl openSsl;
    std::vector<Interruption> interruptions;
    std::optional<RealLoad> load;
};

} // namespace Halvorix::Doctor
