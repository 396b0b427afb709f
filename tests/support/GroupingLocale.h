#pragma once

#include <locale>
#include <string>

// Sets a global locale with a decimal comma and groups of two digits, for the lifetime of the object.
class GroupingLocale {
public:
    GroupingLocale() : previous(std::locale::global(std::locale(std::locale::classic(), new Punctuation))) {}
    ~GroupingLocale() { std::locale::global(previous); }
    GroupingLocale(const GroupingLocale&) = delete;
    GroupingLocale& operator=(const GroupingLocale&) = delete;

private:
    class Punctuation : public std::numpunct<char> {
    protected:
        char do_decimal_point() const override { return ','; }
        char do_thousands_sep() const override { return '.'; }
        std::string do_grouping() const override { return "\2"; }
    };

    std::locale previous;
};
