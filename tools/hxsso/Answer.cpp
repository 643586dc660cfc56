#include "hxsso/Answer.h"

#include <utility>

#include <json/writer.h>

#include "common/Report.h"
#include "common/Utf8.h"
#include "hxsso/System.h"

namespace Halvorix::HxSSO {

Answer Failed(Status status, std::string error, std::string remedy)
{
    Answer answer;
    answer.status = status;
    answer.error = std::move(error);
    answer.remedy = std::move(remedy);
    return answer;
}

std::string Document(std::string const& command, Answer const& answer)
{
    Json::Value document;
    document["formatVersion"] = 1;
    document["command"] = command;
    document["exitStatus"] = static_cast<int>(answer.status);
    document["result"] = answer.result;
    if (!answer.error.empty()) {
        document["error"]["text"] = Tools::Presentable(answer.error);
        document["error"]["remedy"] =
            answer.remedy.empty() ? Json::Value() : Tools::Presentable(answer.remedy);
    } else {
        document["error"] = Json::Value();
    }
    Json::StreamWriterBuilder writer;
    writer["indentation"] = "  ";
    return Json::writeString(writer, document) + '\n';
}

void TellError(Answer const& answer)
{
    if (answer.error.empty())
        return;
    std::string text = "hxsso: " + Tools::Presentable(answer.error) + '\n';
    if (!answer.remedy.empty())
        text += "Fix: " + Tools::Presentable(answer.remedy) + '\n';
    Write(Stream::Errors, text);
}

int Tell(std::string const& command, Answer const& answer, bool asJson)
{
    TellError(answer);
    if (Write(Stream::Output, asJson ? Document(command, answer) : Tools::Escaped(answer.text)))
        return static_cast<int>(answer.status);
    TellError(Failed(Status::Failed, "the output cannot be written"));
    return static_cast<int>(Status::Failed);
}

void TellProgress(std::string const& line)
{
    Write(Stream::Errors, Tools::Presentable(line) + '\n');
}

} // namespace Halvorix::HxSSO
