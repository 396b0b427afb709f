#include "CoordinateTransformation/Crs.h"

#include <cstddef>
#include <functional>
#include <new>
#include <thread>
#include <type_traits>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/FakeCrs.h"

namespace CoordinateTransformation {
namespace {

using TestSupport::FakeCreator;
using TestSupport::FakeCrs;
using TestSupport::FakeTransformer;
using TestSupport::LiveCrs;

static_assert(!std::is_default_constructible_v<Crs>);
static_assert(std::is_polymorphic_v<Crs> && std::has_virtual_destructor_v<Crs>);
static_assert(std::is_empty_v<NullConstruction>);
static_assert(std::is_same_v<decltype(std::declval<Crs&>() = std::declval<const Crs&>()), Crs&>);
static_assert(std::is_same_v<decltype(std::declval<Crs&>() = std::declval<Crs>()), Crs&>);
static_assert(std::is_same_v<decltype(std::declval<Crs&>() = std::declval<const AbstractCrs*>()), Crs&>);
static_assert(std::is_void_v<decltype(std::declval<Crs&>() = std::declval<AbstractCrs*>())>);
static_assert(!std::is_convertible_v<const Crs&, AbstractCrs*>);

AbstractCrs* const NOTHING_TO_OWN = nullptr;
const AbstractCrs* const NOTHING_TO_BORROW = nullptr;

// A handle keeps its flag when it is moved from, so there are two kinds of empty handles.
enum HandleState { EMPTY, LEFT_BY_BORROWER, BORROWING, OWNING };
constexpr HandleState STATES[] = {EMPTY, LEFT_BY_BORROWER, BORROWING, OWNING};

bool isEmpty(HandleState state) { return state == EMPTY || state == LEFT_BY_BORROWER; }
bool isFlagged(HandleState state) { return state == BORROWING || state == LEFT_BY_BORROWER; }

// Reads without a copy.
class UncopyableCrs : public FakeCrs {
public:
    using FakeCrs::FakeCrs;
    using FakeCrs::operator=;
    AbstractCrs* copy() const override { throw std::bad_alloc(); }
};

// After every test only the cached CRS is alive, and it is unchanged.
class CrsTest : public testing::Test {
protected:
    CrsTest() {
        cached.setAxisOrderEastNorthOrLonLat(false);
        cached.setAlias("cached");
    }
    void TearDown() override {
        EXPECT_EQ(ownedCount(), 0U);
        EXPECT_TRUE(live.contains(&cached));
        EXPECT_EQ(cached.getPrimaryCode(), 4979U);
        EXPECT_EQ(cached.getDim(), 3U);
        EXPECT_FALSE(cached.isWmsAxisOrder());
        EXPECT_EQ(cached.getAlias(), "cached");
    }

    template <typename SomeCrs = FakeCrs>
    SomeCrs* newCrs(unsigned int primary = 25832, unsigned int secondary = 0) {
        return new SomeCrs(creator, transformer, primary, secondary, &live);
    }
    Crs given(HandleState state) {
        if (state == OWNING) return Crs(newCrs());
        if (state == EMPTY) return Crs(NullConstruction());
        Crs handle(borrowable());
        if (state == LEFT_BY_BORROWER) const Crs borrower(std::move(handle));
        return handle;
    }
    const AbstractCrs* borrowable() const { return &cached; }
    std::size_t ownedCount() const { return live.count() - 1; }

    LiveCrs live;
    FakeCreator creator{&live};
    FakeTransformer transformer;

private:
    FakeCrs cached{creator, transformer, 4979, 0, &live};
};

void expectEmpty(Crs& handle) {
    EXPECT_EQ(handle.get(), nullptr);
    EXPECT_EQ(handle.operator->(), nullptr);
    EXPECT_EQ(static_cast<const AbstractCrs*>(handle), nullptr);
    EXPECT_EQ(static_cast<const AbstractCrs*>(std::as_const(handle)), nullptr);
    EXPECT_EQ(static_cast<AbstractCrs*>(handle), nullptr);
    EXPECT_EQ(handle.mod(), nullptr);
    EXPECT_FALSE(handle.operator bool());
    EXPECT_TRUE(handle == NOTHING_TO_BORROW);
    EXPECT_TRUE(handle.isNotSetOrUnknown());
}

TEST_F(CrsTest, IsEmptyAndBorrowsNothingWhenMadeOfNothing) {
    Crs handles[] = {Crs(NullConstruction()), Crs(NOTHING_TO_OWN), Crs(NOTHING_TO_BORROW)};
    for (Crs& handle : handles) {
        EXPECT_FALSE(handle.isHoldingConst());
        expectEmpty(handle);
        EXPECT_FALSE(handle.isHoldingConst());
        EXPECT_FALSE(handle == borrowable());
    }
}

TEST_F(CrsTest, StaysEmptyWhenTheBorrowerHasLeft) {
    Crs handle = given(LEFT_BY_BORROWER);
    EXPECT_TRUE(handle.isHoldingConst());
    expectEmpty(handle);
    EXPECT_TRUE(handle.isHoldingConst());
}

TEST_F(CrsTest, OwnsAModifiableCrsUntilItEnds) {
    FakeCrs* const crs = newCrs();
    {
        Crs handle(crs);
        EXPECT_EQ(handle.get(), crs);
        EXPECT_FALSE(handle.isHoldingConst());
        EXPECT_TRUE(handle.operator bool());
        EXPECT_TRUE(live.contains(crs));
    }
    EXPECT_FALSE(live.contains(crs));
}

TEST_F(CrsTest, BorrowsAConstCrs) {
    {
        Crs handle(borrowable());
        EXPECT_EQ(handle.get(), borrowable());
        EXPECT_TRUE(handle.isHoldingConst());
        EXPECT_TRUE(handle.operator bool());
        EXPECT_EQ(ownedCount(), 0U);
    }
    EXPECT_TRUE(live.contains(borrowable()));
}

void expectCopied(const Crs& copied, const Crs& source, HandleState state) {
    EXPECT_EQ(copied.isHoldingConst(), isFlagged(state));
    EXPECT_EQ(source.isHoldingConst(), isFlagged(state));
    EXPECT_EQ(source.get() == nullptr, isEmpty(state));
    if (state == OWNING) {
        ASSERT_NE(copied.get(), nullptr);
        EXPECT_NE(copied.get(), source.get());
        EXPECT_TRUE(copied->isEqual(source.get()));
    } else {
        EXPECT_EQ(copied.get(), source.get());
    }
}

TEST_F(CrsTest, CopiesACrsOnlyWithAHandleThatOwnsIt) {
    for (const HandleState state : STATES) {
        SCOPED_TRACE(state);
        const Crs source = given(state);
        const Crs copied(source);
        expectCopied(copied, source, state);
        EXPECT_EQ(ownedCount(), state == OWNING ? 2U : 0U);
    }
}

TEST_F(CrsTest, CopiesFromAModifiableHandleAlike) {
    Crs source(borrowable());
    const Crs copied(source);
    expectCopied(copied, source, BORROWING);
    EXPECT_EQ(ownedCount(), 0U);
}

void expectMoved(const Crs& target, const Crs& source, HandleState state, const AbstractCrs* held) {
    EXPECT_EQ(target.get(), held);
    EXPECT_EQ(target.isHoldingConst(), isFlagged(state));
    EXPECT_EQ(source.get(), nullptr);
    EXPECT_EQ(source.isHoldingConst(), isFlagged(state));
}

TEST_F(CrsTest, MovesTheCrsAndLeavesAnEmptyHandle) {
    for (const HandleState state : STATES) {
        SCOPED_TRACE(state);
        Crs source = given(state);
        const AbstractCrs* const held = source.get();
        const Crs target(std::move(source));
        expectMoved(target, source, state, held);
        EXPECT_EQ(ownedCount(), state == OWNING ? 1U : 0U);
    }
}

TEST_F(CrsTest, ReleasesNothingWhereItWasMovedFrom) {
    const Crs target = [this] {
        Crs source(newCrs());
        return Crs(std::move(source));
    }();
    EXPECT_EQ(ownedCount(), 1U);
    EXPECT_TRUE(live.contains(target.get()));
}

// Calls `act` with a target in every state and a source in every state.
void forEveryPairOfStates(const std::function<void(HandleState, HandleState)>& act) {
    for (const HandleState targetState : STATES) {
        for (const HandleState sourceState : STATES) {
            SCOPED_TRACE(testing::Message() << "target " << targetState << ", source " << sourceState);
            act(targetState, sourceState);
        }
    }
}

TEST_F(CrsTest, AssignsAsItCopiesAndReleasesWhatItOwned) {
    forEveryPairOfStates([this](HandleState targetState, HandleState sourceState) {
        Crs target = given(targetState);
        const Crs source = given(sourceState);
        EXPECT_EQ(&(target = source), &target);
        expectCopied(target, source, sourceState);
        EXPECT_EQ(ownedCount(), sourceState == OWNING ? 2U : 0U);
    });
}

TEST_F(CrsTest, MoveAssignsAndReleasesWhatItOwned) {
    forEveryPairOfStates([this](HandleState targetState, HandleState sourceState) {
        Crs target = given(targetState);
        Crs source = given(sourceState);
        AbstractCrs const* const held = source.get();
        EXPECT_EQ(&(target = std::move(source)), &target);
        expectMoved(target, source, sourceState, held);
        EXPECT_EQ(ownedCount(), sourceState == OWNING ? 1U : 0U);
    });
}

TEST_F(CrsTest, AssignmentToItselfChangesNothing) {
    for (const HandleState state : STATES) {
        SCOPED_TRACE(state);
        Crs handle = given(state);
        Crs& same = handle;
        const AbstractCrs* const held = handle.get();
        EXPECT_EQ(&(handle = same), &handle);
        EXPECT_EQ(&(handle = std::move(same)), &handle);
        EXPECT_EQ(handle.get(), held);
        EXPECT_EQ(handle.isHoldingConst(), isFlagged(state));
        EXPECT_EQ(ownedCount(), state == OWNING ? 1U : 0U);
    }
}

TEST_F(CrsTest, BorrowsAnAssignedConstCrsAndReleasesWhatItOwned) {
    const FakeCrs other(creator, transformer, 4326, 0);
    for (const HandleState state : STATES) {
        SCOPED_TRACE(state);
        Crs handle = given(state);
        const AbstractCrs* const borrowed = &other;
        EXPECT_EQ(&(handle = borrowed), &handle);
        EXPECT_EQ(handle.get(), borrowed);
        EXPECT_TRUE(handle.isHoldingConst());
        EXPECT_EQ(ownedCount(), 0U);
    }
}

TEST_F(CrsTest, KeepsItsFlagWhenEmptiedByANullConstPointer) {
    for (const HandleState state : STATES) {
        SCOPED_TRACE(state);
        Crs handle = given(state);
        EXPECT_EQ(&(handle = NOTHING_TO_BORROW), &handle);
        EXPECT_EQ(handle.get(), nullptr);
        EXPECT_EQ(handle.isHoldingConst(), isFlagged(state));
        EXPECT_EQ(ownedCount(), 0U);
    }
}

TEST_F(CrsTest, ReleasesEvenTheOwnedCrsThatItMustBorrow) {
    FakeCrs* const crs = newCrs();
    Crs handle(crs);
    const AbstractCrs* const sameCrs = crs;
    handle = sameCrs;
    EXPECT_FALSE(live.contains(sameCrs));
    EXPECT_TRUE(handle == sameCrs);
    EXPECT_TRUE(handle.isHoldingConst());
}

TEST_F(CrsTest, OwnsAnAssignedCrsAndReleasesWhatItOwned) {
    for (const HandleState state : STATES) {
        SCOPED_TRACE(state);
        Crs handle = given(state);
        AbstractCrs* const crs = newCrs();
        handle = crs;
        EXPECT_EQ(handle.get(), crs);
        EXPECT_FALSE(handle.isHoldingConst());
        EXPECT_EQ(ownedCount(), 1U);
    }
}

TEST_F(CrsTest, IsEmptiedByANullPointerToOwn) {
    for (const HandleState state : STATES) {
        SCOPED_TRACE(state);
        Crs handle = given(state);
        handle = NOTHING_TO_OWN;
        EXPECT_EQ(handle.get(), nullptr);
        // An empty handle already holds null, so nothing happens to it.
        EXPECT_EQ(handle.isHoldingConst(), state == LEFT_BY_BORROWER);
        EXPECT_EQ(ownedCount(), 0U);
    }
}

TEST_F(CrsTest, IgnoresTheAssignmentOfTheCrsItHolds) {
    for (const HandleState state : STATES) {
        SCOPED_TRACE(state);
        Crs handle = given(state);
        AbstractCrs* const held = const_cast<AbstractCrs*>(handle.get());
        handle = held;
        EXPECT_EQ(handle.get(), held);
        EXPECT_EQ(handle.isHoldingConst(), isFlagged(state));
        EXPECT_EQ(ownedCount(), state == OWNING ? 1U : 0U);
    }
}

TEST_F(CrsTest, ReadsWithoutCopying) {
    const UncopyableCrs crs(creator, transformer, 4979, 0);
    Crs handle(&crs);
    const Crs& constHandle = handle;
    const AbstractCrs* const readings[] = {
        handle.get(), constHandle.get(), handle.operator->(), constHandle.operator->(), handle, constHandle};
    for (const AbstractCrs* const reading : readings) EXPECT_EQ(reading, &crs);
    EXPECT_EQ(handle->getPrimaryCode(), 4979U);
    EXPECT_FALSE(handle.isNotSetOrUnknown());
    EXPECT_TRUE(handle.isHoldingConst());
}

TEST_F(CrsTest, AnswersInAConditionWithoutCopying) {
    const UncopyableCrs crs(creator, transformer, 4979, 0);
    Crs handle(&crs);
    const Crs& constHandle = handle;
    Crs empty = given(LEFT_BY_BORROWER);
    if (!(handle && constHandle)) ADD_FAILURE() << "taken for empty";
    EXPECT_TRUE(handle ? true : false);
    EXPECT_TRUE(constHandle ? true : false);
    EXPECT_FALSE(!handle);
    EXPECT_FALSE(empty ? true : false);
    EXPECT_TRUE(!empty);
    EXPECT_TRUE(handle.isHoldingConst());
}

TEST_F(CrsTest, ComparesWithPointersOfEveryKindWithoutCopying) {
    AbstractCrs* const owned = newCrs();
    Crs handle(owned);
    EXPECT_TRUE(handle == owned);
    EXPECT_FALSE(handle != owned);
    EXPECT_TRUE(handle != nullptr);
    EXPECT_FALSE(handle == nullptr);
    EXPECT_TRUE(handle != NOTHING_TO_BORROW);
    EXPECT_TRUE(Crs(NullConstruction()) == nullptr);
    EXPECT_EQ(ownedCount(), 1U);
}

TEST_F(CrsTest, ComparesByIdentityWithoutCopying) {
    const UncopyableCrs crs(creator, transformer, 25832, 0);
    const UncopyableCrs twin(crs);
    const Crs handle(&crs);
    const AbstractCrs* const held = &crs;
    const AbstractCrs* const equal = &twin;
    ASSERT_TRUE(held->isEqual(equal));
    EXPECT_TRUE(handle == held);
    EXPECT_FALSE(handle == equal);
    EXPECT_FALSE(handle == NOTHING_TO_BORROW);
}

TEST_F(CrsTest, DistinguishesAnUnknownCrsFromADefaultOne) {
    const struct {
        unsigned int primary;
        unsigned int secondary;
        bool notSetOrUnknown;
    } rows[] = {{0, 0, true}, {0, 1, false}, {0, 5701, false}, {4326, 0, false}, {27700, 5701, false}};
    for (const auto& row : rows) {
        const FakeCrs crs(creator, transformer, row.primary, row.secondary);
        EXPECT_EQ(Crs(&crs).isNotSetOrUnknown(), row.notSetOrUnknown) << row.primary << '*' << row.secondary;
    }
    for (const HandleState state : STATES) EXPECT_EQ(given(state).isNotSetOrUnknown(), isEmpty(state)) << state;
}

TEST_F(CrsTest, CopiesABorrowedCrsOnceWhenModified) {
    const std::function<AbstractCrs*(Crs&)> modifications[] = {
        [](Crs& handle) { return handle.mod(); },
        [](Crs& handle) { return static_cast<AbstractCrs*>(handle); },
        [](Crs& handle) -> AbstractCrs* { return handle; },
    };
    for (const auto& modify : modifications) {
        Crs handle(borrowable());
        AbstractCrs* const own = modify(handle);
        EXPECT_NE(own, borrowable());
        EXPECT_TRUE(own->isEqual(borrowable()));
        EXPECT_EQ(handle.get(), own);
        EXPECT_FALSE(handle.isHoldingConst());
        EXPECT_EQ(modify(handle), own);
        EXPECT_EQ(ownedCount(), 1U);
        own->setAlias("changed");
        own->setDim(2);
    }
}

TEST_F(CrsTest, ModifiesAnOwnedCrsInPlace) {
    FakeCrs* const crs = newCrs();
    Crs handle(crs);
    EXPECT_EQ(handle.mod(), crs);
    EXPECT_EQ(static_cast<AbstractCrs*>(handle), crs);
    EXPECT_FALSE(handle.isHoldingConst());
    EXPECT_EQ(ownedCount(), 1U);
}

TEST_F(CrsTest, CopiesTheBorrowedCrsOfOneHandleOnly) {
    Crs handle(borrowable());
    const Crs other(handle);
    handle.mod()->setAlias("changed");
    EXPECT_EQ(other.get(), borrowable());
    EXPECT_TRUE(other.isHoldingConst());
}

TEST_F(CrsTest, ForcesTwoDimensionsOnACopyWhereThatChangesTheCrs) {
    const struct {
        unsigned int primary;
        unsigned int secondary;
        bool changes;
    } rows[] = {{25832, 0, false}, {4326, 0, false}, {0, 0, false}, {4979, 0, true}, {27700, 5701, true}, {0, 1, true}};
    for (const auto& row : rows) {
        SCOPED_TRACE(testing::Message() << row.primary << '*' << row.secondary);
        const FakeCrs shared(creator, transformer, row.primary, row.secondary, &live);
        Crs handle(&shared);
        handle.forceDim2D();
        EXPECT_EQ(handle->getDim(), 2U);
        EXPECT_EQ(handle->getPrimaryCode(), row.primary);
        EXPECT_EQ(handle->getSecCompoundCode(), row.secondary);
        EXPECT_EQ(handle.isHoldingConst(), !row.changes);
        EXPECT_EQ(handle.get() != &shared, row.changes);
        EXPECT_EQ(shared.getDim(), row.changes ? 3U : 2U);
        const AbstractCrs* const held = handle.get();
        handle.forceDim2D();
        EXPECT_EQ(handle.get(), held);
    }
}

TEST_F(CrsTest, ForcesTheWmsAxisOrderOnACopyWhereThatChangesTheCrs) {
    for (const bool eastNorth : {false, true}) {
        SCOPED_TRACE(eastNorth);
        FakeCrs crs(creator, transformer, 4326, 0, &live);
        crs.setAxisOrderEastNorthOrLonLat(eastNorth);
        const AbstractCrs* const shared = &crs;
        Crs handle(shared);
        handle.forceWmsAxisOrder();
        EXPECT_TRUE(handle->isWmsAxisOrder());
        EXPECT_EQ(handle.isHoldingConst(), eastNorth);
        EXPECT_EQ(handle.get() == shared, eastNorth);
        EXPECT_EQ(shared->isWmsAxisOrder(), eastNorth);
        const AbstractCrs* const held = handle.get();
        handle.forceWmsAxisOrder();
        EXPECT_EQ(handle.get(), held);
    }
}

TEST_F(CrsTest, ForcesAnOwnedCrsInPlace) {
    FakeCrs* const crs = newCrs(4979);
    crs->setAxisOrderEastNorthOrLonLat(false);
    Crs handle(crs);
    handle.forceDim2D();
    handle.forceWmsAxisOrder();
    EXPECT_EQ(handle.get(), crs);
    EXPECT_EQ(crs->getDim(), 2U);
    EXPECT_TRUE(crs->isWmsAxisOrder());
    EXPECT_EQ(ownedCount(), 1U);
}

class CrsThatNotesForcing : public FakeCrs {
public:
    using FakeCrs::FakeCrs;
    using FakeCrs::operator=;
    void forceDim2D() override { setAlias("forced"); }
};

TEST_F(CrsTest, ForcesTwoDimensionsAsTheCrsDoes) {
    Crs handle(newCrs<CrsThatNotesForcing>(4979));
    handle.forceDim2D();
    EXPECT_EQ(handle->getAlias(), "forced");
}

TEST_F(CrsTest, KeepsBorrowingWhenTheCopyFails) {
    UncopyableCrs crs(creator, transformer, 4979, 0);
    crs.setAxisOrderEastNorthOrLonLat(false);
    const AbstractCrs* const shared = &crs;
    Crs handle(shared);
    EXPECT_THROW(handle.mod(), std::bad_alloc);
    EXPECT_THROW(handle.forceDim2D(), std::bad_alloc);
    EXPECT_THROW(handle.forceWmsAxisOrder(), std::bad_alloc);
    EXPECT_THROW(static_cast<void>(static_cast<AbstractCrs*>(handle)), std::bad_alloc);
    EXPECT_EQ(handle.get(), shared);
    EXPECT_TRUE(handle.isHoldingConst());
    EXPECT_EQ(shared->getDim(), 3U);
    EXPECT_FALSE(shared->isWmsAxisOrder());
}

TEST_F(CrsTest, IsEmptyWhenTheCopyOfAnAssignedHandleFails) {
    for (const HandleState state : STATES) {
        SCOPED_TRACE(state);
        const Crs source(newCrs<UncopyableCrs>());
        EXPECT_THROW(const Crs copied(source), std::bad_alloc);
        Crs target = given(state);
        EXPECT_THROW(target = source, std::bad_alloc);
        expectEmpty(target);
        EXPECT_EQ(ownedCount(), 1U);
        EXPECT_TRUE(live.contains(source.get()));
    }
}

TEST_F(CrsTest, SharesABorrowedCrsBetweenThreads) {
    const FakeCrs shared(creator, transformer, 4979, 0);
    const auto borrowAndChange = [&shared] {
        for (int i = 0; i < 1000; ++i) {
            const Crs borrowing(&shared);
            Crs changed(borrowing);
            changed.forceDim2D();
            changed.mod()->setAlias("mine");
            EXPECT_EQ(borrowing->getDim() + changed->getDim(), 5U);
        }
    };
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) threads.emplace_back(borrowAndChange);
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(shared.getAlias(), "");
}

}  // namespace
}  // namespace CoordinateTransformation
