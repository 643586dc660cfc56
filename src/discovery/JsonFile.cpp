// hxsso-doctor has tools/doctor/JsonFile.cpp in the place of this file: change both.
#include "discovery/JsonFile.h"

#include <json/reader.h>
#include <json/value.h>

#include "platform/Platform.h"

namespace Halvorix::SSOServices {

bool ReadJsonFile(std::wstring const& file, std::ios::openmode mode, Json::Value& root)
{
    // What cannot be read has no text, which is not valid JSON.
    return Json::Reader().parse(Platform::ReadRegularFile(file, mode), root);
}

} // namespace Halvorix::SSOServices
