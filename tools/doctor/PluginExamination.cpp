#include <algorithm>
#include <filesystem>
#include <utility>

#include "common/FileChecks.h"
#include "common/PluginRun.h"
#include "common/System.h"
#include "doctor/Examination.h"
#include "doctor/FileFlaw.h"
#include "doctor/PluginFile.h"
#include "doctor/TargetProgram.h"
#include "doctor/Text.h"

namespace Halvorix::Doctor {

namespace {

class CollectedReport : public Tools::Report {
public:
    std::vector<Tools::Check> checks;

private:
    void Take(Tools::Check check) override { checks.push_back(std::move(check)); }
};

// As the file is named, wherever it is found.
std::filesystem::path DependencyFolderOf(Plugin const& plugin)
{
    return Tools::AsOpened(plugin.asFile).parent_path();
}

Tools::FileFindings CheckFile(Plugin const& plugin, Tools::Report& report)
{
    TargetProgram const& target = CurrentTargetProgram();
    return Tools::CheckFile(
        plugin.loaded, {target.executable, target.library, DependencyFolderOf(plugin)}, report);
}

std::string FlawOfPlugin(Plugin const& plugin)
{
    if (plugin.presence.flaw.empty() && IsEmpty(plugin.loaded))
        return "is empty";
    return plugin.presence.flaw;
}

} // namespace

void ExaminePlugin(Findings& findings)
{
    Plugin& plugin = findings.plugin;
    if (!plugin.presence.isThere)
        return;
    plugin.loaded = FileThatLoads(plugin.asFile, CurrentTargetProgram().executable);
    if (plugin.loaded.empty())
        return;
    CollectedReport report;
    if (std::string const flaw = FlawOfPlugin(plugin); flaw.empty()) {
        Tools::FileFindings found = CheckFile(plugin, report);
        plugin.first = std::move(found.first);
        plugin.ofProgram = std::move(found.ofProgram);
    } else {
        report.Add("file", Tools::Result::Failed, "it " + flaw);
    }
    plugin.fileChecks = std::move(report.checks);
}

void ExamineLibrary(Findings& findings)
{
    TargetProgram const& target = CurrentTargetProgram();
    CollectedReport report;
    Tools::CheckLibrary({target.executable, target.library}, report);
    findings.program.libraryChecks = std::move(report.checks);
}

void ExamineInterfaces(Options const& options, Findings& findings)
{
    Plugin& plugin = findings.plugin;
    if (plugin.loaded.empty())
        return;
    CollectedReport report;
    bool const hasFailed = std::any_of(
        plugin.fileChecks.begin(), plugin.fileChecks.end(),
        [](Tools::Check const& check) { return check.result == Tools::Result::Failed; });
    // Nothing of a module runs that is known not to work.
    if (hasFailed)
        report.Add("load", Tools::Result::Note, "not tried because of the failures above");
    else if (!plugin.ofProgram.empty())
        report.Add("load", Tools::Result::Note,
                   "not tried: it takes " + plugin.ofProgram +
                       " from the program itself, which is not started");
    else
        Tools::CheckLoaded(plugin.loaded, {plugin.first, {}, DependencyFolderOf(plugin)},
                           options.timeLimit, report);
    plugin.loadChecks = std::move(report.checks);
}

} // namespace Halvorix::Doctor
