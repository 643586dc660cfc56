#include "support/ReturnBuffers.h"
#include "types/OAuth2Records.h"

namespace Halvorix::WebServices {

static_assert(sizeof(OAuth2Token) == sizeof(void*));

OAuth2Token::OAuth2Token() : record(new Record) {}

OAuth2Token::OAuth2Token(OAuth2Token const& other) : record(new Record(*other.record)) {}

OAuth2Token& OAuth2Token::operator=(OAuth2Token const& other)
{
    if (this != &other)
        *record = *other.record;
    return *this;
}

OAuth2Token::~OAuth2Token() { delete record; }

bool OAuth2Token::operator==(OAuth2Token const& other) const
{
    if (this == &other || record == other.record)
        return true;
    return *record->token == *other.record->token && record->spec == other.record->spec;
}

bool OAuth2Token::operator!=(OAuth2Token const& other) const { return !(*this == other); }

bool OAuth2Token::IsValid() const { return !record->token->empty(); }

int OAuth2Token::GetTokenSize() const { return SSOServices::AsCount(record->token->size()); }

wchar_t const* OAuth2Token::GetToken() const { return record->token->c_str(); }

int OAuth2Token::GetToken(wchar_t* buffer, int size) const
{
    return SSOServices::GetAllOrNothing(*record->token, buffer, size);
}

OAuth2TokenSpec OAuth2Token::GetSpec() const { return record->spec; }

} // namespace Halvorix::WebServices
