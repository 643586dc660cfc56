#include "JsonDocument.h"

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

std::string WriteJsonDocument(Json::Value const& value)
{
    return Json::writeString(Json::StreamWriterBuilder(), value);
}

} // namespace Halvorix::SSOServices
