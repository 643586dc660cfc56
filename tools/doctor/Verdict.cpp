#include "doctor/Verdict.h"

#include <algorithm>
#include <utility>

#include "doctor/Judgement.h"

namespace Halvorix::Doctor {

namespace {

// One that was asked for may not have been tried.
bool IsLoaded(std::vector<Tools::Check> const& loadChecks)
{
    return std::any_of(loadChecks.begin(), loadChecks.end(), [](Tools::Check const& check) {
        return check.name == "load" && check.result == Tools::Result::Ok;
    });
}

} // namespace

Problem const* Verdict::First() const
{
    auto const first = std::find_if(problems.begin(), problems.end(), [](Problem const& problem) {
        return problem.isFatal || problem.isCause;
    });
    return canWork ? nullptr : &*first;
}

std::string Told(Verdict const& verdict)
{
    if (Problem const* const first = verdict.First())
        return first->text;
    if (verdict.needsProgram)
        return "nothing wrong found; the plugin was not loaded, since it takes symbols from the "
               "program itself";
    return verdict.isLoaded ? "sign-in can work"
                            : "nothing wrong found; the plugin was not loaded (--load loads it)";
}

Verdict Judge(Findings const& findings)
{
    ProblemList problems;
    JudgeProgram(findings, problems);
    JudgeClientConfig(findings, problems);
    JudgeInterruptions(findings, problems);
    JudgeServerApp(findings, problems);
    JudgeCompatibility(findings, problems);
    JudgePlugin(findings, problems);
    JudgeInterruptionsAfterPlugin(findings, problems);
    JudgeLoad(findings, problems);
    JudgeServerExecutable(findings, problems);
    JudgeOpenSsl(findings, problems);
    problems.verdict.needsProgram = !findings.plugin.ofProgram.empty();
    problems.verdict.isLoaded = IsLoaded(findings.plugin.loadChecks);
    return std::move(problems.verdict);
}

} // namespace Halvorix::Doctor
