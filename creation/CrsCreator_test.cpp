#include "CoordinateTransformation/CrsCreator.h"

#include <cstring>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "CoordinateTransformation/CrsNotConfigured.h"
#include "CoordinateTransformation/CrsUnknownSyntaxOrAlias.h"
#include "CoordinateTransformation/Misconfigured.h"
#include "QSHelpers/ConversionError.h"
#include "tests/support/Failures.h"
#include "tests/support/FakeCrs.h"

namespace CoordinateTransformation {
namespace {

using testing::_;
using testing::Expectation;
using testing::InSequence;
using testing::InvokeWithoutArgs;
using testing::Return;
using testing::ReturnNull;
using testing::StrictMock;
using testing::Throw;
using TestSupport::FakeCrs;
using TestSupport::FakeTransformer;
using TestSupport::LiveCrs;
using TestSupport::reportOf;

static_assert(std::is_base_of_v<CrsPool, CrsCreator> && std::is_abstract_v<CrsPool> && std::is_abstract_v<CrsCreator>);
static_assert(sizeof(CrsPool) == sizeof(void*) && sizeof(CrsCreator) == sizeof(void*));
static_assert(!std::has_virtual_destructor_v<CrsPool> && std::has_virtual_destructor_v<CrsCreator>);
// Classes derived from the two may be copied.
static_assert(std::is_copy_constructible_v<TestSupport::FakeCreator> &&
              std::is_copy_assignable_v<TestSupport::FakeCreator>);

class MockCreator : public CrsCreator {
public:
    MOCK_METHOD(const AbstractCrs*, getFromNameCache, (const std::string&, bool), (const, override));
    MOCK_METHOD(const AbstractCrs*, getFromCodeCache, (const std::string&, bool), (const, override));
    MOCK_METHOD(AbstractCrs*, createFromCode, (unsigned int, unsigned int, bool), (const, override));
    MOCK_METHOD(void, init, (), (override));
    MOCK_METHOD(AbstractCrs*, createDefault, (), (const, override));
    MOCK_METHOD(AbstractCrs*, createUnknown, (), (const, override));
    MOCK_METHOD(AbstractCrs*, createFromEPSG, (const std::string&, bool), (const, override));
    MOCK_METHOD(AbstractCrs*, createFromSpecialTextFormat, (const std::string&), (const, override));
    MOCK_METHOD(AbstractCrs*, createFromOgcUrn, (const std::string&, std::size_t), (const, override));
    MOCK_METHOD(AbstractCrs*, createFromURN, (const std::string&), (const, override));
    MOCK_METHOD(AbstractCrs*, createFromURL, (const std::string&), (const, override));
    MOCK_METHOD(bool, isCrsAllowed, (const AbstractCrs*), (const, override));
    MOCK_METHOD(AbstractCrs*, createFromCrsURN_WFS_1_1, (const std::string&), (const, override));
    MOCK_METHOD(AbstractCrs*, createFromGML, (const std::string&), (const, override));

    // Makes the recognisers themselves callable.
    AbstractCrs* epsg(const std::string& name, bool flag) const { return CrsCreator::createFromEPSG(name, flag); }
    AbstractCrs* ogcUrn(const std::string& name) const { return CrsCreator::createFromOgcUrn(name, 0); }
    AbstractCrs* urn(const std::string& name) const { return CrsCreator::createFromURN(name); }
    AbstractCrs* url(const std::string& name) const { return CrsCreator::createFromURL(name); }
    AbstractCrs* gml(const std::string& name) const { return CrsCreator::createFromGML(name); }
    AbstractCrs* wfs11(const std::string& name) const { return CrsCreator::createFromCrsURN_WFS_1_1(name); }
};

class HostFailure : public std::runtime_error {
    using runtime_error::runtime_error;
};

enum Recogniser { URN, URL, GML, EPSG, WFS_1_1 };

class CrsCreatorTest : public testing::Test {
protected:
    FakeCrs* newCrs() { return new FakeCrs(creator, transformer, 4326, 0, &live); }

    template <typename Answer>
    Expectation expectAsked(Recogniser recogniser, Answer answer) {
        switch (recogniser) {
            case URN:
                return EXPECT_CALL(creator, createFromURN("name")).WillOnce(answer);
            case URL:
                return EXPECT_CALL(creator, createFromURL("name")).WillOnce(answer);
            case GML:
                return EXPECT_CALL(creator, createFromGML("name")).WillOnce(answer);
            case EPSG:
                return EXPECT_CALL(creator, createFromEPSG("name", true)).WillOnce(answer);
            default:
                return EXPECT_CALL(creator, createFromCrsURN_WFS_1_1("name")).WillOnce(answer);
        }
    }
    // Expects the pool and the recognisers up to `last` to be called in order, and all before `last` to refuse the
    // name.
    template <typename Answer>
    void expectAskedUpTo(Recogniser last, Answer answer) {
        const InSequence order;
        EXPECT_CALL(creator, getFromNameCache("name", false)).WillOnce(ReturnNull());
        for (int earlier = URN; earlier < last; ++earlier) expectAsked(static_cast<Recogniser>(earlier), ReturnNull());
        expectAsked(last, answer);
    }

    template <typename Exception>
    void expectRaised(bool checkAllowed, const std::string& message) {
        EXPECT_EQ(reportOf<Exception>([&] { creator.createFromName("name", true, checkAllowed); }),
                  "qvCrsUnavailable: " + message);
        EXPECT_EQ(live.count(), 0U);
    }
    static void expectEmpty(const Crs& handle) {
        EXPECT_EQ(handle.get(), nullptr);
        EXPECT_FALSE(handle.isHoldingConst());
    }

    LiveCrs live;
    FakeTransformer transformer;
    StrictMock<MockCreator> creator;
};

TEST_F(CrsCreatorTest, BorrowsWhatThePoolHoldsAndAsksNobodyElse) {
    const FakeCrs pooled(creator, transformer, 4326, 0, &live);
    for (const bool throwOnFailure : {false, true}) {
        for (const bool checkAllowed : {false, true}) {
            EXPECT_CALL(creator, getFromNameCache("name", false)).WillOnce(Return(&pooled));
            const Crs handle = creator.createFromName("name", throwOnFailure, checkAllowed);
            EXPECT_EQ(handle.get(), &pooled);
            EXPECT_TRUE(handle.isHoldingConst());
            EXPECT_EQ(live.count(), 1U);
        }
    }
    EXPECT_TRUE(live.contains(&pooled));
}

TEST_F(CrsCreatorTest, TakesTheFirstRecogniserThatKnowsTheName) {
    for (const Recogniser first : {URN, URL, GML, EPSG, WFS_1_1}) {
        SCOPED_TRACE(first);
        FakeCrs* const created = newCrs();
        expectAskedUpTo(first, Return(created));
        const Crs handle = creator.createFromName("name", true, false);
        EXPECT_EQ(handle.get(), created);
        EXPECT_FALSE(handle.isHoldingConst());
    }
    EXPECT_EQ(live.count(), 0U);
}

TEST_F(CrsCreatorTest, RaisesCrsUnknownSyntaxOrAliasForANameThatNobodyKnows) {
    for (const bool checkAllowed : {false, true}) {
        expectAskedUpTo(WFS_1_1, ReturnNull());
        expectRaised<CrsUnknownSyntaxOrAlias>(
            checkAllowed,
            "The requested CRS name is not available due to an unknown syntax or a missing identifier mapping");
    }
}

TEST_F(CrsCreatorTest, GivesAnEmptyHandleForANameThatNobodyKnowsWhenAskedTo) {
    for (const bool checkAllowed : {false, true}) {
        expectAskedUpTo(WFS_1_1, ReturnNull());
        expectEmpty(creator.createFromName("name", false, checkAllowed));
    }
}

TEST_F(CrsCreatorTest, AsksWhetherTheNewObjectIsAllowed) {
    FakeCrs* const created = newCrs();
    expectAskedUpTo(EPSG, Return(created));
    EXPECT_CALL(creator, isCrsAllowed(created)).WillOnce(Return(true));
    const Crs handle = creator.createFromName("name", true, true);
    EXPECT_EQ(handle.get(), created);
    EXPECT_FALSE(handle.isHoldingConst());
}

TEST_F(CrsCreatorTest, DeletesAnObjectThatIsNotAllowedBeforeItRaisesCrsNotConfigured) {
    for (const Recogniser recogniser : {URN, URL, GML, EPSG, WFS_1_1}) {
        FakeCrs* const created = newCrs();
        expectAskedUpTo(recogniser, Return(created));
        EXPECT_CALL(creator, isCrsAllowed(created)).WillOnce(Return(false));
        expectRaised<CrsNotConfigured>(true, "The requested CRS name is not set up in the configuration");
    }
}

TEST_F(CrsCreatorTest, DeletesAnObjectThatIsNotAllowedAndGivesAnEmptyHandleWhenAskedTo) {
    FakeCrs* const created = newCrs();
    expectAskedUpTo(URN, Return(created));
    EXPECT_CALL(creator, isCrsAllowed(created)).WillOnce(Return(false));
    expectEmpty(creator.createFromName("name", false, true));
    EXPECT_EQ(live.count(), 0U);
}

TEST_F(CrsCreatorTest, LetsExceptionsOfRecognisersPass) {
    for (const bool throwOnFailure : {false, true}) {
        for (const Recogniser failing : {URN, URL, GML, EPSG, WFS_1_1}) {
            expectAskedUpTo(failing, Throw(HostFailure("broken")));
            EXPECT_THROW(creator.createFromName("name", throwOnFailure, true), HostFailure);
        }
    }
}

TEST_F(CrsCreatorTest, LetsExceptionsOfThePoolPass) {
    for (const bool throwOnFailure : {false, true}) {
        EXPECT_CALL(creator, getFromNameCache("name", false)).WillOnce(Throw(HostFailure("broken")));
        EXPECT_THROW(creator.createFromName("name", throwOnFailure, false), HostFailure);
    }
}

TEST_F(CrsCreatorTest, LetsExceptionsOfTheAdmissionTestPassAndLeavesNothingBehind) {
    for (const bool throwOnFailure : {false, true}) {
        expectAskedUpTo(URN, Return(newCrs()));
        EXPECT_CALL(creator, isCrsAllowed(_)).WillOnce(Throw(HostFailure("broken")));
        EXPECT_THROW(creator.createFromName("name", throwOnFailure, true), HostFailure);
        EXPECT_EQ(live.count(), 0U);
    }
}

TEST_F(CrsCreatorTest, ReadsUrnAndUrlBehindTheirHeadThroughOneSlot) {
    FakeCrs* const created = newCrs();
    const Crs owner(created);
    EXPECT_CALL(creator, createFromOgcUrn("urn:ogc:any", 8)).WillOnce(Return(created));
    EXPECT_CALL(creator, createFromOgcUrn("urn:x-ogc:any", 10)).WillOnce(ReturnNull());
    EXPECT_CALL(creator, createFromOgcUrn("http://www.opengis.net/any", 23)).WillOnce(Return(created));
    EXPECT_EQ(creator.urn("urn:ogc:any"), created);
    EXPECT_EQ(creator.urn("urn:x-ogc:any"), nullptr);
    EXPECT_EQ(creator.url("http://www.opengis.net/any"), created);
}

TEST_F(CrsCreatorTest, PassesOnTheEndOfAHeadWithoutABody) {
    EXPECT_CALL(creator, createFromOgcUrn("urn:ogc", 7)).WillOnce(ReturnNull());
    EXPECT_CALL(creator, createFromOgcUrn("http://www.opengis.net", 22)).WillOnce(ReturnNull());
    EXPECT_EQ(creator.urn("urn:ogc"), nullptr);
    EXPECT_EQ(creator.url("http://www.opengis.net"), nullptr);
}

TEST_F(CrsCreatorTest, KnowsNoUrnUrlReferenceOrWfs11UrnInAnEmptyName) {
    EXPECT_EQ(creator.urn(""), nullptr);
    EXPECT_EQ(creator.url(""), nullptr);
    EXPECT_EQ(creator.gml(""), nullptr);
    EXPECT_EQ(creator.epsg("", true), nullptr);
    EXPECT_EQ(creator.wfs11(""), nullptr);
    EXPECT_EQ(creator.ogcUrn(""), nullptr);
}

TEST_F(CrsCreatorTest, PassesTheCallersAxisOrderFlagOnFromEpsgNamesAlone) {
    for (const bool flag : {false, true}) {
        EXPECT_CALL(creator, createFromCode(27700, 5701, flag)).WillOnce(ReturnNull());
        EXPECT_EQ(creator.epsg("EPSG:27700*EPSG:5701", flag), nullptr);
    }
    EXPECT_CALL(creator, createFromCode(4326, 0, true)).Times(3).WillRepeatedly(ReturnNull());
    EXPECT_EQ(creator.gml("epsg.xml#4326"), nullptr);
    EXPECT_EQ(creator.wfs11("urn:EPSG:geographicCRS:4326"), nullptr);
    EXPECT_EQ(creator.ogcUrn("def:crs:EPSG::4326"), nullptr);
}

TEST_F(CrsCreatorTest, ReturnsEpsgAndWfs11ObjectsAsTheyWereMade) {
    FakeCrs* const created = newCrs();
    const Crs owner(created);
    EXPECT_CALL(creator, createFromCode(4326, 0, true)).Times(2).WillRepeatedly(Return(created));
    EXPECT_EQ(creator.epsg("EPSG:4326", true), created);
    EXPECT_EQ(creator.wfs11("urn:EPSG:geographicCRS:4326"), created);
    EXPECT_EQ(created->getAlias(), "");
    EXPECT_EQ(created->getEpsgVersion(), "");
    EXPECT_EQ(live.count(), 1U);
}

TEST_F(CrsCreatorTest, TakesTheWholeReferenceForTheAliasOfTheObjectItself) {
    FakeCrs* const created = newCrs();
    const Crs owner(created);
    EXPECT_CALL(creator, createFromCode(31467, 0, true)).WillOnce(Return(created));
    EXPECT_EQ(creator.gml("x/epsg.xml#4326/epsg.xml#31467"), created);
    EXPECT_EQ(created->getAlias(), "x/epsg.xml#4326/epsg.xml#31467");
    EXPECT_EQ(live.count(), 1U);
}

TEST_F(CrsCreatorTest, TakesACodeThatIsNotANumberForAnotherSpelling) {
    for (const std::string code : {"", "abc", "-1", "4294967296", "4326x", "4326\t", "1.5", "1e3"}) {
        SCOPED_TRACE(code);
        EXPECT_EQ(creator.gml("epsg.xml#" + code), nullptr);
        EXPECT_EQ(creator.wfs11("urn:EPSG:geographicCRS:" + code), nullptr);
        EXPECT_EQ(creator.epsg("EPSG:" + code, true), nullptr);
        EXPECT_EQ(creator.epsg("EPSG:" + code + "*EPSG:5701", true), nullptr);
        EXPECT_EQ(creator.epsg("EPSG:27700*EPSG:" + code, true), nullptr);
        EXPECT_EQ(creator.epsg(code + "*1", true), nullptr);
        EXPECT_EQ(creator.epsg("1*" + code, true), nullptr);
    }
}

// A code that is not a number means another spelling. A failure to make the CRS passes through, whatever its type.
TEST_F(CrsCreatorTest, LetsExceptionsOfCreateFromCodePassThroughEveryRecogniser) {
    const auto expectPassing = [this](const auto& failure) {
        using Failure = std::decay_t<decltype(failure)>;
        EXPECT_CALL(creator, createFromCode(4326, 0, true)).Times(4).WillRepeatedly(Throw(failure));
        EXPECT_THROW(creator.ogcUrn("def:crs:EPSG::4326"), Failure);
        EXPECT_THROW(creator.gml("epsg.xml#4326"), Failure);
        EXPECT_THROW(creator.epsg("EPSG:4326", true), Failure);
        EXPECT_THROW(creator.wfs11("urn:EPSG:geographicCRS:4326"), Failure);
    };
    expectPassing(Misconfigured("broken"));
    expectPassing(QSHelpers::ConversionError("of the host"));
}

class UrnCopyTest : public CrsCreatorTest {
protected:
#if defined(COORDTRANS_RELEASE_URN_ORIGINAL)
    static constexpr std::size_t UNRELEASED = 0;
#else
    static constexpr std::size_t UNRELEASED = 1;
#endif

    void givenOriginal() {
        original = newCrs();
        EXPECT_CALL(creator, createFromCode(27700, 5701, true)).WillOnce(Return(original));
    }

    FakeCrs* original = nullptr;
};

TEST_F(UrnCopyTest, ReturnsACopyThatHasTheVersion) {
    givenOriginal();
    const Crs handle(creator.ogcUrn("def:crs,crs:EPSG:6.12:27700,crs:EPSG:6.12:5701"));
    EXPECT_NE(handle.get(), original);
    EXPECT_TRUE(live.contains(handle.get()));
    EXPECT_EQ(handle->getEpsgVersion(), "6.126.12");
    EXPECT_EQ(handle->getAlias(), "");
    EXPECT_EQ(live.count(), UNRELEASED + 1);
}

#if !defined(COORDTRANS_RELEASE_URN_ORIGINAL)
TEST_F(UrnCopyTest, LeavesTheOriginalBehindAsItWasMade) {
    givenOriginal();
    original->setEpsgVersion("its own");
    { const Crs handle(creator.ogcUrn("def:crs,crs:EPSG:6.12:27700,crs:EPSG:6.12:5701")); }
    ASSERT_TRUE(live.contains(original));
    EXPECT_EQ(original->getEpsgVersion(), "its own");
    EXPECT_EQ(live.count(), 1U);
}
#endif

TEST_F(UrnCopyTest, ClearsTheVersionOfACopyWhoseNameHasNone) {
    givenOriginal();
    original->setEpsgVersion("its own");
    const Crs handle(creator.ogcUrn("def:crs,crs:EPSG::27700,crs:EPSG::5701"));
    EXPECT_EQ(handle->getEpsgVersion(), "");
}

TEST_F(UrnCopyTest, ReleasesTheCopyAloneWhenItIsNotAllowed) {
    givenOriginal();
    expectAskedUpTo(URN, InvokeWithoutArgs([this] { return creator.ogcUrn("def:crs:EPSG::27700,crs:EPSG::5701"); }));
    EXPECT_CALL(creator, isCrsAllowed(_)).WillOnce(Return(false));
    expectEmpty(creator.createFromName("name", false, true));
    EXPECT_EQ(live.count(), UNRELEASED);
}

// The order of the slots is part of the binary interface.
struct Slots : CrsCreator {
    using CrsCreator::createFromCrsURN_WFS_1_1;
    using CrsCreator::createFromGML;
    using CrsCreator::isCrsAllowed;
};

template <typename Member>
std::size_t slotOf(Member member) {
    std::size_t words[2];
    static_assert(sizeof member == sizeof words);
    std::memcpy(words, &member, sizeof words);
    return words[0] / sizeof(void*);
}

TEST(CrsCreatorSlotsTest, StandInTheirOrder) {
    // The virtual destructor takes slots 2 and 3.
    const std::vector<std::size_t> slots = {
        slotOf(&CrsCreator::getFromNameCache),
        slotOf(&CrsCreator::getFromCodeCache),
        slotOf(&CrsCreator::createFromName),
        slotOf(&CrsCreator::createFromCode),
        slotOf(&CrsCreator::init),
        slotOf(&CrsCreator::createDefault),
        slotOf(&CrsCreator::createUnknown),
        slotOf(&CrsCreator::createFromEPSG),
        slotOf(&CrsCreator::createFromSpecialTextFormat),
        slotOf(&CrsCreator::createFromOgcUrn),
        slotOf(&CrsCreator::createFromURN),
        slotOf(&CrsCreator::createFromURL),
        slotOf(&Slots::isCrsAllowed),
        slotOf(&Slots::createFromCrsURN_WFS_1_1),
        slotOf(&Slots::createFromGML),
    };
    EXPECT_THAT(slots, testing::ElementsAre(0, 1, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16));
}

}  // namespace
}  // namespace CoordinateTransformation
