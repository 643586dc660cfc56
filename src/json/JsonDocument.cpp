#include "json/JsonDocument.h"

#include <atomic>
#include <cstddef>
#include <cstring>
#include <memory>
#include <ostream>
#include <streambuf>
#include <utility>

#include <json/reader.h>
#include <json/value.h>
#include <json/writer.h>

#include "platform/Platform.h"
#include "support/ProcessEnd.h"
#include "support/SecretText.h"
#include "support/TextConversion.h"

namespace Halvorix::SSOServices {

namespace {

// Unlike a string stream's, a buffer that leaves nothing behind when it grows.
class DocumentBuffer : public std::streambuf {
public:
    std::string Release() { return std::move(*document); }

protected:
    std::streamsize xsputn(char const* text, std::streamsize count) override
    {
        MakeRoomFor(static_cast<std::size_t>(count));
        document->append(text, static_cast<std::size_t>(count));
        return count;
    }

    int_type overflow(int_type unit) override
    {
        if (!traits_type::eq_int_type(unit, traits_type::eof())) {
            MakeRoomFor(1);
            document->push_back(traits_type::to_char_type(unit));
        }
        return traits_type::not_eof(unit);
    }

private:
    void MakeRoomFor(std::size_t count)
    {
        if (document->capacity() - document->size() >= count)
            return;
        SecretText<char> larger;
        larger->reserve(2 * (document->size() + count));
        larger->append(*document);
        document->swap(*larger);
    }

    SecretText<char> document;
};

// Each builder is a document itself: to make one takes as long as to read a token.
// Constants, so that all threads may use them; never destroyed, since threads of the
// host read and write documents until the process is gone. The library stays for them:
// otherwise each time that a host loads it again would leave two behind.
struct Builders {
    Builders() { readers["collectComments"] = false; }
    Json::CharReaderBuilder readers;
    Json::StreamWriterBuilder writers;
};

std::atomic<Builders const*> theBuilders{nullptr};

// Two threads may both make them, and one pair stays. No guard is held meanwhile: the
// loader may be busy with a module whose constructors read documents, and wait for it.
Builders const& MakeBuilders()
{
    if (WorkBeforeTheEnd const work; work.MayBegin())
        Platform::KeepLibraryLoaded();
    auto made = std::make_unique<Builders const>();
    Builders const* earlier = nullptr;
    if (theBuilders.compare_exchange_strong(earlier, made.get(), std::memory_order_acq_rel))
        return *made.release();
    return *earlier;
}

Builders const& TheBuilders()
{
    Builders const* const builders = theBuilders.load(std::memory_order_acquire);
    return builders != nullptr ? *builders : MakeBuilders();
}

} // namespace

bool ParseJsonDocument(char const* text, Json::Value& value)
{
    if (text == nullptr || *text == '\0')
        return false;
    // In place: parseFromStream would copy the text, with the secrets in it.
    std::unique_ptr<Json::CharReader> const reader(TheBuilders().readers.newCharReader());
    return reader->parse(text, text + std::strlen(text), &value, nullptr);
}

std::wstring WideText(Json::Value const& value)
{
    char const* begin = nullptr;
    char const* end = nullptr;
    if (value.getString(&begin, &end))
        return Utf8ToWide({begin, static_cast<std::size_t>(end - begin)});
    return Utf8ToWide(value.asString());
}

// As Json::writeString, whose stream would swallow std::bad_alloc and leave the
// document cut.
std::string WriteJsonDocument(Json::Value const& value)
{
    DocumentBuffer document;
    std::ostream stream(&document);
    stream.exceptions(std::ios::badbit);
    std::unique_ptr<Json::StreamWriter> const writer(TheBuilders().writers.newStreamWriter());
    writer->write(value, &stream);
    return document.Release();
}

} // namespace Halvorix::SSOServices
