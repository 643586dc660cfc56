#include "doctor/Judgement.h"

#include <algorithm>
#include <iterator>
#include <set>

#include "doctor/FileFlaw.h"
#include "doctor/Text.h"
#include "doctor/Words.h"

namespace Halvorix::Doctor {

namespace {

// A name in a file may have any length, and the last line is for a person.
std::string Cut(std::string text)
{
    constexpr std::size_t most = 2000;
    if (text.size() <= most)
        return text;
    std::size_t end = most;
    while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0U) == 0x80U)
        --end;
    text.resize(end);
    return text + "…";
}

} // namespace

void ProblemList::Add(Weight weight, std::string const& code, Subject subject,
                      std::string const& text, std::string const& remedy)
{
    verdict.problems.push_back({code, subject, Cut(Tools::Presentable(text)),
                                Cut(Tools::Presentable(remedy)), weight == Fatal, weight == Cause});
    verdict.canWork = verdict.canWork && weight != Fatal;
}

void ProblemList::AddMissing(char const* code, Subject subject, std::string const& text,
                             std::string const& remedy, std::vector<Hint> const& hints)
{
    std::vector<std::string> texts;
    texts.reserve(hints.size());
    for (Hint const& hint : hints)
        texts.push_back(hint.text);
    Add(Fatal, code, subject, text + (texts.empty() ? "" : "; " + Listed(texts, "; ")),
        hints.empty() ? remedy : hints.front().remedy);
}

std::string Placed(std::string const& file, Position at)
{
    if (at.line == 0)
        return file;
    return file + ", line " + std::to_string(at.line) + ", column " + std::to_string(at.column);
}

std::string DirectoriesOf(Search const& search)
{
    std::vector<std::string> paths;
    for (Directory const& directory : search.tried)
        paths.push_back(directory.path.empty() ? "the current directory" : directory.path);
    return Listed(paths, ", ");
}

std::vector<std::string> UnknownOf(Search const& search)
{
    std::vector<std::string> unknown;
    for (Directory const& directory : search.tried)
        unknown.insert(unknown.end(), directory.unknown.begin(), directory.unknown.end());
    return unknown;
}

bool IsOwnVariable(std::string const& name)
{
    static std::set<std::string> const known{"ssoserverapppath",
                                             "ssoserverappexedirpath",
                                             "ssoserverappexefile",
                                             "ssoservicesmodulepath",
                                             "programfiles",
                                             "exepath",
                                             "apppath",
                                             "appdata",
                                             "localappdata"};
    return known.count(Lower(name)) != 0;
}

std::string HaveNoValue(std::vector<std::string> const& unknown)
{
    std::vector<std::string> empty;
    std::vector<std::string> foreign;
    bool hasPair = false;
    for (std::string const& name : std::set<std::string>(unknown.begin(), unknown.end())) {
        hasPair = hasPair || name.empty();
        if (!name.empty())
            (IsOwnVariable(name) ? empty : foreign).push_back(name);
    }
    std::vector<std::string> parts;
    if (!empty.empty())
        parts.push_back(ListedVariables(empty) + (empty.size() == 1 ? " has" : " have") +
                        " no value");
    if (!foreign.empty())
        parts.push_back(ListedVariables(foreign) +
                        (foreign.size() == 1 ? " is not a variable" : " are not variables") +
                        " of the library, which does not expand those of the environment");
    if (hasPair)
        parts.emplace_back("two percent signs in a row stay as they are");
    return Listed(parts, "; ");
}

std::string Joined(std::string const& directory, std::string const& name)
{
    return directory.empty() ? name : directory + "/" + name;
}

std::string NameOf(std::string const& file) { return file.substr(file.rfind('/') + 1); }

Hint HintAtBrokenLink(Search const& search, Directory const& directory)
{
    return {Joined(directory.path, search.file) + " " + directory.flaw, directory.linkRemedy};
}

Hint HintAtBrokenLink(std::string const& file, Presence const& presence)
{
    return {file + " " + presence.flaw, presence.linkRemedy};
}

void AddSimilar(Search const& search, std::vector<Hint>& hints)
{
    for (Directory const& directory : search.tried)
        if (!directory.flaw.empty())
            hints.push_back(HintAtBrokenLink(search, directory));
    for (Directory const& directory : search.tried)
        if (!directory.similar.empty())
            hints.push_back({Joined(directory.path, directory.similar) + " is there, but " +
                                 DifferenceOf(directory.similar, search.file),
                             "rename it to " + search.file});
}

Hint HintAtHidden(std::string const& hidden, std::string const& used, std::string const& otherwise)
{
    return {hidden + " is not used, since " + used + " comes first",
            "remove " + used + " if " + hidden + " is the right one, or " + otherwise};
}

void AddHidden(Search const& search, std::string const& otherwise, std::vector<Hint>& hints)
{
    auto const first =
        std::find_if(search.tried.begin(), search.tried.end(),
                     [](Directory const& directory) { return directory.finding == Finding::Hit; });
    for (Directory const& directory : search.tried) {
        if (directory.finding == Finding::LaterHit && !directory.isFirstAgain)
            hints.push_back(HintAtHidden(Joined(directory.path, search.file),
                                         Joined(first->path, search.file), otherwise));
    }
}

void AddHiddenServerApps(ServerApp const& server, std::string const& otherwise,
                         std::vector<Hint>& hints)
{
    Search search = server.search;
    search.tried.erase(std::remove_if(search.tried.begin(), search.tried.end(),
                                      [](Directory const& directory) {
                                          return directory.finding == Finding::LaterHit &&
                                                 !directory.holdsList;
                                      }),
                       search.tried.end());
    AddHidden(search, otherwise, hints);
}

void AddHints(std::vector<Oddity> const& oddities, std::vector<std::string> const& keys,
              std::vector<Hint>& hints)
{
    for (Oddity const& oddity : oddities)
        for (std::string const& key : keys)
            if (oddity.meant == key || oddity.key == key)
                hints.push_back({InWords(oddity.key) + " " + oddity.text, oddity.remedy});
}

void AddDamage(ProblemList& problems, ParseError const& error, std::string const& code,
               Subject subject, std::string const& what, std::string const& file,
               std::string const& otherwise)
{
    struct Kind {
        Damage damage;
        char const* remedy;
    };
    static constexpr Kind kinds[] = {
        {Damage::NotJson, "correct that line or the one above"},
        {Damage::NotOpened, "allow the program's user to read it"},
        {Damage::NoFile, "put the file in its place"},
        {Damage::Empty, "write its content into it"},
        {Damage::Utf16, "save the file as UTF-8"},
        {Damage::ByteOrderMark, "save the file as UTF-8 without a byte order mark"},
        {Damage::TooDeep, "put the right file there"},
        {Damage::TooLarge, "put the right file there"},
    };
    Kind const& kind =
        *std::find_if(std::begin(kinds), std::end(kinds),
                      [&error](Kind const& known) { return known.damage == error.damage; });
    std::string remedy = kind.remedy;
    // An escape is told where it stands, and above the first line there is none.
    if (error.damage == Damage::NotJson &&
        (error.at.line <= 1 || error.message.rfind("Bad escape", 0) == 0))
        remedy = "correct that line";
    if (!error.StopsReading() && error.damage != Damage::NoFile)
        remedy += otherwise;
    if (error.isTrailingComma)
        remedy = "remove the comma";
    std::string const place = Placed(file, error.at);
    // No default follows an exception, and without the other file there is no plugin.
    bool const isFatal = subject == Subject::Compatibility || error.StopsReading();
    problems.Add(isFatal ? Fatal : Cause, code + "-" + Code(error.damage), subject,
                 error.damage == Damage::NotJson
                     ? what + " is not valid JSON: " + place + ": " + error.message
                 : error.damage == Damage::TooDeep
                     ? what + " cannot be read: " + place + ": " + error.message
                     : what + " " + file + " " + error.message,
                 remedy);
}

void JudgeOddities(ProblemList& problems, std::string const& code, Subject subject,
                   std::string const& file, std::vector<Oddity> const& oddities)
{
    std::string const what = subject == Subject::ClientConfig ? "the client configuration"
                                                              : "the version compatibility file";
    for (Oddity const& oddity : oddities)
        problems.Add(oddity.stopsReading ? Fatal : Warning, code + "-" + oddity.code, subject,
                     what + (oddity.stopsReading ? " cannot be read: " : ": ") +
                         Placed(file, oddity.at) + ": " + InWords(oddity.key) + " " + oddity.text,
                     oddity.remedy);
}

bool AnyStops(std::vector<Oddity> const& oddities)
{
    return std::any_of(oddities.begin(), oddities.end(),
                       [](Oddity const& oddity) { return oddity.stopsReading; });
}

bool AnyStops(ModuleList const& list)
{
    return std::any_of(list.modules.begin(), list.modules.end(),
                       [](Module const& module) { return module.fit == Fit::StopsReading; });
}

bool StopsOpenSsl(Oddity const& oddity)
{
    return oddity.stopsReading && oddity.key.rfind("openssl", 0) == 0;
}

bool IsServerAppLost(Findings const& findings)
{
    return findings.server.directory.empty() || findings.compatibility.file.empty();
}
std::vector<Tools::Check> FailedOf(std::vector<Tools::Check> const& checks)
{
    std::vector<Tools::Check> failed;
    std::size_t symbols = 0;
    for (Tools::Check const& check : checks) {
        if (check.result != Tools::Result::Failed)
            continue;
        // A line for each is among the checks. The first one tells, or the first one with a remedy.
        if (check.name != "symbols" || symbols == 0)
            failed.push_back(check);
        if (check.name != "symbols")
            continue;
        auto const told = std::find_if(failed.begin(), failed.end(), [](Tools::Check const& one) {
            return one.name == "symbols";
        });
        if (told->remedy.empty() && !check.remedy.empty())
            *told = check;
        symbols += check.things;
    }
    for (Tools::Check& check : failed)
        if (check.name == "symbols" && symbols > 1)
            check.detail += ", and " + std::to_string(symbols - 1) + " more";
    return failed;
}

bool IsLibraryWhole(Findings const& findings)
{
    Program const& program = findings.program;
    return !program.libraryFile.empty() && program.libraryFlaw.empty() &&
           program.libraryMachine == program.ownMachine;
}

bool AnyUnreadable(Search const& search)
{
    return std::any_of(search.tried.begin(), search.tried.end(), [](Directory const& directory) {
        return directory.finding == Finding::Unreadable;
    });
}

bool IsConfigStopped(Findings const& findings)
{
    return findings.config.state == ConfigState::Stopped;
}

} // namespace Halvorix::Doctor
