#include "CoordinateTransformation/BBoxType.h"

#include <gtest/gtest.h>
#include <type_traits>

namespace CoordinateTransformation {
namespace {

// A server's bounding box; the interface itself holds nothing.
class IntervalBox : public BBoxType {
public:
    void extend(double x, double) override {
        empty = false;
        east = x;
    }
    bool isEmpty() const override { return empty; }

    bool empty = true;
    double east = 0;
};

TEST(BBoxTypeTest, IsUsedThroughItsInterface) {
    IntervalBox box;
    BBoxType& interface = box;
    EXPECT_TRUE(interface.isEmpty());
    interface.extend(3, 4);
    EXPECT_FALSE(interface.isEmpty());
    EXPECT_EQ(box.east, 3);
}

TEST(BBoxTypeTest, CopiesNothing) {
    IntervalBox box;
    IntervalBox other;
    other.extend(3, 4);
    static_cast<BBoxType&>(box) = other;
    EXPECT_TRUE(box.isEmpty());
    static_assert(std::is_abstract_v<BBoxType>);
    static_assert(std::has_virtual_destructor_v<BBoxType>);
    static_assert(sizeof(BBoxType) == sizeof(void*));
}

}  // namespace
}  // namespace CoordinateTransformation
