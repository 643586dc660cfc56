#include "doctor/Diagnosis.h"

#include <iostream>

#include "common/Report.h"
#include "common/Terminal.h"
#include "doctor/Examination.h"
#include "doctor/JsonReport.h"
#include "doctor/Options.h"
#include "doctor/TargetProgram.h"
#include "doctor/TextReport.h"
#include "doctor/Verdict.h"
#include "support/LibraryIdentity.h"

namespace Halvorix::Doctor {

namespace {

constexpr int CanWork = 0;
constexpr int SomethingIsWrong = 1;
constexpr int WrongUse = 2;

std::string VersionLine()
{
    return std::string("hxsso-doctor ") + SSOServices::LibraryVersion + '\n';
}

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
    TextReport report(Tools::BeginTerminal(), options.verbose);
    report.WriteFindings(findings, Judge(findings));
    RunPlugin(options, findings);
    Verdict const verdict = Judge(findings);
    report.WriteLoad(findings, verdict);
    report.WriteVerdict(verdict);
    return verdict.canWork ? CanWork : SomethingIsWrong;
}

} // namespace

int Run(std::vector<std::filesystem::path> const& arguments)
{
    Options const options = ReadOptions(arguments);
    if (options.misuse.empty() && (options.help || options.version)) {
        std::cout << (options.help ? Usage : VersionLine());
        return CanWork;
    }
    if (!options.misuse.empty()) {
        std::cerr << "hxsso-doctor: " << Tools::Presentable(options.misuse)
                  << "; hxsso-doctor --help tells how to use it\n";
        return WrongUse;
    }
    int const status = Diagnose(options);
    if (!std::cout.flush()) {
        std::cerr << "hxsso-doctor: the report cannot be written\n";
        return SomethingIsWrong;
    }
    return status;
}

} // namespace Halvorix::Doctor
