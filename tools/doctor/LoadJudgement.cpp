#include <algorithm>

#include "doctor/Judgement.h"
#include "doctor/Text.h"
#include "support/Messages.h"

namespace Halvorix::Doctor {

namespace {

bool IsStopped(std::optional<ParseError> const& error) { return error && error->StopsReading(); }

bool IsToldBefore(Findings const& findings)
{
    return IsStopped(findings.config.parseError) || IsStopped(findings.compatibility.parseError) ||
           AnyStops(findings.config.oddities);
}

// One reason stops several questions.
void AddInterruptions(Findings const& findings, ProblemList& problems, bool areAfterPlugin)
{
    for (Interruption const& interruption : findings.interruptions) {
        // A plugin that is out of reach is told of as such.
        if (interruption.isAfterPlugin != areAfterPlugin ||
            (findings.plugin.presence.isOutOfReach &&
             interruption.text == findings.plugin.presence.reason) ||
            std::find(problems.toldExceptions.begin(), problems.toldExceptions.end(),
                      interruption.text) != problems.toldExceptions.end())
            continue;
        problems.toldExceptions.push_back(interruption.text);
        if (interruption.isLimit) {
            problems.Add(Fatal, "question-limit", Subject::Program,
                         interruption.during + " " + interruption.text,
                         "shorten the lists and paths, or correct what keeps the server "
                         "application from being found: it is searched for again at each "
                         "%SSOServerAppPath%");
            continue;
        }
        std::string const& circle = interruption.circle;
        problems.Add(
            Fatal, "library-stops", areAfterPlugin ? Subject::Load : Subject::Program,
            "the library ends " + interruption.during + " with an exception: " +
                (circle.empty() ? interruption.text : circle + " is a link that leads in a circle"),
            !circle.empty() ? "put the file or folder itself in place of " + circle
            : interruption.isDenied
                ? "allow the program's user to read the files and folders that it looks "
                  "for, and to enter the folders that lead to them"
                : "correct what it names in the client configuration or the version "
                  "compatibility file");
    }
}

// An empty factory is not logged, and errors of before have nothing to do with it.
std::string ReasonOf(RealLoad const& load)
{
    if (!load.death.empty())
        return load.death;
    std::string const getting = BeginningOf(SSOServices::Messages::FactoryGetting);
    if (!load.lines.empty() && load.lines.back().text.rfind(getting, 0) == 0)
        return "it gives no factory";
    auto const last = std::find_if(load.lines.rbegin(), load.lines.rend(),
                                   [](LogMessage const& line) { return line.level == 2; });
    return last == load.lines.rend() ? "the log does not say why" : last->text;
}

} // namespace

// Those of wrong types are told by the place in the file.
void JudgeInterruptions(Findings const& findings, ProblemList& problems)
{
    std::vector<Oddity> const& oddities = findings.compatibility.oddities;
    bool const isTold = IsToldBefore(findings) ||
                        std::any_of(oddities.begin(), oddities.end(), [](Oddity const& oddity) {
                            return oddity.stopsReading && !StopsOpenSsl(oddity);
                        });
    if (!isTold && !AnyStops(findings.compatibility.plugins))
        AddInterruptions(findings, problems, false);
}

void JudgeInterruptionsAfterPlugin(Findings const& findings, ProblemList& problems)
{
    Compatibility const& file = findings.compatibility;
    if (!IsToldBefore(findings) && !AnyStops(file.oddities) && !AnyStops(file.plugins) &&
        !AnyStops(file.openSsl))
        AddInterruptions(findings, problems, true);
}

void JudgeLoad(Findings const& findings, ProblemList& problems)
{
    // An exception that ended it is told as an interruption.
    if (!findings.load || findings.load->worked || findings.load->isInterrupted)
        return;
    problems.Add(Fatal, "load-failed", Subject::Load,
                 "the library could not load the client plugin: " + ReasonOf(*findings.load),
                 problems.verdict.canWork ? AskVendor
                                          : "correct what is wrong above, and load it again");
}

} // namespace Halvorix::Doctor
