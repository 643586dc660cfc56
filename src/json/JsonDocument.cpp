#include "JsonDocument.h"

#include <memory>
#include <sstream>

#include <json/reader.h>
#include <json/value.h>
#include <json/writer.h>

namespace Halvorix::SSOServices {

bool ParseJsonDocument(char const* text, Json::Value& value)
{
    if (text == nullptr || *text == '\0')
        return false;
    std::istringstream stream(text);
    Json::CharReaderBuilder builder;
    builder["collectComments"] = false;
    std::string errors;
    return Json::parseFromStream(builder, stream, &value, &errors);
}

// As Json::writeString, whose stream would swallow std::bad_alloc and leave the
// document cut.
std::string WriteJsonDocument(Json::Value const& value)
{
    std::ostringstream stream;
    stream.exceptions(std::ios::badbit);
    std::unique_ptr<Json::StreamWriter> const writer(Json::StreamWriterBuilder().newStreamWriter());
    writer->write(value, &stream);
    return stream.str();
}

} // namespace Halvorix::SSOServices
