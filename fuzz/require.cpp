#include "require.h"

#include <cstdlib>
#include <iostream>

void require(bool condition, const char* what)
{
    if (condition)
        return;
    std::cerr << "does not hold: " << what << '\n';
    std::abort();
}

void require_equal(const std::string& actual, const std::string& expected, const char* what)
{
    if (actual == expected)
        return;
    std::cerr << "expected:\n" << expected << "\nactual:\n" << actual << '\n';
    require(false, what);
}
