#pragma once

#include <unistd.h>

#include <cerrno>
#include <string>
#include <system_error>
#include <utility>

namespace Halvorix::OpenId {

/// An open descriptor, closed at the end.
class Descriptor {
public:
    explicit Descriptor(int aNumber = -1) : number(aNumber) {}
    Descriptor(Descriptor&& other) noexcept : number(std::exchange(other.number, -1)) {}
    ~Descriptor() { Close(); }
    Descriptor& operator=(Descriptor&&) = delete;

    explicit operator bool() const { return number >= 0; }
    int Number() const { return number; }
    void Close()
    {
        if (number >= 0)
            ::close(number);
        number = -1;
    }

private:
    int number;
};

/// The system's words for an error.
inline std::string ErrorText(int error) { return std::generic_category().message(error); }

} // namespace Halvorix::OpenId
