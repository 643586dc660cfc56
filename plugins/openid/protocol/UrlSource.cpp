// Boost.URL's own code, which Debian's headers bring and no library of theirs does.

#include <boost/url/src.hpp>
