#pragma once

#include <ostream>
#include <string>

namespace Rig {

struct LogMessage {
    int level;
    std::string text;
};

inline bool operator==(LogMessage const& left, LogMessage const& right)
{
    return left.level == right.level && left.text == right.text;
}

inline std::ostream& operator<<(std::ostream& out, LogMessage const& line)
{
    return out << '[' << line.level << "] " << line.text;
}

constexpr int Error = 2;
constexpr int Warning = 4;
constexpr int Info = 8;

} // namespace Rig
