#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include <json/value.h>
#include <json/writer.h>

#include "fuzz/Property.h"

namespace Fuzz {

/// Makes JSON of a fuzzer's bytes, so that inputs get behind the parser: mostly
/// what a reader hopes for, now and then something else. No bytes left read as 0.
class JsonMaker {
public:
    JsonMaker(std::uint8_t const* data, std::size_t size, std::vector<std::string> texts)
        : data(data), left(size), texts(std::move(texts))
    {
    }

    unsigned Byte()
    {
        if (left == 0)
            return 0;
        --left;
        return *data++;
    }

    /// True once in 16 times.
    bool Seldom() { return Byte() % 16 == 15; }

    /// One of the texts, or the next few bytes.
    std::string Text()
    {
        unsigned const choice = Byte();
        if (choice < 128)
            return texts[choice % texts.size()];
        std::string text;
        for (unsigned i = choice % 32; i > 0; --i)
            text += static_cast<char>(Byte());
        return text;
    }

    Json::Value TextValue() { return Seldom() ? Odd() : Json::Value(Text()); }

    Json::Value Odd()
    {
        switch (Byte() % 12) {
        case 0:
            return Json::nullValue;
        case 1:
            return true;
        case 2:
            return static_cast<int>(Byte()) - 128;
        case 3:
            return Json::Value::minInt64;
        case 4:
            return Json::Value::maxUInt64;
        case 5:
            return -0.5 * Byte();
        case 6:
            return 1e300;
        case 7:
            return Json::arrayValue;
        case 8:
            return Json::objectValue;
        case 9: {
            Json::Value array;
            array.append(Text());
            return array;
        }
        case 10: {
            Json::Value object;
            object[Text()] = Text();
            return object;
        }
        default:
            return Json::Value(Text());
        }
    }

    /// Sets a member to a text, or leaves it away.
    void SetText(Json::Value& object, char const* key)
    {
        if (Byte() % 4 != 0)
            object[key] = TextValue();
    }

private:
    std::uint8_t const* data;
    std::size_t left;
    std::vector<std::string> texts;
};

/// An input is the document itself; after a byte 1 it is what one is made of.
template <class Make>
std::string Document(std::uint8_t const* data, std::size_t size,
                     std::vector<std::string> const& texts, Make make)
{
    if (size == 0 || data[0] != 1)
        return AsText(data, size);
    JsonMaker maker(data + 1, size - 1, texts);
    return Json::writeString(Json::StreamWriterBuilder(), make(maker));
}

} // namespace Fuzz
