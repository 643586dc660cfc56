#include "discovery/Questions.h"

#include <algorithm>
#include <fstream>
#include <optional>
#include <thread>

#include <gtest/gtest.h>
#include <json/reader.h>
#include <json/writer.h>

#include <SSOClientPrivate.h>
#include <WebServicesManager.h>
#include <WebServicesUIManager.h>
#include "discovery/Lines.h"
#include "framework/HostProgram.h"
#include "support/TextConversion.h"

using Halvorix::SSOServices::SSOClientPrivate;
using Halvorix::SSOServices::Utf8ToWide;
using Halvorix::SSOServices::WideToUtf8;
using Halvorix::WebServices::WebServicesManager;
using Halvorix::WebServicesUI::WebServicesUIManager;

namespace {

namespace fs = std::filesystem;

using Answer = std::optional<std::string>;

std::string Root(Rig::Installation const& installation)
{
    std::string const folder = installation.Text("app");
    return folder.substr(0, folder.size() - 4);
}

std::string WithRoot(std::string text, std::string const& root)
{
    for (std::size_t at; (at = text.find("{root}")) != std::string::npos;)
        text.replace(at, 6, root);
    return text;
}

// Programs run in a folder of the installation's directory.
fs::path Below(std::string const& relative) { return ".." / fs::u8path(relative); }

void Copy(fs::path const& from, fs::path const& to)
{
    fs::remove_all(to);
    fs::copy(from, to);
}

Answer Load(Rig::Report& report)
{
    report("loaded", !SSOClientPrivate::GetSessionState().empty());
    return {};
}

Answer AnswerOf(std::string const& question, std::string const& argument, Rig::Report& report)
{
    std::wstring wide = Utf8ToWide(argument);
    if (question == "GetSSOServerAppPath")
        return WideToUtf8(SSOClientPrivate::GetSSOServerAppPath());
    if (question == "GetSSOServerAppExeDirPath")
        return WideToUtf8(SSOClientPrivate::GetSSOServerAppExeDirPath());
    if (question == "GetSSOClientPluginModule")
        return WideToUtf8(SSOClientPrivate::GetSSOClientPluginModule());
    if (question == "GetOpenSslModule")
        return WideToUtf8(SSOClientPrivate::GetOpenSslModule());
    if (question == "GetModuleDirPath")
        return WideToUtf8(SSOClientPrivate::GetModuleDirPath(wide));
    if (question == "GetSSOClientConfigFile")
        return WideToUtf8(SSOClientPrivate::GetSSOClientConfigFile());
    if (question == "GetSSOClientConfigFileOverride")
        return WideToUtf8(SSOClientPrivate::GetSSOClientConfigFileOverride());
    if (question == "GetLogFile")
        return WideToUtf8(SSOClientPrivate::GetLogFile());
    if (question == "GetSessionState")
        return SSOClientPrivate::GetSessionState();
    if (question == "ExpandPathVariables")
        return SSOClientPrivate::ExpandPathVariables(wide) ? WideToUtf8(wide) : "returned false";
    if (question == "Threaded") {
        std::string state;
        std::thread([&state] { state = SSOClientPrivate::GetSessionState(); }).join();
        return state;
    }
    if (question == "SetSSOClientConfigFileOverride")
        return SSOClientPrivate::SetSSOClientConfigFileOverride(wide), Answer();
    if (question == "SetSupportFileSearchPaths")
        return WebServicesManager::SetSupportFileSearchPaths(wide.c_str()), Answer();
    if (question == "Load")
        return Load(report);
    if (question == "Rescue") {
        Copy(Below("rescue.config"),
             Below(argument.empty() ? "work/SSOVersionCompatibility.config" : argument));
        return Load(report);
    }
    if (question == "Release") {
        WebServicesUIManager::Initialize(false);
        WebServicesUIManager::Uninitialize();
        return {};
    }
    std::size_t const split = argument.find('>');
    if (question == "Copy")
        return Copy(Below(argument.substr(0, split)), Below(argument.substr(split + 1))), Answer();
    if (question == "Remove")
        return fs::remove_all(Below(argument)), Answer();
    if (question == "Deny")
        return Rig::DenyReading(Below(argument)) ? "denied" : "readable";
    return "no such question: " + question;
}

Answer TryAnswer(std::string const& question, std::string const& argument, Rig::Report& report)
{
    try {
        return AnswerOf(question, argument, report);
    } catch (Json::LogicError const& error) {
        return std::string("Json::LogicError: ") + error.what();
    } catch (Json::Exception const& error) {
        return std::string("Json::Exception: ") + error.what();
    } catch (std::exception const& error) {
        return std::string("std::exception: ") + error.what();
    }
}

HOST_PROGRAM(AnswersQuestions)
{
    // Not by arguments, which some systems narrow.
    std::ifstream stream(Below("questions"), std::ios::binary);
    Json::Value questions;
    std::string errors;
    Json::parseFromStream(Json::CharReaderBuilder(), stream, &questions, &errors);
    int count = 0;
    for (Json::Value const& entry : questions) {
        std::string const text = entry.asString();
        std::size_t const split = std::min(text.find('='), text.size());
        Answer const answer =
            TryAnswer(text.substr(0, split), text.substr(std::min(split + 1, text.size())), report);
        if (answer)
            report("answer" + std::to_string(count++), *answer);
    }
}

} // namespace

namespace Rig {

Asked Ask(Installation& installation, std::vector<std::string> const& questions)
{
    std::string const root = Root(installation);
    Json::Value list(Json::arrayValue);
    for (std::string const& question : questions)
        list.append(WithRoot(question, root));
    installation.Remove("rescue")
        .File("questions", Json::writeString(Json::StreamWriterBuilder(), list))
        .Plugin("RecordingPlugin", "rescue")
        .File("rescue.config",
              WithRoot(R"({"ssoClientPlugin": [{"module": ")" + ModuleName("RecordingPlugin") +
                           R"(", "modulePath": "{root}/rescue",
                    "compatibleSsoServicesVersion": {"minVersion": "10"}}]})",
                       root));
    Asked asked;
    asked.outcome = installation.Run("AnswersQuestions");
    EXPECT_EQ(asked.outcome.ending.status, 0) << asked.outcome.errors;
    EXPECT_FALSE(asked.outcome.ending.timedOut);
    EXPECT_EQ(asked.outcome["program"], "returned");
    if (!asked.outcome["loaded"].isNull()) {
        EXPECT_EQ(asked.outcome["loaded"], true) << "the log has not come out";
    }
    for (int i = 0; asked.outcome.values.count("answer" + std::to_string(i)) != 0; ++i)
        asked.answers.push_back(asked.outcome["answer" + std::to_string(i)].asString());
    auto const isBanner = [](LogMessage const& line) {
        return line.text.find(" module loaded (Version: ") != std::string::npos;
    };
    std::vector<LogMessage> const& log = asked.outcome.log;
    asked.lines.assign(log.begin(), std::find_if(log.begin(), log.end(), isBanner));
    return asked;
}

Location::Location(Installation const& installation, std::string text)
    : root(installation.Path("app").parent_path())
{
    SetLocation(root, Utf8ToWide(WithRoot(std::move(text), Root(installation))));
}

Location::~Location() { RemoveLocation(root); }

} // namespace Rig
