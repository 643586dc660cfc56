#include "common/PluginRun.h"
#include "common/Utf8.h"
#include "doctor/Examination.h"
#include "doctor/TargetProgram.h"
#include "doctor/Text.h"

namespace Halvorix::Doctor {

void ExamineRealLoad(Options const& options, Findings& findings)
{
    if (!findings.plugin.ofProgram.empty())
        return; // said of the load before
    findings.load = RealLoad();
    RealLoad& load = *findings.load;
    Json::Value request;
    request["executable"] = Tools::Utf8(CurrentTargetProgram().executable);
    request["library"] = Tools::Utf8(CurrentTargetProgram().library);
    request["first"] = Tools::ListOf(findings.plugin.first);
    request["config"] = Shown(options.config);
    request["searchPaths"] = Shown(options.searchPaths);
    Tools::PluginRun const run = Tools::RunPluginLoader(request, options.timeLimit);
    for (Json::Value const& record : run.records) {
        if (record["level"].isInt()) {
            load.lines.push_back({record["level"].asInt(), Tools::TextOf(record, "text")});
        } else if (record.isMember("interruption")) {
            load.isInterrupted = true;
            findings.interruptions.push_back({"the load",
                                              Tools::TextOf(record, "interruption"),
                                              true,
                                              false,
                                              {},
                                              record["isLimit"] == true});
        } else if (record["worked"].isBool()) {
            load.worked = record["worked"].asBool();
        }
    }
    load.death = Tools::Presentable(run.death);
    load.worked = load.worked && load.death.empty();
}

} // namespace Halvorix::Doctor
