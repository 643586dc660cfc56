// hxsso-plugin-check: says line by line what of a client plugin holds and what
// does not, in the order in which the library would stumble.

#include <exception>
#include <iostream>

#include "common/FileChecks.h"
#include "common/PluginRun.h"
#include "common/Report.h"
#include "common/System.h"
#include "common/Utf8.h"
#include "plugin-check/WrittenReport.h"
#include "support/LibraryIdentity.h"

namespace Halvorix::PluginCheck {

/// The text of --help, made of hxsso-plugin-check.txt as the man page is.
extern char const* const Usage;

namespace {

namespace fs = std::filesystem;

constexpr int AllHolds = 0;
constexpr int SomethingFails = 1;
constexpr int WrongUse = 2;

int Check(fs::path const& module, bool asJson, std::chrono::seconds limit)
{
    WrittenReport report(asJson);
    fs::path file = module;
    try {
        file = Tools::AsOpened(module);
        Tools::FileFindings const findings =
            Tools::CheckFile(file, Tools::ThisProgramAsHost(), report);
        // Nothing of a module runs here that is known not to work.
        if (report.HasFailed())
            report.Add("load", Tools::Result::Note, "not tried because of the failures above");
        else
            Tools::CheckLoaded(file, findings, limit, report);
        if (!report.HasFailed())
            report.Add("operations", Tools::Result::Note,
                       "not called: documents, units and exceptions are not checked");
    } catch (std::exception const& exception) {
        report.Add("check", Tools::Result::Failed, std::string("given up: ") + exception.what());
    }
    report.Close(Tools::Utf8(file));
    if (!std::cout.flush()) {
        std::cerr << "hxsso-plugin-check: the report cannot be written\n";
        return SomethingFails;
    }
    return report.HasFailed() ? SomethingFails : AllHolds;
}

int Run(std::vector<fs::path> const& arguments)
{
    bool asJson = false;
    std::chrono::seconds limit = Tools::DefaultTimeLimit;
    std::vector<fs::path> modules;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        fs::path const& argument = arguments[i];
        std::string const text = Tools::Utf8(argument);
        if (text == "--help") {
            std::cout << Usage;
            return AllHolds;
        }
        if (text == "--version") {
            std::cout << "hxsso-plugin-check " << SSOServices::LibraryVersion << '\n';
            return AllHolds;
        }
        if (text == "--json")
            asJson = true;
        else if (text == "--timeout" && i + 1 < arguments.size() &&
                 Tools::ReadTimeLimit(Tools::Utf8(arguments[i + 1]), limit))
            ++i;
        else if (!text.empty() && text.front() != '-')
            modules.push_back(argument);
        else
            modules.insert(modules.end(), 2, argument); // unknown: wrong use
    }
    if (modules.size() != 1) {
        std::cerr << "hxsso-plugin-check: name one module\n\n" << Usage;
        return WrongUse;
    }
    return Check(modules.front(), asJson, limit);
}

} // namespace

} // namespace Halvorix::PluginCheck

int main(int count, char** arguments)
{
    try {
        return Halvorix::PluginCheck::Run(Halvorix::Tools::BeginProgram(count, arguments));
    } catch (std::exception const& exception) {
        std::cerr << "hxsso-plugin-check: " << Halvorix::Tools::Presentable(exception.what())
                  << '\n';
        return 1;
    }
}
