#include "doctor/RepeatedKeys.h"

#include <algorithm>
#include <cstddef>
#include <set>
#include <utility>

namespace Halvorix::Doctor {

namespace {

// More than anyone reads; each has its whole path.
constexpr std::size_t MostRepeatedKeys = 100;

/// An object or an array around the place where the scan is.
struct Level {
    bool isObject;
    bool isKeyNext;
    std::set<std::string> keys;
    std::string key;
    std::size_t index = 0;
};

class Scan {
public:
    explicit Scan(std::string const& aText) : text(aText) {}

    std::vector<RepeatedKey> Run()
    {
        for (at = 0; at < text.size(); ++at)
            Take(text[at]);
        return std::move(found);
    }

private:
    void Take(char unit)
    {
        if (unit == '"')
            TakeText();
        else if (unit == '/')
            SkipComment();
        else if (unit == '{' || unit == '[')
            levels.push_back({unit == '{', unit == '{', {}, {}});
        else if ((unit == '}' || unit == ']') && !levels.empty())
            levels.pop_back();
        else if (unit == ',' && !levels.empty())
            TakeComma(levels.back());
    }

    static void TakeComma(Level& level)
    {
        level.isKeyNext = level.isObject;
        ++level.index;
    }

    // Ends at the closing quote.
    void TakeText()
    {
        std::size_t const begin = at;
        for (++at; at < text.size() && text[at] != '"'; ++at)
            if (text[at] == '\\')
                ++at;
        if (levels.empty() || !levels.back().isKeyNext)
            return;
        Level& level = levels.back();
        level.isKeyNext = false;
        level.key = text.substr(begin + 1, std::min(at, text.size()) - begin - 1);
        if (!level.keys.insert(level.key).second && found.size() < MostRepeatedKeys)
            found.push_back({begin, Path()});
    }

    void SkipComment()
    {
        bool const isLine = text.compare(at, 2, "//") == 0;
        std::size_t const end = isLine ? text.find('\n', at) : text.find("*/", at + 2);
        at = end == std::string::npos ? text.size() : isLine ? end : end + 1;
    }

    std::string Path() const
    {
        std::string path;
        for (Level const& level : levels) {
            if (!level.isObject)
                path += "[" + std::to_string(level.index) + "]";
            else
                path += (path.empty() ? "" : ".") + level.key;
        }
        return path;
    }

    std::string const& text;
    std::size_t at = 0;
    std::vector<Level> levels;
    std::vector<RepeatedKey> found;
};

} // namespace

std::vector<RepeatedKey> FindRepeatedKeys(std::string const& text) { return Scan(text).Run(); }

} // namespace Halvorix::Doctor
