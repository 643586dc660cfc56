// The library's reading of its files, for one that may have any size. Stands in place of
// the library's own file of this name.

#include "discovery/JsonFile.h"

#include <json/reader.h>

#include "doctor/SettingsFile.h"

namespace Halvorix::SSOServices {

bool ReadJsonFile(std::wstring const& file, std::ios::openmode mode, Json::Value& root)
{
    Doctor::SettingsFile const settings = Doctor::ReadSettingsFile(file, mode);
    return settings.flaw.empty() && Json::Reader().parse(settings.text, root);
}

} // namespace Halvorix::SSOServices
