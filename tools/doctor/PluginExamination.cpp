#include <filesystem>
#include <utility>

#include "../common/FileChecks.h"
#include "../common/LoadChecks.h"
#include "../common/System.h"
#include "Examination.h"
#include "Text.h"
#include "Vantage.h"

namespace Halvorix::Doctor {

namespace {

class CollectedReport : public Tools::Report {
public:
    std::vector<Tools::Check> checks;

private:
    void Take(Tools::Check check) override { checks.push_back(std::move(check)); }
};

std::filesystem::path FileOf(Plugin const& plugin)
{
    return std::filesystem::absolute(plugin.asFile).lexically_normal();
}

Tools::FileFindings CheckFile(Plugin const& plugin, Tools::Report& report)
{
    Vantage const& vantage = CurrentVantage();
    Tools::Host host{vantage.executable.parent_path(), {}};
    if (!vantage.library.empty())
        host.libraryFolders.push_back(vantage.library.parent_path());
    return Tools::CheckFile(FileOf(plugin), host, report);
}

} // namespace

void ExaminePlugin(Findings& findings)
{
    Plugin& plugin = findings.plugin;
    if (!plugin.presence.isThere)
        return;
    CollectedReport report;
    CheckFile(plugin, report);
    plugin.fileChecks = std::move(report.checks);
}

void ExamineInterfaces(Findings& findings)
{
    Plugin& plugin = findings.plugin;
    if (!plugin.presence.isThere)
        return;
    CollectedReport file;
    Tools::FileFindings const found = CheckFile(plugin, file);
    CollectedReport report;
    // Nothing of a module runs here that is known not to work.
    if (file.HasFailed())
        report.Add("load", Tools::Result::Note, "not tried, for what is said above");
    else
        Tools::CheckLoaded(FileOf(plugin), found, report);
    plugin.loadChecks = std::move(report.checks);
}

} // namespace Halvorix::Doctor
