#include "Diagnosis.h"

#include <iostream>

#include "../common/System.h"
#include "Examination.h"
#include "JsonReport.h"
#include "Options.h"
#include "TargetProgram.h"
#include "TextReport.h"
#include "Verdict.h"

namespace Halvorix::Doctor {

namespace {

constexpr int CanWork = 0;
constexpr int SomethingIsWrong = 1;
constexpr int WrongUse = 2;

void RunPlugin(Options const& options, Findings& findings)
{
    if (options.load)
        ExamineInterfaces(options, findings);
    if (options.log)
        ExamineRealLoad(options, findings);
}

int Diagnose(Options const& options)
{
    SetTargetProgram(FindTargetProgram(options.executable, options.library));
    Findings findings = Examine(options);
    if (options.asJson) {
        RunPlugin(options, findings);
        Verdict const verdict = Judge(findings);
        WriteJson(findings, verdict);
        return verdict.canWork ? CanWork : SomethingIsWrong;
    }
    TextReport const report(Tools::BeginTerminal());
    report.WriteFindings(findings);
    RunPlugin(options, findings);
    report.WriteLoad(findings);
    Verdict const verdict = Judge(findings);
    report.WriteVerdict(verdict);
    return verdict.canWork ? CanWork : SomethingIsWrong;
}

} // namespace

int Run(std::vector<std::filesystem::path> const& arguments)
{
    Options const options = ReadOptions(arguments);
    if (options.help && options.misuse.empty()) {
        std::cout << Usage;
        return CanWork;
    }
    if (!options.misuse.empty()) {
        std::cerr << "hxsso-doctor: " << options.misuse << "\n\n" << Usage;
        return WrongUse;
    }
    return Diagnose(options);
}

} // namespace Halvorix::Doctor
