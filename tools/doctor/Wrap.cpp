#include "doctor/Wrap.h"

#include <algorithm>

namespace Halvorix::Doctor {

namespace {

// Characters, without sequences for colours.
std::size_t ColumnsOf(std::string const& word)
{
    std::size_t columns = 0;
    for (std::size_t at = 0; at < word.size(); ++at) {
        if (word[at] == '\x1b') {
            at = word.find('m', at);
            if (at == std::string::npos)
                break;
        } else if ((static_cast<unsigned char>(word[at]) & 0xC0) != 0x80) {
            ++columns;
        }
    }
    return columns;
}

} // namespace

std::string Wrapped(std::string const& line, std::size_t columns, std::size_t indent)
{
    if (columns == 0)
        return line;
    std::string wrapped;
    std::size_t used = 0;
    for (std::size_t at = 0; at < line.size();) {
        std::size_t const word = std::min(line.find_first_not_of(' ', at), line.size());
        std::size_t const end = std::min(line.find(' ', word), line.size());
        std::size_t const blanks = word - at;
        std::size_t const width = ColumnsOf(line.substr(word, end - word));
        if (used > indent && used + blanks + width > columns) {
            wrapped += '\n' + std::string(indent, ' ');
            used = indent;
        } else {
            wrapped.append(blanks, ' ');
            used += blanks;
        }
        wrapped.append(line, word, end - word);
        used += width;
        at = end;
    }
    return wrapped;
}

} // namespace Halvorix::Doctor
