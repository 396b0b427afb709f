#include "tools/crsctl/check/ElementPlaces.h"

#include <gtest/gtest.h>

namespace crsctl {
namespace {

std::string listed(std::string_view fragment) {
    std::string list;
    for (const ElementPlace& place : elementPlaces(fragment))
        list += place.name + "@" + std::to_string(place.line) + ":" + std::to_string(place.column) + " ";
    return list;
}

TEST(Places, AreThoseOfStartTags) {
    EXPECT_EQ(listed("<a>\n  <b>4326</b>\n  <c/></a>\n<d x='1'/>"), "a@1:1 b@2:3 c@3:3 d@4:1 ");
}

TEST(Places, AreNotFoundInCommentsTextSectionsAndInstructions) {
    EXPECT_EQ(listed("<?xml version='1.0'?><!-- <x> -->\n<a><![CDATA[<x>]]></a>"), "a@2:1 ");
    EXPECT_EQ(listed("<!DOCTYPE a [<!ENTITY x '<y>'>\n]><a/>"), "a@2:3 ");
}

TEST(Places, AreNotLedAstrayByAttributes) {
    EXPECT_EQ(listed("<a x='<b>' y=\">'\"><c\n  z='1'\n/><d/></a>"), "a@1:1 c@1:19 d@3:3 ");
}

TEST(Places, AreNoneWhereThereIsNoElement) {
    EXPECT_EQ(listed(""), "");
    EXPECT_EQ(listed("<!-- only -->"), "");
}

}  // namespace
}  // namespace crsctl
