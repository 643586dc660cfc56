#include "host/ProcessLocale.h"

#include <locale>
#include <string>

#include <boost/locale/info.hpp>
#include <gtest/gtest.h>

#include "framework/Variable.h"

namespace {

class ProcessLocale : public testing::Test {
protected:
    ~ProcessLocale() override
    {
        Rig::SetVariable("LC_ALL", variable);
        std::locale::global(before);
    }

    static std::string NameFor(std::string const& value)
    {
        Rig::SetVariable("LC_ALL", value);
        Halvorix::SSOServices::SetProcessLocale(Halvorix::SSOServices::SystemLocale(),
                                                Halvorix::SSOServices::LocaleOfTheCLibrary());
        return std::use_facet<boost::locale::info>(std::locale()).name();
    }

    std::string const variable = Rig::Variable("LC_ALL");
    std::locale const before;
};

} // namespace

TEST_F(ProcessLocale, IsThatOfTheEnvironment)
{
    for (char const* const name : {"de_DE.UTF-8", "norwegian.UTF-8", "lithuanian.UTF-8",
                                   "abcdefghijk.UTF-8", "ca_ES.UTF-8@valencia", "C.UTF-8"})
        EXPECT_EQ(NameFor(name), name);
}

// Boost's generator ends the process for a language that is longer than any, and for
// keywords that have no value, or one that is longer than any.
TEST_F(ProcessLocale, IsOneThatIsAlwaysThereWhereTheEnvironmentNamesNone)
{
    std::string const overflow =
        "C.UTF-7@;collation==" + std::string(100, 'v') + ";" + std::string(30, 'k') + "buddhist";
    for (std::string const& name :
         {std::string("abcdefghijkl.UTF-8"), std::string("abcdefghijklmnopqrst"),
          std::string("en@="), std::string("en@x=y;z"), std::string("C@a=b;c"),
          std::string("en_US.UTF-8@calendar="), "en." + std::string(98, 'x'), overflow})
        EXPECT_EQ(NameFor(name), "C.UTF-8") << name;
}
