#include "common/System.h"
#include "doctor/FileFlaw.h"
#include "doctor/Judgement.h"

namespace Halvorix::Doctor {

namespace {

// A file that was meant, under a name that nobody looks for.
void JudgeSimilar(Findings const& findings, ProblemList& problems, Search const& search,
                  char const* code, Subject subject, std::string const& what)
{
    for (Directory const& directory : search.tried) {
        if (!directory.flaw.empty()) {
            Hint const hint = HintAtBrokenLink(search, directory);
            problems.Add(IsServerAppLost(findings) ? Cause : Warning, "client-config-broken-link",
                         subject, what + " " + hint.text, hint.remedy);
            return;
        }
        if (directory.similar.empty())
            continue;
        problems.Add(IsServerAppLost(findings) ? Cause : Warning, code, subject,
                     what + " " + Joined(directory.path, directory.similar) +
                         " is not read: " + DifferenceOf(directory.similar, search.file),
                     "rename it to " + search.file);
        return;
    }
}

void JudgeUnaskedLocation(Findings const& findings, ProblemList& problems)
{
    ClientConfig const& config = findings.config;
    if (!config.unasked)
        return;
    bool const isThere = config.state != ConfigState::NoFile;
    std::string flaws;
    std::string remedies;
    for (Oddity const& oddity : config.locationOddities) {
        flaws += "; it " + oddity.text;
        remedies += ", and " + oddity.remedy;
    }
    problems.Add(
        config.unasked->holdsServerApp && IsServerAppLost(findings) ? Cause : Warning,
        "location-not-asked", Subject::ClientConfig,
        Tools::NameOfLocation() + (" names " + config.unasked->path) +
            (config.unasked->holdsServerApp ? ", where the server application is"
                                            : ", where the server application is not") +
            flaws +
            "; the library asks for it only after it has read a client configuration, and " +
            (isThere ? "it cannot be read" : "there is none"),
        (isThere ? "correct the client configuration"
                 : "put a client configuration beside the program; {} suffices") +
            remedies);
}

} // namespace

void JudgeClientConfig(Findings const& findings, ProblemList& problems)
{
    ClientConfig const& config = findings.config;
    if (config.state == ConfigState::NoFile && !config.override.empty())
        problems.Add(Cause, "client-config-override-missing", Subject::ClientConfig,
                     "the client configuration " + config.override +
                         ", which the program names, does not exist, and no other is looked for",
                     "put the file there, or have the program name the right one");
    if (config.state == ConfigState::NoFile)
        JudgeSimilar(findings, problems, config.search, "client-config-other-name",
                     Subject::ClientConfig, "the client configuration");
    if (config.parseError && config.parseError->damage == Damage::NoFile &&
        !config.override.empty())
        problems.Add(Cause, "client-config-not-a-file", Subject::ClientConfig,
                     "the client configuration " + config.override + ", which the program names, " +
                         config.parseError->message,
                     "have the program name the file itself");
    else if (config.parseError)
        AddDamage(problems, *config.parseError, "client-config", Subject::ClientConfig,
                  "the client configuration", config.file,
                  ", or remove the file if the defaults are wanted");
    JudgeUnaskedLocation(findings, problems);
    JudgeOddities(problems, "client-config", Subject::ClientConfig, config.file, config.oddities);
    if (config.isInWorkingDirectory)
        problems.Add(Warning, "client-config-in-working-directory", Subject::ClientConfig,
                     "the client configuration was found in the current directory only",
                     "put the file beside the program");
}

} // namespace Halvorix::Doctor
