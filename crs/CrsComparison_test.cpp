// Compiled under both standards: C++20 adds reversed and rewritten candidates to every comparison.

#include <cstddef>
#include <type_traits>
#include <utility>

#include <gtest/gtest.h>

#include "CoordinateTransformation/Crs.h"
#include "tests/support/FakeCrs.h"

namespace CoordinateTransformation {
namespace {

using TestSupport::FakeCreator;
using TestSupport::FakeCrs;
using TestSupport::FakeTransformer;

static_assert(__cplusplus == COORDTRANS_TESTED_STANDARD);

static_assert(std::is_convertible_v<NullConstruction, Crs>);
static_assert(!std::is_convertible_v<std::nullptr_t, Crs>);
static_assert(!std::is_constructible_v<Crs, std::nullptr_t>);
static_assert(!std::is_constructible_v<Crs, int>);

struct DerivedHandle : Crs {
    using Crs::Crs;
};

// Whether both operators, in both orders, give the expected result.
template <typename Left, typename Right>
void expectComparison(Left&& left, Right&& right, bool same) {
    EXPECT_EQ(left == right, same);
    EXPECT_EQ(right == left, same);
    EXPECT_EQ(left != right, !same);
    EXPECT_EQ(right != left, !same);
}

// Compares each operand as a modifiable and as a const object.
template <typename Left, typename Right>
void expectComparisonOfEveryMix(Left& left, Right& right, bool same) {
    expectComparison(left, right, same);
    expectComparison(left, std::as_const(right), same);
    expectComparison(std::as_const(left), right, same);
    expectComparison(std::as_const(left), std::as_const(right), same);
}

class COORDTRANS_COMPARISON_TEST : public testing::Test {
protected:
    template <typename Other>
    void expectOnlyTheFirstIsHeldBy(Other& handle) {
        const FakeCrs* const firstToRead = &first;
        const FakeCrs* const secondToRead = &second;
        FakeCrs* const firstToChange = &first;
        FakeCrs* const secondToChange = &second;
        const AbstractCrs* const firstBorrowed = &first;
        AbstractCrs* const firstOwned = &first;
        expectComparisonOfEveryMix(handle, firstToRead, true);
        expectComparisonOfEveryMix(handle, secondToRead, false);
        expectComparisonOfEveryMix(handle, firstToChange, true);
        expectComparisonOfEveryMix(handle, secondToChange, false);
        expectComparisonOfEveryMix(handle, firstBorrowed, true);
        expectComparisonOfEveryMix(handle, firstOwned, true);
        expectComparison(handle, nullptr, false);
        expectComparison(std::as_const(handle), nullptr, false);
    }

    static Crs borrowing(const AbstractCrs& crs) { return Crs(&crs); }

    FakeCreator creator;
    FakeTransformer transformer;
    FakeCrs first{creator, transformer, 4326, 0};
    FakeCrs second{creator, transformer, 4326, 0};
};

TEST_F(COORDTRANS_COMPARISON_TEST, OfHandlesIsIdentityOfWhatTheyHold) {
    Crs handle = borrowing(first);
    Crs same(handle);
    Crs other = borrowing(second);
    Crs empty = NullConstruction();
    Crs alsoEmpty = NullConstruction();
    DerivedHandle derived(static_cast<const AbstractCrs*>(&first));
    expectComparisonOfEveryMix(handle, handle, true);
    expectComparisonOfEveryMix(handle, same, true);
    expectComparisonOfEveryMix(handle, other, false);
    expectComparisonOfEveryMix(handle, empty, false);
    expectComparisonOfEveryMix(empty, alsoEmpty, true);
    expectComparisonOfEveryMix(handle, derived, true);
    expectComparisonOfEveryMix(derived, derived, true);
    expectComparison(handle, borrowing(first), true);
}

TEST_F(COORDTRANS_COMPARISON_TEST, OfAHandleAndItsOwnCopyIsFalse) {
    Crs owner(static_cast<AbstractCrs*>(first.copy()));
    Crs copy(owner);
    EXPECT_TRUE(owner->isEqual(copy.get()));
    expectComparisonOfEveryMix(owner, copy, false);
}

TEST_F(COORDTRANS_COMPARISON_TEST, TakesPointersOfEveryKindOnEitherSide) {
    Crs handle = borrowing(first);
    DerivedHandle derived(static_cast<const AbstractCrs*>(&first));
    expectOnlyTheFirstIsHeldBy(handle);
    expectOnlyTheFirstIsHeldBy(derived);
    Crs empty = NullConstruction();
    const AbstractCrs* const nothing = nullptr;
    expectComparisonOfEveryMix(empty, nothing, true);
    expectComparison(empty, nullptr, true);
    expectComparison(std::as_const(empty), nullptr, true);
}

TEST_F(COORDTRANS_COMPARISON_TEST, CopiesNothing) {
    Crs handle = borrowing(first);
    Crs other = borrowing(second);
    AbstractCrs* const pointer = &first;
    expectComparisonOfEveryMix(handle, other, false);
    expectComparisonOfEveryMix(handle, pointer, true);
    EXPECT_TRUE(handle.isHoldingConst());
    EXPECT_TRUE(other.isHoldingConst());
}

Crs nothing() { return NullConstruction(); }

TEST_F(COORDTRANS_COMPARISON_TEST, AlsoTakesWhatAFunctionReturns) {
    EXPECT_TRUE(nothing() == nullptr);
    EXPECT_TRUE(nothing() == nothing());
    Crs handle = borrowing(first);
    EXPECT_TRUE((handle != nullptr ? handle : NullConstruction()) == handle);
}

}  // namespace
}  // namespace CoordinateTransformation
