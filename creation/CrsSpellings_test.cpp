// The names of requests, each read by createFromName.

#include <exception>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "CoordinateTransformation/CrsUnknownSyntaxOrAlias.h"
#include "QSHelpers/ConversionError.h"
#include "tests/support/NameTable.h"
#include "tests/support/PooledCreator.h"

namespace CoordinateTransformation {
namespace {

using TestSupport::FakeCrs;
using TestSupport::NameFailure;
using TestSupport::NameRow;
using TestSupport::nameTable;

class AcceptingCreator : public PooledCreator {
public:
    using PooledCreator::PooledCreator;

protected:
    bool isSyntaxAccepted(const std::string& /*property*/) const override { return true; }
};

class CrsSpellingsTest : public testing::Test {
protected:
    static void expectNames(const Crs& handle, const NameRow& row) {
        ASSERT_NE(handle.get(), nullptr);
        EXPECT_FALSE(handle.isHoldingConst());
        EXPECT_EQ(handle->getPrimaryCode(), row.primaryCode());
        EXPECT_EQ(handle->getSecCompoundCode(), row.secondaryCode());
        EXPECT_EQ(handle->getEpsgVersion(), row["version"]);
        EXPECT_EQ(handle->getAlias(), row.isReference() ? row["name"] : "");
    }
    template <typename Failure>
    void expectRaised(const NameRow& row, bool throwOnFailure) const {
        const NameFailure expected = TestSupport::nameFailure(row, row["result"]);
        try {
            creator.createFromName(row["name"], throwOnFailure, true);
            ADD_FAILURE() << "accepted";
        } catch (const Failure& failure) {
            EXPECT_EQ(failure.getDetailedMessage(), expected.text);
            EXPECT_EQ(failure.getServiceExceptionCode(), expected.serviceExceptionCode);
        } catch (const std::out_of_range& failure) {
            EXPECT_EQ(row["result"], "std::out_of_range");
            EXPECT_EQ(failure.what(), expected.text);
        } catch (const std::exception& failure) {
            ADD_FAILURE() << "another class: " << failure.what();
        }
    }
    void expectUnknown(const NameRow& row) const {
        expectRaised<CrsUnknownSyntaxOrAlias>(row, true);
        EXPECT_NO_THROW(EXPECT_EQ(creator.createFromName(row["name"], false, true).get(), nullptr));
    }

    TestSupport::LiveCrs live;
    AcceptingCreator creator{&live};
};

TEST_F(CrsSpellingsTest, AreAcceptedAsInTheTable) {
    for (const NameRow& row : nameTable()) {
        if (!row.isAccepted()) continue;
        SCOPED_TRACE(row.where());
        EXPECT_NO_THROW(expectNames(creator.createFromName(row["name"], true, true), row));
        EXPECT_NO_THROW(expectNames(creator.createFromName(row["name"], false, false), row));
    }
}

TEST_F(CrsSpellingsTest, AreRefusedAsInTheTable) {
    for (const NameRow& row : nameTable()) {
        if (row.isAccepted()) continue;
        SCOPED_TRACE(row.where());
        if (row["result"] == "CrsUnknownSyntaxOrAlias")
            expectUnknown(row);
        else
            for (const bool throwOnFailure : {false, true})
                expectRaised<QSHelpers::ConversionError>(row, throwOnFailure);
    }
}

TEST_F(CrsSpellingsTest, AreRefusedWhereTheyWaitForAProperty) {
    const PooledCreator unwilling;
    EXPECT_EQ(unwilling.createFromName("[EPSG:4326]", false, true).get(), nullptr);
    EXPECT_EQ(unwilling.explainName("[EPSG:4326]").fault, NameExplanation::Fault::BAD_SYNTAX);
    EXPECT_EQ(creator.explainName("[EPSG:4326]").fault, NameExplanation::Fault::NONE);
}

TEST_F(CrsSpellingsTest, AreAnsweredFromThePoolWhereItHasThem) {
    for (const NameRow& row : nameTable()) {
        const FakeCrs& configured = creator.givenConfigured(row["name"], 4326);
        const Crs handle = creator.createFromName(row["name"], true, true);
        EXPECT_EQ(handle.get(), &configured) << row.where();
        EXPECT_TRUE(handle.isHoldingConst()) << row.where();
    }
}

TEST_F(CrsSpellingsTest, MayBeReadByManyThreadsAtOnce) {
    AcceptingCreator shared;
    const AbstractCrs* const pooled = &shared.givenConfigured("CRS:84", 4326);
    const auto readAll = [&] {
        for (const NameRow& row : nameTable())
            if (row.isAccepted()) expectNames(shared.createFromName(row["name"], true, true), row);
        EXPECT_EQ(shared.createFromName("CRS:84", true, true).get(), pooled);
        EXPECT_EQ(shared.createFromName("unknown", false, true).get(), nullptr);
    };
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) threads.emplace_back(readAll);
    for (std::thread& thread : threads) thread.join();
}

}  // namespace
}  // namespace CoordinateTransformation
