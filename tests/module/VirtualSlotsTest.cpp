// The places of the virtual operations of the visitors that the module keeps to itself; see
// linked/VirtualSlotsTest.cpp for all others.

#include "QueltEeGetApplyingMDsVisitor.h"
#include "QueltMigTransformSerialToTreeSeriesVisitor.h"

#include "infrastructure/QueltInString.h"

#include "linked/support/VirtualSlots.h"

#include <gtest/gtest.h>

#include <type_traits>
#include <vector>

namespace {

using quelt::test::inARow;
using quelt::test::slotCount;
using quelt::test::slotOf;

template <class Visitor>
void expectVisitorSlots() {
    EXPECT_TRUE(std::has_virtual_destructor_v<Visitor>);
    const std::vector<int> slots{slotOf(&Visitor::dType),
                                 slotOf(&Visitor::toString),
                                 slotOf(&Visitor::visitFalse),
                                 slotOf(&Visitor::visitTrue),
                                 slotOf(&Visitor::visitAndOp),
                                 slotOf(&Visitor::visitOrOp),
                                 slotOf(&Visitor::visitNotDomainOp),
                                 slotOf(&Visitor::visitNotOp),
                                 slotOf(&Visitor::visitEffLeaf),
                                 slotOf(&Visitor::visitVarEffLeaf),
                                 slotOf(&Visitor::visitRestrictionEffLeaf)};
    EXPECT_EQ(slots, inARow(1, slots));
    EXPECT_EQ(slotCount<Visitor>(), 12);
    static_assert(std::is_same_v<decltype(&Visitor::toString), QueltInString (QueltInObject::*)() const>,
                  "the root's, not overridden");
}

TEST(VirtualSlots, OfTheApplyingDictionariesVisitor) {
    expectVisitorSlots<QueltEeGetApplyingMDsVisitor>();
}

TEST(VirtualSlots, OfTheSerialToTreeSeriesVisitor) {
    expectVisitorSlots<QueltMigTransformSerialToTreeSeriesVisitor>();
}

} // namespace
