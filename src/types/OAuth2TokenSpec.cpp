#include <algorithm>
#include <string>
#include <vector>

#include <boost/algorithm/string/join.hpp>

#include "platform/Platform.h"
#include "support/ReturnBuffers.h"
#include "support/SplitAndTrim.h"
#include "types/OAuth2Records.h"

namespace Halvorix::WebServices {

static_assert(sizeof(OAuth2TokenSpec) == sizeof(void*));

namespace {

// Words in ascending order without regard to case, one blank between them. Only blanks
// separate words; other white space is trimmed from their edges.
std::wstring NormalizeScope(std::wstring const& scope)
{
    std::vector<std::wstring> words = SSOServices::SplitAndTrim(scope, L' ');
    std::sort(words.begin(), words.end(), [](std::wstring const& a, std::wstring const& b) {
        return Platform::CompareIgnoringCase(a.c_str(), b.c_str()) < 0;
    });
    return boost::algorithm::join(words, L" ");
}

} // namespace

OAuth2TokenSpec::OAuth2TokenSpec() : record(new Record) {}

OAuth2TokenSpec::OAuth2TokenSpec(OAuth2TokenType type, wchar_t const* scope)
    : record(new Record{false, type, NormalizeScope(scope)})
{
}

OAuth2TokenSpec::OAuth2TokenSpec(OAuth2TokenSpec const& other) : record(new Record(*other.record))
{
}

OAuth2TokenSpec& OAuth2TokenSpec::operator=(OAuth2TokenSpec const& other)
{
    if (this != &other)
        *record = *other.record;
    return *this;
}

OAuth2TokenSpec::~OAuth2TokenSpec()
{
    delete record;
    record = nullptr;
}

bool OAuth2TokenSpec::operator==(OAuth2TokenSpec const& other) const
{
    if (this == &other || record == other.record)
        return true;
    return record->legacy == other.record->legacy && record->type == other.record->type &&
           Platform::CompareIgnoringCase(record->scope.c_str(), other.record->scope.c_str()) == 0;
}

bool OAuth2TokenSpec::operator!=(OAuth2TokenSpec const& other) const { return !(*this == other); }

OAuth2TokenType OAuth2TokenSpec::GetType() const { return record->type; }

bool OAuth2TokenSpec::SetType(OAuth2TokenType type)
{
    record->type = type;
    return true;
}

int OAuth2TokenSpec::GetScope(wchar_t* buffer, int size) const
{
    return SSOServices::GetTruncated(record->scope, buffer, size);
}

bool OAuth2TokenSpec::SetScope(wchar_t const* scope) const
{
    record->scope = NormalizeScope(scope);
    return true;
}

} // namespace Halvorix::WebServices
