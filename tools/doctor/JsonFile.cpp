// The library's reading of its files, for one that may have any size. Stands in place of
// the library's own file of this name.

#include "discovery/JsonFile.h"

#include <json/reader.h>

#include "../common/Files.h"
#include "../common/System.h"
#include "platform/Platform.h"

namespace Halvorix::SSOServices {

bool ReadJsonFile(std::wstring const& file, std::ios::openmode mode, Json::Value& root)
{
    return Tools::FlawOfText(Tools::FromWide(file)).empty() &&
           Json::Reader().parse(Platform::ReadRegularFile(file, mode), root);
}

} // namespace Halvorix::SSOServices
