#include "platform/MessageCatalogue.h"

#include <future>
#include <malloc.h>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace msg {
namespace {

TEST(MessageTest, FillsEveryPlaceholderOfTheIndex) {
    Message message("[&0] and [&0], not [&1]");
    message.substitute(0, "this");
    EXPECT_STREQ(message.getMessage(), "this and this, not [&1]");
}

TEST(MessageTest, KeepsPlaceholdersThatNobodyFilled) {
    EXPECT_STREQ(Message("a [&0] b [&7]").getMessage(), "a [&0] b [&7]");
}

TEST(MessageTest, DistinguishesIndexesOfSeveralDigits) {
    Message message("[&1] [&12] [&2]");
    message.substitute(12, "twelve");
    EXPECT_STREQ(message.getMessage(), "[&1] twelve [&2]");
}

TEST(MessageTest, DoesNotFillWhatTheTextOfThatIndexBringsAlong) {
    Message message("<[&0]>");
    message.substitute(0, "[&0][&0]");
    EXPECT_STREQ(message.getMessage(), "<[&0][&0]>");
}

TEST(MessageTest, TakesAnEmptyText) {
    Message message("<[&0]>");
    message.substitute(0, "");
    EXPECT_STREQ(message.getMessage(), "<>");
}

TEST(MessageTest, KeepsATemplateOfAnyLength) {
    const std::string text(100'000, 'x');
    EXPECT_EQ(Message(text.c_str()).getMessage(), text);
}

TEST(MessageTest, KeepsASubstitutedTextOfTheLongestLength) {
    Message message("<[&0]>");
    const std::string text(Message::LONGEST_RENDERED - 2, 'x');
    message.substitute(0, text.c_str());
    EXPECT_EQ(message.getMessage(), "<" + text + ">");
}

TEST(MessageTest, CutsASubstitutedTextThatIsLonger) {
    Message message("<[&0]>");
    message.substitute(0, std::string(100'000, 'x').c_str());
    EXPECT_EQ(message.getMessage(), "<" + std::string(Message::LONGEST_RENDERED - 1, 'x'));
}

TEST(MessageTest, CutsBetweenCharacters) {
    const std::string filled(Message::LONGEST_RENDERED - 1, 'x');
    for (const char* const character : {"\xC3\xA4", "\xE2\x82\xAC", "\xF0\x9F\x8C\x8D"}) {
        Message message("[&0]");
        message.substitute(0, (filled + character).c_str());
        EXPECT_EQ(message.getMessage(), filled) << character;
    }
}

class MessageHandlerTest : public testing::Test {
protected:
    std::string textFor(const char* subsystem, const char* situation) {
        Message* message = handler.find(subsystem, situation);
        return message == nullptr ? "none" : message->getMessage();
    }

    MessageHandler handler;
};

TEST_F(MessageHandlerTest, FindsAnEntryUnderBothHalvesOfItsKey) {
    const MTE entry(1, "en", "roof", "leak", "The roof leaks.", &handler, false, false);
    EXPECT_EQ(textFor("roof", "leak"), "The roof leaks.");
    EXPECT_EQ(textFor("roof", "gone"), "none");
    EXPECT_EQ(textFor("wall", "leak"), "none");
    EXPECT_EQ(textFor("leak", "roof"), "none");
}

TEST_F(MessageHandlerTest, ForgetsAnEntryWithItsObject) {
    { const MTE entry(1, "en", "roof", "leak", "The roof leaks.", &handler, false, false); }
    EXPECT_EQ(textFor("roof", "leak"), "none");
}

TEST_F(MessageHandlerTest, KeepsTheFirstOfTwoEntriesForOnePair) {
    const MTE first(1, "en", "roof", "leak", "first", &handler, false, false);
    {
        const MTE second(2, "en", "roof", "leak", "second", &handler, false, false);
        EXPECT_EQ(textFor("roof", "leak"), "first");
    }
    EXPECT_EQ(textFor("roof", "leak"), "first");
}

TEST_F(MessageHandlerTest, DoesNotFallBackToTheSecondEntryOfAPair) {
    std::optional<MTE> first(std::in_place, 1U, "en", "roof", "leak", "first", &handler, false, false);
    const MTE second(2, "en", "roof", "leak", "second", &handler, false, false);
    first.reset();
    EXPECT_EQ(textFor("roof", "leak"), "none");
}

TEST_F(MessageHandlerTest, ComparesTheTextsOfKeysRatherThanTheirAddresses) {
    const MTE entry(1, "en", "roof", "leak", "The roof leaks.", &handler, false, false);
    const std::string subsystem("roof");
    const std::string situation("leak");
    EXPECT_EQ(textFor(subsystem.c_str(), situation.c_str()), "The roof leaks.");
}

TEST_F(MessageHandlerTest, ReturnsAFreshTemplateEachTime) {
    const MTE entry(1, "en", "roof", "leak", "[&0] leaks", &handler, false, false);
    handler.find("roof", "leak")->substitute(0, "it");
    EXPECT_EQ(textFor("roof", "leak"), "[&0] leaks");
}

TEST_F(MessageHandlerTest, HasADefaultMessageWithoutPlaceholders) {
    EXPECT_THAT(handler.getDefaultMessage()->getMessage(),
                testing::AllOf(testing::Not(testing::StrEq("")), testing::Not(testing::HasSubstr("[&"))));
}

TEST_F(MessageHandlerTest, GivesEachThreadItsOwnMessage) {
    const MTE entry(1, "en", "roof", "leak", "[&0] leaks", &handler, false, false);
    Message* const mine = handler.find("roof", "leak");
    std::thread([this, mine] {
        Message* const theirs = handler.find("roof", "leak");
        EXPECT_NE(theirs, mine);
        theirs->substitute(0, "theirs");
    }).join();
    EXPECT_STREQ(mine->getMessage(), "[&0] leaks");
}

// Under a sanitizer its own allocator counts nothing here, but it reports leaks at the end.
TEST_F(MessageHandlerTest, KeepsNothingOfThreadsThatHaveEnded) {
    const MTE entry(1, "en", "roof", "leak", "[&0] leaks", &handler, false, false);
    const std::string text(1000, 'x');
    const auto askInThreads = [&](int count) {
        for (int i = 0; i < count; ++i)
            std::thread([&] { handler.find("roof", "leak")->substitute(0, text.c_str()); }).join();
    };
    askInThreads(100);
    const std::size_t before = mallinfo2().uordblks;
    constexpr int THREADS = 20'000;
    askInThreads(THREADS);
    EXPECT_LT(mallinfo2().uordblks, before + THREADS);
}

TEST_F(MessageHandlerTest, ServesThreadsThatRegisterAndAskAtOnce) {
    const MTE stays(1, "en", "roof", "leak", "The roof leaks.", &handler, false, false);
    const auto work = [this] {
        int found = 0;
        for (int i = 0; i < 500; ++i) {
            const MTE passing(2, "en", "wall", "crack", "The wall cracks.", &handler, false, false);
            found += textFor("roof", "leak") == "The roof leaks." ? 1 : 0;
        }
        return found;
    };
    std::vector<std::future<int>> workers;
    for (int i = 0; i < 4; ++i) {
        workers.push_back(std::async(std::launch::async, work));
    }
    for (auto& worker : workers) {
        EXPECT_EQ(worker.get(), 500);
    }
    EXPECT_EQ(textFor("wall", "crack"), "none");
}

TEST(MTETest, CarriesItsFields) {
    MessageHandler handler;
    const MTE entry(7, "en", "roof", "leak", "The roof leaks.", &handler, true, false);
    EXPECT_EQ(entry.getNumber(), 7U);
    EXPECT_STREQ(entry.getLanguage(), "en");
    EXPECT_STREQ(entry.getSubsystem(), "roof");
    EXPECT_STREQ(entry.getSituation(), "leak");
    EXPECT_STREQ(entry.getText(), "The roof leaks.");
    EXPECT_TRUE(entry.getFirstFlag());
    EXPECT_FALSE(entry.getSecondFlag());
}

TEST(MTETest, RegistersWithTheHandlerOfTheProcessWhenItHasNoOther) {
    const MTE entry(1, "en", "roof", "leak", "The roof leaks.", nullptr, false, false);
    Message* const message = MessageHandler::object().find("roof", "leak");
    ASSERT_NE(message, nullptr);
    EXPECT_STREQ(message->getMessage(), "The roof leaks.");
}

}  // namespace
}  // namespace msg
