#pragma once

#include <algorithm>
#include <array>
#include <locale>

namespace HxSSOTest {

/// While it lives, one letter more counts as white space in the global locale.
class LocaleWithBlank {
public:
    explicit LocaleWithBlank(char blank)
        : previous(std::locale::global(std::locale(std::locale(std::locale(), new Narrow(blank)),
                                                   new Wide(static_cast<wchar_t>(blank)))))
    {
    }
    LocaleWithBlank(LocaleWithBlank const&) = delete;
    LocaleWithBlank& operator=(LocaleWithBlank const&) = delete;
    ~LocaleWithBlank() { std::locale::global(previous); }

private:
    struct Table {
        explicit Table(char blank)
        {
            std::copy_n(std::ctype<char>::classic_table(), masks.size(), masks.begin());
            masks[static_cast<unsigned char>(blank)] = std::ctype_base::space;
        }
        std::array<std::ctype_base::mask, std::ctype<char>::table_size> masks;
    };

    class Narrow : private Table, public std::ctype<char> {
    public:
        explicit Narrow(char blank) : Table(blank), std::ctype<char>(masks.data()) {}
    };

    class Wide : public std::ctype<wchar_t> {
    public:
        explicit Wide(wchar_t blank) : blank(blank) {}

    protected:
        bool do_is(mask wanted, wchar_t unit) const override
        {
            return unit == blank ? (wanted & space) != 0 : std::ctype<wchar_t>::do_is(wanted, unit);
        }

    private:
        wchar_t blank;
    };

    std::locale previous;
};

} // namespace HxSSOTest
