#pragma once

#include <string>
#include <vector>

#include "doctor/Findings.h"
#include "doctor/Verdict.h"

// The parts of the verdict, each in the file of its subject, and what they share.
namespace Halvorix::Doctor {

constexpr char const* AskVendor =
    "ask the plugin's vendor; if it is yours, see `hxsso-plugin-check MODULE`";

enum Weight { Fatal, Cause, Warning };

/// What may have led to something missing, and what to do then.
struct Hint {
    std::string text;
    std::string remedy;
};

/// The problems so far.
class ProblemList {
public:
    void Add(Weight weight, std::string const& code, Subject subject, std::string const& text,
             std::string const& remedy);

    /// With what may have led to it. The hint that comes first has the remedy: it is
    /// nearer than that of what is missing.
    void AddMissing(char const* code, Subject subject, std::string const& text,
                    std::string const& remedy, std::vector<Hint> const& hints);

    Verdict verdict;
    std::vector<std::string> toldExceptions; ///< their texts
};

// In the order in which the library stumbles.
void JudgeProgram(Findings const& findings, ProblemList& problems);
void JudgeClientConfig(Findings const& findings, ProblemList& problems);
void JudgeInterruptions(Findings const& findings, ProblemList& problems);
void JudgeServerApp(Findings const& findings, ProblemList& problems);
void JudgeCompatibility(Findings const& findings, ProblemList& problems);
void JudgePlugin(Findings const& findings, ProblemList& problems);
void JudgeInterruptionsAfterPlugin(Findings const& findings, ProblemList& problems);
void JudgeLoad(Findings const& findings, ProblemList& problems);
void JudgeServerExecutable(Findings const& findings, ProblemList& problems);
void JudgeOpenSsl(Findings const& findings, ProblemList& problems);

/// Of a file of which nothing comes.
void AddDamage(ProblemList& problems, ParseError const& error, std::string const& code,
               Subject subject, std::string const& what, std::string const& file,
               std::string const& otherwise);

void JudgeOddities(ProblemList& problems, std::string const& code, Subject subject,
                   std::string const& file, std::vector<Oddity> const& oddities);

/// The list of OpenSSL is read when the plugin is there already.
void JudgeCompatibilityOddities(Findings const& findings, ProblemList& problems,
                                bool isAfterPlugin);

/// Where the value itself is not told already.
void JudgeStoppingModules(Findings const& findings, ProblemList& problems, ModuleList const& list);

// What ends the read.
bool IsConfigStopped(Findings const& findings);
bool AnyStops(std::vector<Oddity> const& oddities);
bool AnyStops(ModuleList const& list);
bool StopsOpenSsl(Oddity const& oddity);

/// That is what the client configuration leads to.
bool IsServerAppLost(Findings const& findings);

/// Those that failed; what is said of symbols as one, with the first of them and a count.
std::vector<Tools::Check> FailedOf(std::vector<Tools::Check> const& checks);

/// The file of the library is there, and of use to the program.
bool IsLibraryWhole(Findings const& findings);

/// A link in the place of a file, which leads to none.
Hint HintAtBrokenLink(Search const& search, Directory const& directory);
Hint HintAtBrokenLink(std::string const& file, Presence const& presence);

/// Such links, and files of nearly the name that was searched.
void AddSimilar(Search const& search, std::vector<Hint>& hints);

/// Files of the name behind the first one, which the library therefore does not use.
void AddHidden(Search const& search, std::string const& otherwise, std::vector<Hint>& hints);

/// The server applications behind the first one that have a version compatibility file.
void AddHiddenServerApps(ServerApp const& server, std::string const& otherwise,
                         std::vector<Hint>& hints);

/// Why the entries of the list do not serve, in brackets; empty if there is nothing to say.
std::string ReasonsOf(ModuleList const& list);

/// What to write for one that fails by its zeros alone; empty if there is none.
std::string RemedyOfZeros(ModuleList const& list);

/// What may keep the entries of the list from being taken.
void AddListHints(Compatibility const& file, ModuleList const& list, std::vector<Hint>& hints);

/// The entries that are dropped, where one of the others is taken.
void JudgeIncomplete(ProblemList& problems, Compatibility const& file, ModuleList const& list);

/// The oddities of these keys, and of what was meant for one of them.
void AddHints(std::vector<Oddity> const& oddities, std::vector<std::string> const& keys,
              std::vector<Hint>& hints);

/// The library ends there with an exception.
bool AnyUnreadable(Search const& search);

// For sentences.
std::string Placed(std::string const& file, Position at);
std::string DirectoriesOf(Search const& search);
std::vector<std::string> UnknownOf(Search const& search);
bool IsOwnVariable(std::string const& name);
std::string HaveNoValue(std::vector<std::string> const& unknown);
std::string Joined(std::string const& directory, std::string const& name);
std::string NameOf(std::string const& file);

} // namespace Halvorix::Doctor
