#include <boost/property_tree/xml_parser.hpp>
#include <gtest/gtest.h>
#include <sstream>
#include <stdexcept>
#include <string>

#include "config/Fragment.h"

namespace CoordinateTransformation {
namespace {

using boost::property_tree::xml_parser_error;

// Hands out `text` again and again, and breaks off after `times` times if that is not 0.
class EndlessBuffer : public std::streambuf {
public:
    explicit EndlessBuffer(std::string theText, std::size_t times = 0) : text(std::move(theText)), breaksAfter(times) {}

protected:
    int_type underflow() override {
        if (breaksAfter != 0 && ++given > breaksAfter) throw std::runtime_error("broken off");
        setg(text.data(), text.data(), text.data() + text.size());
        return traits_type::to_int_type(text.front());
    }

private:
    std::string text;
    std::size_t breaksAfter;
    std::size_t given = 0;
};

xml_parser_error errorOf(std::istream& stream) {
    try {
        readFragment(stream);
    } catch (const xml_parser_error& error) {
        return error;
    }
    ADD_FAILURE() << "accepted";
    return xml_parser_error("", "", 0);
}

TEST(AFragmentStream, IsReadFromWhereItStandsAndStaysGood) {
    std::istringstream stream("skipped <a>1</a>");
    stream.ignore(8);
    EXPECT_EQ(readFragment(stream).get<std::string>("a"), "1");
    EXPECT_TRUE(stream.good());
    stream.str("<a>2</a>");
    EXPECT_EQ(readFragment(stream).get<std::string>("a"), "2");
}

TEST(AFragmentStream, ThatHasFailedIsRefused) {
    std::istringstream stream("<a/>");
    stream.setstate(std::ios::failbit);
    EXPECT_EQ(errorOf(stream).message(), "read error");
    EXPECT_EQ(errorOf(stream).line(), 0U);
}

TEST(AFragmentStream, ThatDoesNotEndIsRefused) {
    EndlessBuffer buffer(std::string(1 << 20, ' '));
    std::istream stream(&buffer);
    EXPECT_EQ(errorOf(stream).message(), "the fragment is larger than 256 MB");
}

TEST(AFragmentStream, ThatBreaksOffFailsWithItsOwnError) {
    EndlessBuffer buffer("<a/>", 3);
    std::istream stream(&buffer);
    EXPECT_THROW(readFragment(stream), std::runtime_error);
}

TEST(AFragmentText, IsReadAsAStreamIs) {
    EXPECT_EQ(readFragmentText("<a>\n<b> x </b></a>").get<std::string>("a.b"), " x ");
    EXPECT_THROW(readFragmentText("<a></b>"), xml_parser_error);
}

}  // namespace
}  // namespace CoordinateTransformation
